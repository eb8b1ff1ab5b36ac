#include <XML/detail/XMLSchemaSet.h>

#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoIODevice.h>
#include <XML/detail/XMLDevice.h>
#include <XML/detail/XMLText.h>

#include <QtCore/QString>
#include <QtCore/QUrl>

#include <libxml/parser.h>
#include <libxml/schemasInternals.h>
#include <libxml/xmlIO.h>
#include <libxml/xmlschemastypes.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <limits>
#include <mutex>
#include <new>
#include <set>
#include <string_view>
#include <tuple>

namespace vo::detail {

namespace {

// The component follows includes in calls within calls.
constexpr std::size_t MostSchemaDocuments = 250;

constexpr const char* SchemaNamespace = "http://www.w3.org/2001/XMLSchema";
constexpr const char* NamespaceOfPrefixXml = "http://www.w3.org/XML/1998/namespace";
// What the namespace's own recommendations declare; schemas import it without saying where it is, or from the network.
constexpr const char* SchemaOfPrefixXml = R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema"
    targetNamespace="http://www.w3.org/XML/1998/namespace">
  <xs:attribute name="lang">
    <xs:simpleType>
      <xs:union memberTypes="xs:language">
        <xs:simpleType><xs:restriction base="xs:string"><xs:enumeration value=""/></xs:restriction></xs:simpleType>
      </xs:union>
    </xs:simpleType>
  </xs:attribute>
  <xs:attribute name="space">
    <xs:simpleType>
      <xs:restriction base="xs:NCName"><xs:enumeration value="default"/><xs:enumeration value="preserve"/></xs:restriction>
    </xs:simpleType>
  </xs:attribute>
  <xs:attribute name="base" type="xs:anyURI"/>
  <xs:attribute name="id" type="xs:ID"/>
  <xs:attributeGroup name="specialAttrs">
    <xs:attribute ref="xml:base"/><xs:attribute ref="xml:lang"/><xs:attribute ref="xml:space"/><xs:attribute ref="xml:id"/>
  </xs:attributeGroup>
</xs:schema>)";

// Documents are called by other writings of the root folder. For a name that nothing bears the component would first
// read the system's catalogs, which may redirect it.
constexpr std::string_view NameBegin = "file:///";

std::string NameAt(std::size_t index)
{
    return std::string(NameBegin) + std::string(index, '/');
}

// The set that this thread compiles. The component asks a callback of the whole process for what it opens; on all other
// threads, and at all other times, this one has nothing to say.
thread_local const XMLSchemaSet* t_compiled = nullptr;

int Match(const char* name)
{
    return t_compiled && t_compiled->text(name) ? 1 : 0;
}

void* Open(const char* name)
{
    return new (std::nothrow) std::string_view(*t_compiled->text(name));
}

int Read(void* rest, char* buffer, int size)
{
    auto& text = *static_cast<std::string_view*>(rest);
    const std::size_t taken = std::min(text.size(), static_cast<std::size_t>(size));
    std::memcpy(buffer, text.data(), taken);
    text.remove_prefix(taken);
    return static_cast<int>(taken);
}

int Close(void* rest)
{
    delete static_cast<std::string_view*>(rest);
    return 0;
}

const xmlChar* Chars(const char* text)
{
    return reinterpret_cast<const xmlChar*>(text);
}

std::string Attribute(const xmlNode* node, const char* name)
{
    xmlChar* const value = xmlGetNoNsProp(node, Chars(name));
    const std::unique_ptr<xmlChar, void (*)(void*)> owner(value, [](void* memory) { xmlFree(memory); });
    return value ? reinterpret_cast<const char*>(value) : "";
}

bool IsSchemaElement(const xmlNode* node, std::initializer_list<const char*> names)
{
    return node->type == XML_ELEMENT_NODE && node->ns &&
           std::strcmp(reinterpret_cast<const char*>(node->ns->href), SchemaNamespace) == 0 &&
           std::any_of(names.begin(), names.end(), [node](const char* name) {
               return std::strcmp(reinterpret_cast<const char*>(node->name), name) == 0;
           });
}

void SetLocation(xmlNode* reference, std::size_t index)
{
    xmlSetProp(reference, Chars("schemaLocation"), Chars(NameAt(index).c_str()));
}

VoString Joined(const std::string& name, const std::set<std::size_t>& documents)
{
    QString text = QStringLiteral("<xs:schema xmlns:xs='%1'").arg(QLatin1String(SchemaNamespace));
    if (!name.empty())
        text += QStringLiteral(" targetNamespace=\"%1\"").arg(QString::fromStdString(name).toHtmlEscaped());
    text += QLatin1Char('>');
    for (const std::size_t document : documents)
        text += QStringLiteral("<xs:include schemaLocation='%1'/>").arg(QString::fromStdString(NameAt(document)));
    return FromQtText(text + QStringLiteral("</xs:schema>"));
}

QUrl LocalUrl(const VoFilePath& file)
{
    return QUrl::fromLocalFile(QString::fromStdU16String(ToNative(file).u16string()));
}

// Keeps the first error; warnings tell what was left out.
struct Report
{
    const XMLSchemaSet& set;
    VoString first;

