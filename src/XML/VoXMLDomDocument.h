#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <XML/VoXMLStreamWriter.h>

#include <memory>

class QDomElement;
class VoXMLElementWriter;

/// An XML document as a tree in memory, for documents that are changed in place or read in any order.
///
///     VoXMLDomDocument document;
///     document.load(path);
///     VoXMLDomElementReader settings(document.root());
///     VoXMLDomElementWriter(document.root()).createElement("item")->writeText("text");
///     document.save(path);
///
/// The tree is Qt's and is changed through root(), element writers and Qt's own classes. Elements, attributes, texts
/// with all their white space, CDATA sections, comments, processing instructions and declarations of namespaces come
/// back from save() as load() read them; the order of attributes becomes that of their names, entities are expanded and
/// a document type is left out.
///
/// A document belongs to one thread.
class VOCORE_EXPORT VoXMLDomDocument
{
public:
    VoXMLDomDocument(); ///< Without a root element.
    VoXMLDomDocument(const VoXMLDomDocument&) = delete;
    VoXMLDomDocument& operator=(const VoXMLDomDocument&) = delete;
    VoXMLDomDocument(VoXMLDomDocument&& other) noexcept;            ///< Leaves `other` without a root.
    VoXMLDomDocument& operator=(VoXMLDomDocument&& other) noexcept; ///< Leaves `other` without a root.
    ~VoXMLDomDocument();                                            ///< Elements that others hold stay alive.

    /// Reads the rest of a device's content, which becomes the tree; elements of the tree before it stay what they are
    /// for those who hold them. The device is opened for reading unless it is already, and closed if this opened it.
    /// After a failure the document is as it was.
    ///
    /// Throws what VoXMLStreamReader throws, within its limits, VoStackLimitException for more than 1000 levels, and
    /// VoInvalidXMLException "Entity is not in the document: " and its name for one that is not declared in it. One
    /// that is declared to stand elsewhere is never fetched and counts for nothing, as for the stream reader.
    void load(VoIODevice& device);
    /// The same from a file.
    /// @throws VoFileNotFoundException, VoCannotOpenFileException too
    void load(const VoFilePath& file);

    /// Writes the document with its XML declaration, in UTF-8. The device is opened for writing unless it is already,
    /// and closed if this opened it. Lines are broken and indented where elements have no text around them.
    /// @throws VoNullDomElementException without a root, the device's failure, and, for what Qt's classes were made to
    /// put into the tree
    /// @throws VoInvalidXMLOperation, VoInvalidXMLAttributeName as the stream writer does
    void
    save(VoIODevice& device,
         const VoXMLStreamWriter::AutoFormattingSettings& settings = VoXMLStreamWriter::AutoFormattingSettings()) const;
    /// The same, replacing a file atomically: after a failure it is as it was. Throws as VoAtomicFileWriter too.
    void
    save(const VoFilePath& file,
         const VoXMLStreamWriter::AutoFormattingSettings& settings = VoXMLStreamWriter::AutoFormattingSettings()) const;
    /// What save() writes.
    VoString toString(
        const VoXMLStreamWriter::AutoFormattingSettings& settings = VoXMLStreamWriter::AutoFormattingSettings()) const;

    bool hasRoot() const; ///< Whether there is a root element.
    /// The root element, which shares its content with the document.
    /// @throws VoNullDomElementException without one
    QDomElement root() const;
    /// Makes the root element.
    /// @throws VoInvalidXMLOperation "Document has a root element already", or for a name that XML does not allow
    std::unique_ptr<VoXMLElementWriter> createRoot(const VoString& name);
    /// The same in a namespace.
    std::unique_ptr<VoXMLElementWriter> createRoot(const VoString& name, const VoString& namespaceUri);

private:
    struct Private;

    Private& state();

    std::unique_ptr<Private> m_private;
};
