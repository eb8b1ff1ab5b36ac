#include <Core/VoStringConverter.h>

#include <Core/VoThrow.h>
#include <Core/detail/NumberText.h>

template class VoStringConverter<double>;
template class VoStringConverter<long long>;

VoStringLongLongConverter::~VoStringLongLongConverter() = default;

VoString VoStringLongLongConverter::convert(const long long& value)
{
    return VoString(value);
}

long long VoStringLongLongConverter::convert(const VoString& text) const
{
    const std::optional<long long> value = vo::detail::ParseInteger(text.toStdString());
    if (!value)
        vo::detail::ThrowInvalidConversion(text, "long long");
    return *value;
}
