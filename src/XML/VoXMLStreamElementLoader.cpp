#include <XML/VoXMLStreamElementLoader.h>

#include <Core/VoException.h>
#include <XML/detail/LoaderElementReader.h>
#include <XML/detail/XMLLimits.h>

#include <utility>

VoXMLStreamElementLoader::VoXMLStreamElementLoader(VoStreamXMLElementReader element, VoXMLStreamLoader loader)
    : m_element(std::move(element))
    , m_loader(std::move(loader))
{
    if (m_element.depth() >= vo::detail::MaximumXMLLevels)
        throw VoStackLimitException();
}

VoXMLStreamElementLoader::VoXMLStreamElementLoader(VoXMLStreamElementLoader&& other) noexcept = default;
VoXMLStreamElementLoader& VoXMLStreamElementLoader::operator=(VoXMLStreamElementLoader&& other) noexcept = default;
VoXMLStreamElementLoader::~VoXMLStreamElementLoader() = default;

const VoString& VoXMLStreamElementLoader::name() const
{
    return m_element.name();
}

VoXMLPath VoXMLStreamElementLoader::path() const
{
    return m_element.path();
}

VoString VoXMLStreamElementLoader::text()
{
    return m_element.readText();
}

VoString VoXMLStreamElementLoader::attribute(const VoString& name) const
{
    return m_element.readAttribute(name);
}

VoString VoXMLStreamElementLoader::attribute(const VoString& name, const VoString& defaultValue) const
{
    return m_element.readAttribute(name, defaultValue);
}

bool VoXMLStreamElementLoader::hasAttribute(const VoString& name) const
{
    return m_element.hasAttribute(name);
}

void VoXMLStreamElementLoader::forEachAttribute(const AttributeFunction& function) const
{
    m_element.forEachAttribute(function);
}

std::unique_ptr<VoXMLElementReader> VoXMLStreamElementLoader::reader() const
{
    return std::make_unique<vo::detail::LoaderElementReader>(m_element);
}

void VoXMLStreamElementLoader::processChildren(const ObjectFunction& onObject, const UnhandledFunction& onUnhandled)
{
    m_element.forEachChild([&](VoAbstractXMLElementReader& child) {
        auto& element = static_cast<VoStreamXMLElementReader&>(child); // as its forEachChild promises
        const VoXMLStreamLoader::Builder* builder = m_loader.find(element);
        if (builder && onObject) {
            onObject((*builder)(VoXMLStreamElementLoader(std::move(element), m_loader)));
        } else if (!builder && onUnhandled) {
            VoXMLStreamElementLoader unhandled(std::move(element), m_loader);
            onUnhandled(unhandled);
        }
    });
}

void VoXMLStreamElementLoader::processChildren(const ObjectFunction& onObject)
{
    processChildren(onObject, UnhandledFunction());
}

void VoXMLStreamElementLoader::processChildren(const UnhandledFunction& onUnhandled)
{
    processChildren(ObjectFunction(), onUnhandled);
}
