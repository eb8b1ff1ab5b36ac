#include <Shell/VoFunction.h>

#include <Application/VoValueDefinition.h>
#include <Core/VoException.h>
#include <Shell/detail/ArgumentValue.h>

#include <algorithm>
#include <vector>

using Form = VoShellValue::Form;

namespace {

VoString Place(const VoFunctionArgument& argument)
{
    return argument.column == 0 ? VoString() : ", at column " + VoString(argument.column);
}

// Puts arguments to the parameters that they are meant for.
class Binding
{
public:
    Binding(const VoFunction& function, const VoDirectoryPath& directory)
        : m_function(function)
        , m_directory(directory)
        , m_given(function.parameters.size())
    {
    }

    void add(const VoFunctionArgument& argument)
    {
        const std::size_t index = argument.name.isEmpty() ? next(argument) : named(argument);
        const VoFunctionParameter& parameter = m_function.parameters.at(index);
        const bool takesRest = parameter.form == Form::List && index + 1 == m_given.size() && argument.name.isEmpty();
        if (m_given[index] && !takesRest)
            throw VoInvalidParameterException("Argument given twice: \"" + parameter.name + "\" of " + m_function.name +
                                              Place(argument));
        std::optional<VoShellValue> value = vo::detail::ArgumentValue(parameter, argument, m_directory);
        if (!value)
            throw VoInvalidParameterException("Invalid argument \"" + parameter.name + "\" of " + m_function.name +
                                              ": " + vo::detail::GivenText(argument) + ", wanted " +
                                              parameter.typeText() + Place(argument));
        m_given[index] = m_given[index] ? joined(*m_given[index], *value) : *value;
    }

    VoShellValue finish(std::size_t index) const
    {
        const VoFunctionParameter& parameter = m_function.parameters.at(index);
        if (m_given[index])
            return *m_given[index];
        if (!parameter.defaultValue)
            throw VoInvalidParameterException("Missing argument \"" + parameter.name + "\" of " + m_function.name +
                                              ", wanted " + parameter.typeText() + "; usage: " + m_function.usage());
        return *parameter.defaultValue;
    }

private:
    std::size_t next(const VoFunctionArgument& argument)
    {
        // A list at the end takes what is left.
        const auto& parameters = m_function.parameters;
        if (m_next == m_given.size() && m_next > 0 && parameters.at(m_next - 1).form == Form::List)
            return m_next - 1;
        if (m_next == m_given.size())
            throw VoInvalidParameterException("Too many arguments for " + m_function.name + ": " +
                                              vo::detail::GivenText(argument) + Place(argument) +
                                              "; usage: " + m_function.usage());
        return m_next++;
    }

    std::size_t named(const VoFunctionArgument& argument) const
    {
        const auto& parameters = m_function.parameters;
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            if (parameters.at(i).name == argument.name)
                return i;
        }
        throw VoInvalidParameterException("Unknown argument \"" + argument.name + "\" of " + m_function.name +
                                          Place(argument) + "; usage: " + m_function.usage());
    }

    static VoShellValue joined(const VoShellValue& first, const VoShellValue& more)
    {
        VoDeque<VoVariant> values = first.list();
        for (const VoVariant& value : more.list())
            values.pushBack(value);
        return values;
    }

    const VoFunction& m_function;
    const VoDirectoryPath& m_directory;
    std::vector<std::optional<VoShellValue>> m_given;
    std::size_t m_next = 0;
};

} // namespace

VoString VoFunctionParameter::typeText() const
{
    if (form == Form::Table)
        return "Table";
    const VoString kind = type == VoVariant::Null ? "any value" : VoVariant::TypeString(type);
    return form == Form::List ? "list of " + kind : kind;
}

const VoShellValue& VoFunctionCall::argument(const VoString& name) const
{
    const auto found =
        std::find_if(m_arguments.begin(), m_arguments.end(), [&](const Bound& bound) { return bound.name == name; });
    if (found == m_arguments.end())
        throw VoNotFoundException(name);
    return found->value;
}

const VoVariant& VoFunctionCall::value(const VoString& name) const
{
    return argument(name).variant();
}

const VoDeque<VoVariant>& VoFunctionCall::list(const VoString& name) const
{
    return argument(name).list();
}

const VoVariantTable& VoFunctionCall::table(const VoString& name) const
{
    return argument(name).table();
}

void VoFunctionCall::print(const VoString& text) const
{
    if (m_context.output)
        m_context.output(text);
}

VoString VoFunction::usage() const
{
    VoString text = name;
    for (const VoFunctionParameter& parameter : parameters) {
        const VoString shown = parameter.name + (parameter.form == Form::List ? "..." : "");
        if (!parameter.defaultValue)
            text += " " + shown;
        else if (parameter.form != Form::Single || parameter.defaultValue->isNull())
            text += " [" + shown + "]";
        else
            text += " [" + shown + "=" + parameter.defaultValue->toText() + "]";
    }
    return text;
}

void VoFunction::requireValid() const
{
    if (!VoValueDefinition::IsValidName(name))
        throw VoInvalidParameterException("Invalid function name: " + name);
    const auto refuse = [this](const VoString& why) {
        throw VoInvalidParameterException("Invalid function " + name + ": " + why);
    };
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const VoFunctionParameter& parameter = parameters.at(i);
        if (!VoValueDefinition::IsValidName(parameter.name))
            refuse("parameter \"" + parameter.name + "\" has no usable name");
        for (std::size_t j = 0; j < i; ++j) {
            if (parameters.at(j).name == parameter.name)
                refuse("two parameters \"" + parameter.name + "\"");
        }
        if (i > 0 && parameters.at(i - 1).defaultValue && !parameter.defaultValue)
            refuse("parameter \"" + parameter.name + "\" needs a default");
        if (parameter.defaultValue && !vo::detail::IsDefaultFor(parameter))
            refuse("the default of \"" + parameter.name + "\" is no " + parameter.typeText());
    }
}

VoShellValue VoFunction::call(const VoDeque<VoFunctionArgument>& arguments, const VoFunctionContext& context) const
{
    Binding binding(*this, context.directory);
    for (const VoFunctionArgument& argument : arguments)
        binding.add(argument);
    VoFunctionCall call;
    for (std::size_t i = 0; i < parameters.size(); ++i)
        call.m_arguments.pushBack({parameters.at(i).name, binding.finish(i)});
    call.m_context = context;
    context.stop.throwIfStopped();
    if (!body)
        throw VoNotImplementedException(name);
    return body(call);
}
