#include <Actions/VoCommand.h>

#include <Core/VoException.h>

#include <utility>

VoCommand::VoCommand(VoString text)
    : m_text(std::move(text))
{
}

VoCommand::~VoCommand() = default;

void VoCommand::redo()
{
    execute();
}

bool VoCommand::merge(const VoCommand&)
{
    return false;
}

void VoCommand::setText(VoString text)
{
    m_text = std::move(text);
}

VoFunctionCommand::VoFunctionCommand(VoString text, Function execute, Function undo)
    : VoCommand(std::move(text))
    , m_execute(std::move(execute))
    , m_undo(std::move(undo))
{
    if (!m_execute || !m_undo)
        throw VoInvalidParameterException("Invalid command function: " + this->text());
}

VoFunctionCommand::~VoFunctionCommand() = default;

void VoFunctionCommand::execute()
{
    m_execute();
}

void VoFunctionCommand::undo()
{
    m_undo();
}
