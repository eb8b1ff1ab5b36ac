#include <Core/VoVersion.h>

#include <Core/VoString.h>

#include <limits>
#include <ostream>
#include <string>

namespace {

int Incremented(int number) noexcept
{
    return number == std::numeric_limits<int>::max() ? number : number + 1;
}

int Order(int left, int right) noexcept
{
    return left < right ? -1 : left > right ? 1 : 0;
}

} // namespace

VoVersion& VoVersion::setMajor(int major) noexcept
{
    m_major = major;
    return *this;
}

VoVersion& VoVersion::setMinor(int minor) noexcept
{
    m_minor = minor;
    return *this;
}

VoVersion& VoVersion::setRevision(int revision) noexcept
{
    m_revision = revision;
    return *this;
}

VoVersion& VoVersion::setBuild(BuildType build) noexcept
{
    m_build = build;
    return *this;
}

VoVersion& VoVersion::incrementMajor() noexcept
{
    return setMajor(Incremented(m_major));
}

VoVersion& VoVersion::incrementMinor() noexcept
{
    return setMinor(Incremented(m_minor));
}

VoVersion& VoVersion::incrementRevision() noexcept
{
    return setRevision(Incremented(m_revision));
}

int VoVersion::compare(const VoVersion& other) const noexcept
{
    if (const int order = Order(m_major, other.m_major); order != 0)
        return order;
    if (const int order = Order(m_minor, other.m_minor); order != 0)
        return order;
    return Order(m_revision, other.m_revision);
}

VoString VoVersion::toString() const
{
    return Serialize(*this);
}

VoString VoVersion::Serialize(const VoVersion& version)
{
    return VoString(std::to_string(version.m_major) + "." + std::to_string(version.m_minor) + "." +
                    std::to_string(static_cast<std::int32_t>(version.m_build)) + "." +
                    std::to_string(version.m_revision));
}

VoVersion VoVersion::Deserialize(const VoString& text)
{
    int parts[4] = {0, 0, 0, 0};
    std::size_t begin = 0;
    for (int& part : parts) {
        if (begin > text.size())
            break;
        const std::size_t end = std::min(text.find('.', begin, VoString::CaseSensitive), text.size());
        part = text.substring(begin, end - begin).toInt();
        begin = end + 1;
    }
    return VoVersion(parts[0], parts[1], parts[3], static_cast<BuildType>(parts[2]));
}

std::ostream& operator<<(std::ostream& stream, const VoVersion& version)
{
    return stream << version.toString();
}

std::size_t std::hash<VoVersion>::operator()(const VoVersion& version) const noexcept
{
    std::size_t mixed = 0;
    for (const int part : {version.major(), version.minor(), version.revision()})
        mixed = mixed * 1000003U + std::hash<int>()(part);
    return mixed;
}
