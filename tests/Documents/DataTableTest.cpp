#include <Core/VoDeque.h>
#include <Core/VoUniquePtr.h>
#include <Documents/VoCSVFormat.h>
#include <Documents/VoDataTable.h>
#include <Documents/VoDataTableItem.h>
#include <Documents/VoDataTableRow.h>
#include <Documents/VoLoadedDataTable.h>
#include <Documents/VoOOXMLWriter.h>
#include <Documents/VoOOXMLWriterSpreadsheet.h>
#include <Documents/VoVariantTable.h>
#include <Documents/VoZipArchive.h>
#include <Documents/VoZipFile.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoStringDevice.h>
#include <ScratchFolder.h>
#include <VoTestSupport.h>
#include <XML/VoXMLDomElementReader.h>
#include <XML/VoXMLDomElementWriter.h>
#include <XML/VoXMLStreamElementLoader.h>
#include <XML/VoXMLStreamElementReader.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamReader.h>
#include <XML/VoXMLStreamWriter.h>

#include <QtXml/QDomDocument>

#include <regex>

namespace {

using Values = VoDeque<VoVariant>;
using Items = VoDeque<VoDataTableItem>;

VoDataTable Column(const Values& values)
{
    VoDataTable table;
    for (const VoVariant& value : values)
        table.addRow(Items{VoDataTableItem(value)}, VoDataTable::Data);
    return table;
}

std::string Shown(const VoDataTable& table)
{
    std::ostringstream text;
    table.forEach([&](const VoDataTableItem& item, std::size_t row, std::size_t column) {
        text << row << '/' << column << '=';
        item.forEachValue([&](const VoVariant& value) { text << value << ' '; });
    });
    return text.str();
}

VoDataTable RandomTable(std::mt19937_64& random)
{
    VoDataTable table;
    for (std::size_t rows = random() % 6; rows > 0; --rows) {
        Items items;
        for (std::size_t count = random() % 5; count > 0; --count) {
            Values values;
            for (std::size_t n = random() % 4; n > 0; --n) {
                const VoVariant all[] = {VoVariant(),
                                         true,
                                         VoFilePath("C:\\a"),
                                         VoPair<VoString, VoString>("a", "<b>"),
                                         static_cast<int>(random()),
                                         0.1,
                                         VoVariant(7u),
                                         "x & y",
                                         VoPair<VoFilePath, VoFilePath>("a", "b")};
                values.pushBack(all[random() % std::size(all)]);
            }
            items.emplaceBack(std::move(values), random() % 3);
        }
        table.addRow(items, random() % 3 == 0 ? VoDataTable::Header : VoDataTable::Data);
    }
    return table;
}

std::string Document(const VoDataTable& table)
{
    VoStringDevice device;
    VoXMLStreamWriter writer(device);
    VoXMLObject<VoDataTable>::Write(*writer.createElement("Table"), table);
    writer.finishDocument();
    return device.content().toStdString();
}

VoDataTable TableOf(const std::string& document)
{
    VoStringDevice device{VoString(document)};
    VoXMLStreamReader reader(device);
    return VoXMLObject<VoDataTable>::Read(*reader.nextElement());
}

VoDataTable Loaded(const std::string& document, const char* element)
{
    VoStringDevice device{VoString(document)};
    VoXMLStreamLoader loader;
    loader.addGlobalRule(element, VoXMLObject<VoDataTable>::LoadRule());
    loader.addGlobalRule("Value", [](VoXMLStreamElementLoader) {
        return VoUniquePtr<VoAbstractXMLStreamLoaderObject>();
    }); // another format's, not ours
    const auto object = loader.load(device);
    return dynamic_cast<const VoLoadedDataTable&>(*object).table;
}

// The cells and merged ranges of the first worksheet: "A1=text B2= A1:A2".
std::string SheetOf(const VoFilePath& workbook)
{
    VoZipArchive archive(workbook, VoZipArchive::Read);
    const std::string sheet = archive.open(VoFilePath("xl/worksheets/sheet1.xml"))->readAll().toStdString();
    const std::regex part("<c r=\"(\\w+)\"[^>]*><is><t>([^<]*)|<mergeCell ref=\"([^\"]+)\"");
    std::string shown;
    for (std::sregex_iterator i(sheet.begin(), sheet.end(), part), end; i != end; ++i)
        shown += ((*i)[3].matched ? i->str(3) : i->str(1) + "=" + i->str(2)) + " ";
    return shown;
}

// The cells of an XML spreadsheet in the same way.
std::string XmlSheetOf(const std::string& spreadsheet)
{
    QDomDocument document;
    EXPECT_TRUE(document.setContent(QByteArray::fromStdString(spreadsheet)));
    EXPECT_EQ(spreadsheet.find("MergeDown"), std::string::npos) << "not all programs place the cells beside it right";
    std::string shown;
    const QDomNodeList rows = document.elementsByTagName(QStringLiteral("Row"));
    for (int row = 0; row < rows.count(); ++row) {
        std::size_t column = 0;
        for (QDomElement cell = rows.at(row).firstChildElement(); !cell.isNull(); cell = cell.nextSiblingElement()) {
            const VoString letters = VoOOXMLWriterSpreadsheet::NumberToLetterString(++column);
            if (!cell.text().isEmpty())
                shown += letters.toStdString() + std::to_string(row + 1) + "=" + cell.text().toStdString() + " ";
            column += cell.attribute(QStringLiteral("ss:MergeAcross")).toUInt();
        }
    }
    return shown;
}

} // namespace

