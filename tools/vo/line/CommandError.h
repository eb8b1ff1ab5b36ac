#pragma once

#include <vo/line/ExitCode.h>

#include <Core/VoString.h>

#include <utility>
#include <vector>

namespace vo::tool {

/// Ends a subcommand with a message and an exit code. Thrown inside the program only, and caught in one place.
struct CommandError
{
    ExitCode code;
    VoString text; ///< One line, without the program's name.
    /// What the library logs of the same failure holds one of these texts.
    std::vector<VoString> tells{};
};

/// The command line is not one that can be carried out; the text names the option and its value.
struct UsageError : CommandError
{
    explicit UsageError(VoString message)
        : CommandError{ExitCode::WrongUsage, std::move(message)}
    {
    }
};

/// What was asked for cannot be done.
struct Failure : CommandError
{
    explicit Failure(VoString message)
        : CommandError{ExitCode::Failed, std::move(message)}
    {
    }
};

} // namespace vo::tool
