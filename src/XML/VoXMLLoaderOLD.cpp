#include <XML/VoXMLLoaderOLD.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoWeakPtr.h>
#include <Core/VoXMLException.h>
#include <Subsystem/VoLogging.h>
#include <XML/VoXMLRule.h>
#include <XML/VoXMLStreamElementReader.h>
#include <XML/VoXMLStreamReader.h>

#include <map>
#include <utility>

namespace {

using TokenType = VoXMLStreamReader::TokenType;

TokenType Next(VoXMLStreamReader& reader)
{
    try {
        return reader.next();
    } catch (const VoInvalidXMLException&) { // whose text the reader has logged
        throw VoXMLException("Reader failed to load content");
    }
}

} // namespace

struct VoXMLLoaderOLD::Private
{
    VoWeakPtr<VoXMLLoaderOLD> self; // for the rules
    // Shared, since an action may replace the rule that it belongs to.
    std::map<VoXMLPath, std::shared_ptr<VoXMLRule>> rules;
};

VoXMLLoaderOLD::VoXMLLoaderOLD()
    : d(std::make_unique<Private>())
{
}

VoXMLLoaderOLD::~VoXMLLoaderOLD() = default;

VoSharedPtr<VoXMLLoaderOLD> VoXMLLoaderOLD::Create()
{
    VoSharedPtr<VoXMLLoaderOLD> loader(new VoXMLLoaderOLD);
    loader->d->self = loader;
    return loader;
}

void VoXMLLoaderOLD::add(VoUniquePtr<VoXMLRule> rule)
{
    if (d->rules.count(rule->path()) > 0)
        throw VoXMLDuplicateRuleException(rule->path());
    replace(std::shared_ptr<VoXMLRule>(rule.release()));
}

void VoXMLLoaderOLD::replace(std::shared_ptr<VoXMLRule> rule)
{
    rule->setLoader(d->self);
    d->rules[rule->path()] = rule;
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
    const auto found = d->rules.find(reader.currentPath());
    if (found == d->rules.end())
        return;
    const std::shared_ptr<VoXMLRule> rule = found->second;
    const std::shared_ptr<VoXMLStreamElementReader> element = reader.currentElement();
    rule->apply(*element);
}
