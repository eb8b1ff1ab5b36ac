#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoVector.h>

#include <cstddef>
#include <cstdint>
#include <memory>

/// Counts of how many values fall into each of a row of bins of equal width.
///
/// A bin holds its lower edge but not its upper one; the last bin holds both. Values below and above all bins and NaN
/// are counted apart. A value; a moved-from histogram has no bins and counts everything apart.
class VOCORE_EXPORT VoHistogram
{
public:
    /// Empty bins between `low` and `high`.
    /// @throws VoDomainException when `low` is not below `high` or one of them is infinite or NaN
    /// @throws VoInvalidParameterException "Number of bins must be greater than zero"
    /// @throws VoOverflowException for more than 10,000,000 bins
    VoHistogram(double low, double high, std::size_t bins);

    /// The histogram of some values, between the smallest and the largest finite one.
    ///
    /// With `bins` 0 their number follows the sample (Freedman and Diaconis: a width of twice the interquartile range
    /// over the cube root of the count; where half of the values are equal, as many bins as log2(count) + 1), at least
    /// 1 and at most 1000. Where all finite values are equal there is one bin around them, a few units of their last
    /// place wide; without any there is one from 0 to 1. Infinite values are counted below or above, NaN apart.
    /// @throws VoOverflowException for more than 10,000,000 bins
    static VoHistogram FromData(const VoVector<double>& values, std::size_t bins = 0);

    VoHistogram(const VoHistogram& other);                ///< The same bins and counts.
    VoHistogram(VoHistogram&& other) noexcept;            ///< Takes bins and counts over.
    VoHistogram& operator=(const VoHistogram& other);     ///< The same bins and counts.
    VoHistogram& operator=(VoHistogram&& other) noexcept; ///< Takes bins and counts over.
    ~VoHistogram();

    void add(double value); ///< Counts one value.

    std::size_t bins() const; ///< Number of bins.
    /// The count of a bin.
    /// @throws VoIndexOutOfBoundsException beyond the last one
    std::uint64_t count(std::size_t bin) const;
    std::uint64_t total() const;                ///< The sum of all bins.
    std::uint64_t below() const;                ///< Values below the first bin.
    std::uint64_t above() const;                ///< Values above the last bin.
    std::uint64_t notNumbers() const;           ///< How many times NaN was added.
    const VoVector<double>& edges() const;      ///< The bins() + 1 edges, ascending.
    std::size_t mode() const;                   ///< The first among the fullest bins; 0 without bins.
    VoVector<std::uint64_t> cumulative() const; ///< For each bin, the sum of the bins up to and including it.
    /// A table to be shown or exported: the header "Lower", "Upper", "Count", "Cumulative", then a row for each bin,
    /// and at the end a row for each of "Below", "Above" and "Not a number" that counted anything, with its name over
    /// both edges. Counts are Integer, or Double beyond what that holds, so that spreadsheets take them for numbers.
    VoDataTable toDataTable() const;

private:
    struct Private;

    const Private& state() const;
    Private& own();

    std::unique_ptr<Private> m_private; // null when moved from
};
