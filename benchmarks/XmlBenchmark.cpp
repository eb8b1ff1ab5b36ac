#include <FileSystem/VoFilePath.h>
#include <IO/VoStringDevice.h>
#include <XML/VoXMLStreamElementLoader.h>
#include <XML/VoXMLStreamElementReader.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamLoader.h>
#include <XML/VoXMLStreamReader.h>
#include <XML/VoXMLStreamWriter.h>

#include <QtCore/QBuffer>
#include <QtCore/QXmlStreamReader>
#include <QtCore/QXmlStreamWriter>

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

/// @file
/// The XML layer beside the bare parser and writer that it stands on. Three documents: a release's definition, all
/// attributes, with 5,000 files (0) and with 60,000 (2), and a table, all text (1). Rates are of the document's bytes,
/// so that two cases over one document compare.

namespace {

struct Attribute
{
    VoString name;
    VoString value;
};

struct Record
{
    VoString name;
    std::vector<Attribute> attributes;
    VoString text;
    std::vector<Record> children;
};

Record Definition(int files)
{
    Record root{"package", {{"version", "1.2.3.4"}}, "", {}};
    for (int i = 0; i < files; ++i) {
        const VoString number(i);
        Record file{"file",
                    {{"target", "models\\analogue\\transistor" + number + ".lib"},
                     {"id", "{5f3c2e10-7a44-4d6b-9c55-0123456789ab}"},
                     {"checksum", "a7ffc6f8bf1ed76651c14756a061d662f580ff4de43b49fa82d80a4b80f8434a"},
                     {"size", number}},
                    "",
                    {}};
        for (const char* index : {"0", "1"})
            file.children.push_back(
                {"chunkref", {{"id", number}, {"offset", "1048576"}, {"length", "4096"}, {"index", index}}, "", {}});
        root.children.push_back(std::move(file));
    }
    return root;
}

Record Table()
{
    Record root{"table", {}, "", {}};
    for (int row = 0; row < 3000; ++row) {
        Record cells{"row", {}, "", {}};
        for (int column = 0; column < 8; ++column)
            cells.children.push_back({"cell", {}, "the quick brown fox, row " + VoString(row), {}});
        root.children.push_back(std::move(cells));
    }
    return root;
}

const Record& Document(const benchmark::State& state)
{
    static const Record small = Definition(5000);
    static const Record table = Table();
    if (state.range(0) != 2)
        return state.range(0) == 0 ? small : table;
    static const Record large = Definition(60000);
    return large;
}

void Write(const Record& record, VoXMLElementWriter& element)
{
    for (const Attribute& attribute : record.attributes)
        element.writeAttribute(attribute.name, attribute.value);
    if (!record.text.isEmpty())
        element.writeText(record.text);
    for (const Record& child : record.children)
        Write(child, *element.createElement(child.name));
}

void WriteTo(VoStringDevice& device, const Record& root)
{
    VoXMLStreamWriter writer(device);
    writer.startDocument();
    Write(root, *writer.createElement(root.name));
    writer.finishDocument();
}

std::string Text(const Record& root)
{
    VoStringDevice device;
    WriteTo(device, root);
    return device.content().toStdString();
}

void WriteLibrary(benchmark::State& state)
{
    const Record& root = Document(state);
    std::size_t bytes = 0;
    for (auto _ : state) {
        VoStringDevice device;
        WriteTo(device, root);
        bytes += device.content().size();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

QString Decoded(const VoString& text)
{
    return QString::fromUtf8(text.c_str(), static_cast<int>(text.size()));
}

void WriteBare(const Record& record, QXmlStreamWriter& writer)
{
    writer.writeStartElement(Decoded(record.name));
    for (const Attribute& attribute : record.attributes)
        writer.writeAttribute(Decoded(attribute.name), Decoded(attribute.value));
    if (!record.text.isEmpty())
        writer.writeCharacters(Decoded(record.text));
    for (const Record& child : record.children)
        WriteBare(child, writer);
    writer.writeEndElement();
}

void WriteBareQt(benchmark::State& state)
{
    const Record& root = Document(state);
    std::int64_t bytes = 0;
    for (auto _ : state) {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        QXmlStreamWriter writer(&buffer);
        writer.writeStartDocument();
        WriteBare(root, writer);
        writer.writeEndDocument();
        bytes += buffer.size();
    }
    state.SetBytesProcessed(bytes);
}

// How many elements, attributes and bytes of text a document has: something to do with what is read.
struct Count
{
    std::size_t elements = 0;
    std::size_t attributes = 0;
    std::size_t text = 0;
};

void Read(VoXMLElementReader& element, Count& count)
{
    ++count.elements;
    count.attributes += element.attributes().size();
    for (auto child : element.children())
        Read(*child, count);
}

void ReadTexts(VoXMLElementReader& table, Count& count)
{
    for (auto row : table.children()) {
        for (auto cell : row->children())
            count.text += cell->readText().size();
    }
}

template <typename ReadAll>
void ReadWith(benchmark::State& state, ReadAll readAll)
{
    const VoString text(Text(Document(state)));
    for (auto _ : state) {
        VoStringDevice device(text);
        Count count;
        readAll(device, count);
        benchmark::DoNotOptimize(count);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void ReadElementReaders(benchmark::State& state)
{
    ReadWith(state, [&](VoIODevice& device, Count& count) {
        VoXMLStreamReader reader(device);
        if (state.range(0) != 1)
            Read(*reader.nextElement(), count);
        else
            ReadTexts(*reader.nextElement(), count);
    });
}

void ReadBareQt(benchmark::State& state)
{
    const std::string text = Text(Document(state));
    QByteArray bytes = QByteArray::fromStdString(text);
    for (auto _ : state) {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        QXmlStreamReader reader(&buffer);
        Count count;
        while (!reader.atEnd()) {
            if (reader.readNext() == QXmlStreamReader::StartElement) {
                ++count.elements;
                count.attributes += static_cast<std::size_t>(reader.attributes().size());
            } else if (reader.isCharacters()) {
                count.text += static_cast<std::size_t>(reader.text().size());
            }
        }
        benchmark::DoNotOptimize(count);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

class Node : public VoAbstractXMLStreamLoaderObject
{
public:
    int typeCode() const override { return 0; }
};

void LoadByRules(benchmark::State& state)
{
    VoXMLStreamLoader loader;
    for (const char* name : {"package", "file", "chunkref", "table", "row", "cell"}) {
        loader.addGlobalRule(name, [](VoXMLStreamElementLoader element) {
            element.processChildren([](VoUniquePtr<VoAbstractXMLStreamLoaderObject>) {});
            return VoUniquePtr<Node>::Make();
        });
    }
    ReadWith(state, [&](VoIODevice& device, Count&) { benchmark::DoNotOptimize(loader.load(device)); });
}

BENCHMARK(WriteBareQt)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(WriteLibrary)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadBareQt)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadElementReaders)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadByRules)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