TEST(DataTable, ShortRowsAreFilledUpOnVisits)
{
    VoDataTable table;
    table.addRow(Items{VoDataTableItem("a"), VoDataTableItem("b", 2)}, VoDataTable::SubHeader);
    table.addRow(Items{VoDataTableItem(1, 5)}, VoDataTable::Data);
    EXPECT_EQ(table.numberColumns(), 5u);
    EXPECT_EQ(Shown(table), "0/0=a 0/1=b 0/3=null 0/4=null 1/0=1 ");
    EXPECT_TRUE(table.isHeader(0) && !table.isHeader(1));
    EXPECT_EQ(table.value(0, 2), VoVariant("b"));
    EXPECT_TRUE(table.value(0, 4).isNull());
    EXPECT_EQ(table.values(0, 3).size(), 1u);
    EXPECT_THROW_MSG(table.value(0, 5), VoIndexOutOfBoundsException, "Index out of bounds [5,5]");
    EXPECT_THROW_MSG(table.values(2, 0), VoIndexOutOfBoundsException, "Index out of bounds [2,2]");
    table.rows()[0]->items.pushBack(VoSharedPtr<VoDataTableItem>::Make("c", 3));
    EXPECT_THROW_MSG(Shown(table), VoInvalidCallException,
                     "Data table row given invalid number of columns to iterate over");
    table.clear();
    EXPECT_EQ(table.numberColumns() + table.numberRows() + table.numberSpreadsheetRows(), 0u);
}

TEST(DataTable, AnItemsValueIsSingle)
{
    for (const auto& [values, count] : {std::pair(Values{}, "0"), std::pair(Values{1, 2}, "2")}) {
        VoDataTable table;
        table.addRow(Items{VoDataTableItem(values, 0)}, VoDataTable::Data);
        EXPECT_EQ(table.numberColumns(), 1u) << "a span of 0 counts as 1";
        EXPECT_THROW_MSG(table.value(0, 0), VoInvalidCallException,
                         VoString("Cannot get value from data table, number of items equals: ") + count);
    }
}

TEST(DataTable, WhatCannotBeAddedChangesNothing)
{
    VoDataTable table = Column({1});
    const VoDataTable before = table;
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    EXPECT_THROW_MSG(table.addRow(VoUniquePtr<VoDataTableRow>()), VoNullPointerException,
                     "VoUniquePtr dereferencing nullptr");
    EXPECT_THROW(table.addRow(Items{VoDataTableItem(1, most), VoDataTableItem(2)}, VoDataTable::Data),
                 VoOverflowException);
    EXPECT_THROW(table.addRow(VoDeque<VoSharedPtr<VoDataTableItem>>(1), VoDataTable::Data), VoNullPointerException);
    EXPECT_EQ(table, before);
    EXPECT_EQ(table.numberColumns(), 1u);
    table.rows()[0]->items[0]->set(2);
    EXPECT_NE(table, before) << "copies have items of their own";
}

