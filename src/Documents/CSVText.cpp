#include <Documents/CSVText.h>

#include <Core/NumberText.h>
#include <Documents/VoCSVFormat.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

namespace vo::detail {
namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::string_view WithoutBlanks(std::string_view text)
{
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

// The word in lower case.
bool IsWord(std::string_view text, std::string_view word)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
    return text.size() == word.size() &&
           std::equal(text.begin(), text.end(), word.begin(), [&](char a, char b) { return lower(a) == b; });
}

// "007" and "-0" are numbers too, but would not come back as they are.
std::optional<int> PlainInteger(std::string_view text)
{
    const std::string_view digits = text.substr(text.front() == '-' ? 1 : 0);
    if (digits.empty() || (digits.front() == '0' && text.size() > 1))
        return std::nullopt;
    int value = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value);
    if (parsed.ec != std::errc() || parsed.ptr != text.data() + text.size())
        return std::nullopt;
    return value;
}

// A decimal number as a whole; one too large for a double is none, so that no digit of it is lost.
std::optional<double> Number(std::string_view text)
{
    std::string_view unsignedText = text;
    if (unsignedText.front() == '+' || unsignedText.front() == '-')
        unsignedText.remove_prefix(1);
    if (unsignedText.empty())
        return std::nullopt;
    const bool isWord = IsWord(unsignedText, "inf") || IsWord(unsignedText, "infinity") || IsWord(unsignedText, "nan");
    if (!isWord && !IsDigit(unsignedText.front()) && unsignedText.front() != '.')
        return std::nullopt;
    if (unsignedText.size() > 1 && (unsignedText[1] == 'x' || unsignedText[1] == 'X'))
        return std::nullopt;
    const ParsedDouble parsed = ParseDouble(text);
    if (parsed.consumed != text.size() || (!isWord && !std::isfinite(parsed.value)))
        return std::nullopt;
    return parsed.value;
}

bool MayBeValue(char first)
{
    return IsDigit(first) || std::string_view("+-.tTfFiInN").find(first) != std::string_view::npos;
}

// Calls @p use with the value that the field stands for, nothing for a text.
template <typename Use>
auto WithValue(std::string_view field, Use&& use)
{
    const std::string_view text = WithoutBlanks(field);
    if (text.empty() || !MayBeValue(text.front()))
        return use(nullptr);
    if (const auto integer = PlainInteger(text))
        return use(&*integer);
    if (const auto number = Number(text))
        return use(&*number);
    const bool isTrue = IsWord(text, "true");
    if (isTrue || IsWord(text, "false"))
        return use(&isTrue);
    return use(nullptr);
}

struct TypeOf
{
    VoVariant::Type operator()(const int*) const { return VoVariant::Integer; }
    VoVariant::Type operator()(const double*) const { return VoVariant::Double; }
    VoVariant::Type operator()(const bool*) const { return VoVariant::Boolean; }
    VoVariant::Type operator()(std::nullptr_t) const { return VoVariant::String; }
};

struct ValueOf
{
    std::string_view field;

    template <typename T>
    VoVariant operator()(const T* value) const
    {
        return VoVariant(*value);
    }
    VoVariant operator()(std::nullptr_t) const { return VoVariant(VoString(field.data(), field.size())); }
};

} // namespace

VoVariant::Type DetectedType(std::string_view field)
{
    return field.empty() ? VoVariant::Null : WithValue(field, TypeOf());
}

VoVariant DetectedValue(std::string_view field)
{
    return field.empty() ? VoVariant() : WithValue(field, ValueOf{field});
}

void RequireValid(const VoCSVFormat& format)
{
    const std::string& separator = format.separator.toStdString();
    const auto isLineBreak = [](char c) { return c == '\r' || c == '\n'; };
    const bool isSeparator = !separator.empty() && separator.find(format.quote) == std::string::npos &&
                             separator.find_first_of("\r\n") == std::string::npos;
    if (!isSeparator || isLineBreak(format.quote))
        throw VoInvalidParameterException("Invalid CSV format");
}

} // namespace vo::detail
