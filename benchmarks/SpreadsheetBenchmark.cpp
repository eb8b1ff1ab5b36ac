// XLSX workbooks beside the bare writer of XML on the zip library, a C library made for the job, and Python's.

#include "ProcessTiming.h"
#include "ResultRow.h"

#include <Core/VoVariant.h>
#include <Documents/VoOOXMLWriter.h>
#include <Documents/VoOOXMLWriterSpreadsheet.h>
#include <FileSystem/VoFilePath.h>

#include <QtCore/QIODevice>
#include <QtCore/QXmlStreamWriter>

#include <cmath>
#include <filesystem>
#include <zip.h>

#if defined(VOCORE_HAS_XLSXWRITER)
#include <xlsxwriter.h>
#endif

namespace {

constexpr int Columns = 10;
constexpr int BlockRows = 1000; // repeated, so that the data take no memory to speak of

double Number(int row, int column)
{
    return std::sin(row * 31 + column) * std::pow(10, column);
}

/// Four doubles, three integers and three texts a row, as analyses write them.
VoVariant Cell(int row, int column)
{
    if (column < 4)
        return Number(row, column);
    if (column < 7)
        return row * 977 % 100000;
    return VoString("node ") + VoString(row * column % 5000);
}

const std::vector<VoVariant>& Cells()
{
    static const std::vector<VoVariant> cells = [] {
        std::vector<VoVariant> all;
        for (int row = 0; row < BlockRows; ++row)
            for (int column = 0; column < Columns; ++column)
                all.push_back(Cell(row, column));
        return all;
    }();
    return cells;
}

const VoVariant& CellAt(int row, int column)
{
    return Cells()[static_cast<std::size_t>(row % BlockRows * Columns + column)];
}

void WriteOurs(const std::string& file, int rows)
{
    VoOOXMLWriter workbook(VoFilePath(file.c_str()), VoOOXMLWriter::Spreadsheet);
    const auto sheet = workbook.addSheet("Sheet1");
    for (int row = 0; row < rows; ++row) {
        sheet->startRow();
        for (int column = 0; column < Columns; ++column)
            sheet->addCell(CellAt(row, column), 1, 1);
    }
    workbook.close();
}

void WriteMerged(const std::string& file)
{
    VoOOXMLWriter workbook(VoFilePath(file.c_str()), VoOOXMLWriter::Spreadsheet);
    workbook.addSheet("Sheet1")->addCell(1, 1000, 1000);
    workbook.close();
}

/// An entry of an archive, filled through 64 KiB.
class EntryDevice : public QIODevice
{
public:
    explicit EntryDevice(zipFile archive)
        : m_archive(archive)
    {
        m_gathered.reserve(Block);
        open(WriteOnly);
    }

    void flush()
    {
        zipWriteInFileInZip(m_archive, m_gathered.data(), static_cast<unsigned>(m_gathered.size()));
        m_gathered.clear();
    }

protected:
    qint64 readData(char*, qint64) override { return -1; }

    qint64 writeData(const char* data, qint64 size) override
    {
        if (m_gathered.size() + static_cast<std::size_t>(size) > Block)
            flush();
        m_gathered.append(data, static_cast<std::size_t>(size));
        return size;
    }

private:
    static constexpr std::size_t Block = 65536;

    zipFile m_archive;
    std::string m_gathered;
};

void WriteBare(const std::string& file, int rows)
{
    const zipFile archive = zipOpen(file.c_str(), 0);
    const zip_fileinfo info{};
    zipOpenNewFileInZip(archive, "xl/worksheets/Sheet1.xml", &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED, -1);
    EntryDevice device(archive);
    QXmlStreamWriter xml(&device);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("worksheet"));
    xml.writeDefaultNamespace(QStringLiteral("http://schemas.openxmlformats.org/spreadsheetml/2006/main"));
    xml.writeStartElement(QStringLiteral("sheetData"));
    for (int row = 0; row < rows; ++row) {
        xml.writeStartElement(QStringLiteral("row"));
        const QString rowText = QString::number(row + 1);
        for (int column = 0; column < Columns; ++column) {
            xml.writeStartElement(QStringLiteral("c"));
            xml.writeAttribute(QStringLiteral("r"), QChar('A' + column) + rowText);
            const VoVariant& value = CellAt(row, column);
            if (value.type() == VoVariant::String) {
                xml.writeAttribute(QStringLiteral("t"), QStringLiteral("inlineStr"));
                xml.writeStartElement(QStringLiteral("is"));
                xml.writeTextElement(QStringLiteral("t"), value.asString().toQString());
                xml.writeEndElement();
            } else {
                xml.writeTextElement(QStringLiteral("v"), value.type() == VoVariant::Integer
                                                              ? QString::number(value.asInteger())
                                                              : QString::number(value.asDouble(), 'g', 6));
            }
            xml.writeEndElement();
        }
        xml.writeEndElement();
    }
    xml.writeEndDocument();
    device.flush();
    zipClose(archive, nullptr);
}

#if defined(VOCORE_HAS_XLSXWRITER)
void WriteXlsxWriter(const std::string& file, int rows)
{
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    lxw_workbook* workbook = workbook_new_opt(file.c_str(), &options);
    lxw_worksheet* sheet = workbook_add_worksheet(workbook, "Sheet1");
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < Columns; ++column) {
            const VoVariant& value = CellAt(row, column);
            const auto at = static_cast<lxw_col_t>(column);
            if (value.type() == VoVariant::String)
                worksheet_write_string(sheet, static_cast<lxw_row_t>(row), at, value.asString().c_str(), nullptr);
            else
                worksheet_write_number(sheet, static_cast<lxw_row_t>(row), at,
                                       value.type() == VoVariant::Integer ? value.asInteger() : value.asDouble(),
                                       nullptr);
        }
    workbook_close(workbook);
}
#endif