TEST(DataTable, SortsWithinARangeAndKeepsEqualRowsInOrder)
{
    const double nan = std::nan("");
    VoDataTable table = Column({nan, "b", 2.0, VoVariant(), "B", 1.0, nan, -1, "a"});
    table.sort(0);
    EXPECT_EQ(Shown(table), "0/0=null 1/0=-1 2/0=1 3/0=2 4/0=nan 5/0=nan 6/0=a 7/0=b 8/0=B ");
    table = Column({9, 3, 2, 1, 0});
    table.sort(0, 1, 3);
    EXPECT_EQ(Shown(table), "0/0=9 1/0=1 2/0=2 3/0=3 4/0=0 ");
    table.sort(0, [](const VoVariant& a, const VoVariant& b) { return b < a; });
    EXPECT_EQ(Shown(table), "0/0=9 1/0=3 2/0=2 3/0=1 4/0=0 ");
    table.sort(0, [](const VoVariant& value, std::size_t column) { return column == 0 && value.asInteger() % 2 == 0; });
    EXPECT_EQ(Shown(table), "0/0=2 1/0=0 2/0=9 3/0=3 4/0=1 ");
}

TEST(DataTable, SortingRefusesBeforeItMovesAnything)
{
    VoDataTable table = Column({3, 2});
    table.addRow(Items{VoDataTableItem(Values{1, 1})}, VoDataTable::Data);
    const VoDataTable before = table;
    EXPECT_THROW_MSG(table.sort(0), VoInvalidCallException, "Cannot sort on column that has multiple values per cell");
    EXPECT_THROW_MSG(table.sort(1), VoInvalidCallException, "Column number outside of the range of columns");
    EXPECT_THROW_MSG(table.sort(0, 1, 3), VoIndexOutOfBoundsException, "Index out of bounds [4,3]");
    EXPECT_THROW(table.sort(0, 1, std::numeric_limits<std::size_t>::max()), VoIndexOutOfBoundsException);
    EXPECT_THROW(table.sort(0, 0, 2, [](const VoVariant& a, const VoVariant&) { return a.asBoolean(); }),
                 VoBadVariantAccessException);
    EXPECT_EQ(table, before);
    table.sort(0, 0, 2);
    EXPECT_EQ(table.value(0, 0), VoVariant(2));
}

TEST(DataTableXML, RandomTablesComeBackThroughStreamsTreesAndRules)
{
    std::mt19937_64 random(3);
    for (int i = 0; i < 200; ++i) {
        const VoDataTable table = RandomTable(random);
        const std::string document = Document(table);
        ASSERT_EQ(TableOf(document), table) << document;
        ASSERT_EQ(TableOf(document).numberColumns(), table.numberColumns());
        ASSERT_EQ(Loaded(document, "Table"), table) << document;

        QDomDocument tree;
        tree.appendChild(tree.createElement(QStringLiteral("Table")));
        VoXMLDomElementWriter root(tree.documentElement());
        VoXMLObject<VoDataTable>::Write(root, table);
        VoXMLDomElementReader reader(tree.documentElement());
        ASSERT_EQ(VoXMLObject<VoDataTable>::Read(reader), table);
    }
}

