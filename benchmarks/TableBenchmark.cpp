#include "InterleavedTiming.h"
#include "ResultRow.h"

#include <Core/VoVariant.h>
#include <Documents/VoCSVReader.h>
#include <Documents/VoCSVWriter.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileDevice.h>
#include <IO/VoStringDevice.h>
#include <XML/VoXMLObject.h>
#include <XML/VoXMLStreamElementReader.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamReader.h>
#include <XML/VoXMLStreamWriter.h>

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// Typed XML beside the XML writer and reader that it stands on, which get the same names and ready-made texts. CSV
/// beside the least that any reader and writer must do, and beside the csv module of Python, which measures itself.

namespace {

const VoString& TypesNamespace()
{
    return VoXMLTypesNamespace();
}

struct Typed
{
    std::vector<VoVariant> values;
    std::vector<VoString> names; // of the kinds
    std::vector<VoString> texts;
};

Typed MakeTyped(int count)
{
    Typed typed;
    for (int i = 0; i < count; ++i) {
        switch (i % 4) {
        case 0:
            typed.values.emplace_back(i);
            typed.texts.emplace_back(VoString(i));
            break;
        case 1:
            typed.values.emplace_back(i / 7.0);
            typed.texts.push_back(VoString::Base64(i / 7.0));
            break;
        case 2:
            typed.values.emplace_back("the quick brown fox, row " + VoString(i));
            typed.texts.push_back(typed.values.back().asString());
            break;
        default:
            typed.values.emplace_back(i % 8 == 3);
            typed.texts.emplace_back(i % 8 == 3 ? "true" : "false");
        }
        typed.names.emplace_back(VoVariant::TypeString(typed.values.back().type()));
    }
    return typed;
}

template <typename Write>
std::string Written(std::size_t count, const Write& write)
{
    VoStringDevice device;
    VoXMLStreamWriter writer(device);
    const VoString name = "Value";
    {
        const auto root = writer.createElement("Values");
        writer.writeNamespace(TypesNamespace(), "vo");
        for (std::size_t i = 0; i < count; ++i)
            write(*root->createElement(name, TypesNamespace()), i);
    }
    writer.finishDocument();
    return device.content().toStdString();
}

template <typename Read>
std::size_t ReadAll(const VoString& document, const Read& read)
{
    VoStringDevice device(document);
    VoXMLStreamReader reader(device);
    std::size_t sum = 0;
    for (const auto& child : reader.nextElement()->children())
        sum += read(*child);
    return sum;
}

void TypedRows()
{
    const Typed typed = MakeTyped(IsSmokeRun() ? 100 : 100000);
    const std::size_t count = typed.values.size();
    const auto ours = [&] {
        return Written(count, [&](VoXMLElementWriter& element, std::size_t i) {
            VoXMLObject<VoVariant>::Write(element, typed.values[i]);
        });
    };
    const auto floor = [&] {
        return Written(count, [&](VoXMLElementWriter& element, std::size_t i) {
            element.createElement(typed.names[i], TypesNamespace())->writeText(typed.texts[i]);
        });
    };
    const VoString document = ours();
    if (document.toStdString() != floor())
        std::abort(); // the two would not do the same job
    const auto write = InterleavedTiming({[&] { ours(); }, [&] { floor(); }});
    PrintRow({"typed XML, write 100,000 variants", Milliseconds(write[0]), Milliseconds(write[1]), "-",
              write[1] / write[0], 0.7});

    std::size_t sum = 0;
    const auto read =
        InterleavedTiming({[&] {
                               sum += ReadAll(document, [](VoXMLElementReader& element) {
                                   return static_cast<std::size_t>(VoXMLObject<VoVariant>::Read(element).type());
                               });
                           },
                           [&] {
                               sum += ReadAll(document, [](VoXMLElementReader& element) {
                                   return (*element.children().begin())->readText().size();
                               });
                           }});
    PrintRow({"typed XML, read the same", Milliseconds(read[0]), Milliseconds(read[1]), "-", read[1] / read[0], 0.7});
    if (sum == 0)
        std::abort();
}

// Ten columns: numbers, words, and now and then a text in quotes.
std::string MakeCsv(std::size_t bytes)
{
    std::string csv;
    csv.reserve(bytes + 200);
    for (unsigned row = 0; csv.size() < bytes; ++row) {
        for (unsigned column = 0; column < 10; ++column) {
            if (column > 0)
                csv += ',';
            if (column == 9 && row % 4 == 0)
                csv += "\"a text, with \"\"quotes\"\"\"";
            else if (column % 3 == 0)
                csv += std::to_string(row * 7919u % 1000003u) + "." + std::to_string(row % 1000u);
            else
                csv += "item" + std::to_string(row % 100000u);
        }
        csv += "\r\n";
    }
    return csv;
}

// What reads the file in blocks and finds separators and line ends, with no care for quotes.
std::size_t SplitPlainly(const std::string& name)
{
    std::FILE* const file = std::fopen(name.c_str(), "rb");
    std::vector<char> block(256 * 1024);
    std::vector<std::string_view> fields;
    std::size_t count = 0;
    std::size_t kept = 0;
    for (;;) {
        const std::size_t taken = std::fread(block.data() + kept, 1, block.size() - kept, file);
        if (taken == 0)
            break;
        const char* place = block.data();
        const char* const end = block.data() + kept + taken;
        while (const void* newline = std::memchr(place, '\n', static_cast<std::size_t>(end - place))) {
            const char* const lineEnd = static_cast<const char*>(newline);
            fields.clear();
            while (const void* comma = std::memchr(place, ',', static_cast<std::size_t>(lineEnd - place))) {
                fields.emplace_back(place, static_cast<std::size_t>(static_cast<const char*>(comma) - place));
                place = static_cast<const char*>(comma) + 1;
            }
            fields.emplace_back(place, static_cast<std::size_t>(lineEnd - place));
            count += fields.size();
            place = lineEnd + 1;
        }
        kept = static_cast<std::size_t>(end - place);
        std::memmove(block.data(), place, kept);
    }
    std::fclose(file);
    return count;
}

std::size_t ReadCsv(const VoFilePath& path)
{
    VoFileDevice device(path);
    VoCSVReader reader(device);
    std::size_t count = 0;
    while (reader.nextRow())
        count += reader.numberFields();
    return count;
}

using Rows = std::vector<std::vector<std::string>>;

Rows RowsOf(const VoFilePath& path)
{
    VoFileDevice device(path);
    VoCSVReader reader(device);
    Rows rows;
    while (reader.nextRow()) {
        rows.emplace_back();
        for (std::size_t i = 0; i < reader.numberFields(); ++i)
            rows.back().emplace_back(reader.field(i));
    }
    return rows;
}

void WriteCsv(const VoFilePath& path, const Rows& rows)
{
    VoFileDevice device(path);
    VoCSVWriter writer(device);
    for (const auto& row : rows) {
        for (const std::string& field : row)
            writer.addText(field);
        writer.endRow();
    }
    writer.finish();
}

// Joins the fields without looking whether they need quotes.
void WritePlainly(const std::string& name, const Rows& rows)
{
    std::FILE* const file = std::fopen(name.c_str(), "wb");
    std::string block;
    for (const auto& row : rows) {
        for (const std::string& field : row) {
            block += field;
            block += ',';
        }
        block += "\r\n";
        if (block.size() >= 256 * 1024) {
            std::fwrite(block.data(), 1, block.size(), file);
            block.clear();
        }
    }
    std::fwrite(block.data(), 1, block.size(), file);
    std::fclose(file);
}

// Seconds that Python takes to read the file, and to write what it has read; none without Python.
std::vector<double> PythonSeconds(const QString& csv, const QString& copy, int repetitions)
{
    const QString script =
        QStringLiteral("import csv,sys,time\n"
                       "def timed(job):\n"
                       "    start = time.process_time(); job(); return time.process_time() - start\n"
                       "def read():\n"
                       "    with open(sys.argv[1], newline='') as file:\n"
                       "        for row in csv.reader(file): pass\n"
                       "with open(sys.argv[1], newline='') as file: rows = list(csv.reader(file))\n"
                       "def write():\n"
                       "    with open(sys.argv[2], 'w', newline='') as file:\n"
                       "        csv.writer(file).writerows(rows)\n"
                       "n = int(sys.argv[3])\n"
                       "for job in read, write: print(sorted(timed(job) for i in range(n))[n // 2])\n");
    QProcess python;
    python.start(QStringLiteral("python3"), {QStringLiteral("-c"), script, csv, copy, QString::number(repetitions)});
    if (!python.waitForFinished(-1) || python.exitCode() != 0)
        return {};
    std::vector<double> seconds;
    for (const QByteArray& line : python.readAllStandardOutput().trimmed().split('\n'))
        seconds.push_back(line.toDouble());
    return seconds;
}

void CsvRow(const char* job, double ours, double floor, const std::vector<double>& python, std::size_t index)
{
    PrintRow(
        {std::string(job) + ", beside the bare job", Milliseconds(ours), Milliseconds(floor), "-", floor / ours, 0.4});
    ResultRow row{std::string(job) + ", beside Python", Milliseconds(ours), "-", "-", 0, 4};
    if (index < python.size()) {
        row.peer = "Python " + Milliseconds(python[index]);
        row.ratio = python[index] / ours;
    }
    PrintRow(row);
}

void CsvRows()
{
    const QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("in.csv"));
    const QString copy = folder.filePath(QStringLiteral("out.csv"));
    const std::size_t megabytes = IsSmokeRun() ? 1 : 100;
    {
        const std::string csv = MakeCsv(megabytes * 1000000);
        QFile file(name);
        if (!file.open(QIODevice::WriteOnly) || file.write(csv.data(), static_cast<qint64>(csv.size())) < 0)
            return;
    }
    const VoFilePath in{VoString(name)};
    const VoFilePath out{VoString(copy)};
    const std::string plainIn = name.toStdString();
    const std::string plainOut = copy.toStdString();
    const std::vector<double> python = PythonSeconds(name, copy, IsSmokeRun() ? 1 : 5);

    std::size_t sum = 0;
    const auto read = InterleavedTiming({[&] { sum += ReadCsv(in); }, [&] { sum += SplitPlainly(plainIn); }});
    CsvRow("CSV, read 100 MB", read[0], read[1], python, 0);
    const Rows rows = RowsOf(in);
    const auto write = InterleavedTiming({[&] { WriteCsv(out, rows); }, [&] { WritePlainly(plainOut, rows); }});
    CsvRow("CSV, write 100 MB", write[0], write[1], python, 1);
    if (sum == 0)
        std::abort();
}

} // namespace

int main()
{
    TypedRows();
    CsvRows();
}
