#include <XML/detail/XMLReadEngine.h>

#include <Core/VoXMLException.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoIODevice.h>
#include <IO/VoIOException.h>
#include <Subsystem/VoLogging.h>
#include <XML/VoXMLStreamElementReader.h>
#include <XML/detail/XMLAttributeCollector.h>
#include <XML/detail/XMLLimits.h>
#include <XML/detail/XMLText.h>

#include <QtCore/QString>

#include <utility>

namespace vo::detail {

namespace {

// A source that brings nothing but other tokens is taken for stalled after so many steps.
constexpr int StepsWithoutStartTag = 10'000'000;

void AppendStartTag(QString& markup, const QXmlStreamReader& qt)
{
    markup += QLatin1Char('<') + qt.qualifiedName().toString();
    for (const QXmlStreamNamespaceDeclaration& declaration : qt.namespaceDeclarations()) {
        markup += declaration.prefix().isEmpty() ? QStringLiteral(" xmlns") : QStringLiteral(" xmlns:");
        markup += declaration.prefix().toString() + QStringLiteral("=\"");
        markup += declaration.namespaceUri().toString().toHtmlEscaped() + QLatin1Char('"');
    }
    for (const QXmlStreamAttribute& attribute : qt.attributes()) {
        markup += QLatin1Char(' ') + attribute.qualifiedName().toString() + QStringLiteral("=\"");
        markup += attribute.value().toString().toHtmlEscaped() + QLatin1Char('"');
    }
    markup += QLatin1Char('>');
}

void AppendEndTag(QString& markup, const QString& name)
{
    markup += QStringLiteral("</") + name + QLatin1Char('>');
}

} // namespace

// Lets go of the elements above one after another: in one another's destructors a deep document would need much stack.
XMLElementState::~XMLElementState()
{
    std::shared_ptr<XMLElementState> above = std::move(closedParent);
    while (above && above.use_count() == 1)
        above = std::exchange(above->closedParent, nullptr);
}

std::string XMLElementState::path() const
{
    std::vector<const VoString*> names;
    const XMLElementState* element = this;
    for (; element && !element->isOpen(); element = element->closedParent.get())
        names.push_back(element->name.get());
    std::string path(element ? element->engine->path(*element) : std::string_view());
    for (auto next = names.rbegin(); next != names.rend(); ++next) {
        if (!path.empty())
            path += '/';
        path += (*next)->toStdString();
    }
    return path;
}

XMLReadEngine::XMLReadEngine(XMLDevice device)
    : m_device(std::move(device))
    , m_qt(&m_device.adapter())
{
}

XMLReadEngine::~XMLReadEngine()
{
    closeAll();
    m_device.adapter().close(); // keeps what fails; a source has nothing to lose
}

void XMLReadEngine::refuseDocumentTypes()
{
    m_refusesDocumentTypes = true;
}

// An element is open as long as it is on the stack; `m_path` is always the path of the innermost one. open() and
// close() alone change the stack, and keep the path, the elements' pointers to the engine and their depths in step with
// it.
XMLReadEngine::Token XMLReadEngine::next()
{
    if (m_qt.tokenType() == QXmlStreamReader::EndDocument)
        return QXmlStreamReader::EndDocument; // Qt would go on to Invalid, without a text
    switch (m_qt.readNext()) {
    case QXmlStreamReader::StartElement:
        open();
        break;
    case QXmlStreamReader::EndElement:
        close();
        break;
    case QXmlStreamReader::EndDocument:
        requireSound();
        closeAll();
        break;
    case QXmlStreamReader::DTD:
        if (m_refusesDocumentTypes)
            refuseDocumentType();
        requireSound();
        break;
    case QXmlStreamReader::Invalid:
        fail();
    default:
        break;
    }
    return m_qt.tokenType();
}

bool XMLReadEngine::nextStart()
{
    for (int step = 0; step < StepsWithoutStartTag; ++step) {
        const Token token = next();
        if (token == QXmlStreamReader::StartElement)
            return true;
        if (token == QXmlStreamReader::EndDocument)
            return false;
    }
    return false;
}

bool XMLReadEngine::nextStartInElement()
{
    for (;;) {
        const Token token = next();
        if (token == QXmlStreamReader::StartElement)
            return true;
        if (token == QXmlStreamReader::EndElement || token == QXmlStreamReader::EndDocument)
            return false;
    }
}

VoString XMLReadEngine::directText(const Element& element)
{
    while (element->isOpen()) {
        if (!element->isCurrent())
            skipCurrent();
        else if (m_qt.isCharacters())
            return FromQtText(m_qt.text());
        else
            next();
    }
    element->isReadToEnd = true;
    return {};
}

// Goes past next(): what lies inside is never opened, so nobody can hold or ask for its elements.
VoString XMLReadEngine::remainingMarkup()
{
    requireCurrent();
    QString markup;
    for (std::size_t depth = 1; depth > 0;) {
        switch (m_qt.readNext()) {
        case QXmlStreamReader::StartElement:
            AppendStartTag(markup, m_qt);
            ++depth;
            break;
        case QXmlStreamReader::EndElement:
            if (--depth > 0)
                AppendEndTag(markup, m_qt.qualifiedName().toString());
            break;
        case QXmlStreamReader::Characters:
            markup += m_qt.text().toString().toHtmlEscaped();
            break;
        case QXmlStreamReader::EntityReference:
            markup += QLatin1Char('&') + m_qt.name().toString() + QLatin1Char(';');
            break;
        case QXmlStreamReader::Invalid:
            fail();
        default:
            break;
        }
    }
    close();
    return FromQtText(markup);
}

VoString XMLReadEngine::currentMarkup()
{
    const QString name = m_qt.qualifiedName().toString();
    QString start;
    AppendStartTag(start, m_qt);
    QString end;
    AppendEndTag(end, name);
    return FromQtText(start) + remainingMarkup() + FromQtText(end);
}

void XMLReadEngine::finish()
{
    while (!m_stack.empty())
        skipCurrent();
    while (next() != QXmlStreamReader::EndDocument) {
    }
}

void XMLReadEngine::restart()
{
    closeAll();
    if (!m_device.adapter().seek(0)) {
        m_device.adapter().rethrow();
        throw VoIOException(m_device.device());
    }
    m_qt.setDevice(&m_device.adapter());
}

bool XMLReadEngine::NextChild(const Element& element)
{
    if (!element->isOpen())
        throw VoInvalidXMLOperation("NextChild on closed element called");
    XMLReadEngine& engine = *element->engine;
    while (!element->isCurrent())
        engine.skipCurrent();
    if (engine.nextStartInElement())
        return true;
    element->isReadToEnd = true;
    return false;
}

VoString XMLReadEngine::ReadText(const Element& element, const char* inactiveMessage)
{
    if (!element->isCurrent())
        throw VoInvalidXMLOperation(inactiveMessage);
    VoString text = element->engine->directText(element);
    text.trim();
    return text;
}

VoString XMLReadEngine::position() const
{
    return VoString(m_path) + ", line " + VoString(m_qt.lineNumber()) + ", column " + VoString(m_qt.columnNumber());
}

VoXMLAttributeSet XMLReadEngine::attributes()
{
    VoXMLAttributeSet set;
    XMLAttributeCollector::Collect(m_qt.attributes(), m_names, set);
    return set;
}

// Qt takes a device that fails for one that ends, so the device's own exception goes first.
void XMLReadEngine::fail()
{
    m_device.adapter().rethrow();
    if (m_device.adapter().hasTooManyAttributes())
        m_qt.raiseError(QStringLiteral("Too many attributes."));
    const VoString error = FromQtText(m_qt.errorString());
    vo::logging::Logger::Get("xml").diagnostic(error + " (" + position() + ")");
    throw VoInvalidXMLException(error);
}

void XMLReadEngine::refuseDocumentType()
{
    const VoDocumentTypeException refusal(m_qt.dtdName().compare(QLatin1String("html"), Qt::CaseInsensitive) == 0);
    m_qt.raiseError(refusal.message().toQString());
    throw refusal;
}

void XMLReadEngine::requireSound()
{
    if (m_qt.hasError() || m_device.adapter().hasFailed())
        fail();
}

// Attributes that a document type gives to an element, and declarations of elements around it, have not passed the
// device as parts of this tag.
std::size_t XMLReadEngine::requireFewDeclarations(std::size_t around, const QXmlStreamAttributes& attributes)
{
    const std::size_t declarations = around + static_cast<std::size_t>(m_qt.namespaceDeclarations().size());
    if (declarations > MaximumXMLAttributes)
        m_qt.raiseError(QStringLiteral("Too many namespace declarations."));
    else if (static_cast<std::size_t>(attributes.size()) > MaximumXMLAttributes)
        m_qt.raiseError(QStringLiteral("Too many attributes."));
    else
        return declarations;
    fail();
}

void XMLReadEngine::open()
{
    auto element = std::make_shared<XMLElementState>();
    const QXmlStreamAttributes attributes = m_qt.attributes();
    element->declarations = requireFewDeclarations(m_stack.empty() ? 0 : m_stack.back()->declarations, attributes);
    element->name = m_names.shared(m_qt.name());
    if (!attributes.isEmpty())
        XMLAttributeCollector::Collect(attributes, m_names, element->attributes);
    element->depth = m_stack.size();
    if (!m_stack.empty())
        m_path += '/';
    m_path += element->name->toStdString();
    element->pathLength = m_path.size();
    element->engine = this;
    m_stack.push_back(std::move(element));
}

void XMLReadEngine::close()
{
    if (m_stack.empty())
        return;
    const Element element = std::move(m_stack.back());
    m_stack.pop_back();
    const bool mayBeAskedForPath = !element->reader && element.use_count() > 1;
    if (mayBeAskedForPath && !m_stack.empty())
        element->closedParent = m_stack.back();
    element->engine = nullptr;
    restorePath();
    // Ends the element reader, and with it perhaps the child range whose step led here; none of these touches itself
    // after.
    element->reader.reset();
}

void XMLReadEngine::restorePath()
{
    m_path.resize(m_stack.empty() ? 0 : m_stack.back()->pathLength);
}

void XMLReadEngine::closeAll()
{
    while (!m_stack.empty())
        close();
}

// Goes past next() too, but counts declarations as open() would: skipping must not be a way around their limit.
void XMLReadEngine::skipCurrent()
{
    std::vector<std::size_t> around; // namespace declarations, for each level skipped
    std::size_t declarations = requireCurrent().declarations;
    while (m_qt.readNext() != QXmlStreamReader::EndElement || !around.empty()) {
        if (m_qt.isEndElement()) {
            declarations = around.back();
            around.pop_back();
        } else if (m_qt.isStartElement()) {
            around.push_back(declarations);
            declarations = requireFewDeclarations(declarations, m_qt.attributes());
        } else {
            requireSound();
        }
    }
    close();
}

const XMLElementState& XMLReadEngine::requireCurrent() const
{
    if (m_stack.empty())
        throw VoNullXMLStreamElementException();
    return *m_stack.back();
}

} // namespace vo::detail
