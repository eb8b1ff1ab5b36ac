#pragma once

#include <Core/VoExport.h>

#include <cstddef>

/// @file
/// Out-of-line helpers that throw the library's exceptions, so that the container and pointer templates need neither
/// the string nor the exception headers.

namespace vo::detail {

/// Throws VoIndexOutOfBoundsException(@p index, @p size).
[[noreturn]] VOCORE_EXPORT void ThrowIndexOutOfBounds(std::size_t index, std::size_t size);

/// Throws VoNullPointerException(@p message).
[[noreturn]] VOCORE_EXPORT void ThrowNullPointer(const char* message);

/// Throws VoNotFoundException for the item of @p length bytes at @p text.
[[noreturn]] VOCORE_EXPORT void ThrowNotFound(const char* text, std::size_t length);

/// Throws VoInvalidParameterException(@p message).
[[noreturn]] VOCORE_EXPORT void ThrowInvalidParameter(const char* message);

/// Throws VoInvalidConversionException(@p from, @p to).
[[noreturn]] VOCORE_EXPORT void ThrowInvalidConversion(const char* from, const char* to);

/// Throws VoOverflowException with its default message.
[[noreturn]] VOCORE_EXPORT void ThrowOverflow();

/// Throws VoBadAllocException(@p detail).
[[noreturn]] VOCORE_EXPORT void ThrowBadAlloc(const char* detail);

} // namespace vo::detail
