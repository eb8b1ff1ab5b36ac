#include <vo/line/Manual.h>

#include <vo/line/Command.h>
#include <vo/line/Help.h>
#include <vo/line/Topics.h>

#include <string>
#include <string_view>

namespace vo::tool {
namespace {

/// A text as the formatter takes it: backslashes, hyphens that are to stay what they are, and what would be a request
/// at the beginning of a line.
std::string Roff(std::string_view text)
{
    std::string roff;
    bool begins = true;
    for (const char c : text) {
        if (begins && (c == '.' || c == '\''))
            roff += "\\&";
        if (c == '\\')
            roff += "\\e";
        else if (c == '-')
            roff += "\\-";
        else if (c == '\'')
            roff += "\\(aq";
        else if (c == '"')
            roff += "\\(dq";
        else
            roff += c;
        begins = c == '\n';
    }
    return roff;
}

std::string Paragraphs(std::string_view text)
{
    std::string roff;
    while (!text.empty()) {
        const std::size_t end = text.find("\n\n");
        std::string_view paragraph = text.substr(0, end);
        while (!paragraph.empty() && paragraph.back() == '\n')
            paragraph.remove_suffix(1);
        roff += (roff.empty() ? "" : ".PP\n") + Roff(paragraph) + "\n";
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 2);
    }
    return roff;
}

std::string Section(const char* name, const std::string& content)
{
    return std::string(".SH ") + name + "\n" + content;
}

std::string Rows(const TextRows& rows)
{
    std::string roff;
    for (const auto& [name, meaning] : rows)
        roff += ".TP\n.B " + Roff(name.toStdString()) + "\n" + Roff(meaning.toStdString()) + "\n";
    return roff;
}

std::string Options(const std::vector<Option>& options)
{
    TextRows rows;
    for (const Option& option : options)
        rows.emplace_back(OptionText(option).trimmed(), option.help);
    return Rows(rows);
}

std::string Header(const std::string& title, std::string name, const std::string& summary)
{
    return ".\\\" Made by \"vo help --man\".\n.TH " + title + " 1 \"\" \"vo " VOCORE_VERSION "\" \"User Commands\"\n" +
           Section("NAME", name + " \\- " + Roff(summary) + "\n");
}

std::string Upper(std::string text)
{
    for (char& c : text)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return text;
}

std::string CommandPage(const Command& command)
{
    const std::string name = Roff(std::string("vo-") + command.name);
    std::string page = Header(Upper(name), name, command.summary) +
                       Section("SYNOPSIS", ".B vo " + Roff(command.name) + "\n" +
                                               (*command.arguments ? Roff(command.arguments) + "\n" : "")) +
                       Section("DESCRIPTION", Paragraphs(command.description));
    if (!command.options.empty())
        page += Section("OPTIONS", Options(command.options));
    return page + Section("OPTIONS OF EVERY COMMAND", Options(CommonOptions())) +
           Section("EXIT STATUS", Rows(FindTopic("exit-codes")->rows)) + Section("SEE ALSO", ".BR vo (1)\n");
}

std::string OverviewPage()
{
    TextRows commands;
    for (const Command& command : Commands())
        commands.emplace_back(VoString("vo-") + command.name + "(1)", command.summary);
    std::string page =
        Header("VO", "vo", "publish folders as releases, and install, update, verify and remove releases") +
        Section("SYNOPSIS", ".B vo\n.I COMMAND\n[OPTIONS] [ARGUMENTS]\n") +
        Section("DESCRIPTION",
                Paragraphs("Publishes folders as releases, and installs, updates, verifies and removes releases.\n\n"
                           "Results go to standard output, messages and progress to standard error.")) +
        Section("COMMANDS", Rows(commands)) + Section("OPTIONS OF EVERY COMMAND", Options(CommonOptions()));
    for (const Topic& topic : Topics())
        page += Section(topic.section, Rows(topic.rows));
    return page;
}

} // namespace

VoString ManualPage(const Command* command)
{
    return VoString(command != nullptr ? CommandPage(*command) : OverviewPage());
}

} // namespace vo::tool
