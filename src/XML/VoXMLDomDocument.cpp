#include <XML/VoXMLDomDocument.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoIOException.h>
#include <IO/VoStringDevice.h>
#include <XML/VoXMLDomElementWriter.h>
#include <XML/detail/XMLDomNamespaces.h>
#include <XML/detail/XMLDomWriter.h>
#include <XML/detail/XMLLimits.h>
#include <XML/detail/XMLNames.h>
#include <XML/detail/XMLReadEngine.h>
#include <XML/detail/XMLText.h>

#include <QtXml/QDomDocument>

#include <set>
#include <utility>

using namespace vo::detail;

namespace {

// Builds a tree from the tokens of a reader.
class TreeBuilder
{
public:
    explicit TreeBuilder(XMLDevice device)
        : m_engine(std::move(device))
    {
    }

    QDomDocument build();

private:
    void take(XMLReadEngine::Token token);
    void open();
    void add(const QDomNode& node) { m_current.appendChild(node); }
    void addText();

    const QXmlStreamReader& qt() const { return m_engine.qt(); }

    XMLReadEngine m_engine;
    QDomDocument m_document{QString()}; // made with a name, even an empty one, it is not null
    QDomNode m_current = m_document;
};

QDomDocument TreeBuilder::build()
{
    for (;;) {
        const XMLReadEngine::Token token = m_engine.next();
        if (token == QXmlStreamReader::EndDocument)
            return m_document;
        take(token);
    }
}

void TreeBuilder::take(XMLReadEngine::Token token)
{
    switch (token) {
    case QXmlStreamReader::StartElement:
        open();
        break;
    case QXmlStreamReader::EndElement:
        m_current = m_current.parentNode();
        break;
    case QXmlStreamReader::Characters:
        addText();
        break;
    case QXmlStreamReader::Comment:
        add(m_document.createComment(qt().text().toString()));
        break;
    case QXmlStreamReader::ProcessingInstruction:
        add(m_document.createProcessingInstruction(qt().processingInstructionTarget().toString(),
                                                   qt().processingInstructionData().toString()));
        break;
    case QXmlStreamReader::EntityReference: // saved, it would refer to nothing
        throw VoInvalidXMLException("Entity is not in the document: " + FromQtText(qt().name()));
    default:
        break;
    }
}

void TreeBuilder::addText()
{
    if (m_current.isDocument())
        return; // line breaks around the root
    const QString text = qt().text().toString();
    if (qt().isCDATA())
        add(m_document.createCDATASection(text));
    else
        add(m_document.createTextNode(text));
}

void TreeBuilder::open()
{
    if (m_engine.stack().size() > MaximumXMLLevels)
        throw VoStackLimitException();
    const QString name = qt().qualifiedName().toString();
    const QString uri = qt().namespaceUri().toString();
    QDomElement element = uri.isEmpty() ? m_document.createElement(name) : m_document.createElementNS(uri, name);
    std::set<QString> declared; // by the element and by attributes themselves
    if (!uri.isEmpty())
        declared.insert(qt().prefix().toString());
    const auto isInNamespace = [](const QXmlStreamAttribute& attribute) {
        return !attribute.namespaceUri().isEmpty() && attribute.namespaceUri() != XMLOwnNamespace();
    };
    // Those without a namespace first: Qt would take one with the same local name for the same attribute.
    const QXmlStreamAttributes attributes = qt().attributes();
    for (const QXmlStreamAttribute& attribute : attributes) {
        if (isInNamespace(attribute))
            declared.insert(attribute.prefix().toString());
        else
            element.setAttribute(attribute.qualifiedName().toString(), attribute.value().toString());
    }
    for (const QXmlStreamNamespaceDeclaration& declaration : qt().namespaceDeclarations()) {
        if (declared.count(declaration.prefix().toString()) == 0)
            element.setAttribute(DeclarationName(declaration.prefix().toString()),
                                 declaration.namespaceUri().toString());
    }
    for (const QXmlStreamAttribute& attribute : attributes) {
        if (isInNamespace(attribute))
            element.setAttributeNS(attribute.namespaceUri().toString(), attribute.qualifiedName().toString(),
                                   attribute.value().toString());
    }
    m_current = m_current.appendChild(element);
}

} // namespace

struct VoXMLDomDocument::Private
{
    void requireNoRoot() const;
    std::unique_ptr<VoXMLElementWriter> append(const QDomElement& root);

    QDomDocument tree{QString()};
};

void VoXMLDomDocument::Private::requireNoRoot() const
{
    if (!tree.documentElement().isNull())
        throw VoInvalidXMLOperation("Document has a root element already");
}

std::unique_ptr<VoXMLElementWriter> VoXMLDomDocument::Private::append(const QDomElement& root)
{
    tree.appendChild(root);
    return std::make_unique<VoXMLDomElementWriter>(root);
}

VoXMLDomDocument::VoXMLDomDocument()
    : m_private(std::make_unique<Private>())
{
}

VoXMLDomDocument::VoXMLDomDocument(VoXMLDomDocument&& other) noexcept = default;
VoXMLDomDocument& VoXMLDomDocument::operator=(VoXMLDomDocument&& other) noexcept = default;
VoXMLDomDocument::~VoXMLDomDocument() = default;

VoXMLDomDocument::Private& VoXMLDomDocument::state()
{
    if (!m_private)
        m_private = std::make_unique<Private>(); // moved from
    return *m_private;
}

void VoXMLDomDocument::load(VoIODevice& device)
{
    state().tree = TreeBuilder(XMLDevice(device, XMLDevice::Reading)).build();
}

void VoXMLDomDocument::load(const VoFilePath& file)
{
    state().tree = TreeBuilder(XMLDevice(file, XMLDevice::Reading)).build();
}

void VoXMLDomDocument::save(VoIODevice& device, const VoXMLStreamWriter::AutoFormattingSettings& settings) const
{
    const QDomDocument tree = root().ownerDocument();
    XMLDomWriter(XMLDevice(device, XMLDevice::Writing), settings).write(tree);
}

void VoXMLDomDocument::save(const VoFilePath& file, const VoXMLStreamWriter::AutoFormattingSettings& settings) const
{
    root(); // before anything is made
    VoAtomicFileWriter target(file);
    save(target.device(), settings);
    target.commit();
}

VoString VoXMLDomDocument::toString(const VoXMLStreamWriter::AutoFormattingSettings& settings) const
{
    VoStringDevice device;
    save(device, settings);
    return device.content();
}

bool VoXMLDomDocument::hasRoot() const
{
    return m_private && !m_private->tree.documentElement().isNull();
}

QDomElement VoXMLDomDocument::root() const
{
    if (!hasRoot())
        throw VoNullDomElementException();
    return m_private->tree.documentElement();
}

std::unique_ptr<VoXMLElementWriter> VoXMLDomDocument::createRoot(const VoString& name)
{
    Private& document = state();
    document.requireNoRoot();
    const QString qtName = RequireElementName(name, ToXMLName(name));
    return document.append(MakeElement(document.tree, QDomElement(), qtName));
}

std::unique_ptr<VoXMLElementWriter> VoXMLDomDocument::createRoot(const VoString& name, const VoString& namespaceUri)
{
    Private& document = state();
    document.requireNoRoot();
    RequireXMLText(namespaceUri);
    const QString qtName = RequireElementName(name, ToXMLName(name), !namespaceUri.isEmpty());
    return document.append(MakeElement(document.tree, QDomElement(), qtName, ToQtText(namespaceUri)));
}
