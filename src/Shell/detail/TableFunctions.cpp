#include <Core/VoException.h>
#include <Documents/VoCSVFormat.h>
#include <Documents/VoDataTable.h>
#include <Documents/VoVariantTable.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileDevice.h>
#include <Shell/VoFunctionRegistry.h>
#include <Shell/detail/LibraryFunctions.h>

namespace vo::detail {
namespace {

using Form = VoShellValue::Form;

const VoFunctionParameter TheTable{"table", VoVariant::Null, "the table", Form::Table};

VoCSVFormat Format(const VoFunctionCall& call)
{
    VoCSVFormat format;
    format.separator = call.value("separator").asString();
    return format;
}

// By number, the first one 0, or by the text in the first row.
std::size_t Column(const VoFunctionCall& call)
{
    const VoVariant& wanted = call.value("column");
    if (wanted.type() == VoVariant::Integer && wanted.asInteger() >= 0)
        return static_cast<std::size_t>(wanted.asInteger());
    return call.table("table").columnNumber(VoShellValue(wanted).toText());
}

VoShellValue Load(const VoFunctionCall& call)
{
    VoFileDevice device(call.value("file").asFilePath());
    device.open(VoIODevice::Read);
    return VoVariantTable::LoadCSV(device, call.value("types").asBoolean(), Format(call));
}

VoShellValue Save(const VoFunctionCall& call)
{
    const VoFilePath file = call.value("file").asFilePath();
    if (VoString(file.extension()) == "xlsx") {
        VoDataTable(call.table("table")).writeOOXML(file);
        return {};
    }
    if (VoString(file.extension()) != "csv")
        throw VoInvalidUseException("No kind of table file (.csv, .xlsx): " + file.path());
    VoAtomicFileWriter writer(file);
    call.table("table").writeCSV(writer.device(), Format(call));
    writer.commit();
    return {};
}

VoShellValue ColumnOf(const VoFunctionCall& call)
{
    const VoVariantTable& table = call.table("table");
    const std::size_t wanted = Column(call);
    VoDeque<VoVariant> values;
    for (std::size_t row = 1; row < table.numberRows(); ++row)
        values.pushBack(table.at(row, wanted));
    return values;
}

} // namespace

void AddTableFunctions(VoFunctionRegistry& registry)
{
    const VoFunctionParameter file{"file", VoVariant::FilePath, "the file"};
    const VoFunctionParameter separator{"separator", VoVariant::String, "between fields of a CSV file", Form::Single,
                                        VoShellValue(",")};
    const VoFunctionParameter anyColumn{"column", VoVariant::Null, "its number, from 0, or its text in row 0"};
    registry.add(
        {"table.load",
         "The table in a CSV file.",
         {file,
          separator,
          {"types", VoVariant::Boolean, "whether numbers and truth values are such", Form::Single, VoShellValue(true)}},
         Load});
    registry.add({"table.save",
                  "Writes a table as a CSV file or a workbook, as the file's extension says.",
                  {TheTable, file, separator},
                  Save});
    registry.add({"table.rows", "The number of rows.", {TheTable}, [](const VoFunctionCall& call) {
                      return call.table("table").numberRows();
                  }});
    registry.add({"table.columns", "The number of columns.", {TheTable}, [](const VoFunctionCall& call) {
                      return call.table("table").numberColumns();
                  }});
    registry.add(
        {"table.cell",
         "The value of a cell.",
         {TheTable, {"row", VoVariant::Size, "its number, from 0"}, anyColumn},
         [](const VoFunctionCall& call) { return call.table("table").at(call.value("row").asSize(), Column(call)); }});
    registry.add({"table.column", "The values of a column below row 0, as a list.", {TheTable, anyColumn}, ColumnOf});
}

} // namespace vo::detail
