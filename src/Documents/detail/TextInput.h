#pragma once

#include <Core/VoForward.h>
#include <Documents/detail/TextEncoding.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace vo::detail {

/// A place in a text; both count from 1.
struct TextPlace
{
    std::size_t line = 1;   ///< Ended by CRLF, LF or CR.
    std::size_t column = 1; ///< In characters.

    void advance(std::string_view text); ///< Behind a text, which may end within a character or a CRLF.

private:
    char m_last = 0;
};

/// The bytes of a device as UTF-8. A byte-order mark at its beginning is skipped and says how they are encoded,
/// whatever was expected.
class TextInput
{
public:
    TextInput(VoIODevice& device, TextEncoding expected); ///< The device stays alive.

    /// Reads into memory of at least 16 bytes, and returns how many; 0 at the end, and at bytes that are no character.
    std::size_t readInto(char* target, std::size_t room);

    /// Whether the input ended at bytes that are no character: readInto() goes no further.
    bool isBroken() const noexcept { return m_isBroken && m_decoded.empty(); }
    TextEncoding encoding() const noexcept { return m_encoding; } ///< That found, once something was read.
    const TextPlace& place() const noexcept { return m_place; }   ///< Behind what was read.
    std::size_t bytesTaken() const noexcept { return m_taken; }   ///< From the device.

private:
    void readMark();
    std::size_t take(char* target, std::size_t room);
    std::size_t readUTF8(char* target, std::size_t room);
    std::size_t readDecoded(char* target, std::size_t room);
    void decodeMore();

    VoIODevice& m_device;
    TextEncoding m_encoding;
    std::string m_raw;     // bytes from the device that are no whole character yet
    std::string m_decoded; // UTF-8 that had no room
    TextPlace m_place;
    std::size_t m_taken = 0;
    bool m_hasReadMark = false;
    bool m_isAtEnd = false; // of the device
    bool m_isBroken = false;
};

} // namespace vo::detail
