#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoSharedPtr.h>

#include <cstdint>
#include <memory>

class VoXMLStreamElementWriter;

namespace vo::detail {
class XMLMarkup;
}

/// Writes an XML document forwards, in one pass, onto an I/O device, and refuses what would not be well formed.
///
///     VoXMLStreamWriter writer(path, true);
///     writer.startDocument();
///     {
///         auto root = writer.createElement("root");
///         root->writeAttribute("id", "1");
///         root->createElement("item")->writeText("text");
///     }
///     writer.finishDocument();
///
/// Text and attribute values are UTF-8 and are escaped as needed; bytes that are not UTF-8 become U+FFFD. A character
/// that no XML document can hold (U+0000 to U+001F except tab, line feed and carriage return, U+FFFE, U+FFFF) is
/// refused with VoInvalidXMLOperation "Character not allowed in XML" before anything is written. A carriage return in a
/// text is written as it is and reads back as a line feed, as XML prescribes.
///
/// Failures of the device: output is gathered in blocks, so a failure may show at a later call than the one whose
/// output it concerns. The first one is kept; from then on nothing more reaches the device and every call that writes
/// rethrows it. Destructors, also those of element handles, swallow it; finishDocument() rethrows it, so a document
/// whose finishDocument() returned was taken by the device in full.
///
/// Any other failed call leaves the writer as it was. A writer and its handles belong to one thread.
class VOCORE_EXPORT VoXMLStreamWriter
{
public:
    /// Line breaks and indentation between elements.
    struct VOCORE_EXPORT AutoFormattingSettings
    {
        AutoFormattingSettings();                                          ///< Everything on one line.
        AutoFormattingSettings(bool formatting);                           ///< Indents by one tab a level if true.
        AutoFormattingSettings(bool formatting, std::int32_t indentation); ///< Sets both.

        /// @name Copies and moves
        /// @{
        AutoFormattingSettings(const AutoFormattingSettings& other);                ///< The same settings.
        AutoFormattingSettings(AutoFormattingSettings&& other) noexcept;            ///< The same settings.
        AutoFormattingSettings& operator=(const AutoFormattingSettings& other);     ///< The same settings.
        AutoFormattingSettings& operator=(AutoFormattingSettings&& other) noexcept; ///< The same settings.
        ~AutoFormattingSettings();                                                  ///< Nothing to release.
        /// @}

        bool autoFormatting = false; ///< Each element on a line of its own.
        /// Width of a level: that many spaces, or, when negative, that many tabs.
        std::int32_t indent = -1;
    };

    /// Writes to a device that the caller keeps alive. The device is opened for writing unless it is already, and is
    /// closed by finishDocument() or the destructor either way.
    /// @throws VoIOException with the reason when it cannot be opened
    VoXMLStreamWriter(VoIODevice& device, const AutoFormattingSettings& settings = AutoFormattingSettings());
    /// The same, keeping the device alive.
    /// @throws VoNullPointerException when it is null
    VoXMLStreamWriter(VoSharedPtr<VoIODevice> device,
                      const AutoFormattingSettings& settings = AutoFormattingSettings());
    /// Writes a file, replacing its content at once (a caller that needs the old content until the new one is whole
    /// writes through VoAtomicFileWriter).
    /// @throws VoCannotOpenFileException
    VoXMLStreamWriter(const VoFilePath& path, const AutoFormattingSettings& settings = AutoFormattingSettings());
    VoXMLStreamWriter(const VoXMLStreamWriter&) = delete;
    VoXMLStreamWriter& operator=(const VoXMLStreamWriter&) = delete;
    /// Closes the device. An unfinished document stays truncated where it stood: no end tags are written. Handles still
    /// alive become inert.
    virtual ~VoXMLStreamWriter();

    /// Writes the XML declaration with version 1.0 and encoding UTF-8. Optional, but nothing may precede it: throws
    /// VoInvalidXMLOperation "Attempting to create document when already created".
    void startDocument();
    /// The same with another version text.
    void startDocument(const VoString& version);

    /// Opens an element without a handle, in the element that is open. The name may have a prefix that is declared
    /// around it.
    /// @throws VoInvalidXMLOperation "Invalid attempt to start element" after finishDocument(), "Invalid element name:
    /// " and the name for one that XML does not allow
    void startElement(const VoString& name);
    /// Opens an element and returns the handle that closes it. Fails as startElement().
    std::unique_ptr<VoXMLStreamElementWriter> createElement(const VoString& name);
    /// Opens an element in a namespace, by its local name. A namespace without a declared prefix is declared anew on
    /// each element. With an empty one it is as without.
    std::unique_ptr<VoXMLStreamElementWriter> createElement(const VoString& name, const VoString& namespaceUri);

    /// Writes an attribute on the element whose start tag was written last. Repeated names are noticed by element
    /// handles only.
    /// @throws VoInvalidXMLAttributeName for a name that XML does not allow
    /// @throws VoInvalidXMLOperation "Illegal attribute write" when no start tag is open, "Too many attributes" for
    /// more than 4096 on one element, which no reader of the library would take
    void writeAttribute(const VoString& name, const VoString& value);
    /// The same in a namespace, by the local name; in none when the namespace is empty.
    void writeAttribute(const VoString& name, const VoString& value, const VoString& namespaceUri);
    /// Writes the text of the element whose start tag was written last: one run, directly after the attributes.
    /// @throws VoInvalidXMLOperation "Illegal write text call"
    void writeText(const VoString& text);

    /// Declares a prefix on the open start tag or, without one, on the next element. The state is not checked.
    /// @throws VoInvalidXMLOperation "Invalid namespace prefix: " and the prefix for one that XML does not allow; an
    /// empty one is made up
    void writeNamespace(const VoString& namespaceUri, const VoString& prefix);
    /// Declares the default namespace on the open start tag or, without one, on the next element. Not checked either.
    void writeDefaultNamespace(const VoString& namespaceUri);

    /// Closes the innermost open element; its handle, if any, becomes inert. Does nothing without an open element.
    void finishElement();
    /// Closes every element down to and including that one; does nothing when it is not open. Null closes down to the
    /// outermost element that was opened without a handle.
    void finishElement(const VoXMLStreamElementWriter* element);
    /// Closes all open elements, hands everything to the device and closes it. Handles still alive become inert.
    /// Rethrows the first failure of the device; the document counts as finished even then. Further calls do nothing.
    void finishDocument();

    /// True if that handle's element is the innermost open one. Null stands for an element without a handle, and for no
    /// open element at all.
    bool isCurrent(const VoXMLStreamElementWriter* element) const;

private:
    friend class VoXMLStreamElementWriter;
    friend class vo::detail::XMLMarkup;
    struct Private;

    void closeAfterHandle(const VoXMLStreamElementWriter* element) noexcept;

    std::unique_ptr<Private> m_private;
};
