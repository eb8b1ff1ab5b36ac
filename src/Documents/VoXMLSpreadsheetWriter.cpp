#include <Documents/VoXMLSpreadsheetWriter.h>

#include <Core/VoString.h>
#include <Core/VoVariant.h>
#include <IO/VoIODevice.h>
#include <IO/VoIOException.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamWriter.h>
#include <XML/detail/XMLText.h>

#include <cmath>
#include <string>

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
    static constexpr char digits[] = "0123456789ABCDEF";
    if (vo::detail::IsXMLText(text))
        return text;
    const std::string& bytes = text.toStdString();
    std::string writable;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        const std::string nonCharacter = bytes.substr(i, 3);
        if (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') {
            writable += std::string("_x00") + digits[byte >> 4] + digits[byte & 0xF] + '_';
        } else if (nonCharacter == "\xEF\xBF\xBE" || nonCharacter == "\xEF\xBF\xBF") {
            writable += nonCharacter[2] == '\xBE' ? "_xFFFE_" : "_xFFFF_";
            i += 2;
        } else {
            writable += bytes[i];
        }
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
