#pragma once

#include <Download/VoDownloadSize.h>

#include <algorithm>
#include <cstdint>

namespace vo::tool {

/// The bytes that a listing speaks of; what is not known counts as none.
template <typename Listing>
std::uint64_t BytesOf(const Listing& listing)
{
    return static_cast<std::uint64_t>(std::max<std::int64_t>(0, listing.size().bytes()));
}

/// The bytes of all listings.
template <typename Listings>
std::uint64_t TotalBytes(const Listings& listings)
{
    VoDownloadSize total;
    for (const auto& listing : listings)
        total += VoDownloadSize(BytesOf(listing)); // stops at the largest number
    return static_cast<std::uint64_t>(total.bytes());
}

} // namespace vo::tool
