#pragma once

#include <Core/VoExport.h>
#include <Core/VoHostTypes.h>
#include <Core/VoVector.h>

#include <cstdint>

/// One case of an analysis: what was changed, and what was measured.
///
/// A plain record: the host fills it, buildNormalisedSensitivity() completes it, the report pages show it.
class VOCORE_EXPORT XMLReportInfo
{
public:
    /// Whether a sensitivity could be computed.
    enum SensitivityState : std::int32_t
    {
        Valid = 0,        ///< The value counts.
        DivideByZero = 1, ///< The parameter did not change, or the result is 0.
        Inconsistent = 2  ///< The lot items give different values.
    };

    /// A measured result.
    struct VOCORE_EXPORT Result
    {
        double reference = 0;                  ///< The value in this case.
        double delta = 0;                      ///< Its change by the perturbation.
        double sensitivity = 0;                ///< Relative change of the result over that of the parameter.
        std::int32_t sensitivityState = Valid; ///< A SensitivityState.
    };

    /// What a perturbed parameter is; those texts that apply.
    struct VOCORE_EXPORT Parameter
    {
        YString refdes;    ///< Reference designator of the part.
        YString param;     ///< Parameter of the part.
        YString lot;       ///< The lot that varies together.
        YString devparam;  ///< Parameter of a device inside the part.
        YString tolerance; ///< The tolerance, as written in the circuit.
        YString terminal;  ///< Terminal of the part.
        YString variable;  ///< A variable of the circuit.

        /// The texts in one line, each behind its word: "Refdes R1 Param RES Lot: 3 DevParam R (TOL=5%)"; a terminal
        /// alone with its part is "Ref: R1 (term 2)". Texts that are empty are left out.
        YString description() const;
    };

    /// A perturbed parameter.
    struct VOCORE_EXPORT LotItem
    {
        YString description;      ///< What it is, as it is to be shown.
        double nominal = 0;       ///< Its nominal value.
        double value = 0;         ///< Its value in this case.
        Parameter parameter = {}; ///< What it is, in parts; may be empty.
    };

    /// The nominal run's caseID. Its results carry no sensitivity.
    static constexpr std::int32_t NominalCase = 1;

    std::int32_t caseID = 0;    ///< Number of the case, also its key in a table of cases.
    YString reference;          ///< What the case is called; see referenceText().
    std::int64_t seed = 0;      ///< Seed of the case's random numbers.
    VoVector<Result> results;   ///< In the order of the header's names.
    VoVector<LotItem> lotItems; ///< The perturbed parameters.

    /// The relative change of a result over the relative change of a parameter:
    /// (delta / reference) * nominal / (value - nominal).
    ///
    /// Where that would divide by zero, also for an index that names nothing, `divideByZero` becomes true and the
    /// answer is 0, else it becomes false. It may be null.
    double getNormalisedSensitivity(int lotIndex, int resultIndex, bool* divideByZero) const;

    /// Fills `sensitivity` and `sensitivityState` of every result: 0 and Valid in the nominal case, else the first lot
    /// item's sensitivity, unless a further item's differs by more than 1e-7 of it, or the last division looked at was
    /// by zero. That last rule lets a further item mask a division by zero at the first one; stored reports rely on it.
    void buildNormalisedSensitivity();

    /// `reference`, or when that is empty "Nominal" for the nominal case and the first lot item's description for any
    /// other.
    YString referenceText() const;
};
