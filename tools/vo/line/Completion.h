#pragma once

#include <Core/VoString.h>

#include <optional>
#include <string_view>

namespace vo::tool {

/// The script by which a shell completes command lines of the program: commands, their options, values that can be
/// told, files and folders. None for a shell other than bash, zsh and fish.
std::optional<VoString> CompletionScript(std::string_view shell);

} // namespace vo::tool
