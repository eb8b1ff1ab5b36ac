#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoSharedPtr.h>
#include <XML/VoStreamXMLElementReader.h>

#include <memory>
#include <optional>

/// Reads an XML document forwards for the rule-driven loader: the discipline and the failures of VoXMLStreamReader,
/// with elements that know their path.
///
/// Belongs to one thread. Element readers may outlive it: they then behave as closed.
class VOCORE_EXPORT VoStreamXMLReader
{
public:
    /// Whether a document may bring a document type declaration.
    enum class DocumentTypes
    {
        Accept, ///< Entities are expanded within the parser's limit; external ones are never fetched.
        Refuse  ///< VoInvalidXMLException "Document type declarations are not allowed".
    };

    /// Reads from a device that the caller keeps alive; it is opened for reading unless it is already, and closed by
    /// the destructor if this reader opened it. Throws what opening throws, or VoIOException with the device's last
    /// error.
    explicit VoStreamXMLReader(VoIODevice& device, DocumentTypes documentTypes = DocumentTypes::Accept);
    /// The same, keeping the device alive.
    /// @throws VoNullPointerException when it is null
    explicit VoStreamXMLReader(VoSharedPtr<VoIODevice> device, DocumentTypes documentTypes = DocumentTypes::Accept);
    /// Reads a file.
    /// @throws VoFileNotFoundException, VoCannotOpenFileException
    explicit VoStreamXMLReader(const VoFilePath& file, DocumentTypes documentTypes = DocumentTypes::Accept);
    VoStreamXMLReader(const VoStreamXMLReader&) = delete;
    VoStreamXMLReader& operator=(const VoStreamXMLReader&) = delete;
    virtual ~VoStreamXMLReader(); ///< Element readers still alive become closed.

    /// Goes on to the next start tag, at whatever depth; empty at the end of the document.
    /// @throws VoInvalidXMLException for a document that is not well formed
    std::optional<VoStreamXMLElementReader> nextElement();
    /// The innermost open element.
    /// @throws VoNullXMLStreamElementException when there is none
    VoStreamXMLElementReader currentElement() const;
    /// The namespace of the element whose start or end tag was read last; empty for none.
    VoString namespaceUri() const;
    /// Reads to the end of the document, closing everything, so that whatever is wrong behind the part read so far
    /// shows.
    void finish();
    VoString position() const; ///< Path, line and column where reading stands, for messages.

private:
    struct Private;

    std::unique_ptr<Private> m_private;
};
