#pragma once

#include <Core/VoExport.h>

#include <cstddef>

/// @file
/// Out-of-line helpers that throw the library's exceptions, so that the container and pointer templates need neither
/// the string nor the exception headers.

namespace vo::detail {

/// @throws VoIndexOutOfBoundsException (`index`, `size`)
[[noreturn]] VOCORE_EXPORT void ThrowIndexOutOfBounds(std::size_t index, std::size_t size);

/// @throws VoNullPointerException (`message`)
[[noreturn]] VOCORE_EXPORT void ThrowNullPointer(const char* message);

/// @throws VoNotFoundException for the item of `length` bytes at `text`
[[noreturn]] VOCORE_EXPORT void ThrowNotFound(const char* text, std::size_t length);

/// @throws VoInvalidParameterException (`message`)
[[noreturn]] VOCORE_EXPORT void ThrowInvalidParameter(const char* message);

/// @throws VoInvalidConversionException (`from`, `to`)
[[noreturn]] VOCORE_EXPORT void ThrowInvalidConversion(const char* from, const char* to);

/// @throws VoOverflowException with its default message
[[noreturn]] VOCORE_EXPORT void ThrowOverflow();

/// @throws VoBadAllocException (`detail`)
[[noreturn]] VOCORE_EXPORT void ThrowBadAlloc(const char* detail);

} // namespace vo::detail
