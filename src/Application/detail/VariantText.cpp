#include <Application/detail/VariantText.h>

#include <Core/detail/NumberText.h>
#include <FileSystem/VoFilePath.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <string_view>

namespace vo::detail {

namespace {

std::optional<VoVariant> BooleanFromText(const VoString& text)
{
    for (const char* const word : {"true", "yes", "on", "1"}) {
        if (text == word)
            return VoVariant(true);
    }
    for (const char* const word : {"false", "no", "off", "0"}) {
        if (text == word)
            return VoVariant(false);
    }
    return std::nullopt;
}

std::optional<VoVariant> IntegerFromText(const std::string& text)
{
    const std::optional<long long> number = ParseInteger(text);
    if (!number || *number < std::numeric_limits<int>::min() || *number > std::numeric_limits<int>::max())
        return std::nullopt;
    return VoVariant(static_cast<int>(*number));
}

std::optional<VoVariant> DoubleFromText(const std::string& text)
{
    const ParsedDouble number = ParseDouble(text);
    if (number.consumed == 0 || number.consumed != text.size())
        return std::nullopt;
    return VoVariant(number.value);
}

std::optional<VoVariant> SizeFromText(const std::string& text)
{
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return VoVariant(number);
}

template <typename T>
std::optional<VoVariant> PairFromText(std::string_view text)
{
    if (text.size() >= 2 && text.front() == '[' && text.back() == ']')
        text = text.substr(1, text.size() - 2);
    const std::size_t comma = text.find(',');
    if (comma == std::string_view::npos)
        return std::nullopt;
    const auto piece = [](std::string_view bytes) { return T(VoString(std::string(bytes))); };
    return VoVariant(VoPair<T, T>(piece(text.substr(0, comma)), piece(text.substr(comma + 1))));
}

bool IsSame(const VoString& a, const VoString& b)
{
    return a.toStdString() == b.toStdString();
}

bool IsSame(const VoFilePath& a, const VoFilePath& b)
{
    return IsSame(a.path(), b.path());
}

template <typename T>
bool IsSame(const VoPair<T, T>& a, const VoPair<T, T>& b)
{
    return IsSame(a.first, b.first) && IsSame(a.second, b.second);
}

} // namespace

std::optional<VoVariant> VariantFromText(VoVariant::Type type, const VoString& text)
{
    const VoString trimmed(text.trimmed());
    switch (type) {
    case VoVariant::Boolean:
        return BooleanFromText(trimmed);
    case VoVariant::Integer:
        return IntegerFromText(trimmed.toStdString());
    case VoVariant::Double:
        return DoubleFromText(trimmed.toStdString());
    case VoVariant::Size:
        return SizeFromText(trimmed.toStdString());
    case VoVariant::String:
        return VoVariant(text);
    case VoVariant::FilePath:
        return VoVariant(VoFilePath(text));
    case VoVariant::StringPair:
        return PairFromText<VoString>(text.toStdString());
    case VoVariant::FilePathPair:
        return PairFromText<VoFilePath>(text.toStdString());
    case VoVariant::Null:
        break;
    }
    return std::nullopt;
}

VoString VariantText(const VoVariant& value)
{
    return value.type() == VoVariant::Double ? VoString(ShortestText(value.asDouble())) : value.toString();
}

bool IsSameVariant(const VoVariant& a, const VoVariant& b)
{
    if (a.type() != b.type())
        return false;
    switch (a.type()) {
    case VoVariant::Double:
        // By their bits: the zeros differ, and what is no number is itself.
        // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
        return std::memcmp(&a.asDouble(), &b.asDouble(), sizeof(double)) == 0;
    case VoVariant::String:
        return IsSame(a.asString(), b.asString());
    case VoVariant::FilePath:
        return IsSame(a.asFilePath(), b.asFilePath());
    case VoVariant::StringPair:
        return IsSame(a.asStringPair(), b.asStringPair());
    case VoVariant::FilePathPair:
        return IsSame(a.asFilePathPair(), b.asFilePathPair());
    default:
        return a == b;
    }
}

} // namespace vo::detail
