#pragma once

#include <Core/VoException.h>

/// @file
/// Errors of reading, writing and loading XML.

/// A failure of the XML layer.
class VOCORE_EXPORT VoXMLException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoXMLException)
public:
    VoXMLException(const VoString& message); ///< The message.
};

/// An attribute name that cannot be written, or not twice.
class VOCORE_EXPORT VoInvalidXMLAttributeName : public VoXMLException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidXMLAttributeName)
public:
    VoInvalidXMLAttributeName(const VoString& name); ///< "Invalid attribute name: " + name
};

/// A document that is not well formed or not valid.
class VOCORE_EXPORT VoInvalidXMLException : public VoXMLException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidXMLException)
public:
    VoInvalidXMLException();                       ///< "Invalid XML"
    VoInvalidXMLException(const VoFilePath& file); ///< "Invalid XML: " + file
    VoInvalidXMLException(const VoFilePath& file,
                          const VoFilePath& schema); ///< "Invalid XML: " + file + ", for schema: " + schema
    VoInvalidXMLException(const VoString& message);  ///< The message.
    VoInvalidXMLException(const char* message);      ///< The message.
};

/// A document type declaration where none is wanted: entities are the means of most attacks on parsers.
class VOCORE_EXPORT VoDocumentTypeException : public VoInvalidXMLException
{
    VOCORE_EXCEPTION_CLASS(VoDocumentTypeException)
public:
    VoDocumentTypeException(bool isWebPage); ///< "Document type declarations are not allowed"

    bool isWebPage() const noexcept; ///< Whether it declares the type of a page for the browser.

private:
    bool m_isWebPage;
};

/// A call that the document's state does not allow.
class VOCORE_EXPORT VoInvalidXMLOperation : public VoXMLException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidXMLOperation)
public:
    VoInvalidXMLOperation(const VoString& message); ///< The message.
};

/// A schema that cannot be used.
class VOCORE_EXPORT VoInvalidXMLSchemaException : public VoXMLException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidXMLSchemaException)
public:
    VoInvalidXMLSchemaException(const VoString& schema,
                                const VoString& detail); ///< "Invalid XML schema: [" + schema + "] " + detail
};

/// A DOM element that is not there.
class VOCORE_EXPORT VoNullDomElementException : public VoXMLException
{
    VOCORE_EXCEPTION_CLASS(VoNullDomElementException)
public:
    VoNullDomElementException(); ///< "Null dom element"
};

/// A stream element that is not there.
class VOCORE_EXPORT VoNullXMLStreamElementException : public VoXMLException
{
    VOCORE_EXCEPTION_CLASS(VoNullXMLStreamElementException)
public:
    VoNullXMLStreamElementException(); ///< "Null XML stream element"
};

/// An attribute that an element does not have.
class VOCORE_EXPORT VoUnknownXMLAttributeException : public VoXMLException
{
    VOCORE_EXCEPTION_CLASS(VoUnknownXMLAttributeException)
public:
    VoUnknownXMLAttributeException(const VoString& name); ///< "Unknown attribute: " + name
};

/// An element that nothing is registered for.
class VOCORE_EXPORT VoUnknownXMLElementException : public VoXMLException
{
    VOCORE_EXCEPTION_CLASS(VoUnknownXMLElementException)
public:
    VoUnknownXMLElementException(const VoString& name); ///< "Unknown element: " + name
};

/// A second loading rule for one element path.
class VOCORE_EXPORT VoXMLDuplicateRuleException : public VoXMLException
{
    VOCORE_EXCEPTION_CLASS(VoXMLDuplicateRuleException)
public:
    VoXMLDuplicateRuleException();                      ///< "Duplicate rule for XML path"
    VoXMLDuplicateRuleException(const VoXMLPath& path); ///< "Duplicate rule for XML path: " + path
};
