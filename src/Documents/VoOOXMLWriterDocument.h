#pragma once

#include <Core/VoExport.h>
#include <Core/VoWeakPtr.h>

#include <memory>

class VoIODevice;
class VoXMLStreamWriter;

/// One document of a package that a VoOOXMLWriter writes: an XML stream onto a device that somebody else keeps alive.
///
/// Copies share the document. It ends with close(), which the package's writer calls; dropping the last copy before
/// leaves the XML as it stands.
class VOCORE_EXPORT VoOOXMLWriterDocument
{
public:
    /// Opens the device for writing unless it is already. A device that is gone makes a document that is not alive.
    /// @throws VoIOException with the reason when the device cannot be opened
    explicit VoOOXMLWriterDocument(VoWeakPtr<VoIODevice> device);
    /// Share the document; a moved-from one is not alive.
    /// @{
    VoOOXMLWriterDocument(const VoOOXMLWriterDocument& other);
    VoOOXMLWriterDocument(VoOOXMLWriterDocument&& other) noexcept;
    VoOOXMLWriterDocument& operator=(const VoOOXMLWriterDocument& other);
    VoOOXMLWriterDocument& operator=(VoOOXMLWriterDocument&& other) noexcept;
    /// @}
    virtual ~VoOOXMLWriterDocument(); ///< Completes nothing.

protected:
    /// Writes the end of the document. Called by close() while the document is alive.
    virtual void onClose();

public:
    /// Completes the document, closes the device and lets go of it, also when that throws. Does nothing to a document
    /// that is not alive. Throws what completing throws, failures of the device among them.
    void close();
    /// Whether the device is there and the document has not been closed.
    bool isAlive() const noexcept;

protected:
    /// The document's XML.
    /// @throws VoInvalidCallException "Document writer has no valid device"
    VoXMLStreamWriter& writer();

private:
    struct Private;
    std::shared_ptr<Private> m_private;
};
