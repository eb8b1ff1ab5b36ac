#include <Core/VoString.h>

#include <Core/VoBase64.h>
#include <Core/VoException.h>
#include <Core/VoHostTypes.h>
#include <Core/VoThrow.h>
#include <Core/VoUUID.h>
#include <Core/detail/NumberText.h>
#include <Core/detail/RandomEngine.h>
#include <Core/detail/StringPrivate.h>

#include <QtCore/QString>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <stdexcept>

namespace {

using vo::detail::BytesOf;
using vo::detail::LocalePtr;
using vo::detail::LocaleRecord;
using vo::detail::Terminated;

// What strings without a private object share: those that are empty and of the classic locale. Never destroyed, since
// strings are made and dropped before and after main.
struct EmptyState
{
    std::string text;
    LocalePtr locale = vo::detail::ClassicLocale();
};

EmptyState& SharedEmptyState()
{
    static EmptyState& state = *new EmptyState;
    return state;
}

// Does what takes memory for a number of bytes that the caller named.
template <typename Function>
auto Allocated(Function&& function)
{
    try {
        return function();
    } catch (const std::bad_alloc&) {
        vo::detail::ThrowBadAlloc("bytes of a string");
    } catch (const std::length_error&) {
        vo::detail::ThrowBadAlloc("string length");
    }
}

std::string Repeated(char c, std::size_t count)
{
    return Allocated([&] { return std::string(count, c); });
}

std::string Copied(const char* bytes, std::size_t length)
{
    return bytes && length ? Allocated([&] { return std::string(bytes, length); }) : std::string();
}

std::string ToUtf8(QStringView text)
{
    return text.toUtf8().toStdString();
}

QString FromUtf8(std::string_view text)
{
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        vo::detail::ThrowBadAlloc("text too long for a QString");
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

std::string_view UpToZero(std::string_view text)
{
    return text.substr(0, text.find('\0'));
}

// The text after VoString::replace(), or nothing when it does not change. Made apart from the text, which the arguments
// may be part of.
std::optional<std::string> ReplacedBytes(std::string_view text, std::string_view from, std::string_view to,
                                         VoString::Comparison mode, const LocaleRecord& record)
{
    if (from.empty() || from.size() > text.size())
        return std::nullopt;
    const std::string_view replacement = UpToZero(to);
    const auto next = [&](std::size_t start) {
        return mode == VoString::CaseSensitive ? vo::detail::FindExact(text, from, start)
                                               : vo::detail::FindFolded(text, from, start, record);
    };
    std::size_t match = next(0);
    if (match == std::string_view::npos)
        return std::nullopt;
    std::string result;
    result.reserve(text.size() + replacement.size());
    std::size_t start = 0;
    for (; match != std::string_view::npos; match = next(start)) {
        result.append(text, start, match - start).append(replacement);
        start = match + from.size();
    }
    result.append(text, start);
    return result;
}

// The alphabet of each VoString::RandomType, by its value.
constexpr std::string_view Alphabets[] = {
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789",
    "0123456789",
    "abcdefghijklmnopqrstuvwxyz",
    "ABCDEFGHIJKLMNOPQRSTUVWXYZ",
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ",
};

std::string_view AlphabetOf(VoString::RandomType type)
{
    const auto index = static_cast<std::size_t>(type);
    return index < std::size(Alphabets) ? Alphabets[index] : Alphabets[VoString::Alphanumeric];
}

void AppendUtf16(QString& text, wchar_t c)
{
    const auto code = static_cast<std::uint32_t>(c); // NOLINT(bugprone-signed-char-misuse): a wide one is of 32 bits
    if (code <= 0xffff)
        text.append(QChar(static_cast<ushort>(code)));
    else if (code <= QChar::LastValidCodePoint)
        text.append(QChar(QChar::highSurrogate(code))).append(QChar(QChar::lowSurrogate(code)));
    else
        text.append(QChar(QChar::ReplacementCharacter));
}

} // namespace

VoString::VoString()
    : VoString(std::string())
{
}

VoString::VoString(const char* text)
    : VoString(std::string(Terminated(text)))
{
}

VoString::VoString(const char* bytes, std::size_t length)
    : VoString(Copied(bytes, length))
{
}

VoString::VoString(const std::string& bytes)
    : VoString(std::string(bytes))
{
}

VoString::VoString(std::string&& bytes)
    : m_text(&SharedEmptyState().text)
{
    LocalePtr locale = vo::detail::GlobalLocale();
    if (bytes.empty() && locale == SharedEmptyState().locale)
        return;
    m_private.reset(new Private{std::move(bytes), std::move(locale)});
    m_text = &m_private->bytes;
}

VoString::VoString(std::unique_ptr<Private> state) noexcept
    : m_private(std::move(state))
    , m_text(&m_private->bytes)
{
}

VoString::VoString(char c, std::size_t count)
    : VoString(Repeated(c, count))
{
}

VoString::VoString(const QString& text)
    : VoString(ToUtf8(text))
{
}

#if QT_VERSION_MAJOR < 6
VoString::VoString(const QStringRef& text)
    : VoString(ToUtf8(text))
{
}
#endif

VoString::VoString(const QStringView& text)
    : VoString(ToUtf8(text))
{
}

VoString::VoString(const YString& text)
    : VoString(text.toStdString())
{
}

VoString::VoString(const TempString& text)
    : VoString(text.c_str())
{
}

VoString::VoString(const VoStringView& view)
    : VoString(std::string(view.state().text()))
{
}

VoString::VoString(const VoUUID& uuid)
    : VoString(uuid.toString().toStdString())
{
}

VoString::VoString(int value)
    : VoString(vo::detail::IntegerText(value))
{
}

VoString::VoString(long long value)
    : VoString(vo::detail::IntegerText(value))
{
}

VoString::VoString(unsigned long long value)
    : VoString(vo::detail::UnsignedText(value))
{
}

VoString::VoString(double value)
    : VoString(vo::detail::FixedText(value))
{
}

VoString::VoString(const VoString& other)
    : VoComparableString(other)
    , m_private(other.m_private ? new Private(*other.m_private) : nullptr)
    , m_text(m_private ? &m_private->bytes : other.m_text)
{
}

VoString::VoString(VoString&& other) noexcept
    : VoComparableString(other)
    , m_private(std::move(other.m_private))
    , m_text(std::exchange(other.m_text, &SharedEmptyState().text))
{
}

VoString::~VoString() = default;

VoString& VoString::operator=(const VoString& other)
{
    if (this == &other || (!m_private && !other.m_private))
        return *this;
    Private& mine = own();
    mine.bytes = *other.m_text;
    mine.locale = other.m_private ? other.m_private->locale : SharedEmptyState().locale;
    return *this;
}

VoString& VoString::operator=(VoString&& other) noexcept
{
    if (this == &other)
        return *this;
    m_private = std::move(other.m_private);
    m_text = std::exchange(other.m_text, &SharedEmptyState().text);
    return *this;
}

VoString& VoString::operator=(const char* text)
{
    const std::string_view bytes = Terminated(text);
    if (!bytes.empty() || !isEmpty())
        own().bytes.assign(bytes.data(), bytes.size());
    return *this;
}

void VoString::swap(VoString& other) noexcept
{
    std::swap(m_private, other.m_private);
    std::swap(m_text, other.m_text);
}

VoString::Private& VoString::own()
{
    if (!m_private) {
        m_private.reset(new Private{std::string(), SharedEmptyState().locale});
        m_text = &m_private->bytes;
    }
    return *m_private;
}

const LocaleRecord& VoString::record() const
{
    return m_private ? *m_private->locale : *SharedEmptyState().locale;
}

const char& VoString::at(std::size_t index) const
{
    if (index >= size())
        vo::detail::ThrowIndexOutOfBounds(index, size());
    return (*this)[index];
}

char& VoString::at(std::size_t index)
{
    if (index >= size())
        vo::detail::ThrowIndexOutOfBounds(index, size());
    return (*this)[index];
}

const std::locale& VoString::locale() const
{
    return record().locale;
}

int VoString::compare(const VoComparableString& other, Comparison mode) const
{
    return vo::detail::Compare(*m_text, BytesOf(other), mode == CaseSensitive, record());
}

bool VoString::operator==(const char* text) const
{
    return vo::detail::EqualFolded(*m_text, Terminated(text), record());
}

bool VoString::operator==(const VoComparableString& other) const
{
    return vo::detail::EqualFolded(*m_text, BytesOf(other), record());
}

bool VoString::operator!=(const char* text) const
{
    return !vo::detail::EqualFolded(*m_text, Terminated(text), record());
}

bool VoString::operator!=(const VoComparableString& other) const
{
    return !vo::detail::EqualFolded(*m_text, BytesOf(other), record());
}

VoStringView VoString::substring(std::size_t pos) const&
{
    return substring(pos, VoStringView::npos);
}

VoStringView VoString::substring(std::size_t pos, std::size_t length) const&
{
    return VoStringView(*this, pos, length);
}

VoString VoString::substring(std::size_t pos) const&&
{
    return owning(substring(pos));
}

VoString VoString::substring(std::size_t pos, std::size_t length) const&&
{
    return owning(substring(pos, length));
}

VoStringView VoString::trimmed() const&
{
    return VoComparableString::trimmed();
}

VoString VoString::trimmed() const&&
{
    return owning(trimmed());
}

VoDeque<VoStringView> VoString::tokenize(const VoString& separator) const&
{
    return VoComparableString::tokenize(separator);
}

VoDeque<VoStringView> VoString::tokenize(const VoString& separator, Comparison mode) const&
{
    return VoComparableString::tokenize(separator, mode);
}

VoDeque<VoString> VoString::tokenize(const VoString& separator) const&&
{
    return static_cast<const VoString&&>(*this).tokenize(separator, CaseInsensitive);
}

VoDeque<VoString> VoString::tokenize(const VoString& separator, Comparison mode) const&&
{
    VoDeque<VoString> pieces;
    for (const VoStringView& piece : tokenize(separator, mode))
        pieces.pushBack(owning(piece));
    return pieces;
}

VoString VoString::owning(const VoStringView& view) const
{
    return withLocaleOf(*this, std::string(view.state().text()));
}

std::size_t VoString::copy(char* dest, std::size_t length, std::size_t pos) const
{
    if (pos > size())
        vo::detail::ThrowIndexOutOfBounds(pos, size());
    return m_text->copy(dest, length, pos);
}

VoString VoString::withLocaleOf(const VoString& source, std::string&& bytes)
{
    const LocalePtr& locale = source.m_private ? source.m_private->locale : SharedEmptyState().locale;
    return VoString(std::unique_ptr<Private>(new Private{std::move(bytes), locale}));
}

VoString VoString::joined(const VoString& source, const char* a, std::size_t aLength, const char* b,
                          std::size_t bLength)
{
    std::string bytes;
    bytes.reserve(aLength + bLength);
    bytes.append(a, aLength).append(b, bLength);
    return withLocaleOf(source, std::move(bytes));
}

VoString& VoString::appendBytes(const char* bytes, std::size_t length)
{
    if (length != 0)
        own().bytes.append(bytes, length);
    return *this;
}

VoString& VoString::appendByte(char c)
{
    own().bytes.push_back(c);
    return *this;
}

VoString& VoString::append(const VoString& text)
{
    return appendBytes(text.m_text->data(), text.size());
}

VoString& VoString::append(const VoStringView& text)
{
    return appendBytes(text.state().bytes, text.state().length);
}

VoString& VoString::append(const char* text)
{
    const std::string_view bytes = Terminated(text);
    return appendBytes(bytes.data(), bytes.size());
}

VoString& VoString::concat(const VoString& text)
{
    return append(text);
}

VoString& VoString::operator+=(const VoString& text)
{
    return append(text);
}

VoString& VoString::operator+=(const VoStringView& text)
{
    return append(text);
}

VoString& VoString::operator+=(const char* text)
{
    return append(text);
}

void VoString::resize(std::size_t size, char fill)
{
    if (size != this->size())
        Allocated([&] { own().bytes.resize(size, fill); });
}

void VoString::replace(const VoString& from, const VoString& to, Comparison mode)
{
    std::optional<std::string> bytes = ReplacedBytes(*m_text, *from.m_text, *to.m_text, mode, record());
    if (bytes)
        m_private->bytes = std::move(*bytes);
}

void VoString::trim()
{
    if (isEmpty())
        return;
    std::string& bytes = m_private->bytes;
    const std::string_view kept = vo::detail::Trimmed(bytes, record());
    const auto start = static_cast<std::size_t>(kept.data() - bytes.data());
    bytes.resize(start + kept.size());
    bytes.erase(0, start);
}

void VoString::spaceCapitals()
{
    if (size() <= 1)
        return;
    const LocaleRecord& rules = record();
    const std::string& bytes = m_private->bytes;
    std::string spaced(1, bytes[0]);
    spaced.reserve(bytes.size() + bytes.size() / 4);
    for (std::size_t i = 1; i < bytes.size(); ++i) {
        if (rules.isUpper(bytes[i]) && !rules.isSpace(bytes[i - 1]))
            spaced += ' ';
        spaced += bytes[i];
    }
    m_private->bytes = std::move(spaced);
}

VoString VoString::operator+(const VoString& text) const&
{
    return joined(*this, m_text->data(), size(), text.m_text->data(), text.size());
}

VoString VoString::operator+(const VoString& text) &&
{
    return std::move(append(text));
}

VoString VoString::operator+(const VoStringView& text) const&
{
    return joined(*this, m_text->data(), size(), text.state().bytes, text.size());
}

VoString VoString::operator+(const VoStringView& text) &&
{
    return std::move(append(text));
}

VoString VoString::operator+(const char* text) const&
{
    const std::string_view bytes = Terminated(text);
    return joined(*this, m_text->data(), size(), bytes.data(), bytes.size());
}

VoString VoString::operator+(const char* text) &&
{
    return std::move(append(text));
}

VoString operator+(const char* text, const VoString& string)
{
    const std::string_view bytes = Terminated(text);
    return VoString::joined(string, bytes.data(), bytes.size(), string.m_text->data(), string.size());
}

VoString VoString::replaced(const VoString& from, const VoString& to) const
{
    return replaced(from, to, CaseInsensitive);
}

VoString VoString::replaced(const VoString& from, const VoString& to, Comparison mode) const
{
    std::optional<std::string> bytes = ReplacedBytes(*m_text, *from.m_text, *to.m_text, mode, record());
    return bytes ? withLocaleOf(*this, std::move(*bytes)) : *this;
}

VoString VoString::spacedCapitals() const
{
    VoString result(*this);
    result.spaceCapitals();
    return result;
}

bool VoString::equal(const VoString& other, Comparison mode) const
{
    return size() == other.size() && startsWith(other, mode);
}

bool VoString::equal(const VoStringView& other, Comparison mode) const
{
    return size() == other.size() && startsWith(other, mode);
}

bool VoString::equal(const char* other, Comparison mode) const
{
    return size() == Terminated(other).size() && startsWith(other, mode);
}

bool VoString::lessThan(const VoComparableString& other, Comparison mode) const
{
    return compare(other, mode) < 0;
}

bool VoString::contains(const VoString& needle) const
{
    return find(needle) != invalid_position;
}

bool VoString::contains(const VoString& needle, Comparison mode) const
{
    return find(needle, mode) != invalid_position;
}

bool VoString::contains(const VoComparableString& needle) const
{
    return find(needle) != invalid_position;
}

bool VoString::contains(const VoComparableString& needle, Comparison mode) const
{
    return find(needle, mode) != invalid_position;
}

bool VoString::contains(const char* needle) const
{
    return find(needle) != invalid_position;
}

bool VoString::contains(const char* needle, Comparison mode) const
{
    return find(needle, mode) != invalid_position;
}

std::size_t VoString::findLastOf(char c) const
{
    return findLastOf(c, std::string::npos);
}

std::size_t VoString::findLastOf(char c, std::size_t from) const
{
    const std::size_t found = m_text->rfind(c, from);
    if (found == std::string::npos)
        vo::detail::ThrowNotFound(&c, 1);
    return found;
}

bool VoString::containsWhiteSpace() const
{
    const LocaleRecord& rules = record();
    return std::any_of(m_text->begin(), m_text->end(), [&](char c) { return rules.isSpace(c); });
}

std::string& VoString::toStdString()
{
    return own().bytes;
}

QString VoString::toQString() const
{
    return FromUtf8(UpToZero(*m_text));
}

VoString::operator QString() const
{
    return toQString();
}

std::wstring VoString::toWString() const
{
    const QString text = FromUtf8(*m_text);
    const ushort* units = text.utf16();
    return std::wstring(units, units + text.size());
}

YString VoString::toYString() const
{
    return YString(*m_text);
}

VoString::operator YString() const
{
    return YString(*m_text);
}

VoString::operator PrintfArg() const
{
    return PrintfArg(c_str());
}

int VoString::toInt() const
{
    return vo::detail::ParseInt(*m_text);
}

double VoString::toDouble() const
{
    return vo::detail::ParseDouble(*m_text).value;
}

std::size_t VoString::toSizeT() const
{
    return vo::detail::ParseSize(*m_text);
}

std::int64_t VoString::requireInteger() const
{
    const auto value = vo::detail::ParseInteger(*m_text);
    if (!value)
        throw VoInvalidParameterException("Not a whole number of 64 bits: " + *this);
    return *value;
}

double VoString::requireDouble() const
{
    // What else the C library reads as a number: white space, a plus sign, hexadecimal digits, "inf" and "nan".
    const bool isDecimal = !isEmpty() && m_text->find_first_not_of("0123456789.-+eE") == std::string::npos;
    const vo::detail::ParsedDouble parsed =
        isDecimal && m_text->front() != '+' ? vo::detail::ParseDouble(*m_text) : vo::detail::ParsedDouble();
    if (parsed.consumed == 0 || parsed.consumed != size() || !std::isfinite(parsed.value))
        throw VoInvalidParameterException("Not a finite number: " + *this);
    return parsed.value;
}

VoString VoString::ToString(double value)
{
    return VoString(vo::detail::GeneralText(value));
}

VoString VoString::Base64(double value)
{
    return VoStringDoubleBase64Converter().convert(value);
}

VoString VoString::NewLine()
{
    return VoString("\r\n");
}

VoString VoString::Pad(int value, int width)
{
    std::string text = vo::detail::IntegerText(std::abs(static_cast<long long>(value)));
    if (width > 0 && text.size() < static_cast<std::size_t>(width))
        text.insert(0, static_cast<std::size_t>(width) - text.size(), '0');
    if (value < 0)
        text.insert(0, 1, '-');
    return VoString(std::move(text));
}

VoString VoString::Random(std::size_t length, RandomType type)
{
    const std::string_view alphabet = AlphabetOf(type);
    const auto last = static_cast<long long>(alphabet.size()) - 1;
    std::string text = Repeated('\0', length);
    for (char& c : text)
        c = alphabet[static_cast<std::size_t>(vo::detail::RandomInteger(0, last))];
    return VoString(std::move(text));
}

VoString VoString::FromWString(const std::wstring& text)
{
    QString units;
    for (const wchar_t c : text)
        AppendUtf16(units, c);
    return VoString(units);
}

bool VoString::IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool VoString::IsWhiteSpace(char c)
{
    return vo::detail::GlobalLocale()->isSpace(c);
}

std::size_t VoString::find_case_insensitive(const char* needle, std::size_t length, std::size_t from) const
{
    return vo::detail::FindFolded(*m_text, {needle, length}, from, record());
}

std::size_t VoString::find_case_sensitive(const char* needle, std::size_t length, std::size_t from) const
{
    return vo::detail::FindExact(*m_text, {needle, length}, from);
}

std::size_t std::hash<VoString>::operator()(const VoString& string) const noexcept
{
    return vo::detail::HashFolded(string.toStdString(), *vo::detail::RecordOf(string.locale()));
}
