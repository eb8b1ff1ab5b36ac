#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <cstdint>
#include <locale>
#include <memory>
#include <string_view>

/// @file
/// Case folding and the byte searches of strings and views.
///
/// A virtual facet call for every byte is fifty times slower than a table, so what a locale's `std::ctype<char>` says
/// is asked once and kept in one immutable record that all strings of that locale share.

namespace vo::detail {

/// What the strings of one locale need to know of it. Immutable, hence read by any thread.
struct LocaleRecord
{
    /// Asks the locale's character facet about each of the 256 bytes.
    explicit LocaleRecord(const std::locale& source);

    unsigned char folded(char c) const { return fold[static_cast<unsigned char>(c)]; } ///< The lower case of a byte.
    bool isSpace(char c) const { return space[static_cast<unsigned char>(c)]; }        ///< Classed space or blank.
    bool isUpper(char c) const { return upper[static_cast<unsigned char>(c)]; }        ///< Classed upper case.

    std::locale locale;
    unsigned char fold[256];
    bool space[256];
    bool upper[256];
    bool foldsOnlyAscii = true; ///< fold maps `A`-`Z` to `a`-`z` and nothing else: words can be folded at once.
};

using LocalePtr = std::shared_ptr<const LocaleRecord>;

/// The record of the classic locale. It is never destroyed and its pointers count no references, so strings may be made
/// before and after main.
VOCORE_PRIVATE_EXPORT LocalePtr ClassicLocale();

/// The record of the global locale as it is now.
VOCORE_PRIVATE_EXPORT LocalePtr GlobalLocale();

/// The record of a locale. The process shares one record for each locale in use; a thread that has met the locale
/// lately takes no lock.
VOCORE_PRIVATE_EXPORT LocalePtr RecordOf(const std::locale& locale);

/// The first index below `length` where the bytes differ, or `length`.
VOCORE_PRIVATE_EXPORT std::size_t MismatchExact(const char* a, const char* b, std::size_t length);

/// The first index below `length` where the folded bytes differ, or `length`.
VOCORE_PRIVATE_EXPORT std::size_t MismatchFolded(const char* a, const char* b, std::size_t length,
                                                 const LocaleRecord& locale);

/// Whether the folded texts are equal.
inline bool EqualFolded(std::string_view a, std::string_view b, const LocaleRecord& locale)
{
    return a.size() == b.size() && MismatchFolded(a.data(), b.data(), a.size(), locale) == a.size();
}

/// The difference of the first two bytes that differ, folded or not; else -1, 0 or 1 by the lengths.
VOCORE_PRIVATE_EXPORT int Compare(std::string_view a, std::string_view b, bool exact, const LocaleRecord& locale);

/// The first match of a needle of one byte or more at or after `from`, or npos.
VOCORE_PRIVATE_EXPORT std::size_t FindExact(std::string_view text, std::string_view needle, std::size_t from);

/// The first match of a needle of one byte or more at or after `from` when both are folded, or npos.
VOCORE_PRIVATE_EXPORT std::size_t FindFolded(std::string_view text, std::string_view needle, std::size_t from,
                                             const LocaleRecord& locale);

/// A hash of the folded bytes.
VOCORE_PRIVATE_EXPORT std::size_t HashFolded(std::string_view text, const LocaleRecord& locale);

/// The text without its leading and trailing white space.
VOCORE_PRIVATE_EXPORT std::string_view Trimmed(std::string_view text, const LocaleRecord& locale);

/// A terminated text as bytes; null is empty.
inline std::string_view Terminated(const char* text)
{
    return text ? std::string_view(text) : std::string_view();
}

} // namespace vo::detail
