#include <Documents/detail/CSVText.h>

#include <Core/detail/NumberText.h>
#include <Documents/VoCSVFormat.h>
#include <Documents/VoCSVReader.h>
#include <Documents/VoCSVValues.h>
#include <Documents/detail/TextEncoding.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace vo::detail {
namespace {

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::string_view WithoutBlanks(std::string_view text)
{
    while (!text.empty() && IsCSVBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsCSVBlank(text.back()))
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

// "-0" is a number too, but would not come back as it is.
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

// The digits of a decimal number from the first to the last that is not zero.
std::string SignificantDigits(std::string_view number)
{
    std::string digits;
    for (const char c : number.substr(0, number.find_first_of("eE"))) {
        if (IsDigit(c) && (c != '0' || !digits.empty()))
            digits += c;
    }
    digits.erase(digits.find_last_not_of('0') + 1);
    return digits;
}

// Whether the value, written with as many digits as the text that it was read from, has the same. That holds for what
// was printed from a double, however long, but not for digits that no double has and for what is too small for one.
bool KeepsDigits(double value, std::string_view text)
{
    if (text.size() <= std::numeric_limits<double>::digits10 && std::isnormal(value))
        return true;
    const std::string digits = SignificantDigits(text);
    constexpr std::size_t mostOfAnyDouble = 767;
    if (digits.empty() || digits.size() > mostOfAnyDouble)
        return digits.empty();
    char buffer[mostOfAnyDouble + 16];
    const auto written = std::to_chars(buffer, std::end(buffer), value, std::chars_format::scientific,
                                       static_cast<int>(digits.size()) - 1);
    return SignificantDigits({buffer, static_cast<std::size_t>(written.ptr - buffer)}) == digits;
}

// The text with a point for a comma.
std::string WithPoint(std::string_view text)
{
    std::string number(text);
    std::replace(number.begin(), number.end(), ',', '.');
    return number;
}

std::optional<double> DecimalNumber(std::string_view text, bool hasComma)
{
    const std::string_view unsignedText = text.substr(text.front() == '-' ? 1 : 0);
    const char mark = hasComma ? ',' : '.';
    const auto isDigitAt = [&](std::size_t index) {
        return index < unsignedText.size() && IsDigit(unsignedText[index]);
    };
    if (!isDigitAt(0) && !(isDigitAt(1) && unsignedText.front() == mark))
        return std::nullopt;
    if (unsignedText.front() == '0' && isDigitAt(1))
        return std::nullopt;
    if (text.find_first_not_of(hasComma ? "0123456789,eE+-" : "0123456789.eE+-") != std::string_view::npos)
        return std::nullopt;
    const ParsedDouble parsed = hasComma ? ParseDouble(WithPoint(text)) : ParseDouble(text);
    if (parsed.consumed != text.size() || !std::isfinite(parsed.value) || !KeepsDigits(parsed.value, text))
        return std::nullopt;
    return parsed.value;
}

// Other spellings of the words would not come back as they are.
std::optional<double> Number(std::string_view text, bool hasComma)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (text == "inf")
        return infinity;
    if (text == "-inf")
        return -infinity;
    if (text == "nan")
        return std::numeric_limits<double>::quiet_NaN();
    return DecimalNumber(text, hasComma);
}

bool MayBeValue(char first)
{
    return IsDigit(first) || std::string_view("-.,tTfFin").find(first) != std::string_view::npos;
}

// Calls `use` with the value that the field stands for, nothing for a text.
template <typename Use>
auto WithValue(std::string_view field, const VoCSVFormat& format, Use&& use)
{
    const std::string_view text = WithoutBlanks(field);
    if (text.empty() || !MayBeValue(text.front()))
        return use(nullptr);
    if (const auto integer = PlainInteger(text))
        return use(&*integer);
    if (const auto number = Number(text, format.decimalComma))
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

} // namespace vo::detail

namespace vo::csv {

VoVariant::Type DetectedType(std::string_view field, const VoCSVFormat& format)
{
    return field.empty() ? VoVariant::Null : detail::WithValue(field, format, detail::TypeOf());
}

VoVariant DetectedValue(std::string_view field, const VoCSVFormat& format)
{
    return field.empty() ? VoVariant() : detail::WithValue(field, format, detail::ValueOf{field});
}

} // namespace vo::csv

namespace vo::detail {

VoVariant FieldValue(const VoCSVReader& reader, std::size_t field, bool detectTypes, const VoCSVFormat& format)
{
    const std::string_view text = reader.field(field);
    if (detectTypes && !reader.isQuoted(field))
        return csv::DetectedValue(text, format);
    return VoString(text.data(), text.size());
}

std::string DoubleText(double value, const VoCSVFormat& format)
{
    if (std::isnan(value))
        return "nan"; // without a sign
    std::string text = ShortestText(value);
    if (text.find_first_not_of("-0123456789") == std::string::npos)
        text += ".0";
    if (format.decimalComma)
        std::replace(text.begin(), text.end(), '.', ',');
    return text;
}

void RequireValid(const VoCSVFormat& format)
{
    const std::string& separator = format.separator.toStdString();
    const bool isQuote =
        static_cast<unsigned char>(format.quote) < 0x80 && format.quote != '\r' && format.quote != '\n';
    const bool isSeparator = !separator.empty() && separator.find(format.quote) == std::string::npos &&
                             separator.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos &&
                             !FirstUnwritable(separator, format.encoding);
    const bool hidesNumbers = format.decimalComma && separator.find(',') != std::string::npos;
    const std::string& newline = format.newline.toStdString();
    const bool isNewline = newline == "\r\n" || newline == "\n" || newline == "\r";
    if (!isQuote || !isSeparator || !isNewline || hidesNumbers)
        throw VoInvalidParameterException("Invalid CSV format");
}

} // namespace vo::detail
