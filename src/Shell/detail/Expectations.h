#pragma once

class VoFunctionRegistry;

namespace vo::detail {

class ShellInterpreter;

/// What scripted tests say beside the shell's own lines. Failures are VoValidationExceptions.
/// @{
void AddExpectations(VoFunctionRegistry& functions);
void AddExpectations(ShellInterpreter& interpreter);
/// @}

} // namespace vo::detail
