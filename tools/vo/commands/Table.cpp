#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>
#include <vo/screen/TableOutput.h>
#include <vo/screen/TableView.h>

#include <Core/VoException.h>
#include <Documents/VoCSVReader.h>
#include <Documents/VoCSVValues.h>
#include <Documents/VoOOXMLWriterSpreadsheet.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoFileDevice.h>

#include <QtCore/QString>

#include <functional>
#include <limits>
#include <map>

namespace vo::tool {
namespace {

constexpr std::size_t RowsBetweenSteps = 256;
constexpr std::size_t WidestStyledColumn = 60; // characters

// What the options say about the files that are read.
struct Input
{
    VoCSVFormat format;
    std::size_t headerRows;
    bool asTexts;
};

VoString SeparatorOption(const Arguments& arguments)
{
    const auto separator = arguments.text("separator");
    if (!separator)
        return VoCSVFormat().separator;
    if (separator->equal("tab", VoString::CaseInsensitive))
        return "\t";
    if (separator->isEmpty() || separator->contains("\"") || separator->contains("\n") || separator->contains("\r"))
        throw UsageError("--separator: \"" + Printable(*separator) + "\" cannot separate fields");
    return *separator;
}

VoCSVFormat::Encoding EncodingOption(const Arguments& arguments)
{
    const auto name = arguments.text("encoding");
    if (!name)
        return VoCSVFormat::Encoding::UTF8;
    if (const auto encoding = csv::EncodingNamed(name->toStdString()))
        return *encoding;
    throw UsageError("--encoding: \"" + Printable(*name) +
                     "\" is none of utf-8, utf-16le, utf-16be, utf-32le, utf-32be, windows-1252 and iso-8859-1");
}

Input InputOptions(const Arguments& arguments)
{
    Input input;
    input.headerRows = static_cast<std::size_t>(
        arguments.integer("header", arguments.has("styled") ? 1 : 0, 0, std::numeric_limits<std::int32_t>::max()));
    input.asTexts = arguments.has("text");
    input.format.separator = SeparatorOption(arguments);
    input.format.encoding = EncodingOption(arguments);
    input.format.decimalComma = arguments.has("decimal-comma");
    if (input.format.decimalComma && input.format.separator.contains(","))
        throw UsageError("--decimal-comma needs a --separator without a comma, for example --separator \";\"");
    return input;
}

// Reads the file of an argument row by row, with progress over all files.
class Rows
{
public:
    Rows(Session& session, const char* label, std::uint64_t total)
        : m_session(session)
        , m_label(label)
        , m_total(total)
    {
    }

    void read(std::size_t argument, const VoCSVFormat& format, const std::function<void(const VoCSVReader&)>& use)
    {
        VoFileDevice device(m_session.arguments.fileArgument(argument));
        try {
            VoCSVReader reader(device, format);
            while (reader.nextRow()) {
                if (reader.rowNumber() % RowsBetweenSteps == 1)
                    step(reader.bytesRead());
                use(reader);
            }
            m_done += reader.bytesRead();
        } catch (const VoInvalidParameterException& exception) {
            throw Failure("cannot read " + m_session.arguments.argument(argument) + ": " + exception.message() +
                          (isEncodingInDoubt(exception) ? "; --encoding names another encoding" : ""));
        }
    }

private:
    bool isEncodingInDoubt(const VoInvalidParameterException& exception) const
    {
        return !m_session.arguments.has("encoding") && exception.message().find("Invalid UTF-8 ") == 0;
    }

    void step(std::uint64_t ofFile)
    {
        m_session.stop.throwIfStopped();
        m_session.console.progress(m_label, ProgressLine::Unit::Bytes, m_done + ofFile, m_total);
    }

    Session& m_session;
    const char* m_label;
    const std::uint64_t m_total;
    std::uint64_t m_done = 0;
};

std::uint64_t BytesOf(const Arguments& arguments, std::size_t files)
{
    std::uint64_t bytes = 0;
    for (std::size_t i = 0; i < files; ++i)
        bytes += VoFileSystem::FileSize(arguments.fileArgument(i));
    return bytes;
}

ExitCode Show(Session& session)
{
    const Input input = InputOptions(session.arguments);
    if (session.arguments.count() != 1)
        throw UsageError("--show takes one file");
    Rows rows(session, "Reading", BytesOf(session.arguments, 1) * 2);
    TableView view(input.format);
    rows.read(0, input.format, [&](const VoCSVReader& row) { view.measure(row, row.rowNumber() <= input.headerRows); });
    session.console.list("rows");
    rows.read(0, input.format, [&](const VoCSVReader& row) {
        QJsonArray cells;
        for (std::size_t i = 0; i < row.numberFields() && session.console.settings().json; ++i)
            cells.append(QString::fromUtf8(row.field(i).data(), static_cast<int>(row.field(i).size())));
        session.console.row("rows", view.line(row), QJsonObject{{QStringLiteral("cells"), cells}});
        if (row.rowNumber() == input.headerRows)
            session.console.line(view.rule());
    });
    return ExitCode::Done;
}

class Conversion
{
public:
    Conversion(Session& session, std::size_t files)
        : m_session(session)
        , m_arguments(session.arguments)
        , m_files(files)
        , m_input(InputOptions(m_arguments))
    {
    }

