#include <Subsystem/detail/LogLevels.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace vo::logging {

namespace {

char Folded(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool MatchesText(std::string_view pattern, std::string_view text)
{
    // On a difference the last "*" takes one character more; earlier ones need no second try.
    std::size_t star = std::string_view::npos;
    std::size_t taken = 0;
    std::size_t p = 0;
    for (std::size_t t = 0; t < text.size();) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            taken = t;
        } else if (p < pattern.size() && Folded(pattern[p]) == Folded(text[t])) {
            ++p;
            ++t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = ++taken;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

// Larger for the more particular pattern.
std::pair<bool, std::ptrdiff_t> Weight(const std::string& pattern)
{
    const std::ptrdiff_t stars = std::count(pattern.begin(), pattern.end(), '*');
    return {stars == 0, static_cast<std::ptrdiff_t>(pattern.size()) - stars};
}

} // namespace

bool Matches(const VoString& pattern, const VoString& category)
{
    return MatchesText(pattern.toStdString(), category.toStdString());
}

int ThresholdOf(const VoString& category, const VoDeque<LevelRule>& rules)
{
    if (rules.isEmpty())
        return static_cast<int>(Level::Diagnostic);
    const LevelRule* best = nullptr;
    for (const LevelRule& rule : rules) {
        if (Matches(rule.pattern, category) &&
            (!best || Weight(rule.pattern.toStdString()) >= Weight(best->pattern.toStdString())))
            best = &rule;
    }
    if (!best)
        return static_cast<int>(Level::Warning);
    return best->minimum ? static_cast<int>(*best->minimum) : NoLevel;
}

} // namespace vo::logging
