#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoVector.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

/// A source of random numbers that a seed repeats: the same seed gives the same numbers on every platform and with
/// every standard library, so that the seed table of an analysis reproduces its runs.
///
/// Not for secrets. A copy goes on with the same numbers independently; a moved-from source is as one with seed 0. One
/// source belongs to one thread at a time.
class VOCORE_EXPORT VoRandom
{
public:
    explicit VoRandom(std::uint64_t seed); ///< The numbers of that seed.
    static VoRandom FromSystem();          ///< Numbers that nobody can repeat, seeded from the system's random device.

    /// What FromState() makes a source of that goes on with the same numbers, on any platform: about 5,000 letters and
    /// digits.
    VoString state() const;
    /// The source that state() was asked of, as it was then.
    /// @throws VoInvalidParameterException "Invalid state of a random source"
    static VoRandom FromState(const VoString& state);

    VoRandom(const VoRandom& other);                ///< The same numbers from here on.
    VoRandom(VoRandom&& other) noexcept;            ///< Takes the numbers over.
    VoRandom& operator=(const VoRandom& other);     ///< The same numbers from here on.
    VoRandom& operator=(VoRandom&& other) noexcept; ///< Takes the numbers over.
    ~VoRandom();

    /// Drawn uniformly from the closed range `low` .. `high`.
    /// @throws VoInvalidParameterException "Empty range" when `low` is greater than `high`
    std::int64_t integer(std::int64_t low, std::int64_t high);

    /// Drawn uniformly from the 2^53 multiples of 2^-53 in 0 .. 1, 1 excluded.
    double uniform();

    /// Drawn uniformly from the range `low` .. `high`; `high` is drawn only when it is `low` too.
    /// @throws VoDomainException when one of the two is infinite or NaN
    /// @throws VoInvalidParameterException "Empty range" when `low` is greater than `high`
    double uniform(double low, double high);

    /// Drawn from the normal distribution with that mean and standard deviation.
    /// @throws VoDomainException when `sigma` is negative, infinite or NaN
    double normal(double mean, double sigma);

    /// Drawn from the distribution whose logarithm is normal with mean `mu` and standard deviation `sigma`: its
    /// median is e^mu.
    /// @throws VoDomainException when `sigma` is negative, infinite or NaN
    double logNormal(double mu, double sigma);

    /// Drawn from what a normal distribution has in the closed range `low` .. `high`: a part with a tolerance of
    /// which those beyond the limits are sorted out. Takes a few draws however unlikely the range is. With a `sigma`
    /// of 0, or of nothing beside the distance to the limits, it is the number of the range that is nearest to the
    /// mean.
    /// @throws VoDomainException when `sigma` is negative, or a number is infinite or NaN
    /// @throws VoInvalidParameterException "Empty range" when `low` is greater than `high`
    double truncatedNormal(double mean, double sigma, double low, double high);

    /// An index of `weights`, each as likely as its part of their sum. Takes time linear in their number.
    /// @throws VoDomainException when a weight is negative, infinite or NaN
    /// @throws VoInvalidParameterException "No weight is greater than zero"
    std::size_t discrete(const VoVector<double>& weights);

    /// Puts the elements of a sequence with random access (begin, end, size) into random order, each order equally
    /// likely.
    template <typename Sequence>
    void shuffle(Sequence& sequence)
    {
        using std::swap;
        const auto first = sequence.begin();
        for (std::size_t left = sequence.size(); left > 1; --left) {
            const auto chosen = integer(0, static_cast<std::int64_t>(left - 1));
            const auto last = static_cast<std::int64_t>(left - 1);
            if (chosen != last)
                swap(first[chosen], first[last]);
        }
    }

private:
    struct Private;

    explicit VoRandom(std::unique_ptr<Private> state) noexcept;
    std::uint64_t bits();
    double standardNormalBetween(double from, double to);

    std::unique_ptr<Private> m_private;
};
