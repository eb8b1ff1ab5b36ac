#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace vo::test {

/// Expects a text to be the one of a file that a person has looked at and approved. To approve another one, copy the
/// file that a failure names.
inline void ExpectApproved(const std::string& received, const std::filesystem::path& approvedFile)
{
    std::ifstream file(approvedFile, std::ios_base::binary);
    const std::string approved(std::istreambuf_iterator<char>(file), {});
    if (received == approved)
        return;
    const auto copy = std::filesystem::temp_directory_path() / ("received-" + approvedFile.filename().string());
    std::ofstream(copy, std::ios_base::binary) << received;
    const auto difference = std::mismatch(received.begin(), received.end(), approved.begin(), approved.end()).first;
    ADD_FAILURE() << approvedFile.filename() << " differs in line "
                  << 1 + std::count(received.begin(), difference, '\n') << "; what was received stands in " << copy;
}

} // namespace vo::test
