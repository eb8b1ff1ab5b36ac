#pragma once

#include <Core/VoThrow.h>

namespace vo::detail {

/// @throws VoInvalidParameterException "Invalid callback" for an empty function, before anything is done for it
template <typename Function>
void RequireCallback(const Function& function)
{
    if (!function)
        ThrowInvalidParameter("Invalid callback");
}

} // namespace vo::detail
