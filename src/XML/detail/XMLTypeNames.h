#pragma once

#include <Core/VoString.h>
#include <XML/VoXMLElementReader.h>
#include <XML/VoXMLElementWriter.h>
#include <XML/VoXMLObject.h>

#include <memory>

/// @file
/// The element and attribute names of typed values. Made once: a name that is a string already costs nothing for each
/// element.

namespace vo::detail {

/// Names of the children that typed values are written to.
struct XMLTypeNames
{
    const VoString first = "First";
    const VoString second = "Second";
    const VoString item = "Item";
    const VoString x = "X";
    const VoString y = "Y";
    const VoString name = "Name";
    const VoString value = "Value";
    const VoString property = "Property";
    const VoString representation = "rep";
    const VoString rows = "Rows";
    const VoString row = "Row";
    const VoString header = "header";
    const VoString columnSpan = "hspan";

    static const XMLTypeNames& Get(); ///< The one set; never destroyed.
};

/// Writes a value as a child element of the types' namespace, closed on return.
template <typename T>
void WriteTypedChild(VoXMLElementWriter& element, const VoString& name, const T& value)
{
    VoXMLObject<T>::Write(*element.createElement(name, VoXMLTypesNamespace()), value);
}

} // namespace vo::detail
