#pragma once

#include <Updater/AbstractPackageBuilder.h>

#include <memory>

namespace vo::updater {

/// Builds a further release of a package: a file whose target the base release has (in any letter case) keeps its ID,
/// so that comparing the releases tells unchanged, modified, added and removed files apart. Chunks are not reused: the
/// new release holds all bytes of its files.
class VOCORE_EXPORT UpdatePackageBuilder : public AbstractPackageBuilder
{
public:
    /// Takes the package ID and the name from `base`; the other parameters and failures as for AbstractPackageBuilder.
    UpdatePackageBuilder(const AdvertisedPackageListing& base, const VoVersion& version, std::uint64_t chunkSize,
                         int compressionLevel);
    /// The same, taking over a listing of many files instead of copying it.
    UpdatePackageBuilder(AdvertisedPackageListing&& base, const VoVersion& version, std::uint64_t chunkSize,
                         int compressionLevel);
    ~UpdatePackageBuilder() override;

    VoUUID fileID(const VoFilePath& target) const override;

private:
    UpdatePackageBuilder(std::shared_ptr<const detail::IndexedRelease> base, const VoVersion& version,
                         std::uint64_t chunkSize, int compressionLevel);

    std::shared_ptr<const detail::IndexedRelease> base() const override;

    std::shared_ptr<const detail::IndexedRelease> m_base;
};

} // namespace vo::updater
