#include <vo/line/Location.h>

#include <vo/line/CommandError.h>
#include <vo/line/Paths.h>

#include <Core/VoString.h>

namespace vo::tool {

VoLocation TypedLocation(const VoString& source, const VoString& text)
{
    if (!text.contains("://"))
        return TypedFile(source, text);
    const VoUrl url(text);
    if (!url.isValid() || (url.scheme() != "http" && url.scheme() != "https"))
        throw UsageError(source + ": \"" + text + "\" is not an http or https URL");
    return url;
}

VoString LocationText(const VoLocation& location)
{
    return location.isUrl() ? location.withoutUser().toString() : PathText(location.file());
}

} // namespace vo::tool
