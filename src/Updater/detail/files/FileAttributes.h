#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>

#include <optional>

namespace vo::updater::detail {

/// Where a link leads, with backslashes; nothing for what is no link.
/// @throws VoFileException ("read_symlink: " + reason) when the system does not let one look
VOCORE_PRIVATE_EXPORT std::optional<VoString> ReadLink(const VoFilePath& path);

/// Makes a link; a file or link that was left at its place is removed first.
/// @throws VoFileException ("Cannot make link: " + reason + ": " + path)
VOCORE_PRIVATE_EXPORT void MakeLink(const VoFilePath& path, const VoString& to);

/// Lets all run a file who may read it, or nobody.
/// @throws VoFileException ("Cannot change permissions: " + reason + ": " + path)
VOCORE_PRIVATE_EXPORT void SetExecutable(const VoFilePath& path, bool isExecutable);

/// Whether files are copied where a release has links, because not every user may make links here.
bool LinksAreCopies() noexcept;
/// Has links made, or copied, whatever the system is; nothing: as it is. Not while an operation runs.
VOCORE_PRIVATE_EXPORT void OverrideLinks(std::optional<bool> areCopies) noexcept;

/// Whether files are marked that may be run.
bool MarksExecutables() noexcept;
/// Whether the owner may run a file, following links; true for all of them where files have no such mark.
/// @throws VoFileException ("status: " + reason) when the system does not let one look
VOCORE_PRIVATE_EXPORT bool IsExecutable(const VoFilePath& path);

/// Whether the system has links copied (see LinksAreCopies).
bool SystemCopiesLinks() noexcept;

} // namespace vo::updater::detail
