#include <Misc/XMLReport/ReportDataFile.h>

#include <Core/VoBase64.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Completed.h>
#include <Core/detail/NumberText.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativeFile.h>
#include <FileSystem/detail/NativePath.h>
#include <Misc/XMLReport/ReportPages.h>
#include <Misc/XMLReport/detail/ResultsSchema.h>
#include <Subsystem/VoLogging.h>
#include <XML/VoStreamXMLReader.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamWriter.h>
#include <XML/detail/XMLNamespaceBase.h>

#include <array>
#include <limits>
#include <string>
#include <system_error>
#include <utility>

namespace {

using Analysis = XMLReportHeader::Analysis;
using Parameter = XMLReportInfo::Parameter;
using Element = VoAbstractXMLElementReader;

const VoString& Namespace()
{
    // Outlives all static objects.
    static const auto& uri = *new VoString(VoString(vo::detail::XMLNamespaceBase) + "/schemas/application/msw/");
    return uri;
}

constexpr const char* SchemaInstance = "http://www.w3.org/2001/XMLSchema-instance";

constexpr std::array<std::pair<Analysis, const char*>, 3> AnalysisNames = {
    {{Analysis::Sensitivity, "sensitivity"}, {Analysis::MonteCarlo, "montecarlo"}, {Analysis::WorstCase, "worstcase"}}};

constexpr std::array<std::pair<const char*, YString Parameter::*>, 7> ParameterTexts = {
    {{"refdes", &Parameter::refdes},
     {"param", &Parameter::param},
     {"lot", &Parameter::lot},
     {"devparam", &Parameter::devparam},
     {"tolerance", &Parameter::tolerance},
     {"terminal", &Parameter::terminal},
     {"variable", &Parameter::variable}}};

// Writing.

std::unique_ptr<VoXMLElementWriter> Child(VoXMLElementWriter& parent, const char* name)
{
    return parent.createElement(name, Namespace());
}

void WriteInteger(VoXMLElementWriter& element, const char* name, long long value)
{
    element.writeAttribute(name, VoString(vo::detail::IntegerText(value)));
}

const char* NameOf(Analysis analysis)
{
    for (const auto& [known, name] : AnalysisNames)
        if (known == analysis)
            return name;
    throw VoValidationException("Invalid analysis");
}

// Refuses what Read() would refuse.
void RequireReadable(const YHashTable<XMLReportInfo>& cases, const XMLReportHeader& header)
{
    NameOf(header.analysis);
    for (const auto& [number, info] : cases)
        if (info.results.size() > header.resultNames.size())
            throw VoValidationException("Case " + VoString(number) + ": more results than the header names");
}

void WriteHeader(VoXMLElementWriter& root, const XMLReportHeader& header)
{
    const auto element = Child(root, "header");
    element->writeAttribute("date", header.date);
    element->writeAttribute("analysis", NameOf(header.analysis));
    element->writeAttribute("card", header.card);
    element->writeAttribute("title", header.title);
    WriteInteger(*element, "cores", header.cores);
    for (const YString& name : header.resultNames)
        Child(*element, "meritfunction")->writeAttribute("name", name);
}

void WriteLotItem(VoXMLElementWriter& step, const XMLReportInfo::LotItem& item)
{
    const auto element = Child(step, "parameter");
    for (const auto& [name, text] : ParameterTexts)
        if (!(item.parameter.*text).isEmpty())
            element->writeAttribute(name, item.parameter.*text);
    // A host may show a parameter by words of its own.
    if (item.description != item.parameter.description())
        element->writeAttribute("description", item.description);
    element->writeAttributeBase64("nominal", item.nominal);
    element->writeAttributeBase64("value", item.value);
}

void WriteResult(VoXMLElementWriter& step, std::size_t index, const XMLReportInfo::Result& result)
{
    const auto element = Child(step, "meritfunction");
    WriteInteger(*element, "index", static_cast<long long>(index));
    element->writeAttributeBase64("reference", result.reference);
    element->writeAttributeBase64("delta", result.delta);
}

void WriteCase(VoXMLElementWriter& root, int number, const XMLReportInfo& info)
{
    const auto element = Child(root, "case");
    WriteInteger(*element, "id", number);
    if (!info.reference.isEmpty())
        element->writeAttribute("reference", info.reference);
    WriteInteger(*element, "seed", info.seed);
    const auto step = Child(*element, "step");
    WriteInteger(*step, "index", 0);
    for (const XMLReportInfo::LotItem& item : info.lotItems)
        WriteLotItem(*step, item);
    for (std::size_t i = 0; i < info.results.size(); ++i)
        WriteResult(*step, i, info.results.data()[i]);
}

// Reading.

using Reader = VoStreamXMLReader;

bool IsNamed(const Element& element, const char* name)
{
    return element.name().equal(name, VoString::CaseSensitive);
}

// Whether the element whose start has just been read is the one of that name and not one that somebody else added.
bool Is(const Reader& reader, const Element& element, const char* name)
{
    return IsNamed(element, name) && reader.namespaceUri().equal(Namespace(), VoString::CaseSensitive);
}

[[noreturn]] void Refuse(const Element& element, const VoString& reason)
{
    throw VoValidationException("Element \"" + element.name() + "\": " + reason);
}

long long ReadInteger(const Element& element, const char* name, long long low, long long high)
{
    const VoString text = element.readAttribute(name);
    const auto value = vo::detail::ParseInteger(text.toStdString());
    if (!value || *value < low || *value > high)
        Refuse(element, VoString("invalid ") + name + " \"" + text + "\"");
    return *value;
}

template <typename Integer>
Integer ReadInteger(const Element& element, const char* name)
{
    using Limits = std::numeric_limits<Integer>;
    return static_cast<Integer>(ReadInteger(element, name, Limits::min(), Limits::max()));
}

bool IsDoubleText(const std::string& text)
{
    constexpr const char* alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    return text.size() == 12 && text.find_first_not_of(alphabet) == 11 && text[11] == '=';
}

double ReadDouble(const Element& element, const char* name)
{
    const VoString text = element.readAttribute(name);
    if (!IsDoubleText(text.toStdString())) // the decoder would make something of anything
        Refuse(element, VoString("invalid ") + name + " \"" + text + "\"");
    return VoStringDoubleBase64Converter().convert(text);
}

YString ReadText(const Element& element, const char* name)
{
    return element.readAttribute(name, VoString()).toYString();
}

Analysis ReadAnalysis(const Element& element)
{
    const VoString text = element.readAttribute("analysis");
    for (const auto& [analysis, name] : AnalysisNames)
        if (text.equal(name, VoString::CaseSensitive))
            return analysis;
    Refuse(element, "invalid analysis \"" + text + "\"");
}

XMLReportHeader ReadHeader(const Reader& reader, Element& element)
{
    XMLReportHeader header;
    header.analysis = ReadAnalysis(element);
    header.date = ReadText(element, "date");
    header.card = ReadText(element, "card");
    header.title = ReadText(element, "title");
    header.cores = ReadInteger<std::int32_t>(element, "cores");
    element.forEachChild([&](Element& child) {
        if (Is(reader, child, "meritfunction"))
            header.resultNames.pushBack(child.readAttribute("name").toYString());
    });
    return header;
}

XMLReportInfo::LotItem ReadLotItem(const Element& element)
{
    XMLReportInfo::LotItem item;
    for (const auto& [name, text] : ParameterTexts)
        item.parameter.*text = ReadText(element, name);
    item.description =
        element.hasAttribute("description") ? ReadText(element, "description") : item.parameter.description();
    item.nominal = ReadDouble(element, "nominal");
    item.value = ReadDouble(element, "value");
    return item;
}

// Results come in their order without a gap, so that no file can ask for more memory than its own size warrants.
XMLReportInfo::Result ReadResult(const Element& element, std::size_t index, std::size_t count)
{
    if (index >= count)
        Refuse(element, "more results than the header names");
    const auto expected = static_cast<long long>(index);
    ReadInteger(element, "index", expected, expected);
    XMLReportInfo::Result result;
    result.reference = ReadDouble(element, "reference");
    result.delta = ReadDouble(element, "delta");
    return result;
}

// The steps of a case continue one another.
XMLReportInfo ReadCase(const Reader& reader, Element& element, const XMLReportHeader& header)
{
    XMLReportInfo info;
    info.caseID = ReadInteger<std::int32_t>(element, "id");
    info.reference = ReadText(element, "reference");
    if (element.hasAttribute("seed"))
        info.seed = ReadInteger<std::int64_t>(element, "seed");
    element.forEachChild([&](Element& step) {
        if (!Is(reader, step, "step"))
            return;
        step.forEachChild([&](Element& child) {
            if (Is(reader, child, "parameter"))
                info.lotItems.pushBack(ReadLotItem(child));
            else if (Is(reader, child, "meritfunction"))
                info.results.pushBack(ReadResult(child, info.results.size(), header.resultNames.size()));
        });
    });
    info.buildNormalisedSensitivity();
    return info;
}

ReportDataFile ReadResults(const Reader& reader, Element& root)
{
    ReportDataFile data;
    bool hasHeader = false;
    root.forEachChild([&](Element& child) {
        if (Is(reader, child, "header")) {
            if (std::exchange(hasHeader, true))
                Refuse(child, "given twice");
            data.header = ReadHeader(reader, child);
        } else if (Is(reader, child, "case")) {
            if (!hasHeader)
                Refuse(child, "given before the header");
            XMLReportInfo info = ReadCase(reader, child, data.header);
            const int number = info.caseID;
            if (data.cases.find(number))
                Refuse(child, "id " + VoString(number) + " given twice");
            data.cases.insert(number, std::move(info));
        }
    });
    if (!hasHeader)
        Refuse(root, "header missing");
    return data;
}

// The XML layer's device would wait for a pipe.
void RequireFile(const VoFilePath& file)
{
    std::error_code error;
    const auto opened = vo::detail::NativeFile::OpenForReading(vo::detail::ToNative(file), error);
    if (error == std::errc::no_such_file_or_directory)
        throw VoFileNotFoundException(file);
    if (!opened.isOpen())
        throw vo::detail::Because(error, VoCannotOpenFileException(file));
}

} // namespace

