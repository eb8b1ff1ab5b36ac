#pragma once

#include <vo/line/ExitCode.h>

#include <QtCore/QStringList>

namespace vo::tool {

/// Carries out one command line, given without the program's name. Nothing is thrown. REQUIRES a QCoreApplication.
ExitCode RunProgram(const QStringList& texts);

} // namespace vo::tool
