#pragma once

#include <Core/VoString.h>
#include <FileSystem/detail/NativeFile.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <system_error>

namespace vo::detail {

/// Letters that make a name unlikely to be taken. Lower case: some systems do not tell cases apart.
inline VoString RandomNamePart()
{
    return VoString::Random(12, VoString::Lowercase);
}

/// A new name beside a file: the file's own name, ".tmp" and random letters. It fits where the file's name fits: a long
/// one is cut.
inline std::filesystem::path SiblingPath(const std::filesystem::path& file)
{
    constexpr std::size_t longest = 200;
    const std::size_t name = file.empty() ? 0 : (--file.end())->native().size();
    auto sibling = file.native();
    sibling.resize(sibling.size() - name + std::min(name, longest));
    const std::string ending = ".tmp" + RandomNamePart().toStdString();
    sibling.append(ending.begin(), ending.end());
    return sibling;
}

/// Calls `make`, which makes something under a new random name and returns its error, until the name was free or
/// something else failed.
template <typename Make>
std::error_code MakeUnderNewName(Make make)
{
    constexpr int attempts = 100;
    std::error_code error;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        error = make();
        if (error != std::errc::file_exists)
            break;
    }
    return error;
}

} // namespace vo::detail
