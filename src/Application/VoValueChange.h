#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Core/VoVariant.h>

/// What is told of a named value that has changed: one of VoGlobalValues, or a property of VoLayeredProperties.
struct VOCORE_EXPORT VoValueChange
{
    VoString name;      ///< The value's name, as it was defined.
    VoVariant oldValue; ///< The value before; Null where there was none.
    VoVariant newValue; ///< The value since; Null where there is none any more.
};
