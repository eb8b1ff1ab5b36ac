#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <FileSystem/VoDirectoryPath.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vo::updater::detail {

/// The bytes of a text or of a path's text. Paths compare without regard to case, files on disk may not: whatever
/// decides about files compares bytes.
/// @{
std::string_view Bytes(const VoString& text);
std::string_view Bytes(const VoFilePath& path);
std::string_view Bytes(const VoAbstractPath& path);
/// @}

/// The system's name of a directory with every link on the way followed; pieces that do not exist count as written.
/// @throws VoFileException ("canonical: " + reason) when the system does not let one look
std::string RealDirectory(const VoDirectoryPath& directory);

/// A directory, a relative one as seen from the current one.
/// @throws VoInvalidParameterException ("No installation directory given") for a null one
/// @throws VoFileException ("current_path: " + reason) when there is no current one
VoDirectoryPath AbsoluteDirectory(const VoDirectoryPath& directory);

/// Puts a directory before the one that holds it.
void SortInnermostFirst(std::vector<VoDirectoryPath>& directories);

/// Tells which paths lie inside a directory: by their texts, and with every link on the way followed. What a listing
/// or an advert names outside of its installation directory is never written or removed. The questions throw
/// VoFileException when the system does not let one look: what cannot be seen is not outside.
class VOCORE_PRIVATE_EXPORT Containment
{
public:
    explicit Containment(const VoDirectoryPath& root);

    /// Whether the file is inside. The last piece is not followed: a link there is itself replaced or removed.
    bool holds(const VoFilePath& file);
    /// Whether a directory may be removed once it is empty: it is inside, the root itself, or one that holds the root.
    bool mayRemove(const VoDirectoryPath& directory);

private:
    bool leadsInside(const VoDirectoryPath& directory);

    VoDirectoryPath m_root;
    std::unordered_map<std::string, bool> m_known; // by directory
};

} // namespace vo::updater::detail
