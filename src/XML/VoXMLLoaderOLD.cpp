#include <XML/VoXMLLoaderOLD.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoWeakPtr.h>
#include <Core/VoXMLException.h>
#include <Subsystem/VoLogging.h>
#include <XML/VoXMLRule.h>
#include <XML/VoXMLStreamElementReader.h>
#include <XML/VoXMLStreamReader.h>
#include <XML/detail/XMLPathOrder.h>

#include <map>
#include <utility>

namespace {

using TokenType = VoXMLStreamReader::TokenType;

// A document that is not well formed is met by the reader's next step or by one that an action makes; an action may
// also refuse what it read with the same exception. The reader has logged its own text.
template <typename Step>
auto Reading(VoXMLStreamReader& reader, Step step)
{
    try {
        return step();
    } catch (const VoInvalidXMLException&) {
        if (reader.tokenType() != VoXMLStreamReader::Invalid)
            throw;
        throw VoXMLException("Reader failed to load content");
    }
}

TokenType Next(VoXMLStreamReader& reader)
{
    return Reading(reader, [&] { return reader.next(); });
}

} // namespace

struct VoXMLLoaderOLD::Private
{
    VoWeakPtr<VoXMLLoaderOLD> self; // for the rules
    // Shared, since an action may replace the rule that it belongs to.
    std::map<VoXMLPath, std::shared_ptr<VoXMLRule>, vo::detail::XMLPathOrder> rules;
};

VoXMLLoaderOLD::VoXMLLoaderOLD()
    : m_private(std::make_unique<Private>())
{
}

VoXMLLoaderOLD::~VoXMLLoaderOLD() = default;

VoSharedPtr<VoXMLLoaderOLD> VoXMLLoaderOLD::Create()
{
    VoSharedPtr<VoXMLLoaderOLD> loader(new VoXMLLoaderOLD);
    loader->m_private->self = loader;
    return loader;
}

void VoXMLLoaderOLD::add(VoUniquePtr<VoXMLRule> rule)
{
    if (m_private->rules.count(rule->path()) > 0)
        throw VoXMLDuplicateRuleException(rule->path());
    replace(std::shared_ptr<VoXMLRule>(rule.release()));
}

void VoXMLLoaderOLD::replace(std::shared_ptr<VoXMLRule> rule)
{
    rule->setLoader(m_private->self);
    m_private->rules[rule->path()] = rule;
}

void VoXMLLoaderOLD::load(VoXMLStreamReader& reader)
{
    const bool isAtStartTag = reader.tokenType() == VoXMLStreamReader::StartElement;
    for (TokenType token = isAtStartTag ? VoXMLStreamReader::StartElement : Next(reader);
         token != VoXMLStreamReader::EndDocument; token = Next(reader)) {
        if (token == VoXMLStreamReader::StartElement)
            apply(reader);
    }
}

void VoXMLLoaderOLD::apply(VoXMLStreamReader& reader)
{
    const auto found = m_private->rules.find(reader.openPath());
    if (found == m_private->rules.end())
        return;
    const std::shared_ptr<VoXMLRule> rule = found->second;
    const std::shared_ptr<VoXMLStreamElementReader> element = reader.currentElement();
    Reading(reader, [&] { rule->apply(*element); });
}
