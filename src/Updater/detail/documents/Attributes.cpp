#include <Updater/detail/documents/Attributes.h>

#include <Core/VoException.h>

#include <charconv>
#include <string>

namespace vo::updater::detail {

void WriteNumber(VoXMLElementWriter& element, const char* name, std::uint64_t value)
{
    element.writeAttribute(name, VoString(value));
}

std::uint64_t ReadNumber(VoXMLStreamElementLoader& element, const char* name)
{
    const VoString text = element.attribute(name);
    const std::string& digits = text.toStdString();
    const char* const end = digits.data() + digits.size();
    std::uint64_t value = 0;
    const auto [rest, error] = std::from_chars(digits.data(), end, value);
    if (error != std::errc() || rest != end)
        throw VoInvalidConversionException(text, "unsigned integer");
    return value;
}

} // namespace vo::updater::detail
