#include <Core/detail/NearestName.h>

#include <algorithm>
#include <utility>

namespace vo::detail {
namespace {

/// Longer texts than any name are a mistake of another kind, and the table of distances grows with their length.
constexpr std::size_t LongestTyped = 64;

bool IsForgiven(std::size_t distance, std::string_view name)
{
    return distance <= std::max<std::size_t>(1, name.size() / 3);
}

std::optional<std::string_view> OnlyNameStartingWith(std::string_view typed, const std::vector<std::string_view>& names)
{
    const auto startsWithTyped = [typed](std::string_view name) { return name.substr(0, typed.size()) == typed; };
    const auto first = std::find_if(names.begin(), names.end(), startsWithTyped);
    if (typed.empty() || first == names.end() || std::find_if(first + 1, names.end(), startsWithTyped) != names.end())
        return std::nullopt;
    return *first;
}

} // namespace

std::size_t EditDistance(std::string_view a, std::string_view b)
{
    // Three rows of the usual table: row i holds the distances of a's first i characters to every beginning of b.
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> current(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        last[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        current[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            current[j] = std::min({replaced, last[j] + 1, current[j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                current[j] = std::min(current[j], beforeLast[j - 2] + 1);
        }
        std::swap(beforeLast, last);
        std::swap(last, current);
    }
    return last[b.size()];
}

std::optional<std::string_view> NearestName(std::string_view typed, const std::vector<std::string_view>& names)
{
    if (typed.size() > LongestTyped)
        return std::nullopt;
    std::optional<std::string_view> nearest;
    std::size_t smallest = 0;
    for (const std::string_view name : names) {
        const std::size_t distance = EditDistance(typed, name);
        if (!nearest || distance < smallest) {
            nearest = name;
            smallest = distance;
        }
    }
    if (nearest && IsForgiven(smallest, *nearest))
        return nearest;
    return OnlyNameStartingWith(typed, names);
}

std::vector<std::string_view> NearestNames(std::string_view typed, const std::vector<std::string_view>& names,
                                           std::size_t most)
{
    if (typed.empty() || typed.size() > LongestTyped)
        return {};
    std::vector<std::pair<std::size_t, std::string_view>> near;
    for (const std::string_view name : names) {
        const std::size_t distance = EditDistance(typed, name);
        if (IsForgiven(distance, name) || name.substr(0, typed.size()) == typed)
            near.emplace_back(distance, name);
    }
    std::sort(near.begin(), near.end());
    std::vector<std::string_view> nearest;
    for (const auto& candidate : near) {
        if (nearest.size() < most)
            nearest.push_back(candidate.second);
    }
    return nearest;
}

} // namespace vo::detail
