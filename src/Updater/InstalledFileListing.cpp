#include <Updater/InstalledFileListing.h>

#include <Core/VoChecksum.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/HiddenState.h>

namespace vo::updater {

using namespace detail;

struct InstalledFileListing::Private
{
    VoFilePath path;
};

InstalledFileListing::InstalledFileListing() = default;

InstalledFileListing::InstalledFileListing(const VoFilePath& path)
    : InstalledFileListing(path, VoUpdater::GenerateID(), VoFileSystem::Checksum(path),
                           VoDownloadSize(static_cast<std::int64_t>(VoFileSystem::FileSize(path))))
{
}

InstalledFileListing::InstalledFileListing(const VoFilePath& path, const VoUUID& id, const VoChecksum& checksum,
                                           const VoDownloadSize& size)
    : AbstractFileListing(id, checksum, size)
    , m_private(new Private{path})
{
}

InstalledFileListing::InstalledFileListing(VoXMLStreamElementLoader& element)
    : AbstractFileListing(element)
    , m_private(new Private{ReadAttribute<VoFilePath>(element, attribute::Path)})
{
}

InstalledFileListing::InstalledFileListing(const InstalledFileListing& other)
    : AbstractFileListing(other)
    , m_private(Copy(other.m_private))
{
}

InstalledFileListing::InstalledFileListing(InstalledFileListing&& other) noexcept = default;

InstalledFileListing& InstalledFileListing::operator=(const InstalledFileListing& other)
{
    return *this = InstalledFileListing(other);
}

InstalledFileListing& InstalledFileListing::operator=(InstalledFileListing&& other) noexcept = default;

InstalledFileListing::~InstalledFileListing() = default;

const VoFilePath& InstalledFileListing::path() const
{
    return Read(m_private).path;
}

XMLObject::Type InstalledFileListing::objectType() const
{
    return Type::InstalledFile;
}

void InstalledFileListing::writeAttributes(VoXMLElementWriter& element) const
{
    WriteAttribute(element, attribute::Path, path());
    AbstractFileListing::writeAttributes(element);
}

} // namespace vo::updater
