#pragma once

#include <XML/VoXMLElementWriter.h>

#include <cstddef>

class QDomElement;

/// Writes one element of a DOM tree, by the same rules as the stream writer: attributes first, no name twice, then one
/// run of text or child elements. The tree, saved and read again, is the document that the stream writer would write.
///
/// A namespace that the tree does not declare around the element gets a prefix ("n1", "n2"), with which elements and
/// attributes declare it by themselves. A tree has no order of attributes.
///
/// Elements that are written may be kept and written to in any order; destroying a writer changes nothing in the tree.
class VOCORE_EXPORT VoXMLDomElementWriter : public VoXMLElementWriter
{
public:
    /// Writes into an element of the caller's document, which shares its content.
    /// @throws VoNullDomElementException for a null element
    explicit VoXMLDomElementWriter(const QDomElement& element);
    VoXMLDomElementWriter(const VoXMLDomElementWriter&) = delete;
    VoXMLDomElementWriter& operator=(const VoXMLDomElementWriter&) = delete;
    ~VoXMLDomElementWriter() override; ///< Leaves the tree as it is.

    /// Appends a child element in a namespace.
    /// @throws VoInvalidXMLOperation as the stream writer does for names and characters
    /// @throws VoStackLimitException below the 1000th level, since trees are released level within level
    std::unique_ptr<VoXMLElementWriter> createElement(const VoString& name, const VoString& namespaceUri) override;
    /// Appends a child element by its name as it stands; otherwise as above.
    std::unique_ptr<VoXMLElementWriter> createElement(const VoString& name) override;

    const QDomElement& element() const; ///< The element of the tree.

protected:
    /// @throws VoInvalidXMLAttributeName for a name that XML does not allow or a repeated one
    /// @throws VoInvalidXMLOperation "Illegal attribute write" when the element has text or children, "Too many
    /// attributes" beyond 4096
    void onWriteAttribute(const VoString& name, const VoString& value, const VoString& namespaceUri) override;
    /// The same without a namespace.
    void onWriteAttribute(const VoString& name, const VoString& value) override;
    /// @throws VoInvalidXMLOperation "Illegal write text call" when the element has text or children
    void onWriteText(const VoString& text) override;

private:
    struct Private;

    VoXMLDomElementWriter(const QDomElement& element, std::size_t level);

    std::unique_ptr<Private> m_private;
};
