#pragma once

#include <Core/VoExport.h>
#include <FileSystem/VoFilePath.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vo::detail {

class ZipInput;

/// What unpacking an archive will do, found out before anything is written.
struct UnzipPlan
{
    struct Item
    {
        std::size_t index; ///< Of the entry.
        VoFilePath target;
        bool isDirectory;
    };

    std::vector<Item> items; ///< In the archive's order.
    std::uint64_t bytes = 0; ///< As the entries claim; the largest number when they claim more.
};

/// Checks every entry and decides where it goes. The disk is not asked. Throws as VoZipper::Unzip for names and entries
/// that are refused.
VOCORE_PRIVATE_EXPORT UnzipPlan PlanUnzip(ZipInput& archive, const VoFilePath& targetDirectory);

} // namespace vo::detail
