#include <Documents/VoOOXMLWriter.h>

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Escapes.h>
#include <Documents/VoOOXMLWriterSpreadsheet.h>
#include <Documents/VoZipArchive.h>
#include <Documents/VoZipFile.h>
#include <Documents/detail/CellStyles.h>
#include <FileSystem/VoFilePath.h>
#include <Subsystem/VoLogging.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamWriter.h>

#include <QtCore/QString>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

namespace {

constexpr const char* ContentTypesPart = "[Content_Types].xml";
constexpr const char* OfficeRelations = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
constexpr const char* PackageRelations = "http://schemas.openxmlformats.org/package/2006/relationships";
constexpr const char* SpreadsheetNamespace = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
constexpr int LongestName = 31;

// What spreadsheet programs accept as the name of a sheet.
bool IsSheetName(const VoString& name)
{
    const std::string& bytes = name.toStdString();
    if (bytes.find_first_not_of(" \t") == std::string::npos || QString::fromStdString(bytes).size() > LongestName)
        return false;
    if (bytes.front() == '\'' || bytes.back() == '\'' || bytes.find_first_of(":\\/?*[]") != std::string::npos)
        return false;
    return std::none_of(bytes.begin(), bytes.end(), vo::detail::IsControl);
}

// The sheet's name as it stands in the names of parts, which programs compare letter by letter: plain characters as
// they are, all others as in a URL.
std::string PartName(const VoString& name)
{
    std::string part;
    for (const char c : name.toStdString()) {
        if (VoString::IsLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == '.')
            part += c;
        else
            vo::detail::AppendPercent(part, c);
    }
    return part + ".xml";
}

} // namespace

struct VoOOXMLWriter::Private
{
    struct Document
    {
        VoString name;
        VoString rId;
        VoString part; // below "xl/worksheets/"
    };

    Private(const VoFilePath& file, FileType fileType)
        : archive(file, VoZipArchive::Write)
        , path(file)
        , type(fileType)
    {
    }

    template <typename Fill>
    void writePart(const char* name, const char* root, const char* rootNamespace, Fill fill);

    VoZipArchive archive;
    VoFilePath path;
    FileType type;
    bool closed = false;
    bool hasStyles = false; // some worksheet has a look
    VoSharedPtr<VoOOXMLWriterSpreadsheet> current;
    VoDeque<Document> documents;
};

// Writes one part of the package; fill gets the XML writer and the open root element.
template <typename Fill>
void VoOOXMLWriter::Private::writePart(const char* name, const char* root, const char* rootNamespace, Fill fill)
{
    const VoSharedPtr<VoZipFile> entry = archive.open(name, VoZipArchive::Default).lock();
    if (!entry)
        throw VoFileSaveException("Unable to complete document", name);
    VoXMLStreamWriter xml(*entry);
    xml.startDocument();
    const auto element = xml.createElement(root);
    xml.writeDefaultNamespace(rootNamespace);
    fill(xml, *element);
    xml.finishDocument();
}

VoOOXMLWriter::VoOOXMLWriter(const VoFilePath& file, FileType type)
    : m_private(std::make_unique<Private>(file, type))
{
}

VoOOXMLWriter::~VoOOXMLWriter()
{
    try {
        close();
    } catch (...) {
        vo::logging::Logger::Get("spreadsheet").error(vo::CurrentExceptionText());
    }
}

VoSharedPtr<VoOOXMLWriterSpreadsheet> VoOOXMLWriter::addSheet(const VoString& name)
{
    return keepSheet(name, VoSharedPtr<VoOOXMLWriterSpreadsheet>::Make(beginSheet(name)));
}

VoSharedPtr<VoOOXMLWriterSpreadsheet> VoOOXMLWriter::addSheet(const VoString& name, const VoWorksheetLook& look)
{
    const auto sheet = VoSharedPtr<VoOOXMLWriterSpreadsheet>::Make(beginSheet(name), look);
    m_private->hasStyles = true;
    return keepSheet(name, sheet);
}

VoWeakPtr<VoIODevice> VoOOXMLWriter::beginSheet(const VoString& name)
{
    requireNewName(name);
    closeDocument();
    return m_private->archive.open("xl/worksheets/" + VoString(PartName(name)), VoZipArchive::Default);
}

VoSharedPtr<VoOOXMLWriterSpreadsheet> VoOOXMLWriter::keepSheet(const VoString& name,
                                                               VoSharedPtr<VoOOXMLWriterSpreadsheet> sheet)
{
    m_private->current = std::move(sheet);
    m_private->documents.pushBack({name, "rId" + VoString(m_private->documents.size() + 1), VoString(PartName(name))});
    return m_private->current;
}

