#include <Maths/VoHistogram.h>

#include <Core/VoDeque.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Core/VoThrow.h>
#include <Core/VoVariant.h>
#include <Documents/VoDataTable.h>
#include <Documents/VoDataTableItem.h>
#include <Maths/VoStatistics.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr std::size_t MostBins = 10'000'000;
constexpr std::size_t MostAutomaticBins = 1000;

VoVector<double> Edges(double low, double high, std::size_t bins)
{
    VoVector<double> edges(bins + 1, low);
    const auto number = static_cast<double>(bins);
    for (std::size_t i = 1; i < bins; ++i) {
        // Weighted, not stepped: high - low may be too large for a double. Rounding must not turn edges round.
        const double edge = low * (static_cast<double>(bins - i) / number) + high * (static_cast<double>(i) / number);
        edges.data()[i] = std::clamp(edge, edges.data()[i - 1], high);
    }
    edges.data()[bins] = high;
    return edges;
}

std::size_t AutomaticBins(const VoStatistics& sample)
{
    const auto count = static_cast<double>(sample.count());
    const double middle = sample.quantile(0.75) - sample.quantile(0.25);
    const double bins = middle > 0 ? std::ceil((sample.max() - sample.min()) / (2 * middle / std::cbrt(count)))
                                   : std::ceil(std::log2(count)) + 1;
    if (!(bins > 1))
        return 1;
    return static_cast<std::size_t>(std::min(bins, static_cast<double>(MostAutomaticBins)));
}

VoHistogram EmptyFor(const VoStatistics& sample, std::size_t bins)
{
    if (sample.count() == 0)
        return VoHistogram(0, 1, 1);
    if (sample.min() < sample.max())
        return VoHistogram(sample.min(), sample.max(), bins == 0 ? AutomaticBins(sample) : bins);

    const double value = sample.min();
    const double margin =
        std::max(4 * std::numeric_limits<double>::epsilon() * std::fabs(value), std::numeric_limits<double>::min());
    const double most = std::numeric_limits<double>::max();
    return VoHistogram(std::max(value - margin, -most), std::min(value + margin, most), 1);
}

} // namespace

struct VoHistogram::Private
{
    VoVector<double> edges;
    VoVector<std::uint64_t> counts;
    std::uint64_t below = 0;
    std::uint64_t above = 0;
    std::uint64_t notNumbers = 0;
};

VoHistogram::VoHistogram(double low, double high, std::size_t bins)
{
    if (!std::isfinite(low) || !std::isfinite(high) || !(low < high))
        throw VoDomainException(VoString("Invalid range of a histogram"));
    if (bins == 0)
        vo::detail::ThrowInvalidParameter("Number of bins must be greater than zero");
    if (bins > MostBins)
        vo::detail::ThrowOverflow();
    m_private = std::make_unique<Private>();
    m_private->edges = Edges(low, high, bins);
    m_private->counts = VoVector<std::uint64_t>(bins);
}

VoHistogram VoHistogram::FromData(const VoVector<double>& values, std::size_t bins)
{
    VoStatistics finite;
    for (double value : values)
        if (std::isfinite(value))
            finite.add(value);
    VoHistogram histogram = EmptyFor(finite, bins);
    for (double value : values)
        histogram.add(value);
    return histogram;
}

VoHistogram::VoHistogram(const VoHistogram& other)
    : m_private(std::make_unique<Private>(other.state()))
{
}

VoHistogram::VoHistogram(VoHistogram&& other) noexcept = default;

VoHistogram& VoHistogram::operator=(const VoHistogram& other)
{
    m_private = std::make_unique<Private>(other.state());
    return *this;
}

VoHistogram& VoHistogram::operator=(VoHistogram&& other) noexcept = default;

VoHistogram::~VoHistogram() = default;

const VoHistogram::Private& VoHistogram::state() const
{
    static const auto& empty = *new Private; // outlives all static objects
    return m_private ? *m_private : empty;
}

VoHistogram::Private& VoHistogram::own()
{
    if (!m_private)
        m_private = std::make_unique<Private>();
    return *m_private;
}

void VoHistogram::add(double value)
{
    Private& now = own();
    const VoVector<double>& edges = now.edges;
    if (std::isnan(value)) {
        ++now.notNumbers;
    } else if (edges.isEmpty() || value > edges.data()[edges.size() - 1]) {
        ++now.above;
    } else if (value < edges.data()[0]) {
        ++now.below;
    } else {
        // Searched, not computed: the answer then agrees with the edges whatever the rounding.
        const auto next = std::upper_bound(edges.begin(), edges.end(), value) - edges.begin();
        const auto bin = std::min(static_cast<std::size_t>(next) - 1, now.counts.size() - 1);
        ++now.counts.data()[bin];
    }
}

std::size_t VoHistogram::bins() const
{
    return state().counts.size();
}

std::uint64_t VoHistogram::count(std::size_t bin) const
{
    return state().counts.at(bin);
}

std::uint64_t VoHistogram::total() const
{
    std::uint64_t sum = 0;
    for (std::uint64_t count : state().counts)
        sum += count;
    return sum;
}

std::uint64_t VoHistogram::below() const
{
    return state().below;
}

std::uint64_t VoHistogram::above() const
{
    return state().above;
}

std::uint64_t VoHistogram::notNumbers() const
{
    return state().notNumbers;
}

const VoVector<double>& VoHistogram::edges() const
{
    return state().edges;
}

std::size_t VoHistogram::mode() const
{
    const VoVector<std::uint64_t>& counts = state().counts;
    return static_cast<std::size_t>(std::max_element(counts.begin(), counts.end()) - counts.begin());
}

VoVector<std::uint64_t> VoHistogram::cumulative() const
{
    VoVector<std::uint64_t> sums;
    sums.reserve(bins());
    std::uint64_t sum = 0;
    for (std::uint64_t count : state().counts)
        sums.pushBack(sum += count);
    return sums;
}

VoDataTable VoHistogram::toDataTable() const
{
    using Items = VoDeque<VoDataTableItem>;
    const auto counted = [](std::uint64_t count) {
        const bool fits = count <= static_cast<std::uint64_t>(std::numeric_limits<int>::max());
        return VoDataTableItem(fits ? VoVariant(static_cast<int>(count)) : VoVariant(static_cast<double>(count)));
    };
    VoDataTable table;
    table.addRow(Items{VoDataTableItem("Lower"), VoDataTableItem("Upper"), VoDataTableItem("Count"),
                       VoDataTableItem("Cumulative")},
                 VoDataTable::Header);
    const VoVector<std::uint64_t> sums = cumulative();
    for (std::size_t bin = 0; bin < bins(); ++bin)
        table.addRow(Items{VoDataTableItem(edges()[bin]), VoDataTableItem(edges()[bin + 1]), counted(count(bin)),
                           counted(sums[bin])},
                     VoDataTable::Data);
    const auto addApart = [&](const char* name, std::uint64_t count) {
        if (count > 0)
            table.addRow(Items{VoDataTableItem(name, 2), counted(count)}, VoDataTable::Data);
    };
    addApart("Below", below());
    addApart("Above", above());
    addApart("Not a number", notNumbers());
    return table;
}
