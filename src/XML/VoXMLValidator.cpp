#include <XML/VoXMLValidator.h>

#include <Core/VoDeque.h>
#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <FileSystem/VoFilePath.h>
#include <Subsystem/VoLogging.h>
#include <XML/detail/XMLDevice.h>
#include <XML/detail/XMLSchemaSet.h>
#include <XML/detail/XMLTree.h>

#include <libxml/hash.h>
#include <libxml/list.h>
#include <libxml/valid.h>
#include <libxml/xmlschemas.h>

#include <algorithm>
#include <new>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

using vo::detail::SchemaMessage;
using vo::detail::XMLContent;
using vo::detail::XMLDevice;
using vo::detail::XMLSchemaError;
using vo::detail::XMLSchemaSet;
using vo::detail::XMLTree;

namespace {

using Error = VoXMLValidator::Error;

constexpr std::size_t MostErrors = 100;

// The first errors of a document, one for each element: a value that its type does not take is told twice, first for
// what of the type.
class FirstErrors
{
public:
    FirstErrors(const XMLTree& tree, std::size_t most)
        : m_tree(tree)
        , m_most(most)
    {
    }

    void add(const xmlNode* node, VoString reason)
    {
        if (node && node == std::exchange(m_last, node))
            return;
        const auto [line, column] = m_tree.place(node);
        m_errors.push_back({std::move(reason), line, column});
        if (m_errors.size() >= 2 * MostErrors)
            shorten(); // an element's end is later than what lies in it, so the first are not known until the end
    }

    static void Take(void* errors, XMLSchemaError error)
    {
        if (error->level >= XML_ERR_ERROR)
            static_cast<FirstErrors*>(errors)->add(static_cast<const xmlNode*>(error->node), SchemaMessage(*error));
    }

    VoDeque<Error> take()
    {
        shorten();
        VoDeque<Error> errors;
        for (Error& error : m_errors)
            errors.pushBack(std::move(error));
        return errors;
    }

private:
    void shorten()
    {
        std::stable_sort(m_errors.begin(), m_errors.end(), [](const Error& left, const Error& right) {
            return std::tie(left.line, left.column) < std::tie(right.line, right.column);
        });
        m_errors.resize(std::min(m_errors.size(), m_most));
    }

    const XMLTree& m_tree;
    std::size_t m_most;
    const xmlNode* m_last = nullptr;
    std::vector<Error> m_errors;
};

struct References
{
    xmlDoc* document;
    FirstErrors& errors;
    const xmlChar* name = nullptr;
};

int TakeReference(const void* reference, void* data)
{
    const auto& references = *static_cast<const References*>(data);
    const xmlAttr* const attribute = static_cast<const xmlRef*>(reference)->attr;
    references.errors.add(reinterpret_cast<const xmlNode*>(attribute),
                          "There is no ID \"" + VoString(reinterpret_cast<const char*>(references.name)) + "\".");
    return 1;
}

void TakeReferences(void* list, void* data, const xmlChar* name)
{
    auto& references = *static_cast<References*>(data);
    if (xmlGetID(references.document, name))
        return;
    references.name = name;
    xmlListWalk(static_cast<xmlList*>(list), &TakeReference, data);
}

// The component collects IDs and what refers to them, and leaves it at that.
void CheckReferences(xmlDoc* document, FirstErrors& errors)
{
    References references{document, errors};
    if (document->refs)
        xmlHashScan(static_cast<xmlHashTable*>(document->refs), &TakeReferences, &references);
}

} // namespace

struct VoXMLValidator::Private
{
    VoFilePath path;
    XMLSchemaSet::Compiled schema;

    VoDeque<Error> errors(const VoString& document, std::size_t most) const;
    std::optional<Error> firstError(const XMLDevice& source) const;
};

VoDeque<Error> VoXMLValidator::Private::errors(const VoString& document, std::size_t most) const
{
    const XMLTree tree(document);
    if (tree.error())
        return {*tree.error()};
    const std::unique_ptr<xmlSchemaValidCtxt, void (*)(xmlSchemaValidCtxt*)> context(
        xmlSchemaNewValidCtxt(schema.get()), &xmlSchemaFreeValidCtxt);
    if (!context)
        throw std::bad_alloc();
    FirstErrors errors(tree, most);
    xmlSchemaSetValidStructuredErrors(context.get(), &FirstErrors::Take, &errors);
    const int verdict = xmlSchemaValidateDoc(context.get(), tree.document());
    CheckReferences(tree.document(), errors);
    VoDeque<Error> found = errors.take();
    if (verdict != 0 && found.isEmpty())
        found.pushBack({"Invalid XML", 0, 0});
    return found;
}

std::optional<Error> VoXMLValidator::Private::firstError(const XMLDevice& source) const
{
    const VoDeque<Error> found = errors(XMLContent(source), 1);
    return found.isEmpty() ? std::nullopt : std::optional(found[0]);
}

VoString VoXMLValidator::Error::toString() const
{
    return line == 0 ? reason : reason + " (line " + VoString(line) + ", column " + VoString(column) + ")";
}

VoXMLValidator::VoXMLValidator(const VoFilePath& schema)
    : m_private(new Private{schema, XMLSchemaSet(schema).compile()})
{
}

VoXMLValidator::VoXMLValidator(VoXMLValidator&& other) noexcept = default;
VoXMLValidator& VoXMLValidator::operator=(VoXMLValidator&& other) noexcept = default;
VoXMLValidator::~VoXMLValidator() = default;

void VoXMLValidator::validate(const VoFilePath& file) const
{
    if (const std::optional<Error> error = m_private->firstError(XMLDevice(file, XMLDevice::Reading)))
        throw VoInvalidXMLException(VoInvalidXMLException(file, m_private->path).message() + ": " + error->toString());
}

void VoXMLValidator::validate(VoIODevice& device) const
{
    if (const std::optional<Error> error = m_private->firstError(XMLDevice(device, XMLDevice::Reading)))
        throw VoInvalidXMLException(error->toString());
}

bool VoXMLValidator::isValid(const VoFilePath& file) const
{
    const std::optional<Error> error = m_private->firstError(XMLDevice(file, XMLDevice::Reading));
    if (error)
        vo::logging::Logger::Get("xml").information("Invalid XML: " + file.toString() + ": " + error->toString());
    return !error;
}

VoDeque<Error> VoXMLValidator::errors(const VoFilePath& file) const
{
    return m_private->errors(XMLContent(XMLDevice(file, XMLDevice::Reading)), MostErrors);
}

VoDeque<Error> VoXMLValidator::errors(VoIODevice& device) const
{
    return m_private->errors(XMLContent(XMLDevice(device, XMLDevice::Reading)), MostErrors);
}
