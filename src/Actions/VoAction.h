#pragma once

#include <Core/VoString.h>

#include <cstdint>
#include <functional>
#include <memory>

class VoReceiver;

/// Something that the user can ask for, whatever shows it: a menu, a button, a line of the command shell.
///
///     VoAction grid("view.grid", "Show grid", [&](bool shown) { sheet.showGrid(shown); });
///     grid.setCheckable(true);
///     grid.setShortcut("Ctrl+G");
///     grid.trigger(); // shows the grid
///
/// Not copied: what shows an action listens to it. Used by one thread, that of what it acts on.
class VOCORE_EXPORT VoAction
{
public:
    /// What the action does; it is told whether the action is checked now.
    using Function = std::function<void(bool checked)>;

    /// What can change.
    enum class Property : std::int32_t
    {
        Text,        ///< text()
        Description, ///< description()
        IconName,    ///< iconName()
        Shortcut,    ///< shortcut()
        Enabled,     ///< isEnabled()
        Checkable,   ///< isCheckable()
        Checked      ///< isChecked()
    };

    /// An enabled action that cannot be checked.
    /// @param id what programs call it, as "edit.undo"; never shown and never changed
    /// @param text what people call it
    /// @param function may be empty: then whoever triggers the action learns of it by nothing but the return
    /// @throws VoInvalidParameterException "Invalid action identifier: " + id, when that is empty or holds white space
    explicit VoAction(VoString id, VoString text = VoString(), Function function = nullptr);
    VoAction(const VoAction&) = delete;
    VoAction& operator=(const VoAction&) = delete;
    ~VoAction();

    const VoString& id() const noexcept;          ///< What programs call it.
    const VoString& text() const noexcept;        ///< What people call it.
    const VoString& description() const noexcept; ///< One sentence for a tool tip or a status line.
    const VoString& iconName() const noexcept;    ///< The name of a registered icon; empty without one.
    const VoString& shortcut() const noexcept;    ///< As "Ctrl+Shift+Z", on every platform; empty without one.
    bool isEnabled() const noexcept;              ///< Whether trigger() does something.
    bool isCheckable() const noexcept;            ///< Whether trigger() checks and unchecks.
    bool isChecked() const noexcept;              ///< Whether it is checked; false unless it is checkable.

    /// @name Changes
    /// Listeners are told of what differs afterwards; texts differ by case too.
    /// @{
    void setText(VoString text);               ///< Sets text().
    void setDescription(VoString description); ///< Sets description().
    void setIconName(VoString name);           ///< Sets iconName().
    void setShortcut(VoString shortcut);       ///< Sets shortcut().
    void setEnabled(bool enabled);             ///< Sets isEnabled().
    void setCheckable(bool checkable);         ///< Sets isCheckable(); what cannot be checked is not checked.
    void setChecked(bool checked);       ///< Sets isChecked(), without calling the function; ignored unless checkable.
    void setFunction(Function function); ///< Replaces what the action does, from the next trigger() on.
    /// @}

    /// Does what the action does; a checkable action changes its check first, and back when the function throws.
    /// Whatever the function throws passes through. The function may change the action, but not destroy it.
    /// @return whether the action is enabled; otherwise nothing is done
    bool trigger();

    /// Calls `callback` with each property that has changed. What listeners change themselves is told after that, and
    /// what they throw is logged in the category "actions".
    /// @throws VoInvalidParameterException "Invalid callback" when it is empty
    [[nodiscard]] VoReceiver connect(std::function<void(Property)> callback);

private:
    class Private;

    void changeText(VoString& kept, VoString text, Property property);
    void changeState(bool& kept, bool state, Property property);
    void tell(Property property);

    std::unique_ptr<Private> m_private;
};
