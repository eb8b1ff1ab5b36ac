#include <Download/VoDownloadPolicy.h>

#include <algorithm>

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
