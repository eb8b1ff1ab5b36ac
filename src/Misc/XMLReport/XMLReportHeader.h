#pragma once

#include <Core/VoExport.h>
#include <Core/VoHostTypes.h>
#include <Core/VoVector.h>

#include <cstdint>

/// What a report says of an analysis as a whole.
struct VOCORE_EXPORT XMLReportHeader
{
    /// The kinds of analysis.
    enum class Analysis
    {
        Sensitivity,
        MonteCarlo,
        WorstCase
    };

    Analysis analysis = Analysis::Sensitivity; ///< What was analysed.
    YString date;                              ///< When, as it is to be shown.
    YString card;                              ///< The analysis card.
    YString title;                             ///< The title of the circuit.
    std::int32_t cores = 0;                    ///< Number of processor cores used.
    VoVector<YString> resultNames;             ///< Names of the results, in the order of every case's results.
};
