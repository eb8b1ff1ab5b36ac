#include <Core/VoComparableString.h>

#include <Core/VoCaseSensitiveString.h>
#include <Core/detail/NumberText.h>
#include <Core/detail/StringPrivate.h>

#include <cstring>
#include <ostream>
#include <string_view>

namespace {

using vo::detail::BytesOf;
using vo::detail::LocalePtr;
using vo::detail::Terminated;

bool IsExact(VoComparableString::Comparison mode)
{
    return mode == VoComparableString::CaseSensitive;
}

// Whether two texts of one length are equal under the mode, by the locale of `owner`.
bool Matches(const VoComparableString& owner, std::string_view a, std::string_view b,
             VoComparableString::Comparison mode)
{
    if (IsExact(mode))
        return a.empty() || std::memcmp(a.data(), b.data(), a.size()) == 0;
    return vo::detail::EqualFolded(a, b, *vo::detail::RecordOf(owner.locale()));
}

bool StartsWith(const VoComparableString& string, std::string_view prefix, VoComparableString::Comparison mode)
{
    const std::string_view own = BytesOf(string);
    return prefix.size() <= own.size() && Matches(string, own.substr(0, prefix.size()), prefix, mode);
}

bool EndsWith(const VoComparableString& string, std::string_view suffix, VoComparableString::Comparison mode)
{
    const std::string_view own = BytesOf(string);
    return suffix.size() <= own.size() && Matches(string, own.substr(own.size() - suffix.size()), suffix, mode);
}

} // namespace

// On Windows no object of the library would have it otherwise, for those who refer to it.
constexpr std::size_t VoComparableString::invalid_position; // NOLINT(readability-redundant-declaration)

VoComparableString::~VoComparableString() = default;

int VoComparableString::compare(const VoComparableString& other, Comparison mode) const
{
    return vo::detail::Compare(BytesOf(*this), BytesOf(other), IsExact(mode), *vo::detail::RecordOf(locale()));
}

int VoComparableString::compare(const char* text, Comparison mode) const
{
    return compare(VoStringView(text), mode);
}

bool VoComparableString::operator==(const char* text) const
{
    return vo::detail::EqualFolded(BytesOf(*this), Terminated(text), *vo::detail::RecordOf(locale()));
}

bool VoComparableString::operator==(const VoComparableString& other) const
{
    return vo::detail::EqualFolded(BytesOf(*this), BytesOf(other), *vo::detail::RecordOf(locale()));
}

bool VoComparableString::operator!=(const char* text) const
{
    return !vo::detail::EqualFolded(BytesOf(*this), Terminated(text), *vo::detail::RecordOf(locale()));
}

bool VoComparableString::operator!=(const VoComparableString& other) const
{
    return !vo::detail::EqualFolded(BytesOf(*this), BytesOf(other), *vo::detail::RecordOf(locale()));
}

bool VoComparableString::operator<(const VoComparableString& other) const
{
    return compare(other, CaseInsensitive) < 0;
}

bool VoComparableString::operator<=(const VoComparableString& other) const
{
    return compare(other, CaseInsensitive) <= 0;
}

bool VoComparableString::operator>(const VoComparableString& other) const
{
    return compare(other, CaseInsensitive) > 0;
}

bool VoComparableString::operator>=(const VoComparableString& other) const
{
    return compare(other, CaseInsensitive) >= 0;
}

bool VoComparableString::operator==(const VoString& other) const
{
    return *this == static_cast<const VoComparableString&>(other);
}

bool VoComparableString::operator==(const VoStringView& other) const
{
    return *this == static_cast<const VoComparableString&>(other);
}

bool VoComparableString::operator==(const VoCaseSensitiveString& other) const
{
    return *this == static_cast<const VoComparableString&>(other);
}

bool VoComparableString::operator!=(const VoString& other) const
{
    return *this != static_cast<const VoComparableString&>(other);
}

bool VoComparableString::operator!=(const VoStringView& other) const
{
    return *this != static_cast<const VoComparableString&>(other);
}

bool VoComparableString::operator!=(const VoCaseSensitiveString& other) const
{
    return *this != static_cast<const VoComparableString&>(other);
}

bool VoComparableString::isBefore(const char* text) const
{
    return *this < VoStringView(text);
}

bool VoComparableString::isNotAfter(const char* text) const
{
    return *this <= VoStringView(text);
}

bool VoComparableString::isAfter(const char* text) const
{
    return *this > VoStringView(text);
}

bool VoComparableString::isNotBefore(const char* text) const
{
    return *this >= VoStringView(text);
}

bool VoComparableString::isDouble() const
{
    const std::string_view text = vo::detail::Trimmed(BytesOf(*this), *vo::detail::RecordOf(locale()));
    return !text.empty() && vo::detail::ParseDouble(text).consumed == text.size();
}

bool VoComparableString::isInteger() const
{
    const std::string_view text = BytesOf(*this);
    const std::string canonical = vo::detail::IntegerText(vo::detail::ParseInt(text));
    return vo::detail::Trimmed(text, *vo::detail::RecordOf(locale())) == canonical;
}

