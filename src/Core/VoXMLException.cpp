#include <Core/VoXMLException.h>

#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <XML/VoXMLPath.h>

VOCORE_DEFINE_EXCEPTION(VoXMLException, "VoXMLException")
VoXMLException::VoXMLException(const VoString& message)
    : VoException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidXMLAttributeName, "VoInvalidXMLAttributeName")
VoInvalidXMLAttributeName::VoInvalidXMLAttributeName(const VoString& name)
    : VoXMLException("Invalid attribute name: " + name)
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidXMLException, "VoInvalidXMLException")
VoInvalidXMLException::VoInvalidXMLException()
    : VoXMLException(VoString("Invalid XML"))
{
}
VoInvalidXMLException::VoInvalidXMLException(const VoFilePath& file)
    : VoXMLException("Invalid XML: " + file.path())
{
}
VoInvalidXMLException::VoInvalidXMLException(const VoFilePath& file, const VoFilePath& schema)
    : VoXMLException("Invalid XML: " + file.path() + ", for schema: " + schema.path())
{
}
VoInvalidXMLException::VoInvalidXMLException(const VoString& message)
    : VoXMLException(message)
{
}
VoInvalidXMLException::VoInvalidXMLException(const char* message)
    : VoXMLException(VoString(message))
{
}

VOCORE_DEFINE_EXCEPTION(VoDocumentTypeException, "VoDocumentTypeException")
VoDocumentTypeException::VoDocumentTypeException(bool isWebPage)
    : VoInvalidXMLException("Document type declarations are not allowed")
    , m_isWebPage(isWebPage)
{
}

bool VoDocumentTypeException::isWebPage() const noexcept
{
    return m_isWebPage;
}

VOCORE_DEFINE_EXCEPTION(VoInvalidXMLOperation, "VoInvalidXMLOperation")
VoInvalidXMLOperation::VoInvalidXMLOperation(const VoString& message)
    : VoXMLException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidXMLSchemaException, "VoInvalidXMLSchemaException")
VoInvalidXMLSchemaException::VoInvalidXMLSchemaException(const VoString& schema, const VoString& detail)
    : VoXMLException("Invalid XML schema: [" + schema + "] " + detail)
{
}

VOCORE_DEFINE_EXCEPTION(VoNullDomElementException, "VoNullDomElementException")
VoNullDomElementException::VoNullDomElementException()
    : VoXMLException(VoString("Null dom element"))
{
}

VOCORE_DEFINE_EXCEPTION(VoNullXMLStreamElementException, "VoNullXMLStreamElementException")
VoNullXMLStreamElementException::VoNullXMLStreamElementException()
    : VoXMLException(VoString("Null XML stream element"))
{
}

VOCORE_DEFINE_EXCEPTION(VoUnknownXMLAttributeException, "VoUnknownXMLAttributeException")
VoUnknownXMLAttributeException::VoUnknownXMLAttributeException(const VoString& name)
    : VoXMLException("Unknown attribute: " + name)
{
}

VOCORE_DEFINE_EXCEPTION(VoUnknownXMLElementException, "VoUnknownXMLElementException")
VoUnknownXMLElementException::VoUnknownXMLElementException(const VoString& name)
    : VoXMLException("Unknown element: " + name)
{
}

VOCORE_DEFINE_EXCEPTION(VoXMLDuplicateRuleException, "VoXMLDuplicateRuleException")
VoXMLDuplicateRuleException::VoXMLDuplicateRuleException()
    : VoXMLException(VoString("Duplicate rule for XML path"))
{
}
VoXMLDuplicateRuleException::VoXMLDuplicateRuleException(const VoXMLPath& path)
    : VoXMLException("Duplicate rule for XML path: " + path.toString())
{
}
