#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoSharedPtr.h>
#include <XML/VoXMLAttributeSet.h>

#include <cstddef>
#include <memory>
#include <string_view>

class VoXMLStreamElementReader;

/// Reads an XML document forwards, once, from an I/O device, and hands out one element reader for each start tag.
///
///     VoXMLStreamReader reader(path);
///     auto root = reader.nextElement();
///     for (auto child : root->children())
///         use(child->name(), child->readText());
///
/// A document that is not well formed, a truncated one included, makes the reading member throw VoInvalidXMLException
/// with the parser's text; line and column are logged (category "xml", diagnostic). A failure of the device is rethrown
/// as it is. After either the reader answers every further step with the same exception; restart() mends the first kind
/// only.
///
/// Entities defined in the document are expanded within the parser's limit; external ones are never fetched. Element
/// readers may outlive their reader: they then behave as closed. A reader belongs to one thread.
class VOCORE_EXPORT VoXMLStreamReader
{
public:
    /// Kinds of token, with the numbers of the underlying parser up to 9.
    enum TokenType : int
    {
        NoToken = 0,         ///< Nothing read yet.
        Invalid = 1,         ///< Not well formed.
        StartDocument = 2,   ///< The XML declaration, given or implied.
        EndDocument = 3,     ///< The end of the document.
        StartElement = 4,    ///< A start tag.
        EndElement = 5,      ///< An end tag.
        Characters = 6,      ///< Character data.
        Comment = 7,         ///< A comment.
        DTD = 8,             ///< A document type declaration.
        EntityReference = 9, ///< An entity that could not be resolved.
        Unknown = 11         ///< Anything else: a processing instruction.
    };

    /// Reads from a device that the caller keeps alive; it is opened for reading unless it is already, and closed by
    /// the destructor if this reader opened it. Throws what opening throws (VoFileNotFoundException for a missing
    /// file), or VoIOException with the reason.
    explicit VoXMLStreamReader(VoIODevice& device);
    /// The same, keeping the device alive.
    /// @throws VoNullPointerException when it is null
    explicit VoXMLStreamReader(VoSharedPtr<VoIODevice> device);
    /// Reads a file.
    /// @throws VoFileNotFoundException, VoCannotOpenFileException
    explicit VoXMLStreamReader(const VoFilePath& file);
    /// Reads a file that has first been validated; fails as VoXMLValidator::validate() too.
    VoXMLStreamReader(const VoFilePath& file, const VoFilePath& schema);
    VoXMLStreamReader(const VoXMLStreamReader&) = delete;
    VoXMLStreamReader& operator=(const VoXMLStreamReader&) = delete;
    virtual ~VoXMLStreamReader(); ///< Element readers still alive become closed.

    /// Reads one token and opens or closes the element it starts or ends. At the end of the document it keeps returning
    /// EndDocument.
    TokenType next();
    /// Goes on to the next start tag, at whatever depth; null at the end of the document. Gives up with null after
    /// 10,000,000 tokens without a start tag.
    std::shared_ptr<VoXMLStreamElementReader> nextElement();
    /// Goes on to the next start tag within the current element. Null at its end tag, which is consumed.
    std::shared_ptr<VoXMLStreamElementReader> nextElementInElement();
    /// Goes on to the next start tag of that name, compared without regard to case; null at the end of the document.
    std::shared_ptr<VoXMLStreamElementReader> scan(const VoString& name);
    /// Goes back to the start of the document; every element reader given out so far becomes closed. Of no use on a
    /// device that cannot seek: the document is then read on from where it stands.
    void restart();

    /// The first run of text that lies directly in the current element, untrimmed; empty when there is none, and then
    /// the element is closed. A second call returns the same run again.
    /// @throws VoInvalidXMLOperation "ReadText called outside of element"
    VoString readText();
    /// The remaining content of the current element as XML text; for diagnosis. The element is closed.
    /// @throws VoNullXMLStreamElementException when none is open
    VoString readAsText();
    /// The current element with its attributes and its content as XML text, for diagnosis; the element is closed. Empty
    /// at the start of the document and at an end tag.
    /// @throws VoXMLException with errorString() at any other token
    VoString toString();

    TokenType tokenType() const;       ///< Kind of the current token.
    VoString elementName() const;      ///< Local name of the current start or end tag, or the entity's; else empty.
    VoString errorString() const;      ///< The parser's error text; empty without an error.
    VoXMLAttributeSetPtr attributes(); ///< A new set of the current start tag's attributes.

    VoXMLPath currentPath() const; ///< Path of the innermost open element; empty without one.
    /// The innermost open element.
    /// @throws VoNullXMLStreamElementException when there is none
    std::shared_ptr<VoXMLStreamElementReader> currentElement();
    /// The shared pointer of an open element.
    /// @throws VoNullXMLStreamElementException when it is not open
    std::shared_ptr<VoXMLStreamElementReader> getSharedPointer(const VoXMLStreamElementReader* element) const;
    /// @name Questions about an element reader
    /// @{
    bool isActive(const VoXMLStreamElementReader* element) const; ///< True for the innermost open element.
    bool isValid(const VoXMLStreamElementReader* element) const;  ///< True for an open element.
    bool isValid(const std::shared_ptr<VoXMLStreamElementReader>& element) const; ///< True for an open element.
    bool isValid(std::nullptr_t) const;                                           ///< False.
    /// @}

private:
    friend class VoXMLLoaderOLD;
    struct Private;

    std::string_view openPath() const; // of the innermost open element, until the next step

    std::unique_ptr<Private> m_private;
};
