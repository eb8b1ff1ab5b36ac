#pragma once

#include <Core/VoExport.h>
#include <Core/VoVector.h>

#include <cstddef>
#include <memory>

/// The figures of a sample: count, mean, variance, extremes, quantiles.
///
/// Mean and variance are kept up to date in a numerically stable way while values are added, and samples taken apart
/// can be merged. The values themselves are kept too, 8 bytes each, for the quantiles. NaN is counted apart and takes
/// part in nothing; an infinity makes the mean infinite or NaN and the variance NaN.
///
/// A figure that the sample is too small for is NaN. A value; a moved-from sample is empty.
class VOCORE_EXPORT VoStatistics
{
public:
    VoStatistics();                                         ///< An empty sample.
    explicit VoStatistics(const VoVector<double>& values);  ///< The sample of those values.
    VoStatistics(const VoStatistics& other);                ///< The same sample.
    VoStatistics(VoStatistics&& other) noexcept;            ///< Takes the sample over.
    VoStatistics& operator=(const VoStatistics& other);     ///< The same sample.
    VoStatistics& operator=(VoStatistics&& other) noexcept; ///< Takes the sample over.
    ~VoStatistics();

    void add(double value);                ///< One more value.
    void merge(const VoStatistics& other); ///< All values of another sample, which may be this one.

    std::size_t count() const;        ///< Number of values, without NaN.
    std::size_t notNumbers() const;   ///< How many times NaN was added.
    double mean() const;              ///< The arithmetic mean.
    double variance() const;          ///< Of the sample (divided by count() - 1); needs two values.
    double standardDeviation() const; ///< The root of variance().
    double min() const;               ///< The smallest value.
    double max() const;               ///< The largest value.
    double median() const;            ///< quantile(0.5)

    /// The value below which the fraction @p q of the sample lies, interpolated between the two nearest ones at the
    /// position q * (count() - 1) of the ordered sample. Takes time linear in count().
    /// @throw VoDomainException when @p q is not in 0 .. 1
    double quantile(double q) const;

private:
    struct Private;

    const Private& state() const;
    Private& own();

    std::unique_ptr<Private> d; // null when moved from
};
