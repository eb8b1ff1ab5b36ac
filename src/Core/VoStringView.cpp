#include <Core/VoStringView.h>

#include <Core/VoThrow.h>
#include <Core/detail/NumberText.h>
#include <Core/detail/StringPrivate.h>

#include <QtCore/QString>

#include <algorithm>
#include <new>

using vo::detail::BytesOf;
using vo::detail::Terminated;

// The viewed string's own record, not looked up again: a view costs no more than a few words.
VoStringView::VoStringView()
    : VoStringView(Private{"", 0, vo::detail::GlobalLocale()})
{
}

VoStringView::VoStringView(const VoString& string)
    : VoStringView(Private{string.m_text->data(), string.size(),
                           string.m_private ? string.m_private->locale : vo::detail::ClassicLocale()})
{
}

VoStringView::VoStringView(const VoString& string, std::size_t pos, std::size_t length)
    : VoStringView(VoStringView(string).substring(pos, length))
{
}

VoStringView::VoStringView(const char* text)
    : VoStringView(Terminated(text).data(), Terminated(text).size())
{
}

VoStringView::VoStringView(const char* bytes, std::size_t length)
    : VoStringView(Private{bytes ? bytes : "", bytes ? length : 0, vo::detail::GlobalLocale()})
{
}

VoStringView::VoStringView(Private&& state) noexcept
{
    static_assert(sizeof(Private) <= sizeof(m_private) && alignof(Private) <= alignof(void*));
    ::new (static_cast<void*>(m_private)) Private(std::move(state));
}

VoStringView::VoStringView(const VoStringView& other)
    : VoStringView(Private(other.state()))
{
}

VoStringView::VoStringView(VoStringView&& other) noexcept
    : VoStringView(std::exchange(other.state(), Private{"", 0, vo::detail::ClassicLocale()}))
{
}

VoStringView::~VoStringView()
{
    state().~Private();
}

VoStringView& VoStringView::operator=(const VoStringView& other)
{
    if (this != &other)
        state() = other.state();
    return *this;
}

VoStringView& VoStringView::operator=(VoStringView&& other) noexcept
{
    if (this != &other)
        state() = std::exchange(other.state(), Private{"", 0, vo::detail::ClassicLocale()});
    return *this;
}

VoStringView::Private& VoStringView::state() noexcept
{
    return *std::launder(reinterpret_cast<Private*>(m_private));
}

const VoStringView::Private& VoStringView::state() const noexcept
{
    return *std::launder(reinterpret_cast<const Private*>(m_private));
}

std::size_t VoStringView::size() const
{
    return state().length;
}

const char* VoStringView::begin() const noexcept
{
    return state().bytes;
}

const char* VoStringView::end() const noexcept
{
    return state().bytes + state().length;
}

const char& VoStringView::at(std::size_t index) const
{
    if (index >= state().length)
        vo::detail::ThrowIndexOutOfBounds(index, state().length);
    return state().bytes[index];
}

const char& VoStringView::operator[](std::size_t index) const
{
    return state().bytes[index];
}

const std::locale& VoStringView::locale() const
{
    return state().locale->locale;
}

int VoStringView::compare(const VoComparableString& other, Comparison mode) const
{
    return vo::detail::Compare(state().text(), BytesOf(other), mode == CaseSensitive, *state().locale);
}

bool VoStringView::operator==(const char* text) const
{
    return vo::detail::EqualFolded(state().text(), Terminated(text), *state().locale);
}

bool VoStringView::operator==(const VoComparableString& other) const
{
    return vo::detail::EqualFolded(state().text(), BytesOf(other), *state().locale);
}

bool VoStringView::operator!=(const char* text) const
{
    return !vo::detail::EqualFolded(state().text(), Terminated(text), *state().locale);
}

bool VoStringView::operator!=(const VoComparableString& other) const
{
    return !vo::detail::EqualFolded(state().text(), BytesOf(other), *state().locale);
}

VoStringView VoStringView::substring(std::size_t pos) const
{
    return substring(pos, npos);
}

VoStringView VoStringView::substring(std::size_t pos, std::size_t length) const&
{
    const Private& viewed = state();
    if (pos > viewed.length)
        vo::detail::ThrowIndexOutOfBounds(pos, viewed.length);
    return VoStringView(Private{viewed.bytes + pos, std::min(length, viewed.length - pos), viewed.locale});
}

std::size_t VoStringView::findLastOf(char c, std::size_t from) const
{
    const std::size_t found = state().text().rfind(c, from);
    if (found == std::string_view::npos)
        vo::detail::ThrowNotFound(&c, 1);
    return found;
}

int VoStringView::toInt() const
{
    return vo::detail::ParseInt(state().text());
}

QString VoStringView::toQString() const
{
    return toString().toQString();
}

VoString VoStringView::toString() const
{
    return VoString(*this);
}

std::size_t VoStringView::find_case_insensitive(const char* needle, std::size_t length, std::size_t from) const
{
    return vo::detail::FindFolded(state().text(), {needle, length}, from, *state().locale);
}

std::size_t VoStringView::find_case_sensitive(const char* needle, std::size_t length, std::size_t from) const
{
    return vo::detail::FindExact(state().text(), {needle, length}, from);
}

std::size_t std::hash<VoStringView>::operator()(const VoStringView& view) const noexcept
{
    return vo::detail::HashFolded(BytesOf(view), *vo::detail::RecordOf(view.locale()));
}

// On Windows no object of the library would have it otherwise, for those who refer to it.
constexpr std::size_t VoStringView::npos; // NOLINT(readability-redundant-declaration)
