#include <XML/VoXMLRule.h>

#include <Core/VoException.h>
#include <Core/VoObject.h>
#include <Core/VoPair.h>
#include <Core/VoString.h>
#include <XML/VoXMLLoaderOLD.h>

#include <map>
#include <utility>

namespace {

// Objects of one rule, and where to look on: the rule that added it, which may be gone by then.
struct Memory
{
    std::map<VoString, VoSharedPtr<VoObject>> objects;
    std::shared_ptr<const Memory> outer;
};

} // namespace

struct VoXMLRule::Private
{
    VoXMLPath path;
    Action action;
    VoWeakPtr<VoXMLLoaderOLD> loader;
    std::shared_ptr<Memory> memory = std::make_shared<Memory>();
};

VoXMLRule::VoXMLRule(const VoXMLPath& path, Action action)
    : d(std::make_unique<Private>())
{
    d->path = path;
    d->action = std::move(action);
}

VoXMLRule::~VoXMLRule() = default;

const VoXMLPath& VoXMLRule::path() const
{
    return d->path;
}

void VoXMLRule::setLoader(VoWeakPtr<VoXMLLoaderOLD> loader)
{
    d->loader = std::move(loader);
}

VoWeakPtr<VoXMLLoaderOLD> VoXMLRule::loader() const
{
    return d->loader;
}

void VoXMLRule::setMemory(const VoPair<VoString, VoSharedPtr<VoObject>>& entry)
{
    d->memory->objects[entry.first] = entry.second;
}

VoSharedPtr<VoObject> VoXMLRule::readMemory(const VoString& name) const
{
    for (const Memory* memory = d->memory.get(); memory; memory = memory->outer.get()) {
        const auto found = memory->objects.find(name);
        if (found != memory->objects.end())
            return found->second;
    }
    return {};
}

void VoXMLRule::addChildRule(const VoString& name, Action action)
{
    const VoSharedPtr<VoXMLLoaderOLD> parent = d->loader.lock();
    if (!parent)
        throw VoNullPointerException("XML rule cannot add a child rule when it is not assigned to a parent loader");
    auto child = std::make_shared<VoXMLRule>(d->path.pushed(name), std::move(action));
    child->d->memory->outer = d->memory;
    parent->replace(std::move(child));
}

void VoXMLRule::apply(VoXMLElementReader& element)
{
    if (d->action)
        d->action(*this, element);
}
