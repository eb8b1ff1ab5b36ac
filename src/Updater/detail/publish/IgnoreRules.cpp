#include <Updater/detail/publish/IgnoreRules.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/detail/documents/XMLDocument.h>

#include <QtCore/QString>

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string>

namespace vo::updater::detail {

namespace {

std::string WithSlashes(const VoString& text)
{
    std::string result = text.toStdString();
    std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

QString ToQString(const std::string& text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

// The end of the set that begins at `start`; npos when the bracket stands for itself.
std::size_t EndOfSet(const std::string& pattern, std::size_t start)
{
    std::size_t first = start + 1;
    if (first < pattern.size() && (pattern[first] == '!' || pattern[first] == '^'))
        ++first;
    return pattern.find(']', first + 1);
}

std::string SetExpression(const std::string& inside)
{
    std::string set = "(?!/)[";
    for (std::size_t i = 0; i < inside.size(); ++i) {
        if (i == 0 && inside[i] == '!')
            set += '^';
        else if (inside[i] == '[' || (inside[i] == ']' && i > 0))
            set += std::string("\\") + inside[i];
        else
            set += inside[i];
    }
    return set + "]";
}

// Nothing but a letter, a digit and what is not ASCII means itself everywhere.
std::string Literal(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 || std::isalnum(byte) != 0 ? std::string(1, c) : std::string("\\") + c;
}

std::string Expression(const std::string& pattern)
{
    std::string result;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool isPieceStart = i == 0 || pattern[i - 1] == '/';
        if (isPieceStart && pattern.compare(i, 3, "**/") == 0) {
            result += "(?:.*/)?";
            i += 2;
        } else if (isPieceStart && pattern.compare(i, std::string::npos, "**") == 0) {
            result += ".*";
            break;
        } else if (pattern[i] == '*') {
            result += "[^/]*";
        } else if (pattern[i] == '?') {
            result += "[^/]";
        } else if (pattern[i] == '[' && EndOfSet(pattern, i) != std::string::npos) {
            const std::size_t end = EndOfSet(pattern, i);
            result += SetExpression(pattern.substr(i + 1, end - i - 1));
            i = end;
        } else {
            result += Literal(pattern[i]);
        }
    }
    return result;
}

} // namespace

void IgnoreRules::add(const VoString& pattern)
{
    std::string text = WithSlashes(pattern);
    text.erase(text.find_last_not_of(" \t\r") + 1);
    Rule rule{QRegularExpression(), false, true};
    if (!text.empty() && text.front() == '!') {
        rule.leavesOut = false;
        text.erase(0, 1);
    }
    if (!text.empty() && text.back() == '/') {
        rule.directoriesOnly = true;
        text.pop_back();
    }
    const bool isFromTop = text.find('/') != std::string::npos;
    if (isFromTop && text.front() == '/')
        text.erase(0, 1);
    const std::string anywhere = isFromTop ? "" : "(?:.*/)?";
    rule.pattern.setPattern(ToQString("\\A(?:" + anywhere + Expression(text) + ")\\z"));
    rule.pattern.setPatternOptions(QRegularExpression::CaseInsensitiveOption |
                                   QRegularExpression::DotMatchesEverythingOption);
    if (text.empty() || !rule.pattern.isValid())
        throw VoInvalidParameterException("Invalid pattern: " + pattern);
    m_rules.push_back(std::move(rule));
}

void IgnoreRules::addListed(const VoFilePath& list)
{
    std::istringstream lines(ReadDocument(list).toStdString());
    bool isFirst = true;
    for (std::string line; std::getline(lines, line); isFirst = false) {
        if (isFirst && line.compare(0, 3, "\xEF\xBB\xBF") == 0)
            line.erase(0, 3);
        if (line.find_first_not_of(" \t\r") != std::string::npos && line.front() != '#')
            add(VoString(line));
    }
}

bool IgnoreRules::leavesOut(const VoFilePath& path, bool isDirectory) const
{
    if (m_rules.empty())
        return false;
    std::string bytes = WithSlashes(path.path());
    bytes.erase(bytes.find_last_not_of('/') + 1);
    const QString text = ToQString(bytes);
    for (auto rule = m_rules.rbegin(); rule != m_rules.rend(); ++rule) {
        if ((isDirectory || !rule->directoriesOnly) && rule->pattern.match(text).hasMatch())
            return rule->leavesOut;
    }
    return false;
}

} // namespace vo::updater::detail
