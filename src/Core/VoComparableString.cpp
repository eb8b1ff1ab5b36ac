#include <Core/VoComparableString.h>

#include <Core/NumberText.h>
#include <Core/StringPrivate.h>

#include <algorithm>
#include <ostream>
#include <string_view>

namespace {

using vo::detail::LocalePtr;
using vo::detail::Terminated;

std::string_view BytesOf(const VoComparableString& string)
{
    const std::size_t size = string.size();
    return size ? std::string_view(&string[0], size) : std::string_view("", 0);
}

bool IsExact(VoComparableString::Comparison mode)
{
    return mode == VoComparableString::CaseSensitive;
}

// The first index below the shorter length where the texts differ under the mode, or that length.
std::size_t Mismatch(const VoComparableString& owner, std::string_view a, std::string_view b,
                     VoComparableString::Comparison mode)
{
    const std::size_t common = std::min(a.size(), b.size());
    if (IsExact(mode))
        return vo::detail::MismatchExact(a.data(), b.data(), common);
    return vo::detail::MismatchFolded(a.data(), b.data(), common, *vo::detail::RecordOf(owner.locale()));
}

int Difference(unsigned char a, unsigned char b)
{
    return static_cast<signed char>(a) - static_cast<signed char>(b);
}

int Compare(const VoComparableString& string, std::string_view other, VoComparableString::Comparison mode)
{
    const std::string_view own = BytesOf(string);
    const std::size_t at = Mismatch(string, own, other, mode);
    if (at == std::min(own.size(), other.size()))
        return own.size() == other.size() ? 0 : own.size() < other.size() ? -1 : 1;
    if (IsExact(mode))
        return Difference(static_cast<unsigned char>(own[at]), static_cast<unsigned char>(other[at]));
    const LocalePtr locale = vo::detail::RecordOf(string.locale());
    return Difference(locale->folded(own[at]), locale->folded(other[at]));
}

// Whether the bytes of `string` at `pos`, as many as there are in `part`, equal it.
bool MatchesAt(const VoComparableString& string, std::size_t pos, std::string_view part,
               VoComparableString::Comparison mode)
{
    const std::string_view own = BytesOf(string).substr(pos, part.size());
    return Mismatch(string, own, part, mode) == part.size();
}

bool Equal(const VoComparableString& string, std::string_view other)
{
    return string.size() == other.size() && MatchesAt(string, 0, other, VoComparableString::CaseInsensitive);
}

bool StartsWith(const VoComparableString& string, std::string_view prefix, VoComparableString::Comparison mode)
{
    return prefix.size() <= string.size() && MatchesAt(string, 0, prefix, mode);
}

bool EndsWith(const VoComparableString& string, std::string_view suffix, VoComparableString::Comparison mode)
{
    const std::size_t size = string.size();
    return suffix.size() <= size && MatchesAt(string, size - suffix.size(), suffix, mode);
}

} // namespace

VoComparableString::~VoComparableString() = default;

int VoComparableString::compare(const VoComparableString& other, Comparison mode) const
{
    return Compare(*this, BytesOf(other), mode);
}

int VoComparableString::compare(const char* text, Comparison mode) const
{
    return Compare(*this, Terminated(text), mode);
}

bool VoComparableString::operator==(const char* text) const
{
    return Equal(*this, Terminated(text));
}

bool VoComparableString::operator==(const VoComparableString& other) const
{
    return Equal(*this, BytesOf(other));
}

bool VoComparableString::operator!=(const char* text) const
{
    return !Equal(*this, Terminated(text));
}

bool VoComparableString::operator!=(const VoComparableString& other) const
{
    return !Equal(*this, BytesOf(other));
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
        tokens.pushBack(VoStringView(VoStringView::Private{text.data() + start, end - start, record}));
        start = end + mark.size();
    }
    tokens.pushBack(VoStringView(VoStringView::Private{text.data() + start, text.size() - start, record}));
    return tokens;
}

std::ostream& operator<<(std::ostream& stream, const VoComparableString& string)
{
    return stream << BytesOf(string);
}
