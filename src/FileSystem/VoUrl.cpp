#include <FileSystem/VoUrl.h>

#include <Core/VoFileException.h>
#include <Core/detail/Escapes.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/PathText.h>

#include <QtCore/QString>
#include <QtCore/QUrl>

#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace {

VoString Trimmed(VoString text)
{
    text.trim();
    return text;
}

bool IsUnreserved(char byte) noexcept
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           byte == '-' || byte == '.' || byte == '_' || byte == '~';
}

void AppendEncoded(std::string& text, std::string_view piece)
{
    for (const char byte : piece) {
        if (IsUnreserved(byte))
            text += byte;
        else
            vo::detail::AppendPercent(text, byte);
    }
}

// The text up to and including the last "/" of its path; a "/" is added behind a host without a path.
std::string ParentText(std::string_view text)
{
    text = text.substr(0, text.find_first_of("?#"));
    const std::size_t mark = text.find("://");
    const std::size_t authority = mark == std::string_view::npos ? 0 : mark + 3;
    const std::size_t slash = text.rfind('/');
    if (slash != std::string_view::npos && slash >= authority)
        return std::string(text.substr(0, slash + 1));
    return mark == std::string_view::npos ? std::string() : std::string(text) + "/";
}

// The text without query and fragment, ending with "/".
std::string FolderText(std::string_view text)
{
    std::string folder(text.substr(0, text.find_first_of("?#")));
    if (folder.empty() || folder.back() != '/')
        folder += '/';
    return folder;
}

} // namespace

VoUrl::VoUrl() = default;
VoUrl::VoUrl(const VoString& text)
    : m_text(Trimmed(text))
{
}
VoUrl::VoUrl(VoString&& text)
    : m_text(Trimmed(std::move(text)))
{
}
VoUrl::VoUrl(const char* text)
    : m_text(Trimmed(VoString(text)))
{
}
VoUrl::VoUrl(const QUrl& url)
    : m_text(url.toString(QUrl::FullyEncoded))
{
}
VoUrl::VoUrl(const VoUrl& other) = default;
VoUrl::VoUrl(VoUrl&& other) noexcept = default;
VoUrl& VoUrl::operator=(const VoUrl& other) = default;
VoUrl& VoUrl::operator=(VoUrl&& other) noexcept = default;
VoUrl::~VoUrl() = default;

QUrl VoUrl::toQUrl() const
{
    return QUrl(m_text.toQString(), QUrl::TolerantMode);
}

bool VoUrl::isNull() const noexcept
{
    return m_text.isEmpty();
}

bool VoUrl::isValid() const
{
    const QUrl url = toQUrl();
    if (!url.isValid() || url.scheme().isEmpty())
        return false;
    return url.isLocalFile() || !url.host().isEmpty();
}

VoString VoUrl::scheme() const
{
    return VoString(toQUrl().scheme());
}

VoString VoUrl::host() const
{
    return VoString(toQUrl().host());
}

int VoUrl::port(int defaultPort) const
{
    return toQUrl().port(defaultPort);
}

VoString VoUrl::path() const
{
    return VoString(toQUrl().path(QUrl::FullyDecoded));
}

VoString VoUrl::filename() const
{
    return VoString(toQUrl().fileName(QUrl::FullyDecoded));
}

VoUrl VoUrl::parent() const
{
    return VoUrl(VoString(ParentText(m_text.toStdString())));
}

VoUrl VoUrl::appended(const VoFilePath& path) const
{
    const std::string_view pieces = vo::detail::Bytes(path.path());
    if (path.isNull() || path.isRooted())
        throw VoInvalidPathFileException(path);
    std::string text = FolderText(m_text.toStdString());
    for (std::size_t begin = 0; begin < pieces.size();) {
        const std::size_t end = std::min(pieces.find(vo::detail::PathSeparator, begin), pieces.size());
        const std::string_view piece = pieces.substr(begin, end - begin);
        if (piece.empty() || piece == "." || piece == "..")
            throw VoInvalidPathFileException(path);
        AppendEncoded(text, piece);
        if (end < pieces.size())
            text += '/';
        begin = end + 1;
    }
    return VoUrl(VoString(std::move(text)));
}

VoString VoUrl::Serialize(const VoUrl& url)
{
    return url.m_text;
}

VoUrl VoUrl::Deserialize(const VoString& text)
{
    return VoUrl(text);
}

std::ostream& operator<<(std::ostream& stream, const VoUrl& url)
{
    return stream << url.m_text;
}

std::size_t std::hash<VoUrl>::operator()(const VoUrl& url) const noexcept
{
    return std::hash<VoString>()(url.toString());
}
