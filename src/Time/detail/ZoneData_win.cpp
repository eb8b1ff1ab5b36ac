#include <Time/detail/ZoneData.h>

#include <QtCore/QDateTime>
#include <QtCore/QTimeZone>

#include <utility>

namespace vo::detail {
namespace {

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
    QTimeZone zone(QByteArray::fromStdString(id));
    return zone.isValid() ? std::make_shared<RegistryZone>(std::move(zone)) : nullptr;
}

} // namespace vo::detail
