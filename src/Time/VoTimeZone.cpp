#include <Time/VoTimeZone.h>

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Time/detail/CalendarDate.h>
#include <Time/detail/ZoneData.h>

#include <QtCore/QTimeZone>

#include <algorithm>
#include <ostream>
#include <string>
#include <utility>

using namespace vo::detail;

namespace {

constexpr std::size_t LongestId = 64;

// An identifier becomes the name of a file below the system's zone data, so none may lead out of there.
bool IsId(const std::string& id)
{
    const auto allowed = [](unsigned char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
               c == '+' || c == '/';
    };
    return !id.empty() && id.size() <= LongestId && id.front() != '/' && std::all_of(id.begin(), id.end(), allowed);
}

std::shared_ptr<const ZoneData> DataOf(const std::string& id)
{
    return IsId(id) ? ZoneData::Load(id) : nullptr;
}

} // namespace

class VoTimeZone::Private
{
public:
    std::string id;
    std::shared_ptr<const ZoneData> data;
};

VoTimeZone::VoTimeZone() noexcept = default;
VoTimeZone::VoTimeZone(const VoTimeZone& other) noexcept = default;
VoTimeZone& VoTimeZone::operator=(const VoTimeZone& other) noexcept = default;
VoTimeZone::~VoTimeZone() = default;

VoTimeZone::VoTimeZone(VoTimeZone&& other) noexcept
    : m_kind(std::exchange(other.m_kind, Kind::Utc))
    , m_private(std::move(other.m_private))
{
}

VoTimeZone& VoTimeZone::operator=(VoTimeZone&& other) noexcept
{
    VoTimeZone moved(std::move(other));
    m_kind = moved.m_kind;
    m_private.swap(moved.m_private);
    return *this;
}

VoTimeZone::VoTimeZone(Kind kind) noexcept
    : m_kind(kind)
{
}

VoTimeZone::VoTimeZone(const VoString& id)
{
    const std::string& text = id.toStdString();
    if (text == "UTC")
        return;
    auto data = DataOf(text);
    if (!data)
        throw VoInvalidParameterException("Unknown time zone: " + id);
    m_kind = Kind::Named;
    m_private = std::make_shared<const Private>(Private{text, std::move(data)});
}

VoTimeZone VoTimeZone::Utc() noexcept
{
    return VoTimeZone(Kind::Utc);
}

VoTimeZone VoTimeZone::Local() noexcept
{
    return VoTimeZone(Kind::Local);
}

bool VoTimeZone::IsKnown(const VoString& id)
{
    return id.toStdString() == "UTC" || DataOf(id.toStdString());
}

VoDeque<VoString> VoTimeZone::Ids()
{
    VoDeque<VoString> ids;
    for (const QByteArray& id : QTimeZone::availableTimeZoneIds()) {
        // The framework adds offsets of its own ("UTC+03:00"), which are no zones of the database.
        if (IsKnown(VoString(id.toStdString())))
            ids.push_back(VoString(id.toStdString()));
    }
    return ids;
}

VoString VoTimeZone::id() const
{
    switch (m_kind) {
    case Kind::Utc:
        return "UTC";
    case Kind::Local:
        return "Local";
    case Kind::Named:
        break;
    }
    return VoString(m_private->id);
}

int VoTimeZone::offsetSeconds(VoTimePoint instant) const
{
    if (isUtc())
        return 0;
    const std::int64_t seconds = FloorDivide(instant.timeSinceEpoch().count(), 1000000000);
    if (isLocal())
        return LocalOffset(seconds);
    return m_private->data->offset(seconds);
}

bool operator==(const VoTimeZone& a, const VoTimeZone& b) noexcept
{
    return a.m_kind == b.m_kind && (a.m_private == b.m_private || a.m_private->id == b.m_private->id);
}

std::ostream& operator<<(std::ostream& stream, const VoTimeZone& zone)
{
    return stream << zone.id();
}

std::size_t std::hash<VoTimeZone>::operator()(const VoTimeZone& zone) const noexcept
{
    return zone.m_private ? std::hash<std::string>()(zone.m_private->id) : static_cast<std::size_t>(zone.m_kind);
}
