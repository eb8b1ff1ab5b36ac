#include <Updater/PackageBuilder.h>

#include <Updater/VoUpdater.h>

namespace vo::updater {

PackageBuilder::PackageBuilder(const VoUUID& packageID, const VoString& name, const VoVersion& version,
                               std::uint64_t chunkSize, int compressionLevel)
    : AbstractPackageBuilder(packageID, name, version, chunkSize, compressionLevel)
{
}

PackageBuilder::~PackageBuilder() = default;

VoUUID PackageBuilder::fileID(const VoFilePath&) const
{
    return VoUpdater::GenerateID();
}

} // namespace vo::updater
