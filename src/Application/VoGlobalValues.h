#pragma once

#include <Application/VoValueChange.h>
#include <Application/VoValueDefinition.h>
#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <functional>

/// Named values of the whole process: options that code anywhere defines and that the user, a script or other code
/// sets by name.
///
///     VoGlobalValues::Define({"Tolerance", 1e-3, "Relative error of a step", 1e-12, 1.0});
///     VoGlobalValues::Set("tolerance", 1e-6);
///     VoGlobalValues::SetText("tolerance", "1e-6");      // the same
///     VoGlobalValues::Value("Tolerance").asDouble();     // 1e-06
///
/// VoGlobalValue reads and sets one of them by its type. Names ignore case; the first spelling is kept. A value lives
/// until the process ends.
///
/// Any thread may call any member. Callbacks run without any lock held, so they may set values too. They are told every
/// change in the order in which the changes were made, on the thread that changed the value or on one that was just
/// telling other changes; what they throw is logged in the category "application".
///
/// Members that take a name throw VoNotFoundException(name) for one that is not defined.
class VOCORE_EXPORT VoGlobalValues
{
public:
    VoGlobalValues() = delete;

    /// Makes a value. Defining it again in the same way does nothing, so that a definition may stand in a header.
    /// @throws VoInvalidCallException "Global value already defined: " and the name, for one that is defined otherwise;
    /// and what VoValueDefinition::requireValid() throws
    static void Define(const VoValueDefinition& definition);

    static bool IsDefined(const VoString& name);               ///< Whether there is such a value. Never throws.
    static VoValueDefinition Definition(const VoString& name); ///< How the value was defined.
    static VoDeque<VoString> Names();                          ///< All names, ordered without regard to case.

    static VoVariant Value(const VoString& name); ///< The value: the default until it is set.
    static bool IsSet(const VoString& name);      ///< Whether the value differs from its default.

    /// @name Changes
    /// Setting a value to what it is already is no change.
    /// @throws VoInvalidParameterException as VoValueDefinition::require() and fromText(), for what is not allowed
    /// @throws VoInvalidUseException "Global value is read-only: " and the name
    /// @{
    static void Set(const VoString& name, const VoVariant& value);   ///< Sets a value.
    static void SetText(const VoString& name, const VoString& text); ///< Sets a value to what a text stands for.
    static void Reset(const VoString& name);                         ///< Sets a value to its default.
    /// @}

    /// @name All values at once
    /// For what tries things out and leaves no trace, such as a test.
    /// @{
    static VoProperties Changed(); ///< The values that differ from their defaults, by name.
    /// Sets the values of `changed`, and all others to their defaults. Read-only ones stay as they are;
    /// names that are not defined count for nothing.
    /// @throws VoInvalidParameterException as Set(), for a value that is not allowed, before anything is changed
    static void Restore(const VoProperties& changed);
    /// @}

    /// Calls `callback` with every change while the receiver lives. Destroying the receiver waits for a callback that
    /// just runs on another thread.
    /// @throws VoInvalidParameterException "Invalid callback" when it is empty
    [[nodiscard]] static VoReceiver Connect(std::function<void(const VoValueChange&)> callback);
    /// The same for one value.
    [[nodiscard]] static VoReceiver Connect(const VoString& name, std::function<void(const VoValueChange&)> callback);
};
