#include <Updater/InstalledFileListing.h>

#include <Core/VoChecksum.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/Attributes.h>

#include <string>

namespace vo::updater {

using namespace detail;

InstalledFileListing::InstalledFileListing() = default;

InstalledFileListing::InstalledFileListing(const VoFilePath& path)
    : InstalledFileListing(path, VoUpdater::GenerateID(), VoFileSystem::Checksum(path),
                           VoDownloadSize(static_cast<std::int64_t>(VoFileSystem::FileSize(path))))
{
}

InstalledFileListing::InstalledFileListing(const VoFilePath& path, const VoUUID& id, const VoChecksum& checksum,
                                           const VoDownloadSize& size)
    : AbstractFileListing(id, checksum, size, path)
{
}

InstalledFileListing::InstalledFileListing(VoXMLStreamElementLoader& element)
    : AbstractFileListing(element, attribute::Path)
{
}

InstalledFileListing::InstalledFileListing(const FileTable& table, std::uint32_t number) noexcept
    : AbstractFileListing(table, number)
{
}

InstalledFileListing::InstalledFileListing(const InstalledFileListing& other) = default;
InstalledFileListing::InstalledFileListing(InstalledFileListing&& other) noexcept = default;
InstalledFileListing& InstalledFileListing::operator=(const InstalledFileListing& other) = default;
InstalledFileListing& InstalledFileListing::operator=(InstalledFileListing&& other) noexcept = default;
InstalledFileListing::~InstalledFileListing() = default;

VoFilePath InstalledFileListing::path() const
{
    return VoFilePath::CreateUnchecked(VoString(std::string(pathText())));
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
