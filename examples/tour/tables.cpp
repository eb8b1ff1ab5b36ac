// Tables: from comma-separated text to a workbook, and an archive of both.

#include <Core/VoVariant.h>
#include <Documents/VoCSVFormat.h>
#include <Documents/VoDataTable.h>
#include <Documents/VoDataTableItem.h>
#include <Documents/VoZipArchive.h>
#include <Documents/VoZipper.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoTemporaryDir.h>
#include <IO/VoFileDevice.h>
#include <IO/VoStringDevice.h>

#include <iostream>

namespace {

VoDataTable read()
{
    //! [read]
    VoStringDevice text("Part,Value,Tolerance\nR2,220.5,0.01\nR1,4.7,0.05\n\"C1, film\",1e-6,\n");
    VoDataTable table = VoDataTable::LoadCSV(text, true, VoCSVFormat(), 1); // types are found; one row of headers
    table.sort(table.columnNumber("Value"), 1, table.numberRows() - 1);     // all rows but the headers
    table.forEach([](const VoDataTableItem& item, std::size_t row, std::size_t column) {
        std::cout << (column == 0 && row > 0 ? "\n" : "") << (column == 0 ? "" : " | ") << item.value();
    });
    std::cout << '\n';
    //! [read]
    return table;
}

void write(const VoDataTable& table, const VoTemporaryDir& scratch)
{
    //! [write]
    table.writeOOXML(scratch.path("parts.xlsx"));         // for spreadsheet programs
    table.writeXMLSpreadsheet(scratch.path("parts.xml")); // the older form, for those that want it
    VoFileDevice csv(scratch.path("parts.csv"));
    table.writeCSV(csv);
    //! [write]
}

void pack(const VoTemporaryDir& scratch)
{
    //! [pack]
    const VoTemporaryDir target;
    VoZipper::Zip(target.path("parts.zip"), scratch.path().toFilePath());
    VoZipArchive archive(target.path("parts.zip"), VoZipArchive::Read);
    for (const VoFilePath& entry : archive.paths())
        std::cout << entry.filename() << '\n';
    //! [pack]
}

} // namespace

int main()
{
    const VoTemporaryDir scratch;
    write(read(), scratch);
    pack(scratch);
}

/* Prints:
Part | Value | Tolerance
C1, film | 1e-06 | null
R1 | 4.7 | 0.05
R2 | 220.5 | 0.01
parts.csv
parts.xlsx
parts.xml
*/
