#pragma once

#include <Core/VoForward.h>
#include <XML/VoXMLValidator.h>

#include <QtCore/QString>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace vo::detail {

/// Where the elements of a document lie in its text.
class XMLOutline
{
public:
    /// Reads a document through.
    /// @throws VoStackLimitException for one of more than MaximumXMLLevels
    explicit XMLOutline(const VoString& document);

    /// Why the document is not well formed.
    const std::optional<VoXMLValidator::Error>& error() const { return m_error; }
    bool isUtf8() const { return m_isUtf8; }

    using Index = std::size_t; // in document order
    /// The element whose start tag ends there.
    std::optional<Index> elementAt(std::int64_t line, std::int64_t column) const;
    /// What an element lies in; nothing for the root.
    std::optional<Index> parent(Index element) const { return m_elements[element].parent; }
    /// Leaves an element out of the document's text: blanks stand in its place, so that all else keeps its own.
    void leaveOut(Index element, QString& text) const;

private:
    using Place = std::pair<std::int64_t, std::int64_t>; // line and column
    struct Element
    {
        std::optional<Index> parent;
        Place place;
        int startTagEnd; // in characters
        int end;
    };

    std::vector<Element> m_elements; // in document order
    std::optional<VoXMLValidator::Error> m_error;
    bool m_isUtf8 = true;
};

} // namespace vo::detail
