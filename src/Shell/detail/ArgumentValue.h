#pragma once

#include <Core/VoString.h>
#include <Shell/VoFunction.h>

#include <optional>

namespace vo::detail {

/// The argument as the parameter wants it, paths as seen from a directory unless that is null; none where it cannot be
/// that. A pure function.
std::optional<VoShellValue> ArgumentValue(const VoFunctionParameter& parameter, const VoFunctionArgument& argument,
                                          const VoDirectoryPath& directory);

/// Whether a parameter's default is what the parameter wants, or Null, which stands for nothing given.
bool IsDefaultFor(const VoFunctionParameter& parameter);

/// An argument for an error: its value, in quotes, and its kind unless it was typed.
VoString GivenText(const VoFunctionArgument& argument);

/// What a typed text stands for where any value will do: a truth value, a number, else the text.
VoVariant AnyValue(const VoString& text);

} // namespace vo::detail
