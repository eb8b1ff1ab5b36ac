#include <XML/VoXMLAttribute.h>

#include <ostream>
#include <utility>

VoXMLAttribute::VoXMLAttribute() = default;

VoXMLAttribute::VoXMLAttribute(VoString name, VoString value)
    : m_name(std::make_shared<const VoString>(std::move(name)))
    , m_value(std::move(value))
{
}

VoXMLAttribute::VoXMLAttribute(std::shared_ptr<const VoString> name, VoString value) noexcept
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
    static const VoString* const empty = new VoString;
    return m_name ? *m_name : *empty;
}

const VoString& VoXMLAttribute::value() const
{
    return m_value;
}

void VoXMLAttribute::setName(const VoString& name)
{
    m_name = std::make_shared<const VoString>(name);
}

void VoXMLAttribute::setValue(const VoString& value)
{
    m_value = value;
}

bool VoXMLAttribute::operator==(const VoXMLAttribute& other) const
{
    return name().toStdString() == other.name().toStdString() && m_value.toStdString() == other.m_value.toStdString();
}

bool VoXMLAttribute::operator!=(const VoXMLAttribute& other) const
{
    return !(*this == other);
}

std::ostream& operator<<(std::ostream& stream, const VoXMLAttribute& attribute)
{
    return stream << attribute.name() << "=\"" << attribute.value() << '"';
}
