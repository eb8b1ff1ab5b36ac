#pragma once

#include <Core/VoForward.h>
#include <Core/VoXMLException.h>
#include <FileSystem/VoFilePath.h>
#include <XML/VoXMLValidator.h>
#include <XML/detail/XMLDevice.h>
#include <XML/detail/XMLTree.h>

#include <libxml/xmlerror.h>
#include <libxml/xmlschemas.h>

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vo::detail {

/// Makes libxml2 ready, once for the process, and without touching what others who use it may have set.
void PrepareSchemas();

/// The component's error as its callbacks get it: const since some version.
#if LIBXML_VERSION >= 21200
using XMLSchemaError = const xmlError*;
#else
using XMLSchemaError = xmlError*;
#endif

/// What an error says, without its place.
VoString SchemaMessage(const xmlError& error);

/// The rest of a document's device.
/// @throws VoOverflowException for more than 2 GiB
VoString XMLContent(const XMLDevice& source);

/// A schema document and all that it includes, read before the schema component sees any of it: the component gets
/// names that stand for the texts here, and reaches neither disk nor network.
class XMLSchemaSet
{
public:
    /// Reads the schema and the local files that it includes, redefines or imports. Addresses elsewhere, and files that
    /// are not there, are left out.
    /// @throws VoInvalidXMLSchemaException when one of them is no XML document, or there are too many
    explicit XMLSchemaSet(const VoFilePath& schema);

    struct Free
    {
        void operator()(xmlSchema* schema) const { xmlSchemaFree(schema); }
    };
    using Compiled = std::unique_ptr<xmlSchema, Free>;
    /// @throws VoInvalidXMLSchemaException with the first error
    Compiled compile() const;

    /// The text that a name of compile()'s documents stands for; null for any other name.
    const std::string* text(const char* name) const;
    /// An error met in compile(), with its place and, but for the schema itself, the document's name.
    VoString located(const xmlError& error) const;

private:
    struct Document
    {
        VoFilePath path; // empty: made here
        XMLTree tree;
        std::string text;
        std::vector<XMLTree::Place> places; // of the elements in the text
    };
    struct Import
    {
        xmlNode* node;
        std::size_t document;
    };

    std::size_t add(const VoFilePath& path, const VoString& content);
    VoInvalidXMLSchemaException refusal(const VoString& reason) const;
    VoString located(std::size_t document, const VoXMLValidator::Error& error) const;
    void resolve(std::size_t index);
    std::optional<std::size_t> referred(std::size_t from, const xmlNode* reference);
    std::optional<std::size_t> indexOf(const VoFilePath& path);
    std::size_t indexOfSchemaOfXml();
    void joinImports();
    std::optional<std::size_t> indexNamed(const char* name) const;

    std::deque<Document> m_documents; // the schema first
    std::optional<std::size_t> m_schemaOfXml;
    std::map<std::string, std::vector<Import>> m_imports; // by namespace
};

} // namespace vo::detail
