#include <XML/VoStreamXMLElementReader.h>

#include <Core/VoString.h>
#include <Core/detail/Callback.h>
#include <XML/VoXMLAttributeSet.h>
#include <XML/VoXMLPath.h>
#include <XML/detail/XMLReadEngine.h>

#include <utility>

using vo::detail::XMLElementState;
using vo::detail::XMLReadEngine;

VoAbstractXMLElementReader::~VoAbstractXMLElementReader() = default;

namespace {

// What default-made and moved-from handles refer to.
const std::shared_ptr<XMLElementState>& UnnamedElement()
{
    static const auto* const element = [] {
        auto* state = new std::shared_ptr<XMLElementState>(std::make_shared<XMLElementState>());
        (*state)->name = std::make_shared<const VoString>();
        return state;
    }();
    return *element;
}

} // namespace

VoStreamXMLElementReader::VoStreamXMLElementReader() = default;

VoStreamXMLElementReader::VoStreamXMLElementReader(std::shared_ptr<XMLElementState> element)
    : m_element(std::move(element))
{
}

VoStreamXMLElementReader::VoStreamXMLElementReader(const VoStreamXMLElementReader& other) = default;
VoStreamXMLElementReader::VoStreamXMLElementReader(VoStreamXMLElementReader&& other) noexcept = default;
VoStreamXMLElementReader& VoStreamXMLElementReader::operator=(const VoStreamXMLElementReader& other) = default;
VoStreamXMLElementReader& VoStreamXMLElementReader::operator=(VoStreamXMLElementReader&& other) noexcept = default;
VoStreamXMLElementReader::~VoStreamXMLElementReader() = default;

const std::shared_ptr<XMLElementState>& VoStreamXMLElementReader::element() const
{
    return m_element ? m_element : UnnamedElement();
}

const VoString& VoStreamXMLElementReader::name() const
{
    return *element()->name;
}

std::string_view VoStreamXMLElementReader::openPath() const
{
    return element()->engine->path(*element());
}

VoXMLPath VoStreamXMLElementReader::path() const
{
    return VoXMLPath(VoString(element()->path()));
}

bool VoStreamXMLElementReader::isOpen() const
{
    return element()->isOpen();
}

bool VoStreamXMLElementReader::isActive() const
{
    return element()->isCurrent();
}

std::size_t VoStreamXMLElementReader::depth() const
{
    return element()->depth;
}

const VoXMLAttributeSet& VoStreamXMLElementReader::attributes() const
{
    return element()->attributes;
}

bool VoStreamXMLElementReader::hasAttribute(const VoString& name) const
{
    return attributes().hasAttribute(name);
}

VoString VoStreamXMLElementReader::readAttribute(const VoString& name) const
{
    return attributes().readAttribute(name);
}

VoString VoStreamXMLElementReader::readAttribute(const VoString& name, const VoString& defaultValue) const
{
    return attributes().readAttribute(name, defaultValue);
}

void VoStreamXMLElementReader::forEachAttribute(const AttributeFunction& function) const
{
    vo::detail::RequireCallback(function);
    const std::shared_ptr<XMLElementState> visited = element(); // the function may let this handle go
    for (const VoXMLAttribute& attribute : visited->attributes)
        function(attribute.name(), attribute.value());
}

VoString VoStreamXMLElementReader::readText()
{
    const std::shared_ptr<XMLElementState> read = element();
    return XMLReadEngine::ReadText(read, "Cannot read text from inactive element");
}

VoUniquePtr<VoAbstractXMLElementReader> VoStreamXMLElementReader::nextChild()
{
    const std::shared_ptr<XMLElementState> parent = element();
    if (!XMLReadEngine::NextChild(parent))
        return {};
    return VoUniquePtr<VoAbstractXMLElementReader>(new VoStreamXMLElementReader(parent->engine->stack().back()));
}

void VoStreamXMLElementReader::forEachChild(const ChildFunction& function)
{
    vo::detail::RequireCallback(function);
    const std::shared_ptr<XMLElementState> parent = element();
    // Asking an element without text for its text reads it to its end; it then has no children, which is no mistake.
    while (!parent->isReadToEnd && XMLReadEngine::NextChild(parent)) {
        VoStreamXMLElementReader child(parent->engine->stack().back());
        function(child);
    }
}
