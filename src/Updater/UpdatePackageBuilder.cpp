#include <Updater/UpdatePackageBuilder.h>

#include <FileSystem/VoFilePath.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/TargetIndex.h>

namespace vo::updater {

using namespace detail;

struct UpdatePackageBuilder::Private
{
    FileTable files; // of the base, without their pieces
    TargetIndex byTarget;
};

UpdatePackageBuilder::UpdatePackageBuilder(const AdvertisedPackageListing& base, const VoVersion& version,
                                           std::uint64_t chunkSize, int compressionLevel)
    : AbstractPackageBuilder(base.packageID(), base.name(), version, chunkSize, compressionLevel)
    , m_private(new Private)
{
    const FileTable& files = TableOf(base.files());
    for (FileTable::Number file = 0; file < files.size(); ++file)
        m_private->files.addAt(files.path(file), files, file);
    m_private->byTarget = TargetIndex(m_private->files);
}

UpdatePackageBuilder::~UpdatePackageBuilder() = default;

VoUUID UpdatePackageBuilder::fileID(const VoFilePath& target) const
{
    const FileTable::Number known = m_private->byTarget.find(m_private->files, target);
    return known == FileTable::None ? VoUpdater::GenerateID() : m_private->files.id(known);
}

} // namespace vo::updater
