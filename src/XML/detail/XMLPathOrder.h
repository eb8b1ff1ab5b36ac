#pragma once

#include <Core/VoString.h>
#include <XML/VoXMLPath.h>

#include <string_view>

namespace vo::detail {

/// Finds a path by its text, so that no path is made for each element that is looked up.
struct XMLPathOrder
{
    using is_transparent = void;

    static std::string_view Text(const VoXMLPath& path) { return path.toString().toStdString(); }
    static std::string_view Text(std::string_view text) { return text; }

    template <typename A, typename B>
    bool operator()(const A& a, const B& b) const
    {
        return Text(a) < Text(b);
    }
};

} // namespace vo::detail
