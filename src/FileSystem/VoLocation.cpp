#include <FileSystem/VoLocation.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <FileSystem/VoDirectoryPath.h>

#include <QtCore/QUrl>

#include <ostream>
#include <utility>

VoLocation::VoLocation() = default;

VoLocation::VoLocation(const VoFilePath& file)
    : m_file(file)
{
}

VoLocation::VoLocation(const VoUrl& url)
    : m_url(url)
    , m_isUrl(true)
{
}

VoLocation::VoLocation(const VoLocation& other) = default;

VoLocation::VoLocation(VoLocation&& other) noexcept
    : m_file(std::move(other.m_file))
    , m_url(std::move(other.m_url))
    , m_isUrl(std::exchange(other.m_isUrl, false))
{
}

VoLocation& VoLocation::operator=(const VoLocation& other) = default;

VoLocation& VoLocation::operator=(VoLocation&& other) noexcept
{
    m_file = std::move(other.m_file);
    m_url = std::move(other.m_url);
    m_isUrl = std::exchange(other.m_isUrl, false);
    return *this;
}

VoLocation::~VoLocation() = default;

VoLocation VoLocation::FromText(const VoString& text)
{
    if (!text.contains("://"))
        return VoFilePath(text);
    const VoUrl url(text);
    if (!url.isValid())
        throw VoInvalidParameterException("Invalid URL: " + text);
    return url;
}

bool VoLocation::isNull() const noexcept
{
    return m_isUrl ? m_url.isNull() : m_file.isNull();
}

bool VoLocation::isUrl() const noexcept
{
    return m_isUrl;
}

const VoFilePath& VoLocation::file() const
{
    if (m_isUrl)
        throw VoInvalidCallException("Not a file: " + toString());
    return m_file;
}

const VoUrl& VoLocation::url() const
{
    if (!m_isUrl)
        throw VoInvalidCallException("Not a URL: " + toString());
    return m_url;
}

const VoString& VoLocation::toString() const noexcept
{
    return m_isUrl ? m_url.toString() : m_file.path();
}

VoLocation VoLocation::withoutUser() const
{
    return m_isUrl ? VoLocation(VoUrl(m_url.toQUrl().adjusted(QUrl::RemoveUserInfo))) : *this;
}

VoLocation VoLocation::beside(const VoFilePath& relative) const
{
    if (m_isUrl)
        return m_url.parent().appended(relative);
    return m_file.parent().appended(relative);
}

VoString VoLocation::Serialize(const VoLocation& location)
{
    return location.toString();
}

VoLocation VoLocation::Deserialize(const VoString& text)
{
    return FromText(text);
}

std::ostream& operator<<(std::ostream& stream, const VoLocation& location)
{
    return stream << location.toString();
}

std::size_t std::hash<VoLocation>::operator()(const VoLocation& location) const noexcept
{
    return location.isUrl() ? std::hash<VoUrl>()(location.url()) : std::hash<VoFilePath>()(location.file());
}
