#pragma once

// Calls of the system about files, made by this program, the library and the libraries below it, that kill the process
// or fail. The program's own definitions of those functions stand before the system's.

#include <cstddef>

namespace vo::test {

/// What happens to the calls from now on.
struct CallFault
{
    enum class Kind
    {
        None,        ///< They are only counted.
        Kill,        ///< The process dies before the call that changes something, of the given number.
        KillHalfway, ///< The same; a writing call has written half of its bytes.
        FailOne,     ///< The call of the given number fails.
        FailAll,     ///< That one and all after it fail.
    };

    Kind kind = Kind::None;
    std::size_t number = 0; ///< From 1. Of the changing calls for the kinds that kill, else of those that can fail so.
    int code = 0;           ///< Which error; decides which calls count. ENOSPC for one needs calls that take space.
};

void Arm(const CallFault& fault);
/// The number of calls that counted since Arm().
std::size_t Disarm();

} // namespace vo::test
