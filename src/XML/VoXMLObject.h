#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

/// The namespace of the library's own types. Child elements that VoXMLObject creates lie in it; readers go by the local
/// names.
///
/// A document that declares it once on its root, `writer.writeNamespace(VoXMLTypesNamespace(), "vo")`, spares the
/// declaration on every element.
VOCORE_EXPORT const VoString& VoXMLTypesNamespace();

/// Writes values of the library's types to XML and reads them back, so that every document spells them alike:
///
///     VoXMLObject<VoPoint>::Write(*root->createElement("Origin"), origin);
///     const VoPoint origin = VoXMLObject<VoPoint>::Read(*child);
///
/// Both work on the content of an element that the caller has opened and named. Declared here for
///
/// | Type | Content |
/// |---|---|
/// | `bool` | "true" or "false" |
/// | `int`, `size_t` | decimal |
/// | `double` | the Base64 text of its bits: every bit comes back, also of NaN and -0.0 |
/// | VoString, VoFilePath, VoUUID | the text |
/// | VoTimeDuration, VoTimePoint | nanoseconds in decimal |
/// | VoDateTime | attribute "rep", "utc" or "local", and its text |
/// | VoPair of VoString, of VoFilePath | children "First" and "Second" |
/// | VoDeque of `int`, `double`, VoString | a child "Item" for each element |
/// | VoPoint, VoPointD | children "X" and "Y" |
/// | VoProperty | children "Name" and "Value" |
/// | VoProperties | a child "Property" for each property |
/// | VoVariant | a child named after its kind; none for Null |
///
/// and, in its own header, for VoDataTable.
///
/// Texts come back without leading and trailing white space, and from a stream with a line feed for each line break:
/// that is how elements are read. A text with a character that XML cannot hold is refused when it is written (see
/// VoXMLStreamWriter).
///
/// Read() takes the children it needs by their names, without regard to case; the first of a name counts, others are
/// ignored. It throws
/// - VoNullXMLStreamElementException for a missing child, VoUnknownXMLAttributeException for a missing attribute;
/// - VoInvalidConversionException(text, "Boolean", "Integer", "Size", "long long" or "VoDateTime") for a text that is
///   no such value;
/// - VoInvalidParameterException "Invalid string length" for a double that is no Base64 text;
/// - VoUnknownXMLElementException(name) for a variant of an unknown kind;
/// - and what the element reader throws.
template <typename T>
class VoXMLObject;

/// @cond INTERNAL
#define VOCORE_XML_OBJECT(...)                                                                                         \
    template <>                                                                                                        \
    class VOCORE_EXPORT VoXMLObject<__VA_ARGS__>                                                                       \
    {                                                                                                                  \
    public:                                                                                                            \
        static void Write(VoXMLElementWriter& element, const __VA_ARGS__& value);                                      \
        static __VA_ARGS__ Read(VoXMLElementReader& element);                                                          \
    };

VOCORE_XML_OBJECT(bool)
VOCORE_XML_OBJECT(int)
VOCORE_XML_OBJECT(decltype(sizeof(0)))
VOCORE_XML_OBJECT(double)
VOCORE_XML_OBJECT(VoString)
VOCORE_XML_OBJECT(VoFilePath)
VOCORE_XML_OBJECT(VoUUID)
VOCORE_XML_OBJECT(VoTimeDuration)
VOCORE_XML_OBJECT(VoTimePoint)
VOCORE_XML_OBJECT(VoDateTime)
VOCORE_XML_OBJECT(VoPair<VoString, VoString>)
VOCORE_XML_OBJECT(VoPair<VoFilePath, VoFilePath>)
VOCORE_XML_OBJECT(VoDeque<int>)
VOCORE_XML_OBJECT(VoDeque<double>)
VOCORE_XML_OBJECT(VoDeque<VoString>)
VOCORE_XML_OBJECT(VoPoint)
VOCORE_XML_OBJECT(VoPointD)
VOCORE_XML_OBJECT(VoProperty)
VOCORE_XML_OBJECT(VoProperties)
VOCORE_XML_OBJECT(VoVariant)

#undef VOCORE_XML_OBJECT
/// @endcond