TEST(DataTableXML, ReadsItsOwnFormatAndRefusesSpansThatAreNone)
{
    const VoDataTable table = TableOf("<T><Other/><Rows><Row header='0'><Item hspan='2'><Value/><Value><Integer>1"
                                      "</Integer></Value></Item></Row><Row><Item/><Bogus/></Row></Rows></T>");
    EXPECT_EQ(table.numberColumns(), 2u);
    EXPECT_TRUE(table.isHeader(0) && !table.isHeader(1));
    EXPECT_EQ(table.values(0, 1), (Values{VoVariant(), 1}));
    EXPECT_EQ(table.values(1, 0), Values{});
    EXPECT_EQ(Loaded("<Rows><Row><Item hspan='3'/></Row></Rows>", "Rows").numberColumns(), 3u);
    EXPECT_THROW_MSG(TableOf("<T/>"), VoNullXMLStreamElementException, "Null XML stream element");
    for (const char* span : {"99999999999", "16385", "-1", "x", "", "1.0", "18446744073709551617"})
        EXPECT_THROW_MSG(TableOf(std::string("<T><Rows><Row><Item hspan='") + span + "'/></Row></Rows></T>"),
                         VoInvalidParameterException, VoString("Invalid column span: ") + span);
    std::string wide;
    for (int i = 0; i < 65; ++i)
        wide += "<Item hspan='16384'/>";
    EXPECT_THROW(TableOf("<T><Rows><Row>" + wide + "</Row></Rows></T>"), VoInvalidParameterException);
}

TEST(DataTableExport, EveryValueStandsInItsOwnColumnOfTheWorksheet)
{
    struct
    {
        Items items;
        const char* sheet;
    } const rows[] = {
        {{VoDataTableItem("a", 2), VoDataTableItem("b")}, "A1=a C1=b A2=end A1:B1 A2:C2 "},
        {{VoDataTableItem(Values{"a0", "a1"}), VoDataTableItem(Values{"b0", "b1", "b2"})},
         "A1=a0 B1=b0 A2=a1 B2=b1 B3=b2 A4=end C1:C3 A4:C4 "},
        {{VoDataTableItem(Values{"a0", "a1"}), VoDataTableItem(Values{"b0", "b1", "b2", "b3"})},
         "A1=a0 B1=b0 A2=a1 B2=b1 B3=b2 B4=b3 A5=end C1:C4 A2:A3 A5:C5 "},
        {{VoDataTableItem(), VoDataTableItem(Values{"b0", "b1"})}, "B1=b0 B2=b1 A3=end C1:C2 A3:C3 "},
        {{VoDataTableItem("a"), VoDataTableItem(Values{"b0", "b1"})}, "A1=a B1=b0 B2=b1 A3=end A1:A2 C1:C2 A3:C3 "},
        {{}, "A1=end A1:C1 "},
    };
    const vo::test::ScratchFolder folder;
    for (const auto& row : rows) {
        VoDataTable table;
        table.addRow(row.items, VoDataTable::Data);
        table.addRow(Items{VoDataTableItem("end", 3)}, VoDataTable::Data);
        table.writeOOXML(folder.path("t.xlsx"));
        EXPECT_EQ(SheetOf(folder.path("t.xlsx")), row.sheet);
        table.writeXMLSpreadsheet(folder.path("t.xml"));
        const std::string sheet = row.sheet;
        EXPECT_EQ(XmlSheetOf(folder.read("t.xml")), sheet.substr(0, sheet.find(' ', sheet.rfind('=')) + 1));
    }
    VoDataTable().writeOOXML(folder.path("empty.xlsx"));
    EXPECT_EQ(SheetOf(folder.path("empty.xlsx")), "");
}

TEST(DataTableExport, AFailedExportLeavesTheOldWorkbook)
{
    const vo::test::ScratchFolder folder;
    const VoFilePath file = folder.write("t.xlsx", "last week's");
    VoDataTable table;
    table.addRow(Items{VoDataTableItem(1, 20000)}, VoDataTable::Data);
    EXPECT_THROW_MSG(table.writeOOXML(file), VoInvalidCallException, "Cell lies outside the limits of a worksheet");
    EXPECT_EQ(folder.read("t.xlsx"), "last week's");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.native()), {}), 1) << "nothing beside it";
}

TEST(DataTableExport, CsvHasAFieldForEachColumnAndARowForEachStackedValue)
{
    VoDataTable table;
    table.addRow(Items{VoDataTableItem("h", 3)}, VoDataTable::Header);
    table.addRow(Items{VoDataTableItem(), VoDataTableItem(Values{1, 2.0}), VoDataTableItem("c")}, VoDataTable::Data);
    table.addRow(Items{}, VoDataTable::Data);
    table.addRow(Items{VoDataTableItem(), VoDataTableItem(5)}, VoDataTable::Data);
    VoStringDevice device;
    table.writeCSV(device);
    EXPECT_EQ(device.content().toStdString(), "h,,\r\n,1,c\r\n,2.0,\r\n,5,\r\n");
}

