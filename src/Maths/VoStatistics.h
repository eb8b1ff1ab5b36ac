#pragma once

#include <Core/VoExport.h>
#include <Core/VoPair.h>
#include <Core/VoVector.h>

#include <cstddef>
#include <memory>

/// The figures of a sample: count, mean, variance, extremes, quantiles and more.
///
/// The values are kept, 8 bytes each, and each figure but the counts and extremes is computed from them when it is
/// asked for, in time linear in count() and with the digits of a sum in twice the precision: neither the order of the
/// values nor their distance from zero costs any. Samples taken apart can be merged. NaN is counted apart and takes
/// part in nothing but the yield; an infinity makes the mean infinite or NaN and the variance NaN.
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
    double sum() const;               ///< The sum of all values; 0 of none.
    double mean() const;              ///< The arithmetic mean.
    double variance() const;          ///< Of the sample (divided by count() - 1); needs two values.
    double standardDeviation() const; ///< The root of variance().
    double skewness() const;          ///< Of the sample, adjusted for its size; needs three values that differ.
    double kurtosis() const;          ///< Over that of a normal one, adjusted for the size; needs four values.
    double min() const;               ///< The smallest value.
    double max() const;               ///< The largest value.
    double median() const;            ///< quantile(0.5)

    /// The value below which the fraction `q` of the sample lies, interpolated between the two nearest ones at the
    /// position q * (count() - 1) of the ordered sample. Takes time linear in count().
    /// @throws VoDomainException when `q` is not in 0 .. 1
    double quantile(double q) const;

    /// The limits between which the mean of what was sampled lies with that confidence, when it is about normally
    /// distributed (by Student's distribution); needs two values.
    /// @throws VoDomainException when `confidence` is not between 0 and 1
    VoPair<double, double> meanInterval(double confidence = 0.95) const;

    /// The part, 0 .. 1, of what was added that lies in the closed range `low` .. `high`. NaN does not: a run without
    /// a result is not a good one.
    double yield(double low, double high) const;
    /// The limits between which the yield of what was sampled lies with that confidence (Wilson's).
    /// @throws VoDomainException when `confidence` is not between 0 and 1
    VoPair<double, double> yieldInterval(double low, double high, double confidence = 0.95) const;

    /// How far two quantities that were measured together lie on a straight line: 1 on a rising one, -1 on a falling
    /// one. Pairs with NaN are left out; NaN when fewer than two are left or one of the two does not vary.
    /// @throws VoInvalidParameterException "Samples of different sizes"
    static double Correlation(const VoVector<double>& x, const VoVector<double>& y);

private:
    struct Private;

    const Private& state() const;
    Private& own();

    std::unique_ptr<Private> m_private; // null when moved from
};
