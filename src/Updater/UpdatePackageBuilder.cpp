#include <Updater/UpdatePackageBuilder.h>

#include <Core/VoString.h>
#include <Core/VoVersion.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/IndexedRelease.h>

#include <utility>

namespace vo::updater {

using namespace detail;

UpdatePackageBuilder::UpdatePackageBuilder(const AdvertisedPackageListing& base, const VoVersion& version,
                                           std::uint64_t chunkSize, int compressionLevel)
    : UpdatePackageBuilder(AdvertisedPackageListing(base), version, chunkSize, compressionLevel)
{
}

UpdatePackageBuilder::UpdatePackageBuilder(AdvertisedPackageListing&& base, const VoVersion& version,
                                           std::uint64_t chunkSize, int compressionLevel)
    : UpdatePackageBuilder(std::make_shared<const IndexedRelease>(std::move(base)), version, chunkSize,
                           compressionLevel)
{
}

UpdatePackageBuilder::UpdatePackageBuilder(std::shared_ptr<const IndexedRelease> base, const VoVersion& version,
                                           std::uint64_t chunkSize, int compressionLevel)
    : AbstractPackageBuilder(base->listing().packageID(), base->listing().name(), version, chunkSize, compressionLevel)
    , m_base(std::move(base))
{
}

UpdatePackageBuilder::~UpdatePackageBuilder() = default;

VoUUID UpdatePackageBuilder::fileID(const VoFilePath& target) const
{
    const FileTable::Number known = m_base->find(target);
    return known == FileTable::None ? VoUpdater::GenerateID() : m_base->files().id(known);
}

std::shared_ptr<const IndexedRelease> UpdatePackageBuilder::base() const
{
    return m_base;
}

} // namespace vo::updater
