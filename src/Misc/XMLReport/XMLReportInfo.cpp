#include <Misc/XMLReport/XMLReportInfo.h>

#include <cmath>

namespace {

constexpr double ConsistencyTolerance = 1e-7;

void Append(YString& text, const char* before, const YString& part, const char* after = "")
{
    if (part.isEmpty())
        return;
    if (!text.isEmpty())
        text += " ";
    text += before;
    text += part;
    text += after;
}

// Comparisons with NaN are false: such sensitivities count as consistent.
bool Differ(double sensitivity, double first)
{
    const double difference = first == 0.0 ? std::fabs(sensitivity) : std::fabs(sensitivity - first) / std::fabs(first);
    return difference > ConsistencyTolerance;
}

} // namespace

// On Windows no object of the library would have it otherwise, for those who refer to it.
constexpr std::int32_t XMLReportInfo::NominalCase; // NOLINT(readability-redundant-declaration)

YString XMLReportInfo::Parameter::description() const
{
    const bool terminalOfPart = !refdes.isEmpty() && !terminal.isEmpty() && param.isEmpty() && devparam.isEmpty();
    YString text;
    Append(text, terminalOfPart ? "Ref: " : "Refdes ", refdes);
    if (terminalOfPart)
        Append(text, "(term ", terminal, ")");
    Append(text, "Param ", param);
    Append(text, "Lot: ", lot);
    Append(text, "DevParam ", devparam);
    if (!terminalOfPart)
        Append(text, "Term ", terminal);
    Append(text, "Var: ", variable);
    Append(text, "(TOL=", tolerance, ")");
    return text;
}

double XMLReportInfo::getNormalisedSensitivity(int lotIndex, int resultIndex, bool* divideByZero) const
{
    bool unused = false;
    bool& flag = divideByZero ? *divideByZero : unused;
    flag = true;
    if (lotIndex < 0 || static_cast<std::size_t>(lotIndex) >= lotItems.size() || resultIndex < 0 ||
        static_cast<std::size_t>(resultIndex) >= results.size())
        return 0.0;

    const LotItem& item = lotItems.data()[lotIndex];
    const Result& result = results.data()[resultIndex];
    if (item.value == item.nominal || result.reference == 0.0)
        return 0.0;
    flag = false;
    return result.delta / result.reference * item.nominal / (item.value - item.nominal);
}

void XMLReportInfo::buildNormalisedSensitivity()
{
    for (std::size_t j = 0; j < results.size(); ++j) {
        Result& result = results.data()[j];
        result.sensitivity = 0.0;
        result.sensitivityState = Valid;
        if (caseID == NominalCase)
            continue;

        const int index = static_cast<int>(j);
        bool divideByZero = false;
        bool consistent = true;
        const double first = getNormalisedSensitivity(0, index, &divideByZero);
        for (std::size_t i = 1; i < lotItems.size() && consistent; ++i)
            consistent = !Differ(getNormalisedSensitivity(static_cast<int>(i), index, &divideByZero), first);

        // The flag is that of the last item looked at, whatever the first one's was.
        if (divideByZero)
            result.sensitivityState = DivideByZero;
        else if (!consistent)
            result.sensitivityState = Inconsistent;
        else
            result.sensitivity = first;
    }
}

YString XMLReportInfo::referenceText() const
{
    if (!reference.isEmpty())
        return reference;
    if (caseID == NominalCase)
        return "Nominal";
    return lotItems.isEmpty() ? YString() : lotItems.data()[0].description;
}
