#include <Time/detail/ZoneData.h>

#include <QtCore/QDateTime>
#include <QtCore/QTimeZone>

#include <utility>

namespace vo::detail {
namespace {

// The framework's table, by which the system's zones are found, keeps the names under which zones entered it.
struct RenamedZone
{
    const char* today;
    const char* former;
};
constexpr RenamedZone RenamedZones[] = {
    {"Africa/Asmara", "Africa/Asmera"},
    {"America/Argentina/Buenos_Aires", "America/Buenos_Aires"},
    {"America/Argentina/Catamarca", "America/Catamarca"},
    {"America/Argentina/Cordoba", "America/Cordoba"},
    {"America/Argentina/Jujuy", "America/Jujuy"},
    {"America/Argentina/Mendoza", "America/Mendoza"},
    {"America/Atikokan", "America/Coral_Harbour"},
    {"America/Indiana/Indianapolis", "America/Indianapolis"},
    {"America/Kentucky/Louisville", "America/Louisville"},
    {"America/Nuuk", "America/Godthab"},
    {"Asia/Ho_Chi_Minh", "Asia/Saigon"},
    {"Asia/Kathmandu", "Asia/Katmandu"},
    {"Asia/Kolkata", "Asia/Calcutta"},
    {"Asia/Yangon", "Asia/Rangoon"},
    {"Atlantic/Faroe", "Atlantic/Faeroe"},
    {"Europe/Kyiv", "Europe/Kiev"},
    {"Pacific/Chuuk", "Pacific/Truk"},
    {"Pacific/Kanton", "Pacific/Enderbury"},
    {"Pacific/Pohnpei", "Pacific/Ponape"},
};

// The framework's reading of the registry, which knows standard times and the rules of recent years.
class RegistryZone : public ZoneData
{
public:
    explicit RegistryZone(QTimeZone zone)
        : m_zone(std::move(zone))
    {
    }
    int offset(std::int64_t instant) const override
    {
        return m_zone.offsetFromUtc(QDateTime::fromSecsSinceEpoch(instant, Qt::UTC));
    }

private:
    QTimeZone m_zone;
};

} // namespace

int LocalOffset(std::int64_t instant)
{
    return RegistryZone(QTimeZone::systemTimeZone()).offset(instant);
}

std::shared_ptr<const ZoneData> ZoneData::Load(const std::string& id)
{
    QTimeZone zone(QByteArray::fromStdString(FrameworkZoneId(id)));
    return zone.isValid() ? std::make_shared<RegistryZone>(std::move(zone)) : nullptr;
}

std::string FrameworkZoneId(const std::string& id)
{
    for (const RenamedZone& zone : RenamedZones) {
        if (id == zone.today)
            return zone.former;
    }
    return id;
}

std::string ZoneIdOfFramework(const std::string& id)
{
    for (const RenamedZone& zone : RenamedZones) {
        if (id == zone.former)
            return zone.today;
    }
    return id;
}

} // namespace vo::detail
