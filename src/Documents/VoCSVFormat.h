#pragma once

#include <Core/VoString.h>

#include <cstdint>

/// How a CSV file is written, and how it is read where that matters.
struct VoCSVFormat
{
    /// What the bytes of a file stand for.
    enum class Encoding : std::int32_t
    {
        UTF8,
        UTF16LE,
        UTF16BE,
        UTF32LE,
        UTF32BE,
        Windows1252,
        ISO88591 ///< ISO 8859-1, Latin 1.
    };

    VoString separator = ",";               ///< Between fields; one byte or more, none a quote or a line break.
    char quote = '"';                       ///< Around fields that need it; doubled inside. ASCII.
    VoString newline = VoString::NewLine(); ///< Written behind each row: CRLF, LF or CR. All of them are read.
    bool byteOrderMark = false;             ///< Write a mark first, if the encoding has one. Readers skip one anyway.
    /// Write a "'" before a text that begins with "=", "+", "-" or "@" and is no number, so that no spreadsheet program
    /// takes it for a formula. Such a text does not read back as it was.
    bool guardFormulas = false;
    /// Of a file that is written, and of one that is read and begins with no byte-order mark, which would say it
    /// itself.
    Encoding encoding = Encoding::UTF8;
    /// Fractions are written "1,5", not "1.5"; the separator must have no comma then. In a file that is read, only the
    /// form that is chosen here is a number.
    bool decimalComma = false;
};
