#pragma once

class VoFunctionRegistry;

namespace vo::detail {

/// Adds what the library itself gives to the command shell.
void AddLibraryFunctions(VoFunctionRegistry& registry);

/// Its parts.
/// @{
void AddFileFunctions(VoFunctionRegistry& registry);
void AddTableFunctions(VoFunctionRegistry& registry);
void AddPackageFunctions(VoFunctionRegistry& registry);
void AddProblemFunctions(VoFunctionRegistry& registry);
/// @}

} // namespace vo::detail
