#pragma once

#include <Core/VoString.h>
#include <Core/VoUniquePtr.h>

#include <cstddef>
#include <functional>
#include <memory>

class VoCommand;
class VoReceiver;

/// The history of a document: carries commands out, takes them back and makes them again.
///
///     VoUndoStack history;
///     history.push("Rename", [&] { sheet.rename("R1", "R7"); }, [&] { sheet.rename("R7", "R1"); });
///     history.group("Align", [&] { for (Part& part : parts) history.push(aligned(part)); });
///     history.undo(); // all of them
///
/// A command that throws leaves the document and the history as they were, also when it is one of a group: those of the
/// group that were carried out before are taken back. Should taking back fail in turn, nothing is known of the document
/// any more; the history is then emptied, the clean mark is lost and the log says so in the category "actions".
///
/// Commands and listeners must not change the history that calls them; every such call throws
/// VoInvalidCallException("Undo stack is in use"). Used by one thread, that of the document. Not copied.
class VOCORE_EXPORT VoUndoStack
{
public:
    /// What there is to show of a history.
    struct State
    {
        bool canUndo = false;  ///< Whether undo() can be called.
        bool canRedo = false;  ///< Whether redo() can be called.
        bool isClean = false;  ///< Whether the document is as it was at the clean mark.
        VoString undoText;     ///< What undo() takes back; empty when it cannot.
        VoString redoText;     ///< What redo() makes again; empty when it cannot.
        std::size_t index = 0; ///< How many commands of the history are carried out.
        std::size_t size = 0;  ///< How many commands there are, those taken back included.

        VOCORE_EXPORT bool operator==(const State& other) const;                ///< All alike; texts by case too.
        bool operator!=(const State& other) const { return !(*this == other); } ///< Some differ.
    };
    class Group;

    /// An empty history with its clean mark where the document is.
    /// @param limit as setLimit()
    explicit VoUndoStack(std::size_t limit = 0);
    VoUndoStack(const VoUndoStack&) = delete;
    VoUndoStack& operator=(const VoUndoStack&) = delete;
    ~VoUndoStack(); ///< Destroys the commands; the document stays as it is.

    /// Carries a command out and keeps it; what had been taken back can then not be made again. When the command before
    /// merges with it, unless the clean mark stands between them, it is not kept.
    /// @throws VoNullPointerException "VoUniquePtr dereferencing nullptr", for none; and whatever the command throws
    void push(VoUniquePtr<VoCommand> command);
    /// The same with a VoFunctionCommand.
    void push(VoString text, std::function<void()> execute, std::function<void()> undo);

    /// Takes the last command back.
    /// @throws VoInvalidCallException "Nothing to undo", or "Group is open", when it cannot; and what the command
    /// throws
    void undo();
    /// Makes the command again that was taken back last.
    /// @throws VoInvalidCallException "Nothing to redo", or "Group is open", when it cannot; and what the command
    /// throws
    void redo();

    /// Runs `body` with a Group open, so that what it pushes is undone as one. What it throws passes through, after
    /// all that it has pushed was taken back.
    void group(const VoString& text, const std::function<void()>& body);

    /// Forgets all commands; the document stays as it is, and so does isClean().
    /// @throws VoInvalidCallException "Group is open"
    void clear();

    void setClean();           ///< Marks the state of now, as after saving. Throws as clear().
    void resetClean();         ///< Takes the mark away: no state of the document is clean.
    bool isClean() const;      ///< Whether the document is as it was at the mark; lost when no way leads back to it.
    State state() const;       ///< All that can be shown. While a group is open, nothing can be undone or redone.
    std::size_t limit() const; ///< How many commands are kept; 0 for all.
    void setLimit(std::size_t limit); ///< Sets limit(); the oldest commands go first. Throws as clear().

    /// The text of a command, the oldest at index 0.
    /// @throws VoIndexOutOfBoundsException with index and size, when there is none
    const VoString& text(std::size_t index) const;

    /// Calls `callback` after each change of state() with the new one. What it throws is logged in the category
    /// "actions".
    /// @throws VoInvalidParameterException "Invalid callback" when it is empty
    [[nodiscard]] VoReceiver connect(std::function<void(const State&)> callback);

private:
    class Private;

    const std::shared_ptr<Private> m_private; // groups look whether it is still there
};

/// Commands that are undone and redone as one. While it lives, what is pushed becomes part of it; groups may be nested.
/// A group that is not committed takes back what was pushed, with the groups within, when it ends.
class VOCORE_EXPORT VoUndoStack::Group
{
public:
    /// Opens a group; it is shown by its text. The history may end before it.
    /// @throws VoInvalidCallException "Undo stack is in use"
    Group(VoUndoStack& stack, VoString text);
    Group(const Group&) = delete;
    Group& operator=(const Group&) = delete;
    ~Group(); ///< Takes back what was pushed, unless it was committed.

    /// Keeps what was pushed as one command; nothing is kept of a group without any.
    /// @throws VoInvalidCallException "Group is not open", when it has ended; "Group is open", when one within has not
    void commit();
    /// Takes back what was pushed, now; a group that has ended stays as it is.
    /// @throws VoInvalidCallException "Undo stack is in use"
    void cancel();

private:
    std::weak_ptr<Private> m_stack;
    std::size_t m_number; // of all groups of the stack
};
