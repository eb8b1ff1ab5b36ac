#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Core/VoVariant.h>

#include <optional>

namespace vo::detail {

/// The value of a kind that a text of a person stands for; none where it stands for no such value.
VOCORE_PRIVATE_EXPORT std::optional<VoVariant> VariantFromText(VoVariant::Type type, const VoString& text);

/// As VoVariant::toString(), but every digit of a number is there.
VOCORE_PRIVATE_EXPORT VoString VariantText(const VoVariant& value);

/// Whether nothing tells two values apart, the case of texts and the bits of numbers included: what VoVariant's ==
/// calls equal may still be a change.
VOCORE_PRIVATE_EXPORT bool IsSameVariant(const VoVariant& a, const VoVariant& b);

} // namespace vo::detail
