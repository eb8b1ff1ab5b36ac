#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <cstdint>

namespace vo::updater {

class AdvertisedPackageListing;

/// What the update from one release to another costs, by their definitions alone: neither disk nor network is asked, so
/// that a publisher can compare releases.
struct VOCORE_EXPORT UpdateCost
{
    std::uint64_t files = 0;        ///< Number of files to add or rewrite.
    std::size_t chunks = 0;         ///< Number of chunks to fetch.
    std::size_t patches = 0;        ///< Number of patches to fetch.
    std::uint64_t bytesToFetch = 0; ///< The total size of chunks and patches.
    std::uint64_t bytesToWrite = 0; ///< Total length of the files to add or rewrite.

    /// The cost of a first installation.
    static UpdateCost Of(const AdvertisedPackageListing& to);
    /// The cost for who has a release of the same package whole; with the patches that `to` knows, where they cost
    /// less.
    /// @throws VoInvalidParameterException as AbstractPackageListing::compare
    static UpdateCost Of(const AdvertisedPackageListing& from, const AdvertisedPackageListing& to);
};

} // namespace vo::updater
