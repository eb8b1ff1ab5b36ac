#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <utility>

/// A URL, kept as the text it was given. Comparisons ignore case, as those of paths do.
///
/// A URL never passes through a path class: those turn "http://host/x" into "http:\host\x". The text constructors are
/// explicit so that a text is not taken for the wrong one of the two.
class VOCORE_EXPORT VoUrl
{
public:
    /// The null URL.
    VoUrl();
    /// Keep a text, without the white space at its ends.
    /// @{
    explicit VoUrl(const VoString& text);
    explicit VoUrl(VoString&& text);
    explicit VoUrl(const char* text);
    /// @}
    /// The fully encoded text of a Qt URL.
    VoUrl(const QUrl& url);
    /// Copies and moves as a value; a moved-from one is null.
    /// @{
    VoUrl(const VoUrl& other);
    VoUrl(VoUrl&& other) noexcept;
    VoUrl& operator=(const VoUrl& other);
    VoUrl& operator=(VoUrl&& other) noexcept;
    /// @}
    ~VoUrl();

    /// The text.
    /// @{
    const VoString& toString() const& noexcept { return m_text; }
    VoString toString() && noexcept { return std::move(m_text); }
    /// @}
    /// The Qt form; characters that must be encoded and are not, such as blanks, are encoded on the way.
    QUrl toQUrl() const;

    /// True when the text is empty.
    bool isNull() const noexcept;
    /// True when the text parses as a URL with a scheme, and with a host unless the scheme is "file".
    bool isValid() const;

    /// The scheme in lower case, without its ":"; empty when there is none.
    VoString scheme() const;
    /// The host in lower case; empty when there is none.
    VoString host() const;
    /// The port that the text names, or the given one.
    int port(int defaultPort = -1) const;
    /// The decoded path, without query and fragment.
    VoString path() const;
    /// The decoded piece behind the last "/" of the path; empty when the path ends with it.
    VoString filename() const;

    /// The text up to and including the last "/" of the path; query and fragment are dropped.
    /// Of "http://host" it is "http://host/".
    VoUrl parent() const;
    /// This URL, without query and fragment, with a relative path below it. Each piece of the path is percent-encoded.
    /// @throws VoInvalidPathFileException with the path, when that is null or rooted, or has an empty, "." or ".."
    /// piece:
    ///        it could lead to another folder or host
    VoUrl appended(const VoFilePath& path) const;

    /// The text, and the URL of a text.
    /// @{
    static VoString Serialize(const VoUrl& url);
    static VoUrl Deserialize(const VoString& text);
    /// @}

    /// Comparison of the texts, without regard to case.
    /// @{
    friend bool operator==(const VoUrl& left, const VoUrl& right) { return left.m_text == right.m_text; }
    friend bool operator!=(const VoUrl& left, const VoUrl& right) { return left.m_text != right.m_text; }
    friend bool operator<(const VoUrl& left, const VoUrl& right) { return left.m_text < right.m_text; }
    friend bool operator<=(const VoUrl& left, const VoUrl& right) { return left.m_text <= right.m_text; }
    friend bool operator>(const VoUrl& left, const VoUrl& right) { return left.m_text > right.m_text; }
    friend bool operator>=(const VoUrl& left, const VoUrl& right) { return left.m_text >= right.m_text; }
    friend bool operator==(const VoUrl& left, const VoString& right) { return left.m_text == right; }
    friend bool operator!=(const VoUrl& left, const VoString& right) { return left.m_text != right; }
    friend bool operator==(const VoString& left, const VoUrl& right) { return left == right.m_text; }
    friend bool operator!=(const VoString& left, const VoUrl& right) { return left != right.m_text; }
    /// @}

    /// Writes the text.
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoUrl& url);

private:
    VoString m_text;
};

/// Hash that agrees with the comparison without regard to case.
template <>
struct VOCORE_EXPORT std::hash<VoUrl>
{
    /// The hash of the folded text.
    std::size_t operator()(const VoUrl& url) const noexcept;
};
