#include <Documents/VoDataTable.h>

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <Core/VoXMLException.h>
#include <Documents/VoDataTableItem.h>
#include <Documents/VoDataTableRow.h>
#include <Documents/VoLoadedDataTable.h>
#include <XML/VoXMLStreamElementLoader.h>
#include <XML/detail/XMLTypeNames.h>

#include <charconv>
#include <string>
#include <system_error>
#include <utility>

using vo::detail::WriteTypedChild;
using vo::detail::XMLTypeNames;

namespace {

// A column is visited even where a row has no item, so a few bytes of a document could ask for any amount of work.
constexpr std::size_t WidestItem = 16384;
constexpr std::size_t WidestRow = 1 << 20;

void WriteItem(VoXMLElementWriter& row, const VoDataTableItem& item)
{
    const XMLTypeNames& names = XMLTypeNames::Get();
    const auto element = row.createElement(names.item, VoXMLTypesNamespace());
    if (item.columnSpan() > 1)
        element->writeAttribute(names.columnSpan, VoString(item.columnSpan()));
    item.forEachValue([&](const VoVariant& value) { WriteTypedChild(*element, names.value, value); });
}

std::size_t ReadSpan(VoXMLElementReader& item, std::size_t widthSoFar)
{
    const VoString& name = XMLTypeNames::Get().columnSpan;
    if (!item.hasAttribute(name))
        return 1;
    const VoString text = item.readAttribute(name);
    const std::string& digits = text.toStdString();
    std::size_t span = 0;
    const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), span);
    const bool isNumber = parsed.ec == std::errc() && parsed.ptr == digits.data() + digits.size();
    if (!isNumber || span > WidestItem || widthSoFar + span > WidestRow)
        throw VoInvalidParameterException("Invalid column span: " + text);
    return span;
}

VoSharedPtr<VoDataTableItem> ReadItem(VoXMLElementReader& element, std::size_t widthSoFar)
{
    const std::size_t span = ReadSpan(element, widthSoFar);
    VoDeque<VoVariant> values;
    for (const auto& child : element.children()) {
        if (child->name() == XMLTypeNames::Get().value)
            values.pushBack(VoXMLObject<VoVariant>::Read(*child));
    }
    return VoSharedPtr<VoDataTableItem>::Make(std::move(values), span);
}

VoDataTableRow ReadRow(VoXMLElementReader& element)
{
    const XMLTypeNames& names = XMLTypeNames::Get();
    VoDataTableRow row;
    row.type = element.hasAttribute(names.header) ? VoDataTable::Header : VoDataTable::Data;
    std::size_t width = 0;
    for (const auto& child : element.children()) {
        if (child->name() != names.item)
            continue;
        row.items.pushBack(ReadItem(*child, width));
        width += row.items.back()->columnSpan();
    }
    return row;
}

VoDataTable ReadRows(VoXMLElementReader& element)
{
    VoDataTable table;
    for (const auto& child : element.children()) {
        if (child->name() == XMLTypeNames::Get().row)
            table.addRow(ReadRow(*child));
    }
    return table;
}

} // namespace

void VoXMLObject<VoDataTable>::Write(VoXMLElementWriter& element, const VoDataTable& table)
{
    const XMLTypeNames& names = XMLTypeNames::Get();
    const auto rows = element.createElement(names.rows, VoXMLTypesNamespace());
    for (std::size_t i = 0; i < table.numberRows(); ++i) {
        const auto row = rows->createElement(names.row, VoXMLTypesNamespace());
        if (table.isHeader(i))
            row->writeAttribute(names.header, "1");
        for (const auto& item : table.rows()[i]->items)
            WriteItem(*row, *item);
    }
}

VoDataTable VoXMLObject<VoDataTable>::Read(VoXMLElementReader& element)
{
    for (const auto& child : element.children()) {
        if (child->name() == XMLTypeNames::Get().rows)
            return ReadRows(*child);
    }
    throw VoNullXMLStreamElementException();
}

VoXMLStreamLoader::Builder VoXMLObject<VoDataTable>::LoadRule()
{
    return [](VoXMLStreamElementLoader element) {
        const auto reader = element.reader();
        const bool isRows = element.name() == XMLTypeNames::Get().rows;
        return VoUniquePtr<VoAbstractXMLStreamLoaderObject>(
            VoUniquePtr<VoLoadedDataTable>::Make(isRows ? ReadRows(*reader) : Read(*reader)));
    };
}

VoLoadedDataTable::VoLoadedDataTable(VoDataTable loaded)
    : table(std::move(loaded))
{
}

VoLoadedDataTable::~VoLoadedDataTable() = default;

int VoLoadedDataTable::typeCode() const
{
    return 1;
}
