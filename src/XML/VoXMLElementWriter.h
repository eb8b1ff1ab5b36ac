#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <memory>

/// Writes one element of an XML document: first its attributes, then either one run of text or its child elements.
///
/// Code that writes XML takes this interface, so that it can write to a stream (VoXMLStreamElementWriter) as well as
/// into a DOM tree (VoXMLDomElementWriter). Values keep their form in every implementation: doubles become the Base64
/// text of their bits and survive unchanged.
///
/// Use in this order:
///
///     auto item = parent.createElement("item");
///     item->writeAttribute("id", id);
///     item->writeText(name);               // or children, through item->createElement
///     item.reset();                        // closes the element
class VOCORE_EXPORT VoXMLElementWriter
{
public:
    VoXMLElementWriter(); ///< For implementations.
    /// @name Copies of the interface carry nothing
    /// @{
    VoXMLElementWriter(const VoXMLElementWriter& other);            ///< Nothing to copy.
    VoXMLElementWriter& operator=(const VoXMLElementWriter& other); ///< Nothing to copy.
    /// @}
    virtual ~VoXMLElementWriter(); ///< A stream's implementation closes its element.

    /// Opens a child element in a namespace and returns its writer, which the caller owns. The child is to be let go
    /// before anything else is written to this element. With an empty namespace it is as without.
    /// @throws VoInvalidXMLOperation "Invalid element name: " and the name for one that XML does not allow
    virtual std::unique_ptr<VoXMLElementWriter> createElement(const VoString& name, const VoString& namespaceUri) = 0;
    /// Opens a child element by a name that stands in the document as it is: without a prefix it belongs to the default
    /// namespace that is declared around it, if any. Otherwise as above.
    virtual std::unique_ptr<VoXMLElementWriter> createElement(const VoString& name) = 0;

    /// Writes an attribute in a namespace.
    /// @throws VoInvalidXMLAttributeName for a name that XML does not allow or one that this element already has,
    /// compared without regard to case and namespace
    /// @throws VoInvalidXMLOperation "Too many attributes" beyond 4096
    void writeAttribute(const VoString& name, const VoString& value, const VoString& namespaceUri);
    /// Writes an attribute without a namespace; otherwise as above.
    void writeAttribute(const VoString& name, const VoString& value);
    /// Writes the text of the element, escaped as needed; once only, before any child.
    void writeText(const VoString& text);

    /// Writes the Base64 text of a double's bits as an attribute in a namespace.
    void writeAttributeBase64(const VoString& name, const double& value, const VoString& namespaceUri);
    /// Writes the Base64 text of a double's bits as an attribute.
    void writeAttributeBase64(const VoString& name, const double& value);
    /// Writes the Base64 text of a double's bits as the text of the element.
    void writeTextBase64(const double& value);

protected:
    /// Does the work of writeAttribute() with a namespace.
    virtual void onWriteAttribute(const VoString& name, const VoString& value, const VoString& namespaceUri) = 0;
    /// Does the work of writeAttribute() without a namespace.
    virtual void onWriteAttribute(const VoString& name, const VoString& value) = 0;
    /// Does the work of writeText().
    virtual void onWriteText(const VoString& text) = 0;
};
