#pragma once

#include <Updater/VerificationReport.h>

namespace vo::tool {

class Console;

/// One row for each missing, changed and extra file, with the package it was found in.
void ShowFindings(Console& console, const updater::VerificationReport& report);

} // namespace vo::tool
