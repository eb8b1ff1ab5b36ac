#include <Documents/VoXMLSpreadsheetWriter.h>

#include <Core/VoString.h>
#include <Core/VoVariant.h>
#include <Documents/detail/CellCode.h>
#include <IO/VoIODevice.h>
#include <IO/VoIOException.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamWriter.h>
#include <XML/detail/XMLText.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

namespace {

constexpr const char* Namespace = "urn:schemas-microsoft-com:office:spreadsheet";

// Opens the device and writes the line that stands before everything else.
VoIODevice& Prepared(VoIODevice& device)
{
    if (device.mode() == VoIODevice::Read)
        throw VoIOInvalidWriteException("Device is in read mode, cannot write to it");
    if (!device.isOpen() && !device.open(VoIODevice::Write))
        throw VoIOException(device);
    const VoString line = "<?mso-application progid=\"Excel.Sheet\"?>" + VoString::NewLine();
    if (device.write(line) < line.size())
        throw VoIOException(device);
    return device;
}

bool IsNumber(const VoVariant& value)
{
    return value.type() == VoVariant::Integer || (value.type() == VoVariant::Double && std::isfinite(value.asDouble()));
}

// The text with the characters that XML cannot hold written as their numbers.
VoString Writable(VoString text)
{
    if (vo::detail::IsXMLText(text))
        return text;
    std::string_view rest = text.toStdString();
    std::string writable;
    while (!rest.empty()) {
        const std::size_t coded = rest.front() == '\r' ? 0 : vo::detail::AppendCellCode(writable, rest);
        if (coded == 0)
            writable += rest.front();
        rest.remove_prefix(std::max<std::size_t>(coded, 1));
    }
    return VoString(std::move(writable));
}

} // namespace

struct VoXMLSpreadsheetWriter::Private
{
    explicit Private(VoIODevice& device)
        : xml(Prepared(device))
    {
        workbook = xml.createElement("Workbook");
        xml.writeDefaultNamespace(Namespace);
        xml.writeNamespace(Namespace, "ss");
        worksheet = workbook->createElement("Worksheet");
        worksheet->writeAttribute("ss:Name", "Sheet1");
        table = worksheet->createElement("Table");
    }

    VoXMLStreamWriter xml;
    std::unique_ptr<VoXMLElementWriter> workbook; // each before the element around it
    std::unique_ptr<VoXMLElementWriter> worksheet;
    std::unique_ptr<VoXMLElementWriter> table;
    std::unique_ptr<VoXMLElementWriter> row;
};

VoXMLSpreadsheetWriter::VoXMLSpreadsheetWriter(VoIODevice& device)
    : m_private(std::make_unique<Private>(device))
{
}

VoXMLSpreadsheetWriter::~VoXMLSpreadsheetWriter() = default;

void VoXMLSpreadsheetWriter::startRow()
{
    endRow();
    m_private->row = m_private->table->createElement("Row");
}

void VoXMLSpreadsheetWriter::endRow()
{
    m_private->row.reset();
}

void VoXMLSpreadsheetWriter::addCell(const VoVariant& value, std::size_t columnSpan, std::size_t rowSpan)
{
    if (!m_private->row)
        startRow();
    const auto cell = m_private->row->createElement("Cell");
    if (columnSpan > 1)
        cell->writeAttribute("ss:MergeAcross", VoString(columnSpan - 1));
    if (rowSpan > 1)
        cell->writeAttribute("ss:MergeDown", VoString(rowSpan - 1));
    const auto data = cell->createElement("Data");
    data->writeAttribute("ss:Type", IsNumber(value) ? "Number" : "String");
    data->writeText(Writable(value.toString()));
}

void VoXMLSpreadsheetWriter::finish()
{
    m_private->row.reset();
    m_private->xml.finishDocument();
}
