#include <FileSystem/VoFileType.h>

#include <Core/VoDeque.h>
#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>

#include <array>
#include <cstddef>
#include <iterator>
#include <ostream>

namespace {

constexpr std::size_t MaximumExtensions = 15;

struct Row
{
    VoFileType::Type type;
    const char* name;
    const char* icon;
    std::array<const char*, MaximumExtensions> extensions; // null behind the last
};

// In the order of registration, which decides between types that share an extension. "Text" carries the extensions of
// "SymbolLibrary" and the workbook's extension is spelt as it always was: saved filters and settings depend on both.
constexpr Row Rows[] = {
    {VoFileType::AEExamples, "AEExamples", ":/AEExample.png", {".vohtm"}},
    {VoFileType::Component, "Component", ":/ComponentIcon.png", {".vocmp"}},
    {VoFileType::CSV, "CSV", "", {".csv"}},
    {VoFileType::RVWReport, "RVWReport", ":/RVWReport.png", {".log.html"}},
    {VoFileType::Graph, "Graph", ":/GraphIcon.png", {".vogpx", ".vogph"}},
    {VoFileType::HTML, "HTML", "", {".html"}},
    {VoFileType::Icon, "Icon", "", {".ico"}},
    {VoFileType::Image, "Image", "", {".bmp", ".jpg", ".png", ".JPG", ".jpeg"}},
    {VoFileType::Model,
     "Model",
     ":/ModelIcon.png",
     {".lb", ".lib", ".mod", ".cir", ".spi", ".fam", ".mdl", ".sp", ".sp2", ".model", ".pkg", ".prm", ".sub", ".sio",
      ".ckt"}},
    {VoFileType::Netlist, "Netlist", "", {".net", ".cir", ".deck", ".out", ".init"}},
    {VoFileType::RichText, "RichText", "", {".rtf"}},
    {VoFileType::Schematic, "Schematic", ":/SchematicIcon.png", {".vosch", ".vocmp", ".sch"}},
    {VoFileType::Script, "Script", ":/ScriptIcon.png", {".voscr"}},
    {VoFileType::ScriptTest, "ScriptTest", "", {".votst"}},
    {VoFileType::SymbolLibrary, "SymbolLibrary", ":/SymbolLibraryIcon.png", {".voslb", ".slb"}},
    {VoFileType::Text, "Text", ":/TextFileIcon.png", {".voslb", ".slb"}},
    {VoFileType::VerilogA, "VerilogA", ":/VerilogAIcon.png", {".va", ".vams"}},
    {VoFileType::VerilogHDL, "VerilogHDL", ":/VerilogHDLIcon.png", {".v"}},
    {VoFileType::VisualScript, "VisualScript", ":/VisualScriptIcon.png", {".vovis"}},
    {VoFileType::XML, "XML", "", {".xml"}},
    {VoFileType::Spreadsheet, "Spreadsheet (XLSX)", "", {".xslx"}},
    {VoFileType::Zip, "Zip", "", {".zip", ".ZIP"}},
};

const Row* FindRow(VoFileType::Type type)
{
    for (const Row& row : Rows)
        if (row.type == type)
            return &row;
    return nullptr;
}

VoFileType::Type Known(VoFileType::Type type)
{
    return type == VoFileType::Directory || FindRow(type) ? type : VoFileType::Undefined;
}

bool HasExtension(const Row& row, const VoString& extension)
{
    for (const char* candidate : row.extensions)
        if (candidate && extension == candidate)
            return true;
    return false;
}

} // namespace

VoFileType::VoFileType(Type type) noexcept
    : m_type(Known(type))
{
}

VoFileType::VoFileType(const VoFilePath& path)
    : m_type(FromPath(path))
{
}

VoFileType::VoFileType(const VoFileType& other) noexcept = default;

VoFileType& VoFileType::operator=(const VoFileType& other) noexcept = default;

VoFileType::~VoFileType() = default;

VoDeque<VoString> VoFileType::extensions() const
{
    VoDeque<VoString> result;
    if (const Row* row = FindRow(m_type))
        for (const char* extension : row->extensions)
            if (extension)
                result.pushBack(VoString(extension));
    return result;
}

VoString VoFileType::icon() const
{
    const Row* row = FindRow(m_type);
    return VoString(row ? row->icon : "");
}

VoString VoFileType::filter() const
{
    const Row* row = FindRow(m_type);
    if (!row)
        return VoString("All Files (*)");
    VoString text = VoString(row->name) + " (";
    const char* separator = "";
    for (const char* extension : row->extensions) {
        if (!extension)
            break;
        text += separator;
        text += "*";
        text += extension;
        separator = " ";
    }
    return text + ")";
}

VoFileType::Type VoFileType::FromName(const VoString& name)
{
    for (const Row& row : Rows)
        if (name == row.name)
            return row.type;
    return Undefined;
}

VoFileType::Type VoFileType::FromPath(const VoFilePath& path)
{
    if (path.isDirectory() || VoFileSystem::IsDirectory(path))
        return Directory;
    const VoString extension = "." + path.extension().toString();
    for (const Row& row : Rows)
        if (HasExtension(row, extension))
            return row.type;
    return Undefined;
}

VoString VoFileType::ToString(Type type)
{
    if (type == Directory)
        return VoString("Directory");
    const Row* row = FindRow(type);
    return VoString(row ? row->name : "Undefined");
}

VoString VoFileType::ToString(const VoFileType& type)
{
    return ToString(type.m_type);
}

std::ostream& operator<<(std::ostream& stream, const VoFileType& type)
{
    return stream << VoFileType::ToString(type);
}
