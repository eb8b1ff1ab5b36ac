#pragma once

#include <XML/VoXMLAttributeSet.h>
#include <XML/detail/XMLNames.h>

class QXmlStreamAttributes;

namespace vo::detail {

/// Fills an attribute set from a source whose names are known to be unique, without searching it for each one.
class XMLAttributeCollector
{
public:
    /// Adds the attributes of a start tag to an empty set, by their local names. One with a prefix keeps it where its
    /// local name is taken, by an attribute without a prefix or by an earlier one: in `<a r:id="1" id="2"/>` these are
    /// "r:id" and "id".
    static void Collect(const QXmlStreamAttributes& attributes, XMLReadNames& names, VoXMLAttributeSet& set);
    /// Appends an attribute whose name the set does not have.
    static void Append(VoXMLAttributeSet& set, VoString name, VoString value);
};

} // namespace vo::detail
