#pragma once

#include <Core/VoByteArray.h>
#include <Core/VoString.h>
#include <Gui/VoGuiExport.h>

#include <functional>

class VoDataTable;
class VoMimeData;
class VoReceiver;
class VoVariantTable;

/// The desktop's clipboard.
///
///     VoClipboard::SetTable(results);
///     const VoVariantTable pasted = VoClipboard::VariantTable();
///
/// Reading asks the program that owns the content, form by form, and may wait for it for seconds; what it gives is
/// taken for a stranger's: checked and bounded before it is used, as VoMimeData tells. Programs that have ended take
/// their content with them unless the desktop keeps it.
///
/// Everything here throws VoNoClipboardException "No clipboard available" when there is no graphical application
/// object (QGuiApplication), and VoInvalidCallException "The clipboard belongs to the thread of the graphical
/// application" on other threads.
class VOCOREGUI_EXPORT VoClipboard
{
public:
    VoClipboard() = delete;

    /// @name Copying
    /// Each replaces the whole content. Throw VoOverflowException for a form of 2 GiB and more.
    /// @{
    static void Set(const VoMimeData& data);           ///< Puts all forms there.
    static void SetText(const VoString& text);         ///< Puts a text there.
    static void SetTable(const VoDataTable& table);    ///< As VoMimeData::setTable().
    static void SetTable(const VoVariantTable& table); ///< As VoMimeData::setTable().
    static void Clear();                               ///< Leaves nothing there.
    /// @}

    static VoDeque<VoString> Types();           ///< The types there are.
    static bool Contains(const VoString& type); ///< Whether there is a form of the type; names ignore case.

    /// @name Pasting
    /// @throws VoInvalidMimeDataException as the members of VoMimeData of the same names, which tell the rest
    /// @{
    static VoByteArray Data(const VoString& type); ///< The bytes of a type.
    static VoString Text();                        ///< The text.
    static VoString HTML();                        ///< The HTML, as it is: nothing was removed from it.
    static VoByteArray PNG();                      ///< An image, also where it was put there in another format.
    static VoDataTable Table();                    ///< A table, of HTML, CSV or text.
    static VoVariantTable VariantTable();          ///< The same as a grid.
    /// @}

    /// Calls `callback` from the event loop after the content has changed, with whether it is this program's. What it
    /// throws is logged in the category "clipboard". Ends with the application object.
    /// @throws VoInvalidParameterException "Invalid callback" when it is empty
    [[nodiscard]] static VoReceiver Connect(std::function<void(bool own)> callback);
};
