#pragma once

#include <Core/VoString.h>

#include <QtCore/QString>

#include <array>
#include <cstddef>
#include <memory>

namespace vo::detail {

/// The names of a document that is read, which repeats a few of them: converted once and shared. Keeps a bounded
/// number; a name beyond these is merely converted again.
class XMLReadNames
{
public:
    std::shared_ptr<const VoString> shared(QStringView name);

private:
    struct Entry
    {
        QString qtName;
        std::shared_ptr<const VoString> name;
    };

    std::array<Entry, 128> m_entries;
};

/// What may stand for the name of an element or attribute.
enum class XMLNameKind
{
    None,      ///< No name at all.
    Qualified, ///< A prefix and a local name.
    Local      ///< A name without a prefix.
};

/// What a text is as a name: by the characters that the standard allows, of those that the parser takes (none beyond
/// U+FFFF), so that what is written can be read.
XMLNameKind NameKind(const QString& name);

/// A name as it is passed to Qt.
struct XMLName
{
    QString text;
    XMLNameKind kind = XMLNameKind::None;
};

/// Converts and examines a name.
XMLName ToXMLName(const VoString& name);

/// The name of an element.
/// @throws VoInvalidXMLOperation "Character not allowed in XML" or "Invalid element name: " and the name, for one that
/// is none, and for one with a prefix when a namespace is given beside it
QString RequireElementName(const VoString& name, const XMLName& decoded, bool hasNamespace = false);
/// The name of an attribute.
/// @throws VoInvalidXMLAttributeName likewise
QString RequireAttributeName(const VoString& name, const XMLName& decoded, bool hasNamespace = false);

/// The namespace that the prefix "xml" always stands for.
inline QString XMLOwnNamespace()
{
    return QStringLiteral("http://www.w3.org/XML/1998/namespace");
}

/// The names of a document that is written: examined and converted once. Keeps a bounded number.
class XMLWrittenNames
{
public:
    XMLName decoded(const VoString& name);

private:
    struct Entry
    {
        std::string name;
        XMLName decoded;
    };

    std::array<Entry, 128> m_entries;
};

} // namespace vo::detail
