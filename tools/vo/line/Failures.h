#pragma once

#include <vo/line/CommandError.h>
#include <vo/line/Location.h>

#include <FileSystem/VoDirectoryPath.h>

namespace vo::tool {

class Arguments;

/// The one place that decides how a failure of the library is told: what was wanted, the user's own name of the thing,
/// the system's reason. Paths are shown as they were typed, or as this system writes them.

/// The exception that is being handled as a message and a code. Texts and codes go by the exception's class and by what
/// it is about; what made an installation fail is told, not that it failed. `wanted`, such as "read", and `name` say
/// what the tool was doing; both are empty when that adds nothing.
CommandError ToldFailure(const Arguments& arguments, const VoString& wanted, const VoString& name);

/// Does `work`; what it throws of the library ends the command as "cannot <wanted> <name>: <reason>".
template <typename Work>
auto Doing(const Arguments& arguments, const VoString& wanted, const VoString& name, Work work)
{
    try {
        return work();
    } catch (const CommandError&) {
        throw; // told already, by who knew more
    } catch (...) {
        throw ToldFailure(arguments, wanted, name);
    }
}

/// What the user calls a place: as it was typed where he named it, else as LocationText().
VoString NameOf(const Arguments& arguments, const VoLocation& location);
VoString NameOf(const Arguments& arguments, const VoDirectoryPath& directory);

/// @throws Failure unless the folder is there: "cannot <wanted> <its name>: ..."
void RequireFolder(const Arguments& arguments, const VoDirectoryPath& folder, const char* wanted);

/// A text of the library for people: rooted paths in it are shown as this system writes them.
VoString TextOfLibrary(const VoString& text);

} // namespace vo::tool
