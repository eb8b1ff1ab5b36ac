#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoSharedPtr.h>
#include <Core/VoWeakPtr.h>

#include <cstdint>
#include <memory>

class VoOOXMLWriterSpreadsheet;
struct VoWorksheetLook;

/// Writes a workbook in the Office Open XML format (an XLSX file), straight into its zip archive: one worksheet after
/// another, and what holds them together at the end.
///
///     VoOOXMLWriter workbook(path, VoOOXMLWriter::Spreadsheet);
///     auto sheet = workbook.addSheet("Results");
///     sheet->addCell("Voltage");
///     sheet->addCell(2.5);
///     workbook.close();
///
/// The old content of the file is lost when writing begins; a caller that must keep it writes to
/// VoAtomicFileWriter::temporary(). The same cells always give the same bytes, whatever the day and the locale.
///
/// A resource of one thread; it neither copies nor moves.
class VOCORE_EXPORT VoOOXMLWriter
{
public:
    /// What the package is. Other values are refused by close().
    enum FileType : std::int32_t
    {
        Spreadsheet = 0 ///< A workbook.
    };

    /// Makes the file. Throws as VoZipArchive.
    VoOOXMLWriter(const VoFilePath& file, FileType type);
    VoOOXMLWriter(const VoOOXMLWriter&) = delete;
    VoOOXMLWriter& operator=(const VoOOXMLWriter&) = delete;
    /// As close(), but a failure is only logged, in the category "spreadsheet": who needs to know that the workbook is
    /// whole calls close().
    ~VoOOXMLWriter();

    /// Closes the worksheet being written, if any, and begins another one. The writer keeps it until the next
    /// addSheet() or close(), after which it is not alive. Throws what closing the current worksheet and opening an
    /// entry of the archive throw.
    /// @throws VoInvalidParameterException "Document with the given name already exists: " and the name, compared
    ///        without regard to case; the current worksheet stays open
    /// @throws VoInvalidParameterException "Invalid document name: " and the name, unless it has 1 to 31 characters,
    ///        none of them a control character or of : \ / ? * [ ], no apostrophe at either end, and is not blank; the
    ///        current worksheet stays open
    VoSharedPtr<VoOOXMLWriterSpreadsheet> addSheet(const VoString& name);
    /// The same for a worksheet with a look. A workbook without any is the same, byte for byte, as before there were
    /// looks.
    VoSharedPtr<VoOOXMLWriterSpreadsheet> addSheet(const VoString& name, const VoWorksheetLook& look);

    /// Completes the workbook and closes the file. Only the first call does anything; after a failure the file is no
    /// valid workbook.
    /// @throws VoFileSaveException with "Cannot save document as not content provided" when no sheet was added,
    ///        "Unknown document type", or "Unable to complete document"
    /// @throws VoInvalidCallException as VoZipArchive::close() and the device of an entry, on a full disk for one
    void close();

private:
    struct Private;

    VoWeakPtr<VoIODevice> beginSheet(const VoString& name);
    VoSharedPtr<VoOOXMLWriterSpreadsheet> keepSheet(const VoString& name, VoSharedPtr<VoOOXMLWriterSpreadsheet> sheet);
    void writeStyles();
    void requireNewName(const VoString& name) const;
    void closeDocument();
    void requireSpreadsheet() const;
    void writeContentTypes();
    void writePackageRelations();
    void writeWorkbookRelations();
    void writeWorkbook();

    std::unique_ptr<Private> m_private;
};