    ExitCode run()
    {
        const std::uint64_t bytes = BytesOf(m_arguments, m_files); // a missing file is met before anything is made
        const auto sheet = m_arguments.text("sheet");
        if (sheet && m_files > 1)
            throw UsageError("--sheet names one sheet; several files are named by their own names");
        const auto output = TableOutput::Make(m_arguments.fileArgument(m_files), m_input.format);
        if (!output)
            throw UsageError("the output must end with .xlsx, .xml or .csv: " + m_arguments.argument(m_files));
        if (m_files > 1 && !output->hasSheets())
            throw UsageError("several files need an output with several sheets, which is .xlsx");

        const bool styled = m_arguments.has("styled");
        if (styled && !output->hasSheets())
            throw UsageError("--styled goes with an output that ends with .xlsx");

        Rows rows(m_session, "Converting", styled ? bytes * 2 : bytes);
        for (std::size_t i = 0; i < m_files; ++i) {
            const VoWorksheetLook look = styled ? lookOf(rows, i) : VoWorksheetLook();
            output->beginSheet(sheet ? *sheet : nameOf(i), styled ? &look : nullptr);
            rows.read(i, m_input.format, [&](const VoCSVReader& row) { add(*output, row, i); });
        }
        Doing(m_arguments, "write", m_arguments.argument(m_files), [&] { output->finish(); });
        report(output->losses());
        return ExitCode::Done;
    }

private:
    /// What the contents ask for: a first pass over the file.
    VoWorksheetLook lookOf(Rows& rows, std::size_t file)
    {
        TableView view(m_input.format, WidestStyledColumn);
        rows.read(file, m_input.format,
                  [&](const VoCSVReader& row) { view.measure(row, row.rowNumber() <= m_input.headerRows); });
        VoWorksheetLook look{m_input.headerRows, view.widths()};
        for (double& width : look.columnWidths)
            width += 2; // bold is wider, and cells have margins
        return look;
    }

    VoString nameOf(std::size_t file)
    {
        const VoFilePath path = m_arguments.fileArgument(file);
        const VoString stem = path.stem().toString();
        VoString name = SheetName(stem, 0);
        for (std::size_t taken = 1; m_names.count(name) != 0; ++taken)
            name = SheetName(stem, taken);
        m_names.emplace(name, file);
        return name;
    }

    void add(TableOutput& output, const VoCSVReader& row, std::size_t file)
    {
        try {
            output.addRow(row, m_input.asTexts || (output.hasSheets() && row.rowNumber() <= m_input.headerRows));
        } catch (const VoInvalidCallException& exception) {
            if (!exception.reason().isEmpty())
                throw ToldFailure(m_arguments, "write", m_arguments.argument(m_files)); // whatever the row is
            throw Failure(m_arguments.argument(file) + ", row " + VoString(row.rowNumber()) + ": " +
                          exception.message());
        }
        ++m_rows;
        m_cells += row.numberFields();
    }

    void report(const TableOutput::Losses& losses)
    {
        m_session.console.endProgress();
        m_session.console.fact("rows", "rows", m_rows);
        m_session.console.fact("cells", "cells", m_cells);
        m_session.console.member("rounded", losses.rounded);
        m_session.console.member("keptAsText", losses.keptAsText);
        if (losses.rounded > 0)
            m_session.console.note("numbers rounded to six significant digits: " + VoString(losses.rounded) +
                                   "; --text keeps every digit");
        if (losses.keptAsText > 0)
            m_session.console.note("long whole numbers kept as texts: " + VoString(losses.keptAsText));
    }

    Session& m_session;
    const Arguments& m_arguments;
    const std::size_t m_files;
    const Input m_input;
    std::map<VoString, std::size_t> m_names;
    std::uint64_t m_rows = 0;
    std::uint64_t m_cells = 0;
};

ExitCode Run(Session& session)
{
    if (session.arguments.has("show"))
        return Show(session);
    if (session.arguments.count() < 2)
        throw UsageError("an input and an output file are needed");
    return Conversion(session, session.arguments.count() - 1).run();
}

} // namespace

Command TableCommand()
{
    return {"table",
            "IN.csv... OUT",
            "turn CSV files into a workbook, an XML spreadsheet or clean CSV",
            "Reads CSV files and writes them row by row into OUT, whose extension says what it is: .xlsx, a workbook\n"
            "with a sheet for each file; .xml, an XML spreadsheet; .csv, the same fields with commas, quotes only\n"
            "where needed and CRLF, in UTF-8. Fields without quotes become the numbers and truth values that they\n"
            "stand for; numbers get six significant digits in a spreadsheet. Long whole numbers stay texts, and so do\n"
            "numbers with a plus sign, a zero before other digits or more digits than a number can keep. A file that\n"
            "does not begin with a byte-order mark is UTF-8 unless --encoding is given. OUT is replaced when it is\n"
            "whole. With --show the one file is printed as an aligned table instead.\n",
            {{"header", "N", "the first N rows are headers: their fields are texts"},
             {"sheet", "NAME", "the name of the sheet, instead of the file's"},
             {"separator", "TEXT", "what separates the fields of the input, instead of a comma; \"tab\" for a tab"},
             {"encoding", "NAME", "of the input: windows-1252, iso-8859-1, utf-16le, utf-16be, utf-32le or utf-32be"},
             {"decimal-comma", nullptr, "numbers of the input are written 1,5; a CSV output gets 1.5"},
             {"text", nullptr, "make every cell a text, as it is in the file"},
             {"styled", nullptr,
              "a workbook to be read by people: the header rows (one, unless --header says otherwise) bold and always "
              "in sight, columns as wide as their contents, dates such as 2024-05-01 as dates"},
             {"show", nullptr, "print the table"}},
            1,
            AnyNumber,
            Run};
}

} // namespace vo::tool
