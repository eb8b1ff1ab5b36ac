#include <Application/VoValueDefinition.h>

#include <Application/detail/VariantText.h>
#include <Core/VoException.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr std::size_t LongestName = 100;

bool IsNumberWithoutPlace(const VoVariant& value)
{
    return value.type() == VoVariant::Double && std::isnan(value.asDouble());
}

VoString RangeText(const VoVariant& minimum, const VoVariant& maximum)
{
    if (minimum.isNull() && maximum.isNull())
        return {};
    if (maximum.isNull())
        return " of at least " + vo::detail::VariantText(minimum);
    if (minimum.isNull())
        return " up to " + vo::detail::VariantText(maximum);
    return " from " + vo::detail::VariantText(minimum) + " to " + vo::detail::VariantText(maximum);
}

} // namespace

bool VoValueDefinition::IsValidName(const VoString& name)
{
    const auto isAllowedLater = [](char c) {
        return VoString::IsLetter(c) || (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.';
    };
    return !name.isEmpty() && name.size() <= LongestName && VoString::IsLetter(name[0]) &&
           std::all_of(name.begin(), name.end(), isAllowedLater);
}

void VoValueDefinition::requireValid() const
{
    if (!IsValidName(name))
        throw VoInvalidParameterException("Invalid value name: " + name);
    if (defaultValue.isNull())
        throw VoInvalidParameterException("Value without a default: " + name);
    const VoValueDefinition kindOnly{name, defaultValue};
    for (const VoVariant* const bound : {&minimum, &maximum}) {
        if (!bound->isNull())
            kindOnly.require(*bound);
    }
    for (const VoVariant& choice : choices)
        kindOnly.require(choice);
    require(defaultValue);
}

VoString VoValueDefinition::allowedForm() const
{
    VoString form = VoVariant::TypeString(type()) + RangeText(minimum, maximum);
    const char* separator = ", one of: ";
    for (const VoVariant& choice : choices) {
        form += separator + vo::detail::VariantText(choice);
        separator = ", ";
    }
    return form;
}

bool VoValueDefinition::isAllowed(const VoVariant& value) const
{
    if (value.type() != type())
        return false;
    const bool isBounded = !minimum.isNull() || !maximum.isNull();
    if (isBounded && IsNumberWithoutPlace(value))
        return false;
    if ((!minimum.isNull() && value < minimum) || (!maximum.isNull() && maximum < value))
        return false;
    return choices.isEmpty() || std::find(choices.begin(), choices.end(), value) != choices.end();
}

void VoValueDefinition::require(const VoVariant& value) const
{
    if (!isAllowed(value))
        throw VoInvalidParameterException("Invalid value for " + name + ": " + vo::detail::VariantText(value) + " (" +
                                          VoVariant::TypeString(value.type()) + "), allowed: " + allowedForm());
}

VoVariant VoValueDefinition::fromText(const VoString& text) const
{
    std::optional<VoVariant> value = vo::detail::VariantFromText(type(), text);
    if (!value || !isAllowed(*value))
        throw VoInvalidParameterException("Invalid value for " + name + ": " + text + ", allowed: " + allowedForm());
    return *std::move(value);
}

bool VoValueDefinition::operator==(const VoValueDefinition& other) const
{
    using vo::detail::IsSameVariant;
    return name.toStdString() == other.name.toStdString() && IsSameVariant(defaultValue, other.defaultValue) &&
           description.toStdString() == other.description.toStdString() && IsSameVariant(minimum, other.minimum) &&
           IsSameVariant(maximum, other.maximum) && readOnly == other.readOnly &&
           std::equal(choices.begin(), choices.end(), other.choices.begin(), other.choices.end(), IsSameVariant);
}
