#include <Core/VoProperties.h>

#include <Core/detail/Callback.h>

#include <algorithm>
#include <ostream>
#include <unordered_map>
#include <utility>

struct VoProperties::Private
{
    VoDeque<VoProperty> properties;
};

VoProperties::VoProperties() noexcept = default;

VoProperties::VoProperties(const VoProperty& property)
{
    add(property);
}

VoProperties::VoProperties(VoProperty&& property)
{
    add(std::move(property));
}

VoProperties::VoProperties(std::initializer_list<VoProperty> properties)
{
    for (const VoProperty& property : properties)
        add(property);
}

VoProperties::VoProperties(VoDeque<VoProperty> properties)
{
    auto& all = own();
    std::unordered_map<VoString, std::size_t> places;
    for (VoProperty& property : properties) {
        const auto [place, isNew] = places.emplace(property.name(), all.size());
        if (isNew)
            all.pushBack(std::move(property));
        else
            all[place->second].setValue(property.value());
    }
}

VoProperties::VoProperties(const VoProperties& other)
    : m_private(other.m_private ? std::make_unique<Private>(*other.m_private) : nullptr)
{
}

VoProperties::VoProperties(VoProperties&& other) noexcept = default;

VoProperties& VoProperties::operator=(const VoProperties& other)
{
    return *this = VoProperties(other);
}

VoProperties& VoProperties::operator=(VoProperties&& other) noexcept
{
    VoProperties taken(std::move(other));
    m_private.swap(taken.m_private);
    return *this;
}

VoProperties::~VoProperties() = default;

VoDeque<VoProperty>& VoProperties::own()
{
    if (!m_private)
        m_private = std::make_unique<Private>();
    return m_private->properties;
}

const VoDeque<VoProperty>& VoProperties::properties() const noexcept
{
    // Never destroyed: sets may be read while the process ends.
    static const auto* const none = new VoDeque<VoProperty>;
    return m_private ? m_private->properties : *none;
}

const VoProperty* VoProperties::find(const VoString& name) const
{
    const auto found = std::find_if(begin(), end(), [&](const VoProperty& p) { return p.name() == name; });
    return found == end() ? nullptr : &*found;
}

void VoProperties::add(VoProperty property)
{
    auto& all = own();
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto& held) { return held.equalName(property); });
    if (found == all.end())
        all.pushBack(std::move(property));
    else
        found->setValue(property.value());
}

void VoProperties::add(VoString name, VoVariant value)
{
    add(VoProperty(std::move(name), std::move(value)));
}

VoProperties& VoProperties::operator<<(VoProperty property)
{
    add(std::move(property));
    return *this;
}

const VoProperty& VoProperties::get(const VoString& name) const
{
    if (const VoProperty* property = find(name))
        return *property;
    throw VoNotFoundException(name);
}

const VoProperty& VoProperties::getReference(const VoString& name) const
{
    return get(name);
}

VoProperty VoProperties::get(const VoString& name, const VoVariant& defaultValue) const
{
    const VoProperty* property = find(name);
    return property ? *property : VoProperty(name, defaultValue);
}

const VoVariant& VoProperties::value(const VoString& name) const
{
    return get(name).value();
}

VoVariant VoProperties::value(const VoString& name, const VoVariant& defaultValue) const
{
    const VoProperty* property = find(name);
    return property ? property->value() : defaultValue;
}

bool VoProperties::hasProperty(const VoString& name) const
{
    return find(name) != nullptr;
}

std::size_t VoProperties::size() const noexcept
{
    return properties().size();
}

void VoProperties::clear() noexcept
{
    m_private.reset();
}

VoProperties::iterator VoProperties::begin()
{
    return own().begin();
}

VoProperties::iterator VoProperties::end()
{
    return own().end();
}

VoProperties::const_iterator VoProperties::begin() const noexcept
{
    return properties().begin();
}

VoProperties::const_iterator VoProperties::end() const noexcept
{
    return properties().end();
}

void VoProperties::forEach(const std::function<void(VoProperty&)>& function)
{
    vo::detail::RequireCallback(function);
    for (VoProperty& property : *this)
        function(property);
}

void VoProperties::forEach(const std::function<void(const VoProperty&)>& function) const
{
    vo::detail::RequireCallback(function);
    for (const VoProperty& property : *this)
        function(property);
}

bool VoProperties::operator==(const VoProperties& other) const
{
    return properties() == other.properties();
}

bool VoProperties::operator!=(const VoProperties& other) const
{
    return !(*this == other);
}

std::ostream& operator<<(std::ostream& stream, const VoProperties& properties)
{
    const char* separator = "{";
    for (const VoProperty& property : properties) {
        stream << separator << property;
        separator = ", ";
    }
    return stream << (properties.isEmpty() ? "{}" : "}");
}
