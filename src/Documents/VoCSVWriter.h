#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Documents/VoCSVFormat.h>

#include <cstddef>
#include <memory>
#include <string_view>

/// Writes a CSV file (RFC 4180) row by row onto a device.
///
///     VoCSVWriter writer(device);
///     writer.addText("Voltage");
///     writer.addValue(2.5);
///     writer.endRow();
///     writer.finish();
///
/// A field stands in quotes only where it must: with a separator, a quote or a line break in it, with a blank at
/// either end. Nothing depends on the locale.
///
/// Output is gathered in blocks, so a failure of the device may show at a later call than the one whose output it
/// concerns. Belongs to one thread.
class VOCORE_EXPORT VoCSVWriter
{
public:
    /// When a text stands in quotes.
    enum class Quotes
    {
        WhenNeeded, ///< As described above.
        Always      ///< Also otherwise, for example so that "007" is read as a text.
    };

    /// Writes to a device that the caller keeps alive, from where it stands; it is opened for writing unless it is
    /// already.
    /// @throws VoIOException with the reason when it cannot be opened
    /// @throws VoInvalidParameterException "Invalid CSV format"
    explicit VoCSVWriter(VoIODevice& device, const VoCSVFormat& format = VoCSVFormat());
    VoCSVWriter(const VoCSVWriter&) = delete;
    VoCSVWriter& operator=(const VoCSVWriter&) = delete;
    /// Hands over what finish() has not, but is silent about failures.
    ~VoCSVWriter();

    /// Adds a field to the row.
    /// @throws VoInvalidParameterException and adds nothing: "Text is not UTF-8 in CSV at row n" or, for example,
    /// "Character U+03A9 is not in Windows-1252 in CSV at row n"
    void addText(std::string_view text, Quotes quotes = Quotes::WhenNeeded);
    /// Adds a field that VoVariantTable reads back as this value, if it is Null (an empty field), a Boolean, an
    /// Integer, a Double (the shortest text of the same number; "inf", "-inf" or "nan") or a String (in quotes where it
    /// would be taken for another kind). Values of other kinds become the texts that VoVariant::toString() gives.
    /// Throws as addText().
    void addValue(const VoVariant& value);
    void endRow(); ///< Ends the row.

    void writeRow(const VoDeque<VoString>& fields);  ///< A whole row, by addText().
    void writeRow(const VoDeque<VoVariant>& values); ///< A whole row, by addValue().

    std::size_t rowNumber() const noexcept; ///< Rows ended so far.

    /// Hands everything to the device, which stays open; closes it if this writer opened it. Further calls do nothing
    /// unless something was added.
    /// @throws VoIOException and what the device throws
    void finish();

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
