#pragma once

#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Updater/detail/documents/Log.h>

namespace vo::updater::detail {

/// Logs why a file that was installed stays where it is although its package has it no more: it is not below the
/// directory of the installation, a directory stands there now, or another package has it as well.
/// @{
inline void LogKeptOutside(const VoString& path)
{
    Log().warning("File outside the installation directory kept: " + path);
}

inline void LogKeptDirectory(const VoString& path)
{
    Log().warning("Directory kept in place of removed file: " + path);
}

inline void LogKeptFor(const VoUUID& owner, const VoString& path)
{
    Log().diagnostic("File kept, it belongs to package " + owner.toString() + ": " + path);
}
/// @}

} // namespace vo::updater::detail
