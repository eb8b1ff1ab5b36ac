#include <Core/VoProperty.h>

#include <ostream>

VoProperty::VoProperty() = default;

VoProperty::VoProperty(VoString name)
    : m_name(std::move(name))
{
}

VoProperty::VoProperty(VoString name, VoVariant value)
    : m_name(std::move(name))
    , m_value(std::move(value))
{
}

VoProperty::VoProperty(const VoProperty& other) = default;
VoProperty::VoProperty(VoProperty&& other) noexcept = default;
VoProperty& VoProperty::operator=(VoProperty&& other) noexcept = default;
VoProperty::~VoProperty() = default;

VoProperty& VoProperty::operator=(const VoProperty& other)
{
    return *this = VoProperty(other);
}

void VoProperty::setName(VoString name)
{
    m_name = std::move(name);
}

void VoProperty::setValue(VoVariant value)
{
    m_value = std::move(value);
}

bool VoProperty::equalName(const VoProperty& other) const
{
    return m_name == other.m_name;
}

bool VoProperty::equalValue(const VoProperty& other) const
{
    return m_value == other.m_value;
}

bool VoProperty::operator==(const VoProperty& other) const
{
    return equalName(other) && equalValue(other);
}

bool VoProperty::operator!=(const VoProperty& other) const
{
    return !(*this == other);
}

std::ostream& operator<<(std::ostream& stream, const VoProperty& property)
{
    return stream << property.m_name << " = " << property.m_value;
}

std::size_t std::hash<VoProperty>::operator()(const VoProperty& property) const noexcept
{
    return std::hash<VoString>()(property.name()) * 31 + std::hash<VoVariant>()(property.value());
}