std::string OpenpyxlScript(const std::string& file, int rows)
{
    return "import math, openpyxl\n"
           "book = openpyxl.Workbook(write_only=True)\n"
           "sheet = book.create_sheet('Sheet1')\n"
           "block = [[math.sin(r * 31 + c) * 10 ** c for c in range(4)] + [r * 977 % 100000] * 3 +\n"
           "         ['node %d' % (r * c % 5000) for c in range(7, 10)] for r in range(1000)]\n"
           "for r in range(" +
           std::to_string(rows) + "): sheet.append(block[r % 1000])\nbook.save('" + file + "')\n";
}

std::string SecondsText(double seconds, const char* who = "")
{
    char text[64];
    std::snprintf(text, sizeof text, "%.2f s%s%s", seconds, *who ? " " : "", who);
    return text;
}

std::string MegabytesText(double bytes, const char* who = "")
{
    char text[64];
    std::snprintf(text, sizeof text, "%.2f MB%s%s", bytes / 1e6, *who ? " " : "", who);
    return text;
}

void MeasureTime(const BenchmarkFolder& folder, int rows, int repetitions)
{
    const std::string job = "XLSX, " + std::to_string(rows) + " x 10 cells";
    std::vector<std::function<void()>> sides = {
        OnOneProcessor([&] { WriteOurs(folder / "ours.xlsx", rows); }),
        OnOneProcessor([&] { WriteBare(folder / "bare.zip", rows); }),
        [&] { WriteOurs(folder / "two.xlsx", rows); },
    };
#if defined(VOCORE_HAS_XLSXWRITER)
    sides.push_back(OnOneProcessor([&] { WriteXlsxWriter(folder / "peer.xlsx", rows); }));
#endif
    const std::vector<ProcessCost> costs = TakeTurns(sides, repetitions);
    ResultRow row{job + ", one thread",
                  SecondsText(costs[0].processor),
                  SecondsText(costs[1].processor, "bare"),
                  "-",
                  costs[1].processor / costs[0].processor,
                  0.9,
                  0};
    PrintRow(row);
#if defined(VOCORE_HAS_XLSXWRITER)
    row.floor = "-";
    row.peer = SecondsText(costs[3].processor, "libxlsxwriter");
    row.ratio = costs[3].processor / costs[0].processor;
    row.atLeast = 0.85;
    PrintRow(row);
    row.job = job + ", two cores, wall";
    row.ours = SecondsText(costs[2].wall);
    row.peer = SecondsText(costs[3].wall, "libxlsxwriter");
    row.ratio = HasTwoFreeCores() ? costs[3].wall / costs[2].wall : 0;
    row.atLeast = 1.4;
    PrintRow(row);
    const auto size = [&](const char* name) { return static_cast<double>(std::filesystem::file_size(folder / name)); };
    PrintRow({job + ", size of the file", MegabytesText(size("ours.xlsx")), "-",
              MegabytesText(size("peer.xlsx"), "libxlsxwriter"), size("peer.xlsx") / size("ours.xlsx"), 1, 0});
#endif
    if (std::system("/usr/bin/python3 -c 'import openpyxl' 2>/dev/null") != 0)
        return;
    std::FILE* script = std::fopen((folder / "write.py").c_str(), "w");
    std::fputs(OpenpyxlScript(folder / "python.xlsx", rows).c_str(), script);
    std::fclose(script);
    const ProcessCost python = TakeTurns({Program("/usr/bin/python3 '" + folder / "write.py" + "'")}, 1).front();
    PrintRow({job + ", one thread", SecondsText(costs[0].processor), "-", SecondsText(python.processor, "openpyxl"),
              python.processor / costs[0].processor, 3, 0});
}

/// The most memory that this process has had, in bytes.
double PeakMemory()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) * 1024;
}

/// Prints what a workbook took above the cells, which are made before. To be run in a process of its own.
int PrintMemory(const std::string& file, int rows)
{
    Cells();
    const double before = PeakMemory();
    if (rows == 0)
        WriteMerged(file);
    else
        WriteOurs(file, rows);
    std::printf("%.0f\n", PeakMemory() - before);
    return 0;
}

double MemoryOf(const BenchmarkFolder& folder, int rows)
{
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string command = "'" + self + "' --memory '" + folder / "memory.xlsx" + "' " + std::to_string(rows);
    std::FILE* output = ::popen(command.c_str(), "r");
    double bytes = -1;
    if (!output || std::fscanf(output, "%lf", &bytes) != 1 || ::pclose(output) != 0)
        std::exit(1);
    return bytes;
}

void MeasureMemory(const BenchmarkFolder& folder, int rows)
{
    const double once = MemoryOf(folder, rows);
    const double twice = MemoryOf(folder, 2 * rows);
    const double merged = MemoryOf(folder, 0);
    const std::string job = "XLSX, memory above the table, ";
    PrintRow({job + std::to_string(rows) + " rows, MB", MegabytesText(once), "-", "-", once / 1e6, 0, 8});
    PrintRow({job + "twice the rows over once", MegabytesText(twice), "-", "-", twice / once, 0, 1.1});
    PrintRow({job + "one merge of 1000 x 1000, MB", MegabytesText(merged), "-", "-", merged / 1e6, 0, 8});
}

} // namespace

int main(int count, char** arguments)
{
    if (count == 4 && std::string(arguments[1]) == "--memory")
        return PrintMemory(arguments[2], std::atoi(arguments[3]));
    const BenchmarkFolder folder;
    const int rows = IsSmokeRun() ? 2000 : 200000;
    MeasureTime(folder, rows, IsSmokeRun() ? 1 : 5);
    MeasureMemory(folder, rows);
    return 0;
}
