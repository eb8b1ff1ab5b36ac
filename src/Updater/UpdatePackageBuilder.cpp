#include <Updater/UpdatePackageBuilder.h>

#include <FileSystem/VoFilePath.h>
#include <Updater/VoUpdater.h>

#include <map>

namespace vo::updater {

struct UpdatePackageBuilder::Private
{
    std::map<VoFilePath, VoUUID> ids; // by target, letter case left aside as paths do
};

UpdatePackageBuilder::UpdatePackageBuilder(const AdvertisedPackageListing& base, const VoVersion& version,
                                           std::uint64_t chunkSize, int compressionLevel)
    : AbstractPackageBuilder(base.packageID(), base.name(), version, chunkSize, compressionLevel)
    , m_private(new Private)
{
    for (const AdvertisedFileListing& file : base.files())
        m_private->ids.emplace(file.target(), file.id());
}

UpdatePackageBuilder::~UpdatePackageBuilder() = default;

VoUUID UpdatePackageBuilder::fileID(const VoFilePath& target) const
{
    const auto known = m_private->ids.find(target);
    return known == m_private->ids.end() ? VoUpdater::GenerateID() : known->second;
}

} // namespace vo::updater