void VoOOXMLWriter::close()
{
    if (std::exchange(m_private->closed, true))
        return;
    closeDocument();
    if (m_private->documents.isEmpty())
        throw VoFileSaveException("Cannot save document as not content provided", m_private->path.path());
    requireSpreadsheet();
    writeContentTypes();
    writePackageRelations();
    writeWorkbookRelations();
    writeWorkbook();
    if (m_private->hasStyles)
        writeStyles();
    m_private->archive.close();
}

void VoOOXMLWriter::requireNewName(const VoString& name) const
{
    const auto& documents = m_private->documents;
    if (std::any_of(documents.begin(), documents.end(), [&](const auto& document) { return document.name == name; }))
        throw VoInvalidParameterException("Document with the given name already exists: " + name);
    if (!IsSheetName(name))
        throw VoInvalidParameterException("Invalid document name: " + name);
}

void VoOOXMLWriter::closeDocument()
{
    if (const VoSharedPtr<VoOOXMLWriterSpreadsheet> document = std::exchange(m_private->current, nullptr))
        document->close();
}

void VoOOXMLWriter::requireSpreadsheet() const
{
    if (m_private->type != Spreadsheet)
        throw VoFileSaveException("Unknown document type", m_private->path.path());
}

void VoOOXMLWriter::writeContentTypes()
{
    using Names = std::pair<const char*, VoString>;
    const auto add = [](VoXMLElementWriter& types, const char* element, const Names& subject, const char* type) {
        const auto entry = types.createElement(element);
        entry->writeAttribute(subject.first, subject.second);
        entry->writeAttribute("ContentType", type);
    };
    m_private->writePart(
        ContentTypesPart, "Types", "http://schemas.openxmlformats.org/package/2006/content-types",
        [&](VoXMLStreamWriter&, VoXMLElementWriter& types) {
            add(types, "Default", {"Extension", "rels"}, "application/vnd.openxmlformats-package.relationships+xml");
            add(types, "Default", {"Extension", "xml"}, "application/xml");
            add(types, "Override", {"PartName", "/xl/workbook.xml"},
                "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml");
            for (const auto& document : m_private->documents)
                add(types, "Override", {"PartName", "/xl/worksheets/" + document.part},
                    "application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml");
            if (m_private->hasStyles)
                add(types, "Override", {"PartName", "/xl/styles.xml"},
                    "application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml");
        });
}

void VoOOXMLWriter::writePackageRelations()
{
    m_private->writePart("_rels/.rels", "Relationships", PackageRelations,
                         [](VoXMLStreamWriter&, VoXMLElementWriter& relations) {
                             const auto workbook = relations.createElement("Relationship");
                             workbook->writeAttribute("Target", "xl/workbook.xml");
                             workbook->writeAttribute("Id", "rId1");
                             workbook->writeAttribute("Type", OfficeRelations + VoString("/officeDocument"));
                         });
}

void VoOOXMLWriter::writeWorkbookRelations()
{
    m_private->writePart("xl/_rels/workbook.xml.rels", "Relationships", PackageRelations,
                         [this](VoXMLStreamWriter&, VoXMLElementWriter& relations) {
                             const auto relate = [&](const VoString& target, const VoString& id, const char* type) {
                                 const auto relation = relations.createElement("Relationship");
                                 relation->writeAttribute("Target", target);
                                 relation->writeAttribute("Id", id);
                                 relation->writeAttribute("Type", OfficeRelations + VoString(type));
                             };
                             for (const auto& document : m_private->documents)
                                 relate("worksheets/" + document.part, document.rId, "/worksheet");
                             if (m_private->hasStyles)
                                 relate("styles.xml", "rId" + VoString(m_private->documents.size() + 1), "/styles");
                         });
}

void VoOOXMLWriter::writeWorkbook()
{
    m_private->writePart("xl/workbook.xml", "workbook", SpreadsheetNamespace,
                         [this](VoXMLStreamWriter& xml, VoXMLElementWriter& workbook) {
                             xml.writeNamespace(OfficeRelations, "r");
                             const auto sheets = workbook.createElement("sheets");
                             std::size_t number = 0;
                             for (const auto& document : m_private->documents) {
                                 const auto sheet = sheets->createElement("sheet");
                                 sheet->writeAttribute("name", document.name);
                                 sheet->writeAttribute("sheetId", VoString(++number));
                                 sheet->writeAttribute("r:id", document.rId);
                             }
                         });
}

void VoOOXMLWriter::writeStyles()
{
    m_private->writePart("xl/styles.xml", "styleSheet", SpreadsheetNamespace,
                         [](VoXMLStreamWriter&, VoXMLElementWriter& styles) { vo::detail::WriteCellStyles(styles); });
}
