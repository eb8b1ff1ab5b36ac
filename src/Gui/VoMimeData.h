#pragma once

#include <Core/VoByteArray.h>
#include <Core/VoString.h>
#include <Gui/VoGuiExport.h>

#include <memory>

class VoDataTable;
class VoVariantTable;

/// What is put on the clipboard, or was taken from there: one content in several forms, each named by its MIME type.
///
///     VoMimeData data;
///     data.setTable(table);                    // as text, HTML and CSV
///     data.setData("application/x-part", xml); // and as what only this application understands
///     VoClipboard::Set(data);
///
/// A value: copies copy the forms, a moved-from one has none. Names of types ignore case. Needs no display.
class VOCOREGUI_EXPORT VoMimeData
{
public:
    VoMimeData();                                       ///< No form.
    VoMimeData(const VoMimeData& other);                ///< Copies the forms.
    VoMimeData(VoMimeData&& other) noexcept;            ///< `other` has none afterwards.
    VoMimeData& operator=(const VoMimeData& other);     ///< Copies the forms.
    VoMimeData& operator=(VoMimeData&& other) noexcept; ///< `other` has none afterwards.
    ~VoMimeData();

    /// @name Adding a form, or replacing it
    /// @{
    void setText(const VoString& text);    ///< "text/plain", UTF-8.
    void setHTML(const VoString& html);    ///< "text/html", UTF-8.
    void setPNG(const VoByteArray& image); ///< "image/png". @throws VoInvalidParameterException "Invalid PNG image"
    /// Any other form.
    /// @throws VoInvalidParameterException "Invalid MIME type: " + type, when that is not two names with a slash
    /// between
    void setData(const VoString& type, const VoByteArray& bytes);
    /// A table in three forms, so that pasting does what is expected in a spreadsheet, in a word processor and in an
    /// editor: HTML with spans and headers, tab-separated text, and CSV.
    /// @{
    void setTable(const VoDataTable& table);
    void setTable(const VoVariantTable& table);
    /// @}
    /// @}

    /// The types there are, in the order of their adding.
    VoDeque<VoString> types() const;
    bool isEmpty() const noexcept;             ///< Whether there is no form.
    bool contains(const VoString& type) const; ///< Whether there is a form of the type.

    /// @name The forms
    /// @throws VoInvalidMimeDataException "No MIME data available available" when there is none at all, "No MIME data
    /// of
    ///         given type available: " + type when there is not this one
    /// @{
    VoByteArray data(const VoString& type) const; ///< The bytes of a type.
    VoString text() const;                        ///< The text.
    VoString html() const;                        ///< The HTML, as it is: nothing was removed from it.
    VoByteArray png() const;                      ///< The image.
    /// The first table of the HTML; where there is none, of the CSV, and then of the text, whose columns are parted by
    /// tabs and whose lines are rows. Numbers become numbers, as VoVariantTable::LoadCSV() has it.
    /// @throws VoInvalidConversionException "HTML table is too large", beyond a million cells; and what reading CSV
    ///         throws
    VoDataTable table() const;
    /// The same without spans and headers: a value stands in the first cell that it covers, and values that are stacked
    /// become one text of several lines.
    /// @throws VoInvalidConversionException "Table is too large", beyond 4,194,304 cells; and as table()
    VoVariantTable variantTable() const;
    /// @}

private:
    struct Private;

    std::unique_ptr<Private> m_private;
};
