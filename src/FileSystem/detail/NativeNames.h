#pragma once

#include <Core/VoExport.h>

#include <cstdint>
#include <filesystem>
#include <system_error>

/// What the system says about names and does with them, where the standard library does not do the same on every
/// system: it knows no links on Windows, removes what they lead to there, and gives up at once on a file that a scanner
/// holds open for a moment. Errors are returned; who calls knows what they mean.
namespace vo::detail {

/// What bears a name itself. Junctions count as symbolic links.
VOCORE_PRIVATE_EXPORT std::filesystem::file_status LinkStatus(const std::filesystem::path& path,
                                                              std::error_code& error) noexcept;

/// What a name leads to, with links followed.
VOCORE_PRIVATE_EXPORT std::filesystem::file_status TargetStatus(const std::filesystem::path& path,
                                                                std::error_code& error) noexcept;

/// Renames on one volume; a file or link of the new name is replaced, also a read-only one. Where the system refuses
/// that because another program holds one of the files, it is tried again for about a second.
VOCORE_PRIVATE_EXPORT void RenameNative(const std::filesystem::path& from, const std::filesystem::path& to,
                                        std::error_code& error) noexcept;

/// Removes a file, also a read-only one, a link, or an empty directory. False when nothing bears the name.
VOCORE_PRIVATE_EXPORT bool RemoveNative(const std::filesystem::path& path, std::error_code& error) noexcept;

/// Removes a directory with all that it holds, or a file or link; links in it go, what they lead to stays. Gives the
/// number of names that went, 0 after an error.
VOCORE_PRIVATE_EXPORT std::uintmax_t RemoveTree(const std::filesystem::path& path, std::error_code& error);

/// The path with each link on the way followed. Pieces at its end that do not exist are kept as they are written.
VOCORE_PRIVATE_EXPORT std::filesystem::path RealPath(const std::filesystem::path& path, std::error_code& error);

} // namespace vo::detail
