#pragma once

#include <algorithm>
#include <cstddef>
#include <locale>

/// @file
/// A locale of the tests' own: a bare machine has no named locale that folds or classifies differently from the classic
/// one.

namespace vo::test {

/// Beside ASCII, bytes 0xC0-0xDE have lower cases 0x20 further on, "[" has "{", "_" is white space and "#" is upper
/// case.
class OddCharacters : public std::ctype<char>
{
public:
    OddCharacters()
        : std::ctype<char>(Table())
    {
    }

    static std::locale Locale() { return std::locale(std::locale::classic(), new OddCharacters); }

protected:
    char do_tolower(char c) const override
    {
        const auto byte = static_cast<unsigned char>(c);
        const bool isUpper = (byte >= 'A' && byte <= 'Z') || byte == '[' || (byte >= 0xC0 && byte <= 0xDE);
        return isUpper ? static_cast<char>(byte + 0x20) : c;
    }

private:
    struct Masks
    {
        mask ofByte[table_size];

        Masks()
        {
            std::copy_n(classic_table(), table_size, ofByte);
            ofByte[static_cast<unsigned char>('_')] = space;
            ofByte[static_cast<unsigned char>('#')] = upper;
        }
    };

    static const mask* Table()
    {
        static const Masks masks;
        return masks.ofByte;
    }
};

/// Makes a locale the global one while it lives.
class ScopedGlobalLocale
{
public:
    explicit ScopedGlobalLocale(const std::locale& locale)
        : m_previous(std::locale::global(locale))
    {
    }
    ~ScopedGlobalLocale() { std::locale::global(m_previous); }
    ScopedGlobalLocale(const ScopedGlobalLocale&) = delete;
    ScopedGlobalLocale& operator=(const ScopedGlobalLocale&) = delete;

private:
    std::locale m_previous;
};

} // namespace vo::test
