#pragma once

#include <Core/VoSharedPtr.h>
#include <Updater/UpdateMessages.h>

namespace vo::tool {

class Console;

/// Shows one of the updater's messages: progress as the progress line, findings as details.
void ShowUpdateMessage(Console& console, const VoSharedPtr<updater::AbstractMessage>& message);

} // namespace vo::tool
