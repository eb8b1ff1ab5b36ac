#include <Gui/VoMimeData.h>

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <Core/VoVariant.h>
#include <Documents/VoCSVFormat.h>
#include <Documents/VoDataTable.h>
#include <Documents/VoDataTableItem.h>
#include <Documents/VoVariantTable.h>
#include <Documents/detail/HTMLTable.h>
#include <Gui/detail/MimeTypes.h>
#include <IO/VoStringDevice.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace mime = vo::detail::mime;

struct VoMimeData::Private
{
    std::vector<std::pair<VoString, VoByteArray>> forms;
};

namespace {

VoByteArray Bytes(const std::string& text)
{
    return VoByteArray(text.data(), text.size());
}

VoString Text(const VoByteArray& bytes)
{
    return VoString(bytes.cdata(), bytes.size());
}

// Lines end as the platform wants them: the framework sees to that.
VoCSVFormat Tabs()
{
    VoCSVFormat format;
    format.separator = "\t";
    format.newline = "\n";
    return format;
}

VoString CSV(const VoDataTable& table, const VoCSVFormat& format)
{
    VoStringDevice device;
    table.writeCSV(device, format);
    return device.content();
}

VoDataTable TableOf(const VoString& text, const VoCSVFormat& format)
{
    VoStringDevice device(text);
    return VoDataTable::LoadCSV(device, true, format);
}

// A quote need not be one: people copy lines of anything.
VoDataTable TableOfTabs(const VoString& text)
{
    VoCSVFormat format = Tabs();
    try {
        return TableOf(text, format);
    } catch (const VoInvalidParameterException&) {
        format.quote = '\x1f';
        return TableOf(text, format);
    }
}

bool IsType(const VoString& type)
{
    const std::string& text = type.toStdString();
    const std::size_t slash = text.find('/');
    const bool isPlain = std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 0x7f; });
    return isPlain && slash != std::string::npos && slash > 0 && slash + 1 < text.size();
}

VoVariant SingleValue(const VoDataTableItem& item)
{
    const VoDeque<VoVariant>& values = item.values();
    if (values.size() < 2)
        return values.isEmpty() ? VoVariant() : values[0];
    VoString lines;
    for (const VoVariant& value : values)
        lines += (lines.isEmpty() ? VoString() : VoString("\n")) + (value.isNull() ? VoString() : value.toString());
    return lines;
}

} // namespace

VoMimeData::VoMimeData()
    : m_private(std::make_unique<Private>())
{
}

VoMimeData::VoMimeData(const VoMimeData& other)
    : m_private(std::make_unique<Private>(*other.m_private))
{
}

VoMimeData::VoMimeData(VoMimeData&& other) noexcept
    : VoMimeData()
{
    m_private.swap(other.m_private);
}

VoMimeData& VoMimeData::operator=(const VoMimeData& other)
{
    if (this != &other)
        m_private = std::make_unique<Private>(*other.m_private);
    return *this;
}

VoMimeData& VoMimeData::operator=(VoMimeData&& other) noexcept
{
    m_private.swap(other.m_private);
    if (this != &other)
        other.m_private->forms.clear();
    return *this;
}

VoMimeData::~VoMimeData() = default;

void VoMimeData::setText(const VoString& text)
{
    setData(mime::Text, Bytes(text.toStdString()));
}

void VoMimeData::setHTML(const VoString& html)
{
    setData(mime::HTML, Bytes(html.toStdString()));
}

void VoMimeData::setPNG(const VoByteArray& image)
{
    if (!mime::IsPNG(image))
        throw VoInvalidParameterException("Invalid PNG image");
    setData(mime::PNG, image);
}

void VoMimeData::setData(const VoString& type, const VoByteArray& bytes)
{
    if (!IsType(type))
        throw VoInvalidParameterException("Invalid MIME type: " + type);
    for (auto& [name, content] : m_private->forms) {
        if (name == type) {
            content = bytes;
            return;
        }
    }
    m_private->forms.emplace_back(type, bytes);
}

void VoMimeData::setTable(const VoDataTable& table)
{
    const VoString text = CSV(table, Tabs());
    const VoString csv = CSV(table, VoCSVFormat());
    setHTML(VoString(vo::detail::TableToHTML(table)));
    setText(text);
    setData(mime::CSV, Bytes(csv.toStdString()));
}

void VoMimeData::setTable(const VoVariantTable& table)
{
    setTable(VoDataTable(table));
}

VoDeque<VoString> VoMimeData::types() const
{
    VoDeque<VoString> types;
    for (const auto& form : m_private->forms)
        types.pushBack(form.first);
    return types;
}

bool VoMimeData::isEmpty() const noexcept
{
    return m_private->forms.empty();
}

bool VoMimeData::contains(const VoString& type) const
{
    return std::any_of(m_private->forms.begin(), m_private->forms.end(),
                       [&](const auto& form) { return form.first == type; });
}

VoByteArray VoMimeData::data(const VoString& type) const
{
    if (isEmpty())
        throw VoInvalidMimeDataException();
    for (const auto& [name, content] : m_private->forms) {
        if (name == type)
            return content;
    }
    throw VoInvalidMimeDataException(type);
}

VoString VoMimeData::text() const
{
    return Text(data(mime::Text));
}

VoString VoMimeData::html() const
{
    return Text(data(mime::HTML));
}

VoByteArray VoMimeData::png() const
{
    VoByteArray image = data(mime::PNG);
    if (!mime::IsPNG(image))
        throw VoInvalidMimeDataException(mime::PNG);
    return image;
}

VoDataTable VoMimeData::table() const
{
    if (contains(mime::HTML)) {
        const VoByteArray html = data(mime::HTML);
        if (std::optional<VoDataTable> table = vo::detail::TableFromHTML({html.cdata(), html.size()}))
            return std::move(*table);
    }
    return contains(mime::CSV) ? TableOf(Text(data(mime::CSV)), VoCSVFormat()) : TableOfTabs(text());
}

VoVariantTable VoMimeData::variantTable() const
{
    constexpr std::size_t mostCells = std::size_t(1) << 22;
    const VoDataTable source = table();
    if (source.numberColumns() > 0 && source.numberRows() > mostCells / source.numberColumns())
        throw VoInvalidConversionException("Table is too large"); // a few cells can span any number
    VoVariantTable grid(source.numberRows(), source.numberColumns());
    source.forEach([&](const VoDataTableItem& item, std::size_t row, std::size_t column) {
        grid.at(row, column) = SingleValue(item);
    });
    return grid;
}
