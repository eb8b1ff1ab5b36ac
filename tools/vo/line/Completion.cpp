#include <vo/line/Completion.h>

#include <vo/line/Command.h>
#include <vo/line/Topics.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace vo::tool {
namespace {

/// What may stand for a value.
struct Values
{
    enum Kind
    {
        Files,
        Folders,
        Words, ///< Of the list.
        Others ///< What nobody but the user can tell.
    };

    Kind kind = Others;
    std::string words{}; ///< With blanks between them.
};

bool HasAny(std::string_view text, std::initializer_list<std::string_view> parts)
{
    for (const std::string_view part : parts) {
        if (text.find(part) != std::string_view::npos)
            return true;
    }
    return false;
}

/// What the help calls a value tells what it is: "FOLDER", "FILE|URL", or "always|never", which are its words.
Values ValuesOf(std::string_view name)
{
    const bool isLower = name.find_first_not_of("abcdefghijklmnopqrstuvwxyz|") == std::string_view::npos;
    if (isLower && name.find('|') != std::string_view::npos) {
        Values values{Values::Words, std::string(name)};
        for (char& c : values.words)
            c = c == '|' ? ' ' : c;
        return values;
    }
    if (HasAny(name, {"FILE", "KEY", "DECLARATIONS", "XML", "xml", "csv", "SCRIPT", "ARCHIVE", "PROBLEM", "SOURCE"}))
        return {Values::Files};
    return {HasAny(name, {"FOLDER", "DIR"}) ? Values::Folders : Values::Others};
}

/// What the arguments of a command are, by its usage: its first words in lower case are words, or else files or
/// folders.
Values ArgumentsOf(const Command& command)
{
    if (std::string_view(command.name) == "help") {
        Values values{Values::Words, "topics"};
        for (const Topic& topic : Topics())
            values.words += std::string(" ") + topic.name;
        for (const Command& each : Commands())
            values.words += std::string(" ") + each.name;
        return values;
    }
    const std::string_view usage(command.arguments);
    const Values values = ValuesOf(usage.substr(0, usage.find(' ')));
    return values.kind == Values::Words ? values : ValuesOf(usage.substr(0, usage.find("--")));
}

std::vector<Option> AllOptions(const Command& command)
{
    std::vector<Option> options = command.options;
    options.insert(options.end(), CommonOptions().begin(), CommonOptions().end());
    return options;
}

/// A text between single quotes, for every shell here.
std::string Quoted(std::string_view text)
{
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string CommandNames()
{
    std::string names;
    for (const Command& command : Commands())
        names += (names.empty() ? "" : " ") + std::string(command.name);
    return names;
}

// --- bash

std::string BashAnswer(const Values& values)
{
    switch (values.kind) {
    case Values::Files:
        return "_vo_paths -f";
    case Values::Folders:
        return "_vo_paths -d";
    case Values::Words:
        return "_vo_words " + Quoted(values.words);
    case Values::Others:
        break;
    }
    return ":";
}

std::string BashCommand(const Command& command)
{
    const std::string name = command.name;
    std::string names;
    std::string values;
    for (const Option& option : AllOptions(command)) {
        names += std::string(names.empty() ? "" : " ") + "--" + option.name + (option.value != nullptr ? "=" : "");
        if (option.value != nullptr)
            values +=
                "    " + name + "\' \'--" + option.name + ") " + BashAnswer(ValuesOf(option.value)) + "; return ;;\n";
    }
    return values + "    " + name + "' '*) options=" + Quoted(names) +
           "; arguments=" + Quoted(BashAnswer(ArgumentsOf(command))) + " ;;\n";
}

std::string BashScript()
{
    std::string script =
        "# bash completion of vo, made by \"vo completion bash\"\n"
        "_vo_paths() {\n"
        "    compopt -o filenames 2>/dev/null\n"
        "    mapfile -t COMPREPLY < <(compgen \"$1\" -- \"$current\")\n"
        "}\n"
        "_vo_words() {\n"
        "    mapfile -t COMPREPLY < <(compgen -W \"$1\" -- \"$current\")\n"
        "    [[ ${COMPREPLY[0]} != *= ]] || compopt -o nospace 2>/dev/null\n"
        "}\n"
        "_vo() {\n"
        "    local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n"
        "    local command= options= arguments=: i\n"
        "    COMPREPLY=()\n"
        "    # The shell takes --option=value for three words.\n"
        "    [[ $current != = ]] || current=\n"
        "    [[ $before != = ]] || before=${COMP_WORDS[COMP_CWORD - 2]}\n"
        "    for ((i = 1; i < COMP_CWORD; ++i)); do\n"
        "        case ${COMP_WORDS[i]} in\n"
        "        --progress | --updates-dir) [[ ${COMP_WORDS[i + 1]} != = ]] && ((++i)) || ((i += 2)) ;;\n"
        "        -*) ;;\n"
        "        *) command=${COMP_WORDS[i]}; break ;;\n"
        "        esac\n"
        "    done\n"
        "    if [[ -z $command ]]; then\n"
        "        _vo_words " +
        Quoted(CommandNames() + " --help --version") +
        "\n"
        "        return\n"
        "    fi\n"
        "    case $command' '$before in\n";
    for (const Command& command : Commands())
        script += BashCommand(command);
    return script + "    esac\n"
                    "    if [[ $current == -* ]]; then\n"
                    "        _vo_words \"$options\"\n"
                    "    else\n"
                    "        eval \"$arguments\"\n"
                    "    fi\n"
                    "}\n"
                    "complete -F _vo vo\n";
}

// --- zsh

/// A text within a description of _arguments.
std::string ZshText(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '[' || c == ']' || c == ':' || c == '\\')
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string ZshAction(const Values& values)
{
    switch (values.kind) {
    case Values::Files:
        return "_files";
    case Values::Folders:
        return "_files -/";
    case Values::Words:
        return "(" + values.words + ")";
    case Values::Others:
        break;
    }
    return " ";
}

std::string ZshOption(const Option& option)
{
    std::string spec = option.repeatable ? "*--" : "--";
    spec += option.name;
    spec += option.value != nullptr ? "=" : "";
    spec += "[" + ZshText(option.help) + "]";
    if (option.value != nullptr)
        spec += ":" + ZshText(option.value) + ":" + ZshAction(ValuesOf(option.value));
    return Quoted(spec);
}

std::string ZshScript()
{
    std::string script = "#compdef vo\n"
                         "# zsh completion of vo, made by \"vo completion zsh\"\n"
                         "_vo() {\n"
                         "    local -a commands\n"
                         "    commands=(\n";
    for (const Command& command : Commands())
        script += "        " + Quoted(std::string(command.name) + ":" + ZshText(command.summary)) + "\n";
    script += "    )\n"
              "    if ((CURRENT == 2)); then\n"
              "        _describe command commands\n"
              "        return\n"
              "    fi\n"
              "    local command=$words[2]\n"
              "    shift words\n"
              "    ((--CURRENT))\n"
              "    case $command in\n";
    for (const Command& command : Commands()) {
        script += "    " + std::string(command.name) + ")\n        _arguments";
        for (const Option& option : AllOptions(command))
            script += " \\\n            " + ZshOption(option);
        script += " \\\n            " + Quoted("*:argument:" + ZshAction(ArgumentsOf(command))) + "\n        ;;\n";
    }
    return script + "    esac\n"
                    "}\n"
                    "if [[ $zsh_eval_context[-1] == loadautofunc ]]; then\n"
                    "    _vo \"$@\"\n"
                    "else\n"
                    "    compdef _vo vo\n"
                    "fi\n";
}

// --- fish

std::string FishValues(const Values& values)
{
    switch (values.kind) {
    case Values::Files:
        return " -F";
    case Values::Folders:
        return " -f -a '(__fish_complete_directories)'";
    case Values::Words:
        return " -f -a " + Quoted(values.words);
    case Values::Others:
        break;
    }
    return " -f";
}

std::string FishScript()
{
    std::string script = "# fish completion of vo, made by \"vo completion fish\"\n"
                         "complete -c vo -f\n";
    for (const Command& command : Commands()) {
        const std::string name = command.name;
        const std::string within = "complete -c vo -n '__fish_seen_subcommand_from " + name + "'";
        script += "complete -c vo -n __fish_use_subcommand -a " + name + " -d " + Quoted(command.summary) + "\n";
        script += within + FishValues(ArgumentsOf(command)) + "\n";
        for (const Option& option : AllOptions(command)) {
            script += within + " -l " + option.name;
            if (option.letter != '\0')
                script += std::string(" -s ") + option.letter;
            if (option.value != nullptr)
                script += " -r" + FishValues(ValuesOf(option.value));
            script += " -d " + Quoted(option.help) + "\n";
        }
    }
    return script;
}

} // namespace

std::optional<VoString> CompletionScript(std::string_view shell)
{
    if (shell == "bash")
        return VoString(BashScript());
    if (shell == "zsh")
        return VoString(ZshScript());
    if (shell == "fish")
        return VoString(FishScript());
    return std::nullopt;
}

} // namespace vo::tool
