#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>

#include <cstddef>
#include <vector>

/// @file
/// The grammar of the command shell's lines, without any meaning.
///
/// Words stand apart by blanks. "..." keeps blanks and puts values in, a doubled quote within is one; '...' keeps all
/// as it is. A backslash is itself: it separates the names of paths. $name and ${name} stand for values, $$ for the
/// sign. [a, b c] is a list, its items apart by blanks and commas. What begins with # is a comment. name=... before any
/// quote names a parameter.

namespace vo::detail {

/// A part of a word.
struct ShellPiece
{
    VoString text; ///< Or the name of a value.
    bool isValue;  ///< Whether it stands for a value.
};

/// A word, or a list of words.
struct ShellWord
{
    std::size_t column = 0; ///< Of its first character, from 1; of that behind the "=" of a name.
    std::size_t offset = 0; ///< Of its first byte, from 0.
    VoString name;          ///< What stands before the first "=", when it could name a parameter.
    std::vector<ShellPiece> pieces;
    bool isQuoted = false; ///< Whether any part stood in quotes.
    bool isList = false;
    std::vector<ShellWord> items;
};

/// The words of a line.
/// @throws VoInvalidParameterException "Quote is not closed, at column " + number, and the same of "List" and "Value"
std::vector<ShellWord> ParseShellLine(const VoString& line);

/// Whether a character can stand in the name of a function, a parameter or a value.
bool IsShellNameCharacter(char c);

/// A text as a word of a line that stands for it.
VOCORE_PRIVATE_EXPORT VoString QuotedShellWord(const VoString& text);

} // namespace vo::detail
