#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

/// @file
/// Texts on their way to and from Qt's XML classes, and the check that XML can hold them.

namespace vo::detail {

/// All bytes read as UTF-8: zero bytes and a leading U+FEFF are kept, bytes that are not UTF-8 become U+FFFD.
/// @throws VoOverflowException for a text beyond what QString can hold
QString ToQtText(const VoString& text);

/// The UTF-8 form of a text.
VoString FromQtText(QStringView text);

/// Whether XML takes the character for white space.
inline bool IsXMLBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// True unless the text has a character that no XML document can hold, not even escaped: U+0000 to U+001F except tab,
/// line feed and carriage return, U+FFFE, U+FFFF.
VOCORE_PRIVATE_EXPORT bool IsXMLText(const VoString& text);

/// @throws VoInvalidXMLOperation "Character not allowed in XML" unless IsXMLText()
void RequireXMLText(const VoString& text);

} // namespace vo::detail
