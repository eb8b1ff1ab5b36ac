#include <vo/line/Arguments.h>

#include <vo/line/CommandError.h>
#include <vo/line/Help.h>
#include <vo/line/Paths.h>

#include <Core/VoNearestName.h>
#include <Updater/VoUpdater.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QStringList>

#include <algorithm>

namespace vo::tool {
namespace {

VoString Suggestion(const VoString& typed, const std::vector<std::string_view>& names, const char* prefix)
{
    const auto nearest = NearestName(typed.toStdString(), names);
    return nearest ? VoString("; did you mean ") + prefix + std::string(*nearest) + "?" : VoString();
}

[[noreturn]] void ThrowUnknownCommand(const VoString& typed)
{
    std::vector<std::string_view> names;
    for (const Command& command : Commands())
        names.push_back(command.name);
    const VoString hint = Suggestion(typed, names, "");
    throw UsageError("unknown command \"" + typed + "\"" + (hint.isEmpty() ? "; see vo help" : hint));
}

[[noreturn]] void ThrowUnknownOption(const VoString& typed, const std::vector<Option>& options)
{
    std::vector<std::string_view> names;
    names.reserve(options.size());
    for (const Option& option : options)
        names.push_back(option.name);
    const char* dashes = typed.size() == 1 ? "-" : "--";
    throw UsageError(VoString("unknown option ") + dashes + typed + Suggestion(typed, names, "--"));
}

/// The common options and those of the command, if there is one yet.
std::vector<Option> OptionsOf(const Command* command)
{
    std::vector<Option> options = CommonOptions();
    if (command != nullptr)
        options.insert(options.begin(), command->options.begin(), command->options.end());
    return options;
}

void Declare(QCommandLineParser& parser, const std::vector<Option>& options)
{
    for (const Option& option : options) {
        QStringList names(QString::fromLatin1(option.name));
        if (option.letter != '\0')
            names << QString(QLatin1Char(option.letter));
        const QString value = option.value != nullptr ? QString::fromLatin1(option.value) : QString();
        parser.addOption(QCommandLineOption(names, QString(), value));
    }
}

/// The first argument that is no option and no option's value; empty without one.
QString CommandName(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    Declare(parser, CommonOptions());
    parser.parse(arguments);
    return parser.positionalArguments().value(0);
}

[[noreturn]] void ThrowInvalid(const char* option, const VoString& value, const VoString& expected)
{
    throw UsageError(VoString("option --") + option + ": \"" + value + "\" is not " + expected);
}

VoString NameOf(const char* option)
{
    return VoString("option --") + option;
}

} // namespace

Arguments::Arguments(const QStringList& arguments)
{
    parse(arguments);
    // Asking for help needs nothing else to be right.
    if (m_command != nullptr && !has("help"))
        checkCount();
}

void Arguments::parse(const QStringList& arguments)
{
    // The parser takes the first text for the program's name.
    const QStringList all = QStringList(QStringLiteral("vo")) + arguments;
    const VoString name(CommandName(all));
    m_command = FindCommand(name.toStdString());
    const std::vector<Option> options = OptionsOf(m_command);
    QCommandLineParser parser;
    Declare(parser, options);
    const bool understood = parser.parse(all);
    if (m_command == nullptr && !name.isEmpty())
        ThrowUnknownCommand(name);
    if (!parser.unknownOptionNames().isEmpty())
        ThrowUnknownOption(VoString(parser.unknownOptionNames().first()), options);
    if (!understood) {
        VoString text(parser.errorText());
        while (!text.isEmpty() && text[text.size() - 1] == '.')
            text.resize(text.size() - 1, ' ');
        throw UsageError(text);
    }

    for (const Option& option : options) {
        const QString key = QString::fromLatin1(option.name);
        if (!parser.isSet(key))
            continue;
        const QStringList values = parser.values(key);
        if (values.size() > 1 && !option.repeatable)
            throw UsageError(NameOf(option.name) + " is given more than once");
        if (option.value == nullptr)
            m_given.push_back({option.name, VoString()});
        for (const QString& value : values) {
            if (value.isEmpty())
                throw UsageError(NameOf(option.name) + " needs a value: " + option.value);
            m_given.push_back({option.name, VoString(value)});
        }
    }
    for (const QString& argument : parser.positionalArguments().mid(1))
        m_positional.emplace_back(argument);
}

void Arguments::checkCount() const
{
    const VoString usage = "; usage: vo " + UsageText(*m_command);
    if (count() < m_command->fewestArguments)
        throw UsageError("an argument is missing" + usage);
    if (count() > m_command->mostArguments)
        throw UsageError("unexpected argument \"" + argument(m_command->mostArguments) + "\"" + usage);
    const auto empty = std::find_if(m_positional.begin(), m_positional.end(),
                                    [](const VoString& argument) { return argument.isEmpty(); });
    if (empty != m_positional.end())
        throw UsageError("an argument is empty" + usage);
}

VoString Arguments::CommandOf(const QStringList& arguments)
{
    return VoString(CommandName(QStringList(QStringLiteral("vo")) + arguments));
}

std::string Arguments::typedName(const std::string& path) const
{
    const auto means = [&](const VoString& typed) {
        return !typed.isEmpty() && !typed.contains("://") && path == AbsoluteText(typed.toStdString());
    };
    const auto argument = std::find_if(m_positional.begin(), m_positional.end(), means);
    if (argument != m_positional.end())
        return argument->toStdString();
    const auto option =
        std::find_if(m_given.begin(), m_given.end(), [&](const Given& given) { return means(given.value); });
    return option != m_given.end() ? option->value.toStdString() : path;
}

bool Arguments::has(const char* option) const
{
    return std::any_of(m_given.begin(), m_given.end(), [option](const Given& given) { return given.name == option; });
}

std::optional<VoString> Arguments::text(const char* option) const
{
    const auto found =
        std::find_if(m_given.begin(), m_given.end(), [option](const Given& given) { return given.name == option; });
    if (found == m_given.end())
        return std::nullopt;
    return found->value;
}

std::vector<VoString> Arguments::texts(const char* option) const
{
    std::vector<VoString> values;
    for (const Given& given : m_given) {
        if (given.name == option)
            values.push_back(given.value);
    }
    return values;
}

VoString Arguments::requiredText(const char* option) const
{
    const auto value = text(option);
    if (!value)
        throw UsageError(NameOf(option) + " is missing");
    return *value;
}

std::optional<VoUUID> Arguments::identifier(const char* option) const
{
    const auto value = text(option);
    if (!value)
        return std::nullopt;
    if (!VoUpdater::IsIdentifier(*value))
        ThrowInvalid(option, *value, "an ID that can serve as a file name");
    return VoUUID(*value);
}

std::optional<ReleaseNumber> Arguments::release(const char* option) const
{
    const auto value = text(option);
    if (!value)
        return std::nullopt;
    const auto number = ParseRelease(*value);
    if (!number)
        ThrowInvalid(option, *value, "a release such as 4.2.17");
    return number;
}

std::int64_t Arguments::integer(const char* option, std::int64_t fallback, std::int64_t lowest,
                                std::int64_t highest) const
{
    const auto value = text(option);
    if (!value)
        return fallback;
    const auto number = ParseInteger(*value);
    if (!number || *number < lowest || *number > highest)
        ThrowInvalid(option, *value, "an integer from " + VoString(lowest) + " to " + VoString(highest));
    return *number;
}

std::uint64_t Arguments::bytes(const char* option, std::uint64_t fallback, std::uint64_t lowest,
                               std::uint64_t highest) const
{
    const auto value = text(option);
    if (!value)
        return fallback;
    const auto number = ParseBytes(*value);
    if (!number)
        ThrowInvalid(option, *value, "a size such as 65536, 512K or 4M");
    if (*number < lowest || *number > highest)
        ThrowInvalid(option, *value, "from " + VoString(lowest) + " to " + VoString(highest) + " bytes");
    return *number;
}

std::optional<VoFilePath> Arguments::file(const char* option) const
{
    const auto value = text(option);
    if (!value)
        return std::nullopt;
    return TypedFile(NameOf(option), *value);
}

std::optional<VoDirectoryPath> Arguments::directory(const char* option) const
{
    const auto value = text(option);
    if (!value)
        return std::nullopt;
    return TypedDirectory(NameOf(option), *value);
}

std::optional<VoLocation> Arguments::location(const char* option) const
{
    const auto value = text(option);
    if (!value)
        return std::nullopt;
    return TypedLocation(NameOf(option), *value);
}

VoFilePath Arguments::fileArgument(std::size_t index) const
{
    return TypedFile("argument", argument(index));
}

VoDirectoryPath Arguments::directoryArgument(std::size_t index) const
{
    return TypedDirectory("argument", argument(index));
}

VoLocation Arguments::locationArgument(std::size_t index) const
{
    return TypedLocation("argument", argument(index));
}

} // namespace vo::tool
