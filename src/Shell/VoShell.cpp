#include <Shell/VoShell.h>

#include <Shell/detail/Completion.h>
#include <Shell/detail/ShellInterpreter.h>

#include <utility>

struct VoShell::Private
{
    vo::detail::ShellInterpreter interpreter;
};

VoShell::VoShell(Output output, const VoAbstractFunctionRegistry& functions)
    : m_private(new Private{{std::move(output), functions}})
{
}

VoShell::~VoShell() = default;

VoShellValue VoShell::run(const VoString& line, const VoStopFlag& stop)
{
    return m_private->interpreter.run(line, stop);
}

void VoShell::runText(const VoString& text, const VoString& name, const VoStopFlag& stop)
{
    m_private->interpreter.runText(text, name, stop);
}

void VoShell::runScript(const VoFilePath& file, const VoStopFlag& stop)
{
    m_private->interpreter.runScript(file, stop);
}

const VoShellValue& VoShell::result() const noexcept
{
    return m_private->interpreter.result;
}

void VoShell::setDirectory(const VoDirectoryPath& directory)
{
    m_private->interpreter.context.directory = directory;
}

const VoDirectoryPath& VoShell::directory() const noexcept
{
    return m_private->interpreter.context.directory;
}

void VoShell::setOnResult(ResultFunction function)
{
    m_private->interpreter.onResult = std::move(function);
}

VoShell::Completions VoShell::completions(const VoString& line, std::size_t cursor) const
{
    const vo::detail::ShellInterpreter& interpreter = m_private->interpreter;
    vo::detail::Completion completion(line.toStdString().substr(0, cursor), interpreter);
    return {completion.start(), completion.words()};
}
