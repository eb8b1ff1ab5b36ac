#pragma once

#include <Core/VoForward.h>
#include <XML/VoXMLValidator.h>

#include <libxml/tree.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class QXmlStreamReader;

namespace vo::detail {

/// The next element in document order, null behind the last.
xmlNode* NextElement(xmlNode* element);

/// A document as the tree that the schema component works on. The library's own parser makes it, so that there is one
/// set of limits, and no document of others reaches the component's parser.
class XMLTree
{
public:
    /// Reads a document through.
    /// @throws VoStackLimitException for one of more than MaximumXMLLevels
    explicit XMLTree(const VoString& document);

    /// Why the document is not well formed, or holds what cannot be known here; then the tree is not whole.
    const std::optional<VoXMLValidator::Error>& error() const { return m_error; }

    using Place = std::pair<std::int64_t, std::int64_t>; // line and column, both from 1
    /// Where the start tag of a node of this tree ends, of an attribute's element for an attribute; zeros for null.
    Place place(const xmlNode* node) const;

    xmlDoc* document() const { return m_document.get(); }
    xmlNode* root() const { return xmlDocGetRootElement(m_document.get()); }
    /// The tree as a document of UTF-8 without a document type and entities. The tree is of no use then.
    std::string takeText();

private:
    struct Free
    {
        void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
    };

    void read(const VoString& document);
    void open(const QXmlStreamReader& reader);
    void close();
    void addText();

    std::unique_ptr<xmlDoc, Free> m_document;
    xmlNode* m_open = nullptr;
    std::string m_text; // of the open element, up to here: pieces joined one by one would take quadratic time
    std::vector<Place> m_places;
    std::optional<VoXMLValidator::Error> m_error;
};

} // namespace vo::detail
