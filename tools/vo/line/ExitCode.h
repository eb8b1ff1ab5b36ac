#pragma once

namespace vo::tool {

/// What the program's end tells its caller. Scripts rely on the numbers.
enum class ExitCode : int
{
    Done = 0,
    Failed = 1,
    WrongUsage = 2,
    NothingToDo = 3, ///< Everything already stands as asked.
    Differences = 4, ///< A verification found files that are not as they were published or installed.
    Cancelled = 5,   ///< Stopped on the user's wish; the same command goes on from where it was.
    /// Refused: a document asks for what could do harm, or something newer, or of another, would be replaced unasked.
    Unsafe = 6,
    NotProven = 7 ///< A linear problem was answered, but the answer is not proven optimal.
};

} // namespace vo::tool
