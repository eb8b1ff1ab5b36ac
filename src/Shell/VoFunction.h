#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Core/VoVariant.h>
#include <FileSystem/VoDirectoryPath.h>
#include <Shell/VoShellValue.h>
#include <Threading/VoStopFlag.h>

#include <cstddef>
#include <functional>
#include <optional>

/// A parameter of a function of the command shell.
struct VOCORE_EXPORT VoFunctionParameter
{
    VoString name;        ///< As VoValueDefinition::IsValidName() wants it.
    VoVariant::Type type; ///< The kind of the variant, or of those of a list; Null for any. Of no meaning for a table.
    VoString help;        ///< A few words.
    VoShellValue::Form form = VoShellValue::Form::Single; ///< A list as the last parameter takes all that is left.
    std::optional<VoShellValue> defaultValue{};           ///< What counts when nothing is given; none: it must be.

    /// The kind and form as a text for people: "Integer", "list of String", "Table", "any value".
    VoString typeText() const;
};

/// An argument for a function.
struct VOCORE_EXPORT VoFunctionArgument
{
    VoShellValue value;    ///< What is given.
    VoString name{};       ///< Of the parameter that is meant; empty: the next one.
    bool isTyped = false;  ///< Whether the value is a text of a person, to be read as what the parameter wants.
    std::size_t column{};  ///< Where it stands in its line, the first character at 1; 0: in no line.
    bool isQuoted = false; ///< Whether a typed text is a text also where any value will do.
};

/// What a function is called from.
struct VOCORE_EXPORT VoFunctionContext
{
    VoStopFlag stop{};                                  ///< Raised to end the call.
    std::function<void(const VoString& text)> output{}; ///< Takes lines for people, without their ends; may be empty.
    VoDirectoryPath directory{}; ///< What relative paths are relative to; null: the process's current directory.
};

/// A call of a function that is being carried out.
class VOCORE_EXPORT VoFunctionCall
{
public:
    /// @name Arguments
    /// By the parameter's name; of the kind and form that it asks for, or its default.
    /// @throws VoNotFoundException(name) when the function has no such parameter
    /// @{
    const VoShellValue& argument(const VoString& name) const;   ///< Of any form.
    const VoVariant& value(const VoString& name) const;         ///< Of a Single.
    const VoDeque<VoVariant>& list(const VoString& name) const; ///< Of a List.
    const VoVariantTable& table(const VoString& name) const;    ///< Of a Table.
    /// @}

    const VoStopFlag& stop() const noexcept { return m_context.stop; } ///< Asked by what takes long.
    void print(const VoString& text) const;                            ///< Shows a line; nothing where nobody listens.

private:
    friend struct VoFunction;

    struct Bound
    {
        VoString name;
        VoShellValue value;
    };

    VoDeque<Bound> m_arguments;
    VoFunctionContext m_context;
};

/// A function of the command shell: called by name from code and from lines of text.
struct VOCORE_EXPORT VoFunction
{
    using Body = std::function<VoShellValue(const VoFunctionCall& call)>; ///< What it does; any thread may call it.

    VoString name;                           ///< As "table.load"; as VoValueDefinition::IsValidName() wants it.
    VoString help;                           ///< A sentence for people.
    VoDeque<VoFunctionParameter> parameters; ///< Those without default first.
    /// What it does. Without it the function is only declared: listed, told about and checked, for those programs that
    /// carry it out.
    Body body;

    /// How it is called: "table.save table file [separator=,]".
    VoString usage() const;

    /// Checks the definition.
    /// @throws VoInvalidParameterException "Invalid function name: " + name; "Invalid function " + name + ": " + what
    /// is wrong
    void requireValid() const;

    /// Calls the function. A value of another kind than wanted is taken where nothing is lost: an Integer as a Double
    /// or as a Size, a whole Size as an Integer, a text as a path and a path as a text, two values as a pair, one value
    /// as a list. Relative paths become those in the context's directory. Throws whatever the function throws.
    /// @throws VoInvalidParameterException "Invalid argument \"" + parameter + "\" of " + name + ": " + given + ",
    /// wanted " + wanted; "Missing argument \"" ...; "Too many arguments for " ...; "Argument given twice: " ...; each
    /// with ", at column " + number when it stands in a line
    /// @throws VoNotImplementedException "Not implemented: " + name, for a function that is only declared
    /// @throws VoUserCancelledException when the context's stop flag is raised already
    VoShellValue call(const VoDeque<VoFunctionArgument>& arguments,
                      const VoFunctionContext& context = VoFunctionContext()) const;
};
