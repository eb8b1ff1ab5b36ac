#include <Shell/detail/ShellInterpreter.h>

#include <Application/VoGlobalValues.h>
#include <Application/VoValueDefinition.h>
#include <Core/VoException.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoWholeFile.h>
#include <Shell/VoScriptException.h>
#include <Shell/detail/AlignedText.h>
#include <Shell/detail/ArgumentValue.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace vo::detail {
namespace {

constexpr std::size_t LongestLine = std::size_t(64) << 10;
constexpr std::size_t LargestScript = std::size_t(16) << 20;
constexpr std::size_t MostDepth = 32;

// Puts a value in place of another, and that back when it ends.
template <typename T>
class Instead
{
public:
    Instead(T& place, T value)
        : m_place(place)
        , m_before(std::exchange(place, std::move(value)))
    {
    }
    Instead(const Instead&) = delete;
    Instead& operator=(const Instead&) = delete;
    ~Instead() { m_place = std::move(m_before); }

private:
    T& m_place;
    T m_before;
};

bool HasParameter(const VoFunction& function, const VoString& name)
{
    const auto& parameters = function.parameters;
    return std::any_of(parameters.begin(), parameters.end(), [&](const auto& one) { return one.name == name; });
}

// As it stands before a separator in "$_folder/name".
VoFilePath WithoutEnd(const VoFilePath& folder)
{
    const std::string& text = folder.path().toStdString();
    return text.size() > 1 ? VoFilePath(VoString(text.substr(0, text.size() - 1))) : folder;
}

VoString FirstSentence(const VoString& text)
{
    const std::size_t end = text.toStdString().find(". ");
    return end == std::string::npos ? text : VoString(text.toStdString().substr(0, end + 1));
}

} // namespace

std::string ReadScript(const VoFilePath& file)
{
    std::optional<std::string> text = ReadWholeFile(file, LargestScript);
    if (!text)
        throw VoInvalidUseException("Script is too large: " + file.path());
    if (text->compare(0, 3, "\xef\xbb\xbf") == 0)
        text->erase(0, 3);
    return *std::move(text);
}

ShellInterpreter::ShellInterpreter(std::function<void(const VoString&)> output,
                                   const VoAbstractFunctionRegistry& registry)
    : functions(registry)
{
    context.output = std::move(output);
    statements = {
        {"help", "help [name]", "Lists the functions, or tells about one.", 0, 1,
         [this](const Line& line) { help(line); }},
        {"set", "set [name [value]]", "Shows all global values or one, or sets it.", 0, 2,
         [this](const Line& line) { set(line); }},
        {"reset", "reset name", "Sets a global value to its default.", 1, 1,
         [this](const Line& line) { VoGlobalValues::Reset(text(line.words[1])); }},
        {"source", "source file", "Carries out the lines of a file, relative to the script that says so.", 1, 1,
         [this](const Line& line) {
             const VoFilePath file(text(line.words[1]));
             const Instead<bool> quiet(m_isSourcing, true);
             runScript(m_folder.isNull() ? file : file.absolute(m_folder.toFilePath()), line.stop);
         }},
    };
}

VoShellValue ShellInterpreter::run(const VoString& line, const VoStopFlag& stop)
{
    if (line.size() > LongestLine)
        throw VoInvalidParameterException("Line is too long");
    const Line parsed{line, ParseShellLine(line), stop};
    if (parsed.words.empty())
        return {};
    const VoString name = text(parsed.words[0]);
    if (const Statement* const known = statement(name)) {
        const std::size_t count = parsed.words.size() - 1;
        if (count < known->fewest || count > known->most)
            throw VoInvalidParameterException(
                (count < known->fewest ? "Missing argument for " : "Too many arguments for ") + known->name +
                "; usage: " + known->usage);
        known->body(parsed);
        return {};
    }
    const std::shared_ptr<const VoFunction> function = functions.find(name);
    if (function)
        return call(*function, parsed);
    VoDeque<VoString> names = functions.names();
    for (const Statement& one : statements)
        names.pushBack(one.name);
    throw VoFunctionRegistry::Undefined(name, names);
}

VoShellValue ShellInterpreter::call(const VoFunction& function, const Line& line)
{
    VoDeque<VoFunctionArgument> arguments;
    for (std::size_t i = 1; i < line.words.size(); ++i) {
        const ShellWord& word = line.words[i];
        const bool isNamed = !word.name.isEmpty() && HasParameter(function, word.name);
        arguments.pushBack(argument(word, isNamed));
        if (isNamed)
            arguments.back().name = word.name;
    }
    VoFunctionContext here = context;
    here.stop = line.stop;
    VoShellValue value = function.call(arguments, here);
    if (!value.isNull())
        result = value;
    return value;
}

VoFunctionArgument ShellInterpreter::argument(const ShellWord& word, bool isNamed) const
{
    VoFunctionArgument made;
    made.column = word.column;
    made.isTyped = true;
    made.isQuoted = word.isQuoted;
    const bool hasPrefix = !isNamed && !word.name.isEmpty();
    if (hasPrefix)
        made.value = text(word);
    else if (word.isList)
        made.value = listOf(word, made.isQuoted);
    else if (word.isQuoted || word.pieces.size() != 1 || !word.pieces[0].isValue)
        made.value = joined(word);
    else {
        made.value = valueOf(word.pieces[0].text, word.column);
        made.isTyped = false;
    }
    return made;
}

