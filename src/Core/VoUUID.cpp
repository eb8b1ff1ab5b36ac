#include <Core/VoUUID.h>

#include <Core/VoHostTypes.h>

#include <ostream>

VoUUID::VoUUID()
    : VoUUID(sp_GetGUID())
{
}
VoUUID::VoUUID(Format)
    : VoUUID()
{
    m_text.replace("{", "", VoString::CaseSensitive);
    m_text.replace("}", "", VoString::CaseSensitive);
}
VoUUID::VoUUID(const VoString& text)
    : m_text(text)
{
}
VoUUID::VoUUID(const YString& text)
    : m_text(VoString(text))
{
}
VoUUID::VoUUID(const char* text)
    : m_text(VoString(text))
{
}
VoUUID::VoUUID(const VoUUID& other) = default;
VoUUID::VoUUID(VoUUID&& other) noexcept = default;
VoUUID& VoUUID::operator=(const VoUUID& other) = default;
VoUUID& VoUUID::operator=(VoUUID&& other) noexcept = default;
VoUUID::~VoUUID() = default;

VoUUID::operator YString() const
{
    return m_text.toYString();
}

bool VoUUID::operator==(const VoUUID& other) const
{
    return m_text == other.m_text;
}

bool VoUUID::operator!=(const VoUUID& other) const
{
    return m_text != other.m_text;
}

bool VoUUID::operator<(const VoUUID& other) const
{
    return m_text < other.m_text;
}

VoString VoUUID::Serialize(const VoUUID& uuid)
{
    return uuid.m_text;
}

VoUUID VoUUID::Deserialize(const VoString& text)
{
    return VoUUID(text);
}

std::ostream& operator<<(std::ostream& stream, const VoUUID& uuid)
{
    return stream << uuid.m_text;
}

std::size_t std::hash<VoUUID>::operator()(const VoUUID& uuid) const noexcept
{
    return std::hash<std::string>()(uuid.toString().toStdString());
}
