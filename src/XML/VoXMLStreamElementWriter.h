#pragma once

#include <XML/VoXMLElementWriter.h>

class VoXMLStreamWriter;

/// The handle of one open element of a VoXMLStreamWriter. Destroying it closes the element, together with children left
/// open in it.
///
/// A handle is active while its element is the innermost open one. An inactive one refuses every call with
/// VoInvalidXMLOperation; it never becomes dangling, also when the writer goes first.
class VOCORE_EXPORT VoXMLStreamElementWriter : public VoXMLElementWriter
{
public:
    /// For the writer, which also opens the element. A handle made by others is never active, and its writer must
    /// outlive it.
    /// @throws VoNullPointerException "Invalid parent" for null
    explicit VoXMLStreamElementWriter(VoXMLStreamWriter* parent);
    VoXMLStreamElementWriter(const VoXMLStreamElementWriter&) = delete;
    VoXMLStreamElementWriter& operator=(const VoXMLStreamElementWriter&) = delete;
    /// Closes the element if it is open. Does not throw: VoXMLStreamWriter::finishDocument() reports failures.
    ~VoXMLStreamElementWriter() override;

    /// Opens a child element in a namespace.
    /// @throws VoInvalidXMLOperation "Invalid attempt to start element" when this handle is not active
    std::unique_ptr<VoXMLElementWriter> createElement(const VoString& name, const VoString& namespaceUri) override;
    /// Opens a child element by a name that is written as it is; otherwise as above.
    std::unique_ptr<VoXMLElementWriter> createElement(const VoString& name) override;

    /// Cuts the handle off from its writer: it is inactive from now on and closes nothing.
    void disable();

protected:
    /// @throws VoInvalidXMLOperation "Invalid attempt to write attribute" when this handle is not active
    /// @throws VoInvalidXMLAttributeName for a repeated name
    void onWriteAttribute(const VoString& name, const VoString& value, const VoString& namespaceUri) override;
    /// The same without a namespace.
    void onWriteAttribute(const VoString& name, const VoString& value) override;
    /// @throws VoInvalidXMLOperation "Invalid attempt to write text" when this handle is not active
    void onWriteText(const VoString& text) override;

private:
    struct Private;

    void requireActive(const char* message) const;
    void requireNewAttribute(const VoString& name) const;

    std::unique_ptr<Private> m_private;
};