    static void Take(void* data, XMLSchemaError error)
    {
        auto& report = *static_cast<Report*>(data);
        if (report.first.isEmpty() && error->level >= XML_ERR_ERROR)
            report.first = report.set.located(*error);
    }
};

// What this thread's callbacks know while the set is compiled. The parser within the component knows nothing of the
// schema's errors and would print its own.
class Compiling
{
public:
    explicit Compiling(Report& report)
        : m_function(xmlStructuredError)
        , m_data(xmlStructuredErrorContext)
    {
        t_compiled = &report.set;
        xmlSetStructuredErrorFunc(&report, &Report::Take);
    }
    Compiling(const Compiling&) = delete;
    Compiling& operator=(const Compiling&) = delete;
    ~Compiling()
    {
        xmlSetStructuredErrorFunc(m_data, m_function);
        t_compiled = nullptr;
    }

private:
    xmlStructuredErrorFunc m_function; // the application's own
    void* m_data;
};

} // namespace

void PrepareSchemas()
{
    static std::once_flag once;
    std::call_once(once, [] {
        xmlInitParser();
        xmlSchemaInitTypes(); // else the first of several threads would, each for itself
        xmlRegisterInputCallbacks(&Match, &Open, &Read, &Close);
    });
}

VoString XMLContent(const XMLDevice& source)
{
    VoString content = source.device().readRemaining();
    if (content.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw VoOverflowException();
    return content;
}

VoString SchemaMessage(const xmlError& error)
{
    VoString text(error.message ? error.message : "Invalid XML");
    text.trim();
    return text;
}

XMLSchemaSet::XMLSchemaSet(const VoFilePath& schema)
{
    add(schema, XMLContent(XMLDevice(schema, XMLDevice::Reading)));
    for (std::size_t i = 0; i < m_documents.size(); ++i)
        resolve(i);
    joinImports();
    for (Document& document : m_documents) {
        for (xmlNode* node = document.tree.root(); node; node = NextElement(node))
            document.places.push_back(document.tree.place(node));
        document.text = document.tree.takeText();
    }
}

std::size_t XMLSchemaSet::add(const VoFilePath& path, const VoString& content)
{
    const std::size_t index = m_documents.size();
    if (index == MostSchemaDocuments)
        throw refusal("More than " + VoString(MostSchemaDocuments) + " schema documents");
    m_documents.push_back({path, XMLTree(content), {}, {}});
    if (const std::optional<VoXMLValidator::Error>& error = m_documents.back().tree.error())
        throw refusal(located(index, *error));
    return index;
}

VoInvalidXMLSchemaException XMLSchemaSet::refusal(const VoString& reason) const
{
    return {m_documents.front().path.toString(), reason};
}

// Of the schema itself the exception bears the name already.
VoString XMLSchemaSet::located(std::size_t document, const VoXMLValidator::Error& error) const
{
    return document == 0 ? error.toString() : m_documents[document].path.toString() + ": " + error.toString();
}

void XMLSchemaSet::resolve(std::size_t index)
{
    xmlNode* next = nullptr;
    for (xmlNode* node = xmlFirstElementChild(m_documents[index].tree.root()); node; node = next) {
        next = xmlNextElementSibling(node);
        const bool isImport = IsSchemaElement(node, {"import"});
        if (!isImport && !IsSchemaElement(node, {"include", "redefine"}))
            continue;
        const std::optional<std::size_t> found = referred(index, node);
        if (found)
            SetLocation(node, *found);
        if (found && isImport)
            m_imports[Attribute(node, "namespace")].push_back({node, *found});
        if (!found && isImport)
            xmlUnsetProp(node, Chars("schemaLocation"));
        if (!found && !isImport) {
            xmlUnlinkNode(node);
            xmlFreeNode(node);
        }
    }
}

std::optional<std::size_t> XMLSchemaSet::referred(std::size_t from, const xmlNode* reference)
{
    std::optional<std::size_t> found;
    const std::string location = Attribute(reference, "schemaLocation");
    const VoFilePath& base = m_documents[from].path;
    if (!location.empty() && !base.isNull()) {
        const QUrl url = LocalUrl(base).resolved(QUrl(QString::fromUtf8(location.c_str())));
        if (url.isLocalFile() && url.host().isEmpty()) // no share of a server
            found = indexOf(FromNative(std::filesystem::path(url.toLocalFile().toStdU16String())));
    }
    if (!found && Attribute(reference, "namespace") == NamespaceOfPrefixXml)
        found = indexOfSchemaOfXml();
    return found;
}

std::optional<std::size_t> XMLSchemaSet::indexOf(const VoFilePath& path)
{
    const auto same = std::find_if(m_documents.begin(), m_documents.end(),
                                   [&path](const Document& document) { return document.path == path; });
    if (same != m_documents.end())
        return static_cast<std::size_t>(same - m_documents.begin());
    try {
        return add(path, XMLContent(XMLDevice(path, XMLDevice::Reading)));
    } catch (const VoFileNotFoundException&) {
        return std::nullopt;
    }
}

std::size_t XMLSchemaSet::indexOfSchemaOfXml()
{
    if (!m_schemaOfXml)
        m_schemaOfXml = add({}, SchemaOfPrefixXml);
    return *m_schemaOfXml;
}

// The component takes the first document alone that is imported for a namespace, so several become one that includes
// them.
void XMLSchemaSet::joinImports()
{
    const std::string own = Attribute(m_documents.front().tree.root(), "targetNamespace");
    for (const auto& [name, imports] : m_imports) {
        std::set<std::size_t> documents;
        for (const Import& import : imports)
            documents.insert(import.document);
        if (documents.size() == 1)
            continue;
        const std::size_t joined = name == own ? 0 : add({}, Joined(name, documents));
        for (const Import& import : imports)
            SetLocation(import.node, joined);
    }
}

std::optional<std::size_t> XMLSchemaSet::indexNamed(const char* name) const
{
    const std::string_view text = name ? name : "";
    if (text.substr(0, NameBegin.size()) != NameBegin || text.find_first_not_of('/', NameBegin.size()) != text.npos)
        return std::nullopt;
    const std::size_t index = text.size() - NameBegin.size();
    return index < m_documents.size() ? std::optional(index) : std::nullopt;
}

const std::string* XMLSchemaSet::text(const char* name) const
{
    const std::optional<std::size_t> index = indexNamed(name);
    return index ? &m_documents[*index].text : nullptr;
}

XMLSchemaSet::Compiled XMLSchemaSet::compile() const
{
    PrepareSchemas();
    Report report{*this, {}};
    const Compiling compiling(report);
    const std::unique_ptr<xmlSchemaParserCtxt, void (*)(xmlSchemaParserCtxt*)> context(
        xmlSchemaNewParserCtxt(NameAt(0).c_str()), &xmlSchemaFreeParserCtxt);
    if (!context)
        throw std::bad_alloc();
    xmlSchemaSetParserStructuredErrors(context.get(), &Report::Take, &report);
    Compiled schema(xmlSchemaParse(context.get()));
    if (!schema)
        throw refusal(report.first);
    return schema;
}

// Asked while the component still has its trees of the documents.
VoString XMLSchemaSet::located(const xmlError& error) const
{
    VoXMLValidator::Error place{SchemaMessage(error), 0, 0};
    auto* node = static_cast<xmlNode*>(error.node);
    if (node && node->type == XML_ATTRIBUTE_NODE)
        node = node->parent;
    const std::optional<std::size_t> document =
        node && node->doc ? indexNamed(reinterpret_cast<const char*>(node->doc->URL)) : std::nullopt;
    if (!document)
        return place.toString();
    std::size_t index = 0;
    for (xmlNode* other = xmlDocGetRootElement(node->doc); other && other != node; other = NextElement(other))
        ++index;
    const std::vector<XMLTree::Place>& places = m_documents[*document].places;
    if (index < places.size())
        std::tie(place.line, place.column) = places[index];
    return located(*document, place);
}

} // namespace vo::detail
