#include <XML/detail/XMLTree.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <IO/VoStringDevice.h>
#include <XML/detail/XMLLimits.h>
#include <XML/detail/XMLReadEngine.h>

#include <QtCore/QString>
#include <QtCore/QXmlStreamReader>

#include <libxml/entities.h>

#include <algorithm>
#include <new>
#include <utility>

namespace vo::detail {

namespace {

constexpr std::int64_t HighestLineOfNode = 65535; // of the component's own record, which is for its messages only

// The component's allocations answer null where ours throw.
template <typename Value>
Value* Made(Value* value)
{
    if (!value)
        throw std::bad_alloc();
    return value;
}

template <typename Text>
std::string Utf8(const Text& text)
{
    return text.toUtf8().toStdString();
}

const xmlChar* Chars(const std::string& text)
{
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

template <typename Named>
xmlNs* NamespaceOf(xmlNode* node, const Named& named)
{
    if (named.namespaceUri().isEmpty())
        return nullptr;
    const std::string prefix = Utf8(named.prefix());
    return Made(xmlSearchNs(node->doc, node, prefix.empty() ? nullptr : Chars(prefix)));
}

void Declare(xmlNode* node, const QXmlStreamNamespaceDeclaration& declaration)
{
    const std::string prefix = Utf8(declaration.prefix());
    if (prefix != "xml") // known to every tree
        Made(xmlNewNs(node, Chars(Utf8(declaration.namespaceUri())), prefix.empty() ? nullptr : Chars(prefix)));
}

// The component writes names of namespaces as they are, "&" and "<" too.
void EscapeNamespaces(const xmlNode& element)
{
    for (xmlNs* declared = element.nsDef; declared; declared = declared->next) {
        if (!declared->href)
            continue;
        xmlChar* const escaped = Made(xmlEncodeSpecialChars(element.doc, declared->href));
        xmlFree(const_cast<xmlChar*>(std::exchange(declared->href, escaped)));
    }
}

} // namespace

xmlNode* NextElement(xmlNode* element)
{
    xmlNode* next = xmlFirstElementChild(element);
    for (; !next && element; element = element->parent)
        next = xmlNextElementSibling(element);
    return next;
}

XMLTree::XMLTree(const VoString& document)
    : m_document(Made(xmlNewDoc(nullptr)))
{
    read(document);
}

void XMLTree::read(const VoString& document)
{
    VoStringDevice device(document);
    XMLReadEngine engine(XMLDevice(device, XMLDevice::Reading));
    const QXmlStreamReader& qt = engine.qt();
    try {
        for (XMLReadEngine::Token token = engine.next(); token != QXmlStreamReader::EndDocument;
             token = engine.next()) {
            if (engine.stack().size() > MaximumXMLLevels)
                throw VoStackLimitException();
            if (token == QXmlStreamReader::StartElement)
                open(qt);
            else if (token == QXmlStreamReader::EndElement)
                close();
            else if (token == QXmlStreamReader::Characters)
                m_text += Utf8(qt.text());
            else if (token == QXmlStreamReader::EntityReference)
                throw VoInvalidXMLException("Entity \"" + VoString(Utf8(qt.name())) +
                                            "\" is not declared in the document");
        }
    } catch (const VoInvalidXMLException& e) {
        m_error = VoXMLValidator::Error{e.message(), qt.lineNumber(), qt.columnNumber()};
    }
}

void XMLTree::open(const QXmlStreamReader& reader)
{
    addText();
    const std::string name = Utf8(reader.name());
    xmlNode* const node = Made(xmlNewDocNode(m_document.get(), nullptr, Chars(name), nullptr));
    if (m_open)
        xmlAddChild(m_open, node);
    else
        xmlDocSetRootElement(m_document.get(), node);
    m_open = node;
    m_places.emplace_back(reader.lineNumber(), reader.columnNumber());
    // The application's own word: index and one, never followed. NOLINTNEXTLINE(performance-no-int-to-ptr)
    node->_private = reinterpret_cast<void*>(m_places.size());
    node->line = static_cast<unsigned short>(std::min<std::int64_t>(reader.lineNumber(), HighestLineOfNode));
    for (const QXmlStreamNamespaceDeclaration& declaration : reader.namespaceDeclarations())
        Declare(node, declaration);
    xmlSetNs(node, NamespaceOf(node, reader));
    for (const QXmlStreamAttribute& attribute : reader.attributes())
        Made(xmlNewNsProp(node, NamespaceOf(node, attribute), Chars(Utf8(attribute.name())),
                          Chars(Utf8(attribute.value()))));
}

void XMLTree::close()
{
    addText();
    m_open = m_open->parent && m_open->parent->type == XML_ELEMENT_NODE ? m_open->parent : nullptr;
}

void XMLTree::addText()
{
    if (m_open && !m_text.empty())
        xmlAddChild(m_open, Made(xmlNewDocTextLen(m_document.get(), Chars(m_text), static_cast<int>(m_text.size()))));
    m_text.clear();
}

XMLTree::Place XMLTree::place(const xmlNode* node) const
{
    if (node && node->type != XML_ELEMENT_NODE)
        node = node->parent;
    return node && node->_private ? m_places[reinterpret_cast<std::size_t>(node->_private) - 1] : Place(0, 0);
}

std::string XMLTree::takeText()
{
    for (xmlNode* node = root(); node; node = NextElement(node))
        EscapeNamespaces(*node);
    xmlChar* bytes = nullptr;
    int size = 0;
    xmlDocDumpMemoryEnc(m_document.get(), &bytes, &size, "UTF-8");
    const std::unique_ptr<xmlChar, void (*)(void*)> owner(Made(bytes), [](void* memory) { xmlFree(memory); });
    return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)};
}

} // namespace vo::detail
