#include "Exports.h"

#include "TableModel.h"

#include <Core/VoDeque.h>
#include <Core/VoFileException.h>
#include <Core/VoHostTypes.h>
#include <FileSystem/VoFilePath.h>
#include <Maths/VoRandom.h>
#include <Maths/VoStatistics.h>
#include <Misc/XMLReport/ReportPages.h>
#include <Misc/XMLReport/XMLReportHeader.h>
#include <Misc/XMLReport/XMLReportInfo.h>
#include <Time/VoDateTime.h>

#include <algorithm>
#include <vector>

namespace {

struct Column
{
    VoString name;
    VoVector<double> numbers;
};

// Columns of nothing but numbers.
std::vector<Column> NumericColumns(const TableModel& model)
{
    const VoVariantTable& values = model.values();
    std::vector<Column> columns;
    for (std::size_t c = 0; c < values.numberColumns(); ++c) {
        Column column{model.heading()[c], {}};
        for (std::size_t r = 0; r < values.numberRows(); ++r) {
            const VoVariant& value = values.at(r, c);
            if (value.type() == VoVariant::Double)
                column.numbers.pushBack(value.asDouble());
            else if (value.type() == VoVariant::Integer)
                column.numbers.pushBack(value.asInteger());
        }
        if (values.numberRows() > 0 && column.numbers.size() == values.numberRows())
            columns.push_back(std::move(column));
    }
    return columns;
}

double DrawnMean(const VoVector<double>& numbers, VoRandom& random)
{
    double sum = 0;
    const auto last = static_cast<std::int64_t>(numbers.size()) - 1;
    for (std::size_t i = 0; i < numbers.size(); ++i)
        sum += numbers[static_cast<std::size_t>(random.integer(0, last))];
    return sum / static_cast<double>(numbers.size());
}

} // namespace

void ExportWorkbook(const TableModel& model, const VoFilePath& file)
{
    model.table().writeOOXML(file);
}

void ExportReport(const TableModel& model, const VoFilePath& file)
{
    XMLReportHeader header;
    header.analysis = XMLReportHeader::Analysis::MonteCarlo;
    header.date = VoDateTime::Now().toString().toYString();
    header.title = "Workbench";
    YHashTable<XMLReportInfo> cases;
    for (const Column& column : NumericColumns(model)) {
        header.resultNames.pushBack(column.name.toYString());
        for (std::size_t row = 0; row < column.numbers.size(); ++row) {
            const int run = static_cast<int>(row) + 2; // the first is the nominal one
            XMLReportInfo& info = cases[run];
            info.caseID = run;
            XMLReportInfo::Result result;
            result.reference = column.numbers[row];
            info.results.pushBack(result);
        }
    }
    if (!sp_BuildMonteCarloHTMLReport(file.toString().toYString(), YString(), cases, header))
        throw VoFileSaveException("report", file.toString());
}

Job::Work EstimateMeans(const TableModel& model)
{
    return [columns = NumericColumns(model)](const VoStopFlag& stop, const Job::Progress& progress) {
        constexpr std::size_t draws = 2000;
        constexpr std::size_t told = 100; // once in so many draws
        VoString found;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            VoRandom random(1);
            VoVector<double> means;
            for (std::size_t draw = 0; draw < draws; ++draw) {
                stop.throwIfStopped();
                means.pushBack(DrawnMean(columns[i].numbers, random));
                if (draw % told == 0)
                    progress(double(i * draws + draw) / double(columns.size() * draws),
                             "Drawing from " + columns[i].name);
            }
            const VoStatistics statistics(means);
            found += columns[i].name + ": " + VoString::ToString(statistics.quantile(0.025)) + " to " +
                     VoString::ToString(statistics.quantile(0.975)) + "\n";
        }
        return found;
    };
}
