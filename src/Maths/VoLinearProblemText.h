#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Core/VoVector.h>
#include <Maths/VoLinearProblem.h>

/// A linear problem read from the common text format of linear programmes, with the names that it gives.
///
///     \ a comment
///     maximize
///       profit: 3 x + 2 y
///     subject to
///       hours: x + y <= 4
///       steel: x + 3 y <= 6
///     end
///
/// Read is what VoSimplexAlgorithm can solve: one objective; with "maximize" constraints "<=" whose bounds are not
/// negative; with "minimize" as many constraints ">=" as there are variables, and objective coefficients that are not
/// negative. A section "bounds" may repeat that variables are not negative and have no limit ("<= +inf"). All else is
/// refused with the number of the line: equations, ranges, other bounds, integer and binary variables, constants in
/// expressions, products of variables. Keywords are read in any case and in their usual short forms; names count with
/// their case.
struct VOCORE_EXPORT VoLinearProblemText
{
    VoLinearProblem problem;            ///< What the text states.
    VoString objectiveName;             ///< "obj" when the text names none.
    VoVector<VoString> parameterNames;  ///< In the order in which the text first mentions them.
    VoVector<VoString> constraintNames; ///< "c1", "c2" and so on for those that the text does not name.

    /// Reads a text.
    /// @throws VoLinearProblemException "Line " + number + ": " + what is wrong there
    static VoLinearProblemText Parse(const VoString& text);
    /// Reads a file.
    /// @throws VoFileNotFoundException, VoCannotOpenFileException, VoIOException when it cannot be read
    /// @throws VoLinearProblemException as Parse(), and "File is too large" for more than 256 MiB
    static VoLinearProblemText Read(const VoFilePath& path);
};