ReportDataFile ReportDataFile::Read(const VoFilePath& file)
{
    RequireFile(file);
    Reader reader(file, Reader::DocumentTypes::Refuse);
    auto root = reader.nextElement();
    if (!root || !IsNamed(*root, "results"))
        throw VoValidationException("Root element \"results\" expected");
    if (!Is(reader, *root, "results"))
        throw VoValidationException("Namespace \"" + Namespace() + "\" of the root element expected, not \"" +
                                    reader.namespaceUri() + "\"");
    ReportDataFile data = ReadResults(reader, *root);
    reader.finish();
    return data;
}

void ReportDataFile::Write(const VoFilePath& file, const YHashTable<XMLReportInfo>& cases,
                           const XMLReportHeader& header)
{
    RequireReadable(cases, header);
    VoAtomicFileWriter target(file);
    VoXMLStreamWriter writer(target.device(), VoXMLStreamWriter::AutoFormattingSettings(true));
    writer.startDocument();
    writer.writeDefaultNamespace(Namespace());
    writer.writeNamespace(SchemaInstance, "xsi");
    {
        const auto root = writer.createElement("results", Namespace());
        root->writeAttribute("schemaLocation", Namespace() + " " + Namespace() + "results.xsd", SchemaInstance);
        WriteHeader(*root, header);
        for (const auto& [number, info] : cases)
            WriteCase(*root, number, info);
    }
    writer.finishDocument();
    target.commit();
}

VoString ReportDataFile::Schema()
{
    return vo::detail::ResultsSchema;
}

bool sp_CompileSensReportData(const YString& file, YHashTable<XMLReportInfo>* cases, XMLReportHeader* header)
{
    if (!cases || !header)
        return false;
    try {
        ReportDataFile data = ReportDataFile::Read(VoFilePath{VoString(file)});
        *cases = std::move(data.cases);
        *header = std::move(data.header);
        return true;
    } catch (const VoException& exception) {
        vo::logging::Logger::Get("report").error(VoString(file) + ": " + exception.message());
        return false;
    }
}
