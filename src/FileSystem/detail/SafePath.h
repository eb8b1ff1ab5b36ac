#pragma once

#include <Core/VoExport.h>

#include <string_view>

class VoFilePath;
class VoString;

/// Checks of names and relative paths that come from documents and archives, before they are used on disk. They look at
/// the text alone and hold for every platform, so that a release made on one cannot harm another.
namespace vo::detail {

/// True when an identifier may serve as a file name: 1 to 128 bytes, no control character and none of \ / : * ? " < >
/// |, no blank or dot at either end, no name of a device, and not "packages", whose listing would be the registry.
/// @{
VOCORE_PRIVATE_EXPORT bool SafeName(std::string_view name) noexcept;
VOCORE_PRIVATE_EXPORT bool SafeName(const VoString& name) noexcept;
/// @}

/// True when a path stays below the directory it will be appended to, on every platform: not null, at most 260 bytes,
/// no root, colon or control character, no separator at either end, and no piece that is empty, ends with a dot or a
/// blank
/// ("." and ".." among them), or names a device. "/" counts as a separator.
/// @{
/// The rule that a path breaks ("it holds a colon"); null for a safe one.
VOCORE_PRIVATE_EXPORT const char* RelativePathProblem(std::string_view path) noexcept;
VOCORE_PRIVATE_EXPORT bool SafeRelativePath(std::string_view path) noexcept;
VOCORE_PRIVATE_EXPORT bool SafeRelativePath(const VoString& path) noexcept;
VOCORE_PRIVATE_EXPORT bool SafeRelativePath(const VoFilePath& path) noexcept;
/// @}

} // namespace vo::detail
