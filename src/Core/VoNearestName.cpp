#include <Core/VoNearestName.h>

#include <Core/detail/NearestName.h>

namespace vo {

std::optional<std::string_view> NearestName(std::string_view typed, const std::vector<std::string_view>& names)
{
    return detail::NearestName(typed, names);
}

} // namespace vo
