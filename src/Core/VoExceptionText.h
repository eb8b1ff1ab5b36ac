#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

namespace vo {

/// The text of the exception being handled: the message of a library exception, what() of a standard one, and otherwise
/// "Unknown exception". To be called inside a handler; outside of one the result is empty.
///
/// Library exceptions are not standard exceptions, so a boundary that must let nothing through would otherwise need
/// three handlers; with this function `catch (...)` is enough.
VOCORE_EXPORT VoString CurrentExceptionText();

} // namespace vo
