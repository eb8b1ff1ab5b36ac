#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Documents/VoCSVFormat.h>

#include <cstddef>
#include <memory>
#include <string_view>

/// Reads a CSV file (RFC 4180) row by row from a device. Memory grows with the longest row only.
///
///     VoCSVReader reader(device);
///     while (reader.nextRow())
///         for (std::size_t i = 0; i < reader.numberFields(); ++i)
///             use(reader.field(i));
///
/// Rows end with CRLF, LF or CR; the last one may lack its end. An empty line is a row of one empty field. A field that
/// begins with the quote ends with the next quote that is not doubled, and may hold separators and line breaks; quotes
/// elsewhere are taken as they are. Fields are UTF-8 texts, whatever the file is encoded in: a byte-order mark of
/// UTF-8, UTF-16 or UTF-32 at its beginning says so and is skipped, else the format does.
///
/// Not well formed is, with n the number of the row, counted from 1,
/// - VoInvalidParameterException "Unterminated quoted field in CSV at row n",
/// - "Unexpected character after quoted field in CSV at row n",
/// - "Field too long in CSV at row n" beyond 64 MiB, "Row too long in CSV at row n" beyond 256 MiB or 1,048,576 fields,
/// - "Invalid UTF-8 in CSV at line l, column c", or the name of another encoding: bytes that are no character there.
/// Rows
///   before them are read. Lines and characters are counted from 1, and line breaks in fields count;
///
/// every further call throws the same again. Belongs to one thread.
class VOCORE_EXPORT VoCSVReader
{
public:
    /// Reads from a device that the caller keeps alive, from where it stands; it is opened for reading unless it is
    /// already, and closed by the destructor if this reader opened it.
    /// @throws VoIOException with the reason when it cannot be opened
    /// @throws VoInvalidParameterException "Invalid CSV format"
    explicit VoCSVReader(VoIODevice& device, const VoCSVFormat& format = VoCSVFormat());
    VoCSVReader(const VoCSVReader&) = delete;
    VoCSVReader& operator=(const VoCSVReader&) = delete;
    ~VoCSVReader(); ///< See the constructor.

    /// Goes on to the next row; false behind the last one.
    bool nextRow();
    /// @name The row reached
    /// @{
    std::size_t numberFields() const noexcept; ///< One or more after nextRow() returned true; else 0.
    /// The text of a field, without its quotes; valid until the next row is asked for.
    /// @throws VoIndexOutOfBoundsException
    std::string_view field(std::size_t index) const;
    bool isQuoted(std::size_t index) const; ///< Whether the field stood in quotes. Throws as field().
    /// @}

    /// Goes on to the next row and copies its fields; false, and no fields, behind the last one.
    bool readRow(VoDeque<VoString>& fields);
    std::size_t rowNumber() const noexcept; ///< Rows read so far: the number of the row reached.
    std::size_t bytesRead() const noexcept; ///< Bytes taken from the device so far, for showing progress.

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
