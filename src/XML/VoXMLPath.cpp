#include <XML/VoXMLPath.h>

#include <ostream>

namespace {

VoCaseSensitiveString Joined(std::initializer_list<VoString> names)
{
    std::string text;
    const char* separator = "";
    for (const VoString& name : names) {
        text.append(separator).append(name.toStdString());
        separator = "/";
    }
    return VoString(std::move(text));
}

} // namespace

VoXMLPath::VoXMLPath() = default;

VoXMLPath::VoXMLPath(const VoString& text)
    : m_text(text)
{
}

VoXMLPath::VoXMLPath(const char* text)
    : m_text(VoString(text))
{
}

VoXMLPath::VoXMLPath(std::initializer_list<VoString> names)
    : m_text(Joined(names))
{
}

VoXMLPath::VoXMLPath(const VoXMLPath& other) = default;
VoXMLPath::VoXMLPath(VoXMLPath&& other) noexcept = default;
VoXMLPath& VoXMLPath::operator=(const VoXMLPath& other) = default;
VoXMLPath& VoXMLPath::operator=(VoXMLPath&& other) noexcept = default;
VoXMLPath::~VoXMLPath() = default;

void VoXMLPath::push(const VoString& name)
{
    *this = pushed(name);
}

VoXMLPath VoXMLPath::pushed(const VoString& name) const
{
    return m_text.isEmpty() ? VoXMLPath(name) : VoXMLPath(m_text + "/" + name);
}

bool VoXMLPath::isEmpty() const
{
    return m_text.isEmpty();
}

const VoString& VoXMLPath::toString() const&
{
    return m_text;
}

VoString VoXMLPath::toString() &&
{
    return std::move(m_text);
}

bool VoXMLPath::operator==(const VoXMLPath& other) const
{
    return m_text == other.m_text;
}

bool VoXMLPath::operator!=(const VoXMLPath& other) const
{
    return m_text != other.m_text;
}

bool VoXMLPath::operator<(const VoXMLPath& other) const
{
    return m_text < other.m_text;
}

std::ostream& operator<<(std::ostream& stream, const VoXMLPath& path)
{
    return stream << path.toString();
}

std::size_t std::hash<VoXMLPath>::operator()(const VoXMLPath& path) const noexcept
{
    return std::hash<std::string>()(path.toString().toStdString());
}