TEST(VariantTable, ComparesShapesAndThenOnlyWhetherCellsDiffer)
{
    const VoVariantTable two(1, 2, 5);
    EXPECT_EQ(VoVariantTable(1, 1).compare(two), -1);
    EXPECT_EQ(VoVariantTable(2, 1, 5).compare(two), -1) << "fewer columns";
    EXPECT_EQ(two.compare(VoVariantTable(2, 1, 5)), 1);
    EXPECT_EQ(VoVariantTable(0, 2).compare(VoVariantTable(5, 0)), 1);
    EXPECT_EQ(VoVariantTable(1, 2, 4).compare(two), 1) << "a smaller cell does not make a table less";
    EXPECT_EQ(two.compare(VoVariantTable(1, 2, 4)), 1);
    EXPECT_EQ(two.compare(VoVariantTable(two)), 0);
    EXPECT_THROW(VoVariantTable(std::numeric_limits<std::size_t>::max() / 2, 3), VoOverflowException);
}

TEST(VariantTable, RowsAndColumnsReferToTheCells)
{
    VoVariantTable table(2, 3);
    int next = 0;
    table.forEach([&](std::size_t, std::size_t, VoVariant& value) { value = next++; });
    table.row(1)[2].get() = "x";
    table.column(0)[0].get() = "y";
    const VoVariantTable& shown = table;
    EXPECT_EQ(shown.toString().toStdString(), "y,1,2\r\n3,4,x\r\n");
    EXPECT_EQ(shown.column(2)[1].get(), VoVariant("x"));
    EXPECT_EQ(shown.row(0).size(), 3u);
    EXPECT_THROW_MSG(shown.at(2, 0), VoIndexOutOfBoundsException, "Index out of bounds [2,2]");
    EXPECT_THROW_MSG(shown.at(1, 3), VoIndexOutOfBoundsException, "Index out of bounds [3,3]");
    EXPECT_THROW_MSG(shown.row(2), VoIndexOutOfBoundsException, "Index out of bounds [2,2]");
    EXPECT_EQ(VoDataTable(table).value(1, 2), VoVariant("x"));
    const VoVariantTable taken = std::move(table);
    EXPECT_EQ(table, VoVariantTable()); // NOLINT: the state after a move is promised
    EXPECT_EQ(taken.numberColumns(), 3u);
}

TEST(VariantTable, ConversionsTakeTheirKindsAndFollowTheRule)
{
    const VoVariantTable table("1,2.5,x,\r\n", true);
    const auto doubles = table.toDoubleTable(VoVariantTable::UseDefault);
    EXPECT_EQ(doubles, table.toDoubleTable(VoVariantTable::Skip));
    EXPECT_EQ(doubles.at(0, 0), 1.0);
    EXPECT_EQ(doubles.at(0, 1), 2.5);
    EXPECT_EQ(doubles.at(0, 2), 0.0);
    const auto integers = table.toIntegerTable(VoVariantTable::UseDefault);
    EXPECT_EQ(integers.at(0, 0), 1);
    EXPECT_EQ(integers.at(0, 1), 0) << "a double is not cut to an integer";
    EXPECT_EQ(table.toStringTable(VoVariantTable::Skip).at(0, 2), "x");
    EXPECT_THROW_MSG(table.toDoubleTable(VoVariantTable::Throw), VoBadVariantAccessException,
                     "Bad variant access [requested = Double] [actual = String]");
    EXPECT_THROW_MSG(table.toIntegerTable(VoVariantTable::Throw), VoBadVariantAccessException,
                     "Bad variant access [requested = Integer] [actual = Double]");
    EXPECT_THROW_MSG(table.toStringTable(VoVariantTable::Throw), VoBadVariantAccessException,
                     "Bad variant access [requested = String] [actual = Integer]");
}
