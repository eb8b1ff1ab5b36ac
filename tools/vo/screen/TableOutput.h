#pragma once

#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>

#include <cstddef>
#include <cstdint>
#include <memory>

class VoCSVReader;
struct VoCSVFormat;
struct VoWorksheetLook;

namespace vo::tool {

/// The file that `vo table` makes: rows come one by one and are not kept. Nothing stands at its place before finish(),
/// and what stood there stays when that is not reached.
class TableOutput
{
public:
    /// What a spreadsheet could not take as it was.
    struct Losses
    {
        std::uint64_t rounded = 0;    ///< Numbers with more digits than a spreadsheet cell gets.
        std::uint64_t keptAsText = 0; ///< Whole numbers too long for a number cell.
    };

    /// The output for a file by its extension, .xlsx, .xml or .csv; null for any other. The rows come from files of the
    /// format, which stays alive.
    static std::unique_ptr<TableOutput> Make(const VoFilePath& file, const VoCSVFormat& input);
    virtual ~TableOutput();

    virtual bool hasSheets() const = 0; ///< Whether there may be more than one sheet.
    /// Begins the next sheet, plain or with a look, which only what has sheets can give it.
    virtual void beginSheet(const VoString& name, const VoWorksheetLook* look) = 0;
    /// Writes the row that the reader has reached; as texts, or as the values that the fields stand for.
    virtual void addRow(const VoCSVReader& row, bool asTexts) = 0;
    virtual void finish() = 0; ///< Puts the file in its place.

    const Losses& losses() const { return m_losses; }

protected:
    Losses m_losses;
};

/// A name that a sheet can have, made of a file's name: what is not allowed becomes "_", and it is at most 31
/// characters long. A number keeps it apart from `taken` sheets of that name.
VoString SheetName(const VoString& fileName, std::size_t taken);

} // namespace vo::tool
