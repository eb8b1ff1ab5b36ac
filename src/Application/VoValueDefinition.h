#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Core/VoVariant.h>

/// What a named value may be: its name, default, description and allowed form.
///
///     const VoValueDefinition tolerance{"Tolerance", 1e-3, "Relative error of a step", 1e-12, 1.0};
///     tolerance.allowedForm();     // "Double from 1e-12 to 1"
///     tolerance.fromText("0.5");   // 0.5
///     tolerance.require(7);        // throws: "Invalid value for Tolerance: 7 (Integer), allowed: Double from ..."
///
/// A value. Kinds are never converted: where a Double is allowed, an Integer is refused.
struct VOCORE_EXPORT VoValueDefinition
{
    VoString name{};              ///< See IsValidName().
    VoVariant defaultValue{};     ///< The value that nobody has set. Its kind is the only one allowed; not Null.
    VoString description{};       ///< One line for people, may be empty.
    VoVariant minimum{};          ///< The smallest allowed value, of the default's kind; Null: no bound.
    VoVariant maximum{};          ///< The largest allowed value, of the default's kind; Null: no bound.
    VoDeque<VoVariant> choices{}; ///< Where not empty, the only values allowed, texts without regard to case.
    bool readOnly = false;        ///< Whether only the code that defined the value may change it.

    /// The allowed kind: that of the default.
    VoVariant::Type type() const noexcept { return defaultValue.type(); }

    /// Whether `name` can be one: 1 to 100 ASCII letters, digits, "_", "-" and ".", a letter first.
    static bool IsValidName(const VoString& name);

    /// @throws VoInvalidParameterException for a definition that cannot be used: "Invalid value name: " and the name,
    /// for one that is none; "Value without a default: " and the name; and as require(), for a default that is not
    /// allowed and for a bound or choice of another kind
    void requireValid() const;

    /// The allowed values as a text for people: "Integer", "Double from 0 to 1", "Integer of at least 3", "Size up to
    /// 7", "String, one of: red, green".
    VoString allowedForm() const;

    /// Whether `value` is of the kind, within the bounds and among the choices. NaN is within no bounds.
    bool isAllowed(const VoVariant& value) const;

    /// @throws VoInvalidParameterException "Invalid value for " + name + ": " + value + " (" + kind + "), allowed: " +
    /// allowedForm() for a value that is not allowed
    void require(const VoVariant& value) const;

    /// The value that a text stands for: "true", "yes", "on", "1" and their opposites; numbers in decimal, whatever the
    /// locale; texts and paths as they are; pairs as "first,second", perhaps in brackets.
    /// @throws VoInvalidParameterException "Invalid value for " + name + ": " + text + ", allowed: " + allowedForm()
    VoVariant fromText(const VoString& text) const;

    /// Equal in everything; texts are compared with regard to case.
    bool operator==(const VoValueDefinition& other) const;
    bool operator!=(const VoValueDefinition& other) const { return !(*this == other); } ///< Not equal.
};
