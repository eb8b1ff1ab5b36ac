#pragma once

#include <Core/VoString.h>
#include <Gui/VoGuiExport.h>

#include <functional>

class QAction;
class QObject;
class VoAction;
class VoUndoStack;

/// Actions and histories as actions of the framework, for menus, tool bars and buttons.
///
///     menu->addAction(VoQActions::Make(grid, window));
///     menu->addAction(VoQActions::MakeUndo(history, window));
///
/// What is made belongs to its parent and may outlive what it was made of: it is disabled then, at the latest when it
/// is triggered. Used on the thread of the graphical application.
class VOCOREGUI_EXPORT VoQActions
{
public:
    VoQActions() = delete;

    /// Tells the user that what an action does has failed, and why.
    using Failure = std::function<void(const VoString& text)>;

    /// An action of the framework that is kept the same as another one, both ways: text (an "&" in it is no mnemonic),
    /// description, icon (from VoIcons), shortcut, and whether it is enabled, checkable and checked go there; text,
    /// shortcut and whether it is enabled come back at once when somebody changes them, whether it is checked from the
    /// event loop. Triggering the one triggers the other. What the action throws is told to `failure`; without that it
    /// is logged in the category "actions".
    static QAction* Make(VoAction& action, QObject* parent, Failure failure = nullptr);

    /// An action that undoes what is next in a history. Its text is `prefix`, a blank, and what the history calls that;
    /// it has an icon, the shortcut that the platform has for it, and is enabled while there is something.
    static QAction* MakeUndo(VoUndoStack& history, QObject* parent, const VoString& prefix = "Undo",
                             Failure failure = nullptr);
    /// The same of what was undone last.
    static QAction* MakeRedo(VoUndoStack& history, QObject* parent, const VoString& prefix = "Redo",
                             Failure failure = nullptr);
};
