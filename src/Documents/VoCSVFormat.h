#pragma once

#include <Core/VoString.h>

/// How a CSV file is written, and how it is read where that matters.
struct VoCSVFormat
{
    VoString separator = ",";               ///< Between fields; one byte or more, none a quote or a line break.
    char quote = '"';                       ///< Around fields that need it; doubled inside.
    VoString newline = VoString::NewLine(); ///< Written behind each row. All of CRLF, LF and CR are read.
    bool byteOrderMark = false;             ///< Write the UTF-8 mark first. Readers skip one anyway.
    /// Write a "'" before a text that begins with "=", "+", "-" or "@" and is no number, so that no spreadsheet program
    /// takes it for a formula. Such a text does not read back as it was.
    bool guardFormulas = false;
};
