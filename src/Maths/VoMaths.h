#pragma once

#include <Core/VoExport.h>

/// Small mathematical helpers. All members are static and safe from any thread.
class VOCORE_EXPORT VoMaths
{
public:
    VoMaths() = delete;

    /// An integer drawn uniformly from the closed range @p low .. @p high.
    ///
    /// Each thread has its own generator, seeded from the system's random device. Throws VoInvalidParameterException
    /// with "Empty range" when @p low is greater than @p high.
    static long long RandomInteger(long long low, long long high);

    /// True when the two numbers differ by no more than 1e-9 of the larger magnitude, or by no more than 1e-12 in all.
    /// Equal infinities are nearly equal; NaN never is.
    static bool NearlyEqual(double a, double b);
};
