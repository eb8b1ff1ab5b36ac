#pragma once

#include <XML/VoXMLAttributeSet.h>

#include <cstddef>
#include <utility>

class QXmlStreamAttributes;

namespace vo::detail {

/// Fills an attribute set from a source whose names are known to be unique, without searching it for each one.
class XMLAttributeCollector
{
public:
    /// The attributes of a start tag, by their local names. One with a prefix keeps it where its local name is taken,
    /// by an attribute without a prefix or by an earlier one: in `<a r:id="1" id="2"/>` these are "r:id" and "id".
    static VoXMLAttributeSet Collect(const QXmlStreamAttributes& attributes);

    void reserve(std::size_t count) { m_set.m_attributes.reserve(count); }
    void append(VoString name, VoString value) { m_set.m_attributes.emplace_back(std::move(name), std::move(value)); }
    VoXMLAttributeSet take() { return std::move(m_set); }

private:
    VoXMLAttributeSet m_set;
};

} // namespace vo::detail