std::size_t VoComparableString::findBytes(const char* needle, std::size_t length, std::size_t from,
                                          Comparison mode) const
{
    if (length == 0 || from >= size())
        return invalid_position;
    switch (mode) {
    case CaseInsensitive:
        return find_case_insensitive(needle, length, from);
    case CaseSensitive:
        return find_case_sensitive(needle, length, from);
    }
    return invalid_position;
}

std::size_t VoComparableString::find(const VoComparableString& needle) const
{
    return find(needle, 0, CaseInsensitive);
}

std::size_t VoComparableString::find(const VoComparableString& needle, Comparison mode) const
{
    return find(needle, 0, mode);
}

std::size_t VoComparableString::find(const VoComparableString& needle, std::size_t from) const
{
    return find(needle, from, CaseInsensitive);
}

std::size_t VoComparableString::find(const VoComparableString& needle, std::size_t from, Comparison mode) const
{
    const std::string_view bytes = BytesOf(needle);
    return findBytes(bytes.data(), bytes.size(), from, mode);
}

std::size_t VoComparableString::find(const char* needle) const
{
    return find(needle, 0, CaseInsensitive);
}

std::size_t VoComparableString::find(const char* needle, Comparison mode) const
{
    return find(needle, 0, mode);
}

std::size_t VoComparableString::find(const char* needle, std::size_t from) const
{
    return find(needle, from, CaseInsensitive);
}

std::size_t VoComparableString::find(const char* needle, std::size_t from, Comparison mode) const
{
    const std::string_view bytes = Terminated(needle);
    return findBytes(bytes.data(), bytes.size(), from, mode);
}

std::size_t VoComparableString::find(char needle) const
{
    return findBytes(&needle, 1, 0, CaseInsensitive);
}

std::size_t VoComparableString::find(char needle, Comparison mode) const
{
    return findBytes(&needle, 1, 0, mode);
}

std::size_t VoComparableString::find(char needle, std::size_t from) const
{
    return findBytes(&needle, 1, from, CaseInsensitive);
}

std::size_t VoComparableString::find(char needle, std::size_t from, Comparison mode) const
{
    return findBytes(&needle, 1, from, mode);
}

bool VoComparableString::startsWith(const VoComparableString& prefix) const
{
    return StartsWith(*this, BytesOf(prefix), CaseInsensitive);
}

bool VoComparableString::startsWith(const VoComparableString& prefix, Comparison mode) const
{
    return StartsWith(*this, BytesOf(prefix), mode);
}

bool VoComparableString::startsWith(const char* prefix) const
{
    return StartsWith(*this, Terminated(prefix), CaseInsensitive);
}

bool VoComparableString::startsWith(const char* prefix, Comparison mode) const
{
    return StartsWith(*this, Terminated(prefix), mode);
}

bool VoComparableString::endsWith(const VoComparableString& suffix) const
{
    return EndsWith(*this, BytesOf(suffix), CaseInsensitive);
}

bool VoComparableString::endsWith(const VoComparableString& suffix, Comparison mode) const
{
    return EndsWith(*this, BytesOf(suffix), mode);
}

bool VoComparableString::endsWith(const char* suffix) const
{
    return EndsWith(*this, Terminated(suffix), CaseInsensitive);
}

bool VoComparableString::endsWith(const char* suffix, Comparison mode) const
{
    return EndsWith(*this, Terminated(suffix), mode);
}

VoStringView VoComparableString::trimmed() const
{
    LocalePtr record = vo::detail::RecordOf(locale());
    const std::string_view text = vo::detail::Trimmed(BytesOf(*this), *record);
    return VoStringView(VoStringView::Private{text.data(), text.size(), std::move(record)});
}

VoDeque<VoStringView> VoComparableString::tokenize(const VoString& separator) const
{
    return tokenize(separator, CaseInsensitive);
}

VoDeque<VoStringView> VoComparableString::tokenize(const VoString& separator, Comparison mode) const
{
    const std::string_view text = BytesOf(*this);
    const std::string_view mark = BytesOf(separator);
    const LocalePtr record = vo::detail::RecordOf(locale());
    const auto next = [&](std::size_t from) {
        if (mark.empty())
            return std::string_view::npos;
        return IsExact(mode) ? vo::detail::FindExact(text, mark, from)
                             : vo::detail::FindFolded(text, mark, from, *record);
    };

    VoDeque<VoStringView> tokens;
    std::size_t start = 0;
    for (std::size_t end = next(0); end != std::string_view::npos; end = next(start)) {
        tokens.emplaceBack(VoStringView::Private{text.data() + start, end - start, record});
        start = end + mark.size();
    }
    tokens.emplaceBack(VoStringView::Private{text.data() + start, text.size() - start, record});
    return tokens;
}

std::ostream& operator<<(std::ostream& stream, const VoComparableString& string)
{
    return stream << BytesOf(string);
}
