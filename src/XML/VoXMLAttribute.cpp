#include <XML/VoXMLAttribute.h>

#include <ostream>
#include <utility>

VoXMLAttribute::VoXMLAttribute() = default;

VoXMLAttribute::VoXMLAttribute(VoString name, VoString value)
    : m_name(std::move(name))
    , m_value(std::move(value))
{
}

VoXMLAttribute::VoXMLAttribute(const VoXMLAttribute& other) = default;
VoXMLAttribute::VoXMLAttribute(VoXMLAttribute&& other) noexcept = default;

VoXMLAttribute& VoXMLAttribute::operator=(const VoXMLAttribute& other)
{
    VoXMLAttribute copy(other);
    return *this = std::move(copy);
}

VoXMLAttribute& VoXMLAttribute::operator=(VoXMLAttribute&& other) noexcept = default;
VoXMLAttribute::~VoXMLAttribute() = default;

const VoString& VoXMLAttribute::name() const
{
    return m_name;
}

const VoString& VoXMLAttribute::value() const
{
    return m_value;
}

void VoXMLAttribute::setName(const VoString& name)
{
    m_name = name;
}

void VoXMLAttribute::setValue(const VoString& value)
{
    m_value = value;
}

bool VoXMLAttribute::operator==(const VoXMLAttribute& other) const
{
    return m_name.toStdString() == other.m_name.toStdString() && m_value.toStdString() == other.m_value.toStdString();
}

bool VoXMLAttribute::operator!=(const VoXMLAttribute& other) const
{
    return !(*this == other);
}

std::ostream& operator<<(std::ostream& stream, const VoXMLAttribute& attribute)
{
    return stream << attribute.name() << "=\"" << attribute.value() << '"';
}
