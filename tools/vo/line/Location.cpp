#include <vo/line/Location.h>

#include <vo/line/CommandError.h>
#include <vo/line/Paths.h>

#include <Core/VoString.h>

#include <QtCore/QUrl>

namespace vo::tool {

Location TypedLocation(const VoString& source, const VoString& text)
{
    if (!text.contains("://"))
        return TypedFile(source, text);
    const VoUrl url(text);
    if (!url.isValid() || (url.scheme() != "http" && url.scheme() != "https"))
        throw UsageError(source + ": \"" + text + "\" is not an http or https URL");
    return url;
}

VoString LocationText(const Location& location)
{
    if (const VoFilePath* file = std::get_if<VoFilePath>(&location))
        return PathText(*file);
    return VoString(std::get<VoUrl>(location).toQUrl().toString(QUrl::RemoveUserInfo | QUrl::FullyEncoded));
}

} // namespace vo::tool
