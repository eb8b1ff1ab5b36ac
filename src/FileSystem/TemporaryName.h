#pragma once

#include <Core/VoString.h>
#include <FileSystem/NativeFile.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
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
    auto name = file.filename().native();
    name.resize(std::min(name.size(), longest));
    std::filesystem::path sibling = file.parent_path() / name;
    sibling += ".tmp" + RandomNamePart().toStdString();
    return sibling;
}

/// Calls @p make, which makes something under a new random name and returns its error, until the name was free or
/// something else failed.
template <typename Make>
std::error_code MakeUnderNewName(Make make)
{
    constexpr int Attempts = 100;
    std::error_code error;
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        error = make();
        if (error != std::errc::file_exists)
            break;
    }
    return error;
}

} // namespace vo::detail
