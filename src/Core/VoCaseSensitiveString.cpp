#include <Core/VoCaseSensitiveString.h>

#include <string_view>

VoCaseSensitiveString::VoCaseSensitiveString() = default;

VoCaseSensitiveString::VoCaseSensitiveString(const VoString& string)
    : VoString(string)
{
}

VoCaseSensitiveString::VoCaseSensitiveString(VoString&& string)
    : VoString(std::move(string))
{
}

VoCaseSensitiveString::VoCaseSensitiveString(const VoCaseSensitiveString& other) = default;
VoCaseSensitiveString::VoCaseSensitiveString(VoCaseSensitiveString&& other) noexcept = default;
VoCaseSensitiveString::~VoCaseSensitiveString() = default;
VoCaseSensitiveString& VoCaseSensitiveString::operator=(const VoCaseSensitiveString& other) = default;
VoCaseSensitiveString& VoCaseSensitiveString::operator=(VoCaseSensitiveString&& other) noexcept = default;

bool VoCaseSensitiveString::operator==(const char* text) const
{
    return equal(text, CaseSensitive);
}

bool VoCaseSensitiveString::operator==(const VoComparableString& other) const
{
    return size() == other.size() && startsWith(other, CaseSensitive);
}

bool VoCaseSensitiveString::operator!=(const char* text) const
{
    return !(*this == text);
}

bool VoCaseSensitiveString::operator!=(const VoComparableString& other) const
{
    return !(*this == other);
}

bool VoCaseSensitiveString::operator<(const VoComparableString& other) const
{
    return compare(other, CaseSensitive) < 0;
}

std::size_t std::hash<VoCaseSensitiveString>::operator()(const VoCaseSensitiveString& string) const noexcept
{
    return std::hash<std::string>()(string.toStdString());
}
