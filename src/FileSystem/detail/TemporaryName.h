#pragma once

#include <Core/VoString.h>
#include <FileSystem/detail/NativeFile.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace vo::detail {

/// How many letters make a name unlikely to be taken.
constexpr std::size_t RandomNameLetters = 12;

/// Letters that make a name unlikely to be taken. Lower case: some systems do not tell cases apart.
inline VoString RandomNamePart()
{
    return VoString::Random(RandomNameLetters, VoString::Lowercase);
}

/// What stands between the name of a file and the letters of its sibling's.
constexpr std::string_view SiblingMark = ".tmp";

/// A new name beside a file: the file's own name, ".tmp" and random letters. It fits where the file's name fits: a long
/// one is cut.
inline std::filesystem::path SiblingPath(const std::filesystem::path& file)
{
    constexpr std::size_t longest = 200;
    const std::size_t name = file.empty() ? 0 : (--file.end())->native().size();
    auto sibling = file.native();
    sibling.resize(sibling.size() - name + std::min(name, longest));
    const std::string ending = std::string(SiblingMark) + RandomNamePart().toStdString();
    sibling.append(ending.begin(), ending.end());
    return sibling;
}

/// The name of the file beside which SiblingPath() would give `name`, as long as it was not cut; empty for a name that
/// is none of those.
inline std::string_view SiblingOf(std::string_view name)
{
    if (name.size() <= SiblingMark.size() + RandomNameLetters)
        return {};
    const std::string_view letters = name.substr(name.size() - RandomNameLetters);
    const std::string_view start = name.substr(0, name.size() - RandomNameLetters - SiblingMark.size());
    const bool isRandom = std::all_of(letters.begin(), letters.end(), [](char c) { return c >= 'a' && c <= 'z'; });
    return isRandom && name.substr(start.size(), SiblingMark.size()) == SiblingMark ? start : std::string_view();
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
