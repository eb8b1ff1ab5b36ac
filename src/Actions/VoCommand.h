#pragma once

#include <Core/VoString.h>

#include <functional>

/// A change of a document that can be taken back. A VoUndoStack owns it and decides when.
///
///     class MoveCell final : public VoCommand { ... };
///     stack.push(VoUniquePtr<VoCommand>(new MoveCell(cell, from, to)));
///
/// Each of execute(), undo() and redo() does all of its work, or throws and leaves the document as it was.
class VOCORE_EXPORT VoCommand
{
public:
    explicit VoCommand(VoString text); ///< A command of that text().
    VoCommand(const VoCommand&) = delete;
    VoCommand& operator=(const VoCommand&) = delete;
    virtual ~VoCommand();

    const VoString& text() const noexcept { return m_text; } ///< What people call the change, as "Rename resistor".

    virtual void execute() = 0; ///< Makes the change, for the first time.
    virtual void undo() = 0;    ///< Takes back what execute() or redo() has done.
    virtual void redo();        ///< Makes the change again, on the state that undo() has left; as execute() here.

    /// Takes over what a command does that was carried out right after this one, so that both are undone as one: the
    /// letters that are typed into one name, the steps in which something is dragged.
    /// @return whether that was done; else this command must be as it was. Always false here.
    virtual bool merge(const VoCommand& successor);

protected:
    void setText(VoString text); ///< Replaces the text, as merge() may want.

private:
    VoString m_text;
};

/// A command of two functions.
class VOCORE_EXPORT VoFunctionCommand final : public VoCommand
{
public:
    using Function = std::function<void()>; ///< What is called.

    /// @throws VoInvalidParameterException "Invalid command function: " + text, when one of them is empty
    VoFunctionCommand(VoString text, Function execute, Function undo);
    ~VoFunctionCommand() override;

    void execute() override; ///< Calls the first function.
    void undo() override;    ///< Calls the second function.

private:
    Function m_execute;
    Function m_undo;
};
