#include <Download/VoDownloadPolicy.h>

#include <Core/VoException.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

bool IsToken(const VoString& name)
{
    constexpr std::string_view others = "!#$%&'*+-.^_`|~";
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), [&](char c) {
        return VoString::IsLetter(c) || (c >= '0' && c <= '9') || others.find(c) != std::string_view::npos;
    });
}

bool IsOurs(const VoString& name)
{
    constexpr const char* ours[] = {"Accept-Encoding",
                                    "Cache-Control",
                                    "Connection",
                                    "Content-Length",
                                    "Host",
                                    "If-None-Match",
                                    "Pragma",
                                    "Range",
                                    "TE",
                                    "Trailer",
                                    "Transfer-Encoding",
                                    "Upgrade"};
    return std::any_of(std::begin(ours), std::end(ours), [&](const char* own) { return name == own; });
}

// A line end would begin another header.
bool HasControls(const VoString& value)
{
    return std::any_of(value.begin(), value.end(),
                       [](char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7f; });
}

} // namespace

void VoDownloadPolicy::setHeader(const VoString& name, const VoString& value)
{
    if (!IsToken(name))
        throw VoInvalidParameterException("Invalid header name: " + name);
    if (IsOurs(name))
        throw VoInvalidParameterException("Header is the download service's own: " + name);
    if (HasControls(value))
        throw VoInvalidParameterException("Invalid value of header: " + name);
    for (VoPair<VoString, VoString>& header : m_headers) {
        if (header.first == name) {
            header.second = value;
            return;
        }
    }
    m_headers.pushBack(VoPair<VoString, VoString>(name, value));
}

VoTimeDuration VoDownloadPolicy::delayBefore(unsigned retry, double jitter) const noexcept
{
    constexpr unsigned largestShift = 40; // beyond that every delay is longer than the longest
    double seconds = firstDelay.seconds();
    for (unsigned i = 1; i < std::min(retry, largestShift); ++i)
        seconds *= 2;
    seconds = std::min(seconds, longestDelay.seconds());
    seconds *= 1 - 0.5 * std::clamp(jitter, 0.0, 1.0);
    return VoTimeDuration::FromSeconds(std::max(seconds, 0.0));
}

VoDeque<VoUrl> VoDownloadPolicy::locations(const VoUrl& url) const
{
    VoDeque<VoUrl> places;
    places.pushBack(url);
    const std::string& text = url.toString().toStdString();
    const std::string& beginning = mirrored.toString().toStdString();
    if (beginning.empty() || text.compare(0, beginning.size(), beginning) != 0)
        return places;
    // "http://host" must not be taken for the beginning of "http://host.example".
    const bool atBoundary = beginning.back() == '/' || text.size() == beginning.size() || text[beginning.size()] == '/';
    if (!atBoundary)
        return places;
    for (const VoUrl& mirror : mirrors) {
        std::string rest = text.substr(beginning.size());
        std::string base = mirror.toString().toStdString();
        if (!base.empty() && base.back() == '/' && !rest.empty() && rest.front() == '/')
            base.pop_back();
        else if (!base.empty() && base.back() != '/' && !rest.empty() && rest.front() != '/')
            base.push_back('/');
        places.pushBack(VoUrl(VoString(base + rest)));
    }
    return places;
}
