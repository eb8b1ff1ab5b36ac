#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <memory>

/// Writes one worksheet, "Sheet1", in the XML Spreadsheet 2003 format: a single XML file that spreadsheet programs
/// open. Cells come row by row without positions; programs place them after merged neighbours themselves.
///
/// Integers and doubles are numbers, with six significant digits, all other values the texts that VoVariant::toString()
/// gives; so also a double that is no finite number. A character that XML cannot hold is written as its number,
/// "_x0001_". A carriage return in a text is read back as a line feed.
class VOCORE_EXPORT VoXMLSpreadsheetWriter
{
public:
    /// Begins the document on a device, which the caller keeps alive; it is opened for writing unless it is already.
    /// @throws VoIOInvalidWriteException "Device is in read mode, cannot write to it"
    /// @throws VoIOException with the reason when the device cannot be opened or written
    explicit VoXMLSpreadsheetWriter(VoIODevice& device);
    VoXMLSpreadsheetWriter(const VoXMLSpreadsheetWriter&) = delete;
    VoXMLSpreadsheetWriter& operator=(const VoXMLSpreadsheetWriter&) = delete;
    ~VoXMLSpreadsheetWriter(); ///< Completes nothing: see finish().

    void startRow(); ///< Ends the row, if one is open, and begins the next one.
    void endRow();   ///< Ends the row, if one is open.
    /// Writes a cell, beginning a row when none is open. A span of more than one merges cells; 0 counts as 1.
    /// @throws VoInvalidXMLOperation "Invalid attempt to start element" after finish()
    void addCell(const VoVariant& value, std::size_t columnSpan = 1, std::size_t rowSpan = 1);

    /// Completes the document and closes the device. Throws the first failure of the device. Further calls do
    /// nothing.
    void finish();

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
