#include <Documents/VoDataTableItem.h>

#include <Core/detail/Callback.h>

#include <algorithm>
#include <utility>

struct VoDataTableItem::Private
{
    VoDeque<VoVariant> values;
};

namespace {

VoDeque<VoVariant> Single(VoVariant value)
{
    VoDeque<VoVariant> values;
    values.pushBack(std::move(value));
    return values;
}

} // namespace

VoDataTableItem::VoDataTableItem() noexcept = default;

VoDataTableItem::VoDataTableItem(const VoVariant& value, std::size_t columnSpan)
    : VoDataTableItem(Single(value), columnSpan)
{
}

VoDataTableItem::VoDataTableItem(VoVariant&& value, std::size_t columnSpan)
    : VoDataTableItem(Single(std::move(value)), columnSpan)
{
}

VoDataTableItem::VoDataTableItem(const VoDeque<VoVariant>& values, std::size_t columnSpan)
    : VoDataTableItem(VoDeque<VoVariant>(values), columnSpan)
{
}

VoDataTableItem::VoDataTableItem(VoDeque<VoVariant>&& values, std::size_t columnSpan)
    : m_private(new Private{std::move(values)})
    , m_columnSpan(std::max<std::size_t>(columnSpan, 1))
{
}

VoDataTableItem::VoDataTableItem(const VoDataTableItem& other)
    : m_private(other.m_private ? std::make_unique<Private>(*other.m_private) : nullptr)
    , m_columnSpan(other.m_columnSpan)
{
}

VoDataTableItem::VoDataTableItem(VoDataTableItem&& other) noexcept
    : m_private(std::move(other.m_private))
    , m_columnSpan(std::exchange(other.m_columnSpan, 1))
{
}

VoDataTableItem& VoDataTableItem::operator=(const VoDataTableItem& other)
{
    return *this = VoDataTableItem(other);
}

VoDataTableItem& VoDataTableItem::operator=(VoDataTableItem&& other) noexcept
{
    VoDataTableItem taken(std::move(other));
    m_private.swap(taken.m_private);
    m_columnSpan = taken.m_columnSpan;
    return *this;
}

VoDataTableItem::~VoDataTableItem() = default;

const VoVariant& VoDataTableItem::value() const
{
    if (numberValues() != 1)
        throw VoInvalidCallException("Cannot get value from data table, number of items equals: " +
                                     VoString(numberValues()));
    return values().front();
}

const VoDeque<VoVariant>& VoDataTableItem::values() const noexcept
{
    // Never destroyed: items may be read while the process ends.
    static const auto* const none = new VoDeque<VoVariant>;
    return m_private ? m_private->values : *none;
}

std::size_t VoDataTableItem::numberValues() const noexcept
{
    return m_private ? m_private->values.size() : 0;
}

void VoDataTableItem::set(const VoVariant& value)
{
    set(Single(value));
}

void VoDataTableItem::set(VoVariant&& value)
{
    set(Single(std::move(value)));
}

void VoDataTableItem::set(VoDeque<VoVariant>&& values)
{
    m_private.reset(new Private{std::move(values)});
}

void VoDataTableItem::forEachValue(const std::function<void(const VoVariant&)>& function) const
{
    vo::detail::RequireCallback(function);
    for (const VoVariant& value : values())
        function(value);
}

bool VoDataTableItem::operator==(const VoDataTableItem& other) const
{
    return m_columnSpan == other.m_columnSpan && values() == other.values();
}

bool VoDataTableItem::operator!=(const VoDataTableItem& other) const
{
    return !(*this == other);
}
