#pragma once

#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <XML/VoXMLAttributeSet.h>
#include <XML/detail/XMLDevice.h>
#include <XML/detail/XMLNames.h>

#include <QtCore/QXmlStreamReader>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class VoXMLStreamElementReader;

namespace vo::detail {

class XMLReadEngine;

/// One element met by an XMLReadEngine. The engine's stack and the element readers handed out share it.
struct XMLElementState
{
    std::shared_ptr<const VoString> name; ///< Never null.
    VoXMLAttributeSet attributes;

    XMLReadEngine* engine = nullptr; ///< Null once the element is closed or the engine gone.
    std::size_t depth = 0;           ///< Index in the engine's stack.
    std::size_t declarations = 0;    ///< Namespaces declared by it and all it lies in.
    std::size_t pathLength = 0;      ///< While open: how much of the engine's path is this element's.
    /// Once closed: what it lies in, if anything but the engine was left to ask for the path. A path of its own for
    /// each level kept would take memory with the square of the depth.
    std::shared_ptr<XMLElementState> closedParent;
    bool isReadToEnd = false; ///< Closed because its own text or children were asked for, not from outside.

    /// What VoXMLStreamReader hands out for the element; only while it is open.
    std::shared_ptr<VoXMLStreamElementReader> reader;

    XMLElementState() = default;
    XMLElementState(const XMLElementState&) = delete;
    XMLElementState& operator=(const XMLElementState&) = delete;
    ~XMLElementState();

    bool isOpen() const { return engine != nullptr; }
    bool isCurrent() const;
    std::string path() const; ///< The names from the root down, joined by "/".
};

/// Reads a document forwards over Qt's parser and keeps the stack of open elements: the common part of
/// VoXMLStreamReader and VoStreamXMLReader.
///
/// Every step throws VoInvalidXMLException with Qt's text for a document that is not well formed, and rethrows what the
/// device threw; it then does so again at each further step. Nothing here recurses, so depth costs memory only.
class XMLReadEngine
{
public:
    using Token = QXmlStreamReader::TokenType;
    using Element = std::shared_ptr<XMLElementState>;

    explicit XMLReadEngine(XMLDevice device);
    XMLReadEngine(const XMLReadEngine&) = delete;
    XMLReadEngine& operator=(const XMLReadEngine&) = delete;
    ~XMLReadEngine(); ///< Closes all elements still open.

    void refuseDocumentTypes(); ///< From now on a document type declaration counts as an error of the document.

    Token next();              ///< One token; opens or closes its element. Stays at EndDocument.
    bool nextStart();          ///< To the next start tag; false at the end of the document.
    bool nextStartInElement(); ///< To the next start tag in the current element; false behind its end tag.
    VoString directText(const Element& element); ///< First run of text directly in an open element, closing it without.
    VoString remainingMarkup();                  ///< The rest of the current element as XML text; closes it.
    VoString currentMarkup();                    ///< The start tag just read, the rest of its element and its end tag.
    void finish();                               ///< To the end of the document.
    void restart();

    /// @name Steps of one element
    /// The caller holds a share of the element that outlasts the step: its reader may end in it.
    /// @{
    /// To the next start tag in an element, after skipping a child still open in it; false behind the element's end
    /// tag.
    /// @throws VoInvalidXMLOperation for a closed element
    static bool NextChild(const Element& element);
    /// The trimmed text of the innermost open element.
    /// @throws VoInvalidXMLOperation with the message for any other
    static VoString ReadText(const Element& element, const char* inactiveMessage);
    /// @}

    const QXmlStreamReader& qt() const { return m_qt; }
    const std::vector<Element>& stack() const { return m_stack; }

    /// The path of an open element; valid until the next step.
    std::string_view path(const XMLElementState& element) const
    {
        return std::string_view(m_path).substr(0, element.pathLength);
    }
    /// Where reading stands, for the log: path and line.
    VoString position() const;
    /// The attributes of the current start tag.
    VoXMLAttributeSet attributes();

private:
    [[noreturn]] void fail();
    [[noreturn]] void refuseDocumentType();
    void requireSound();
    std::size_t requireFewDeclarations(std::size_t around, const QXmlStreamAttributes& attributes);
    void open();
    void close();
    void closeAll();
    void skipCurrent();
    void restorePath();
    const XMLElementState& requireCurrent() const;

    XMLDevice m_device;
    QXmlStreamReader m_qt;
    std::vector<Element> m_stack; // innermost last
    std::string m_path;           // of the innermost element
    XMLReadNames m_names;
    bool m_refusesDocumentTypes = false;
};

inline bool XMLElementState::isCurrent() const
{
    return engine && engine->stack().size() == depth + 1;
}

} // namespace vo::detail
