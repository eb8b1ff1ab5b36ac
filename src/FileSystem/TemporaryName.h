#pragma once

#include <Core/VoString.h>
#include <FileSystem/NativeFile.h>

#include <cstddef>
#include <system_error>

namespace vo::detail {

/// Letters and digits that make a name unlikely to be taken. Lower case: some systems do not tell cases apart.
inline VoString RandomNamePart()
{
    return VoString::Random(12, VoString::Lowercase);
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