// Only where all items are quoted are they texts whatever they look like.
VoShellValue ShellInterpreter::listOf(const ShellWord& word, bool& isQuoted) const
{
    VoDeque<VoVariant> values;
    isQuoted = !word.items.empty();
    for (const ShellWord& item : word.items) {
        const VoFunctionArgument one = argument(item);
        if (one.value.form() != VoShellValue::Form::Single)
            throw VoInvalidParameterException("A list within a list, at column " + VoString(item.column));
        values.pushBack(one.value.variant());
        isQuoted = isQuoted && one.isQuoted;
    }
    return values;
}

VoString ShellInterpreter::joined(const ShellWord& word) const
{
    VoString text;
    for (const ShellPiece& piece : word.pieces)
        text += piece.isValue ? valueOf(piece.text, word.column).toText() : piece.text;
    return text;
}

VoString ShellInterpreter::text(const ShellWord& word) const
{
    if (word.isList)
        throw VoInvalidParameterException("A list cannot stand here, at column " + VoString(word.column));
    return word.name.isEmpty() ? joined(word) : word.name + "=" + joined(word);
}

VoFilePath ShellInterpreter::rooted(const VoFilePath& path) const
{
    return context.directory.isNull() ? path : path.absolute(context.directory.toFilePath());
}

VoShellValue ShellInterpreter::valueOf(const VoString& name, std::size_t column) const
{
    if (name == "_")
        return result;
    if (name == "_folder")
        return m_folder.isNull() ? rooted(VoFilePath(".")) : WithoutEnd(m_folder.toFilePath());
    if (!VoGlobalValues::IsDefined(name))
        throw VoNotFoundException("$" + name + ", at column " + VoString(column));
    return VoGlobalValues::Value(name);
}

void ShellInterpreter::runText(const VoString& text, const VoString& name, const VoStopFlag& stop)
{
    if (m_depth >= MostDepth)
        throw VoStackLimitException();
    const Instead<std::size_t> deeper(m_depth, m_depth + 1);
    const std::string& bytes = text.toStdString();
    std::size_t number = 1;
    for (std::size_t start = 0; start < bytes.size(); ++number) {
        stop.throwIfStopped();
        const std::size_t end = std::min(bytes.find('\n', start), bytes.size());
        try {
            const VoShellValue value = run(VoString(bytes.substr(start, end - start)), stop);
            if (onResult && !m_isSourcing && !value.isNull())
                onResult(value);
        } catch (const VoUserCancelledException&) {
            throw;
        } catch (...) {
            throw VoScriptException(name, number, std::current_exception());
        }
        start = end + 1;
    }
}

void ShellInterpreter::runScript(const VoFilePath& path, const VoStopFlag& stop)
{
    const VoFilePath file = rooted(path);
    const std::string text = ReadScript(file);
    const Instead<VoDirectoryPath> folder(m_folder, file.parent());
    runText(VoString(text), VoString(ToNative(file).u8string()), stop);
}

void ShellInterpreter::print(const VoString& text) const
{
    if (context.output)
        context.output(text);
}

const ShellInterpreter::Statement* ShellInterpreter::statement(const VoString& name) const
{
    const auto found = std::find_if(statements.begin(), statements.end(),
                                    [&](const Statement& statement) { return statement.name == name; });
    return found == statements.end() ? nullptr : &*found;
}

void ShellInterpreter::help(const Line& line) const
{
    if (line.words.size() == 1)
        return helpOnAll();
    const VoString name = text(line.words[1]);
    if (const Statement* const known = statement(name)) {
        print(known->usage);
        return print(known->help);
    }
    const auto function = functions.find(name);
    if (!function)
        throw VoFunctionRegistry::Undefined(name, functions.names());
    helpOn(*function);
}

void ShellInterpreter::helpOnAll() const
{
    AlignedText rows(2);
    for (const Statement& one : statements) {
        rows.add(one.name, false);
        rows.add(one.help, false);
    }
    for (const VoString& name : functions.names()) {
        const auto function = functions.find(name);
        rows.add(name, false);
        rows.add(function ? FirstSentence(function->help) : VoString(), false);
    }
    print(rows.text());
}

void ShellInterpreter::helpOn(const VoFunction& function) const
{
    print(function.usage());
    print(function.help);
    AlignedText rows(3);
    for (const VoFunctionParameter& parameter : function.parameters) {
        rows.add("  " + parameter.name, false);
        rows.add(parameter.typeText(), false);
        rows.add(parameter.help, false);
    }
    if (!function.parameters.isEmpty())
        print(rows.text());
}

void ShellInterpreter::set(const Line& line) const
{
    if (line.words.size() == 1) {
        for (const VoString& name : VoGlobalValues::Names())
            showValue(name);
        return;
    }
    const VoString name = text(line.words[1]);
    if (line.words.size() == 2)
        return showValue(name);
    const VoFunctionArgument given = argument(line.words[2]);
    const VoFunctionParameter wanted{name, VoGlobalValues::Definition(name).type(), ""};
    const auto value = ArgumentValue(wanted, given, context.directory);
    if (!value)
        return VoGlobalValues::SetText(name, given.value.toText()); // which says what would be allowed
    VoGlobalValues::Set(name, value->variant());
}

void ShellInterpreter::showValue(const VoString& name) const
{
    const VoValueDefinition definition = VoGlobalValues::Definition(name);
    print(definition.name + " = " + VoShellValue(VoGlobalValues::Value(name)).toText() + "  # " +
          definition.allowedForm() + (definition.description.isEmpty() ? "" : "; ") + definition.description);
}

} // namespace vo::detail
