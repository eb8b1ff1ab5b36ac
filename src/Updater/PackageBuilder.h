#pragma once

#include <Updater/AbstractPackageBuilder.h>

namespace vo::updater {

/// Builds the first release of a package: every file gets a new ID.
class VOCORE_EXPORT PackageBuilder : public AbstractPackageBuilder
{
public:
    /// Parameters and failures as for AbstractPackageBuilder.
    PackageBuilder(const VoUUID& packageID, const VoString& name, const VoVersion& version, std::uint64_t chunkSize,
                   int compressionLevel);
    ~PackageBuilder() override;

    VoUUID fileID(const VoFilePath& target) const override;
};

} // namespace vo::updater
