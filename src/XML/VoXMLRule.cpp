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
    : m_private(std::make_unique<Private>())
{
    m_private->path = path;
    m_private->action = std::move(action);
}

VoXMLRule::~VoXMLRule() = default;

const VoXMLPath& VoXMLRule::path() const
{
    return m_private->path;
}

void VoXMLRule::setLoader(VoWeakPtr<VoXMLLoaderOLD> loader)
{
    m_private->loader = std::move(loader);
}

VoWeakPtr<VoXMLLoaderOLD> VoXMLRule::loader() const
{
    return m_private->loader;
}

void VoXMLRule::setMemory(const VoPair<VoString, VoSharedPtr<VoObject>>& entry)
{
    m_private->memory->objects[entry.first] = entry.second;
}

VoSharedPtr<VoObject> VoXMLRule::readMemory(const VoString& name) const
{
    for (const Memory* memory = m_private->memory.get(); memory; memory = memory->outer.get()) {
        const auto found = memory->objects.find(name);
        if (found != memory->objects.end())
            return found->second;
    }
    return {};
}

void VoXMLRule::addChildRule(const VoString& name, Action action)
{
    const VoSharedPtr<VoXMLLoaderOLD> parent = m_private->loader.lock();
    if (!parent)
        throw VoNullPointerException("XML rule cannot add a child rule when it is not assigned to a parent loader");
    auto child = std::make_shared<VoXMLRule>(m_private->path.pushed(name), std::move(action));
    child->m_private->memory->outer = m_private->memory;
    parent->replace(std::move(child));
}

void VoXMLRule::apply(VoXMLElementReader& element)
{
    if (m_private->action)
        m_private->action(*this, element);
}
