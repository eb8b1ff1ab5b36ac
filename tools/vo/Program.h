#pragma once

#include "ExitCode.h"

#include <Core/VoString.h>

class QStringList;

namespace vo::tool {

/// Carries out one command line, given without the program's name. Nothing is thrown. REQUIRES a QCoreApplication.
ExitCode RunProgram(const QStringList& arguments);

/// The exit code of the library's exception being handled, and of any other.
ExitCode CodeOfCurrentException();

/// Whether a failure's text is that of a document which was refused before anything was done, because what it asks for
/// could do harm. An installation that fails keeps the text of the cause only.
bool IsRefusal(const VoString& text);

} // namespace vo::tool
