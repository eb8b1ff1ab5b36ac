#include <Shell/detail/ArgumentValue.h>

#include <Application/detail/VariantText.h>
#include <Core/VoPair.h>
#include <Core/VoPrintable.h>
#include <Documents/VoCSVFormat.h>
#include <Documents/VoCSVValues.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>

#include <limits>

namespace vo::detail {
namespace {

using Form = VoShellValue::Form;
using Type = VoVariant::Type;

constexpr std::size_t MostShown = 60; // bytes of a wrong argument

// Another kind that holds the same.
std::optional<VoVariant> AsKind(Type type, const VoVariant& value)
{
    if (type == Type::Null || type == value.type())
        return value;
    if (type == Type::Double && value.type() == Type::Integer)
        return VoVariant(static_cast<double>(value.asInteger()));
    if (type == Type::Size && value.type() == Type::Integer && value.asInteger() >= 0)
        return VoVariant(static_cast<std::size_t>(value.asInteger()));
    if (type == Type::Integer && value.type() == Type::Size &&
        value.asSize() <= static_cast<std::size_t>(std::numeric_limits<int>::max()))
        return VoVariant(static_cast<int>(value.asSize()));
    if (type == Type::FilePath && value.type() == Type::String)
        return VoVariant(VoFilePath(value.asString()));
    if (type == Type::String && value.type() == Type::FilePath)
        return VoVariant(value.asFilePath().path());
    return std::nullopt;
}

VoFilePath Rooted(const VoFilePath& path, const VoDirectoryPath& directory)
{
    return directory.isNull() || path.isNull() ? path : path.absolute(directory.toFilePath());
}

class Reading
{
public:
    Reading(const VoFunctionArgument& argument, const VoDirectoryPath& directory)
        : m_argument(argument)
        , m_directory(directory)
    {
    }

    std::optional<VoVariant> single(Type type, const VoVariant& value) const
    {
        std::optional<VoVariant> read = ofKind(type, value);
        if (!read || type != read->type())
            return read;
        if (type == Type::FilePath)
            return VoVariant(Rooted(read->asFilePath(), m_directory));
        if (type == Type::FilePathPair)
            return VoVariant(VoPair<VoFilePath, VoFilePath>{Rooted(read->asFilePathPair().first, m_directory),
                                                            Rooted(read->asFilePathPair().second, m_directory)});
        return read;
    }

    std::optional<VoVariant> pair(Type type, const VoDeque<VoVariant>& values) const
    {
        if (values.size() != 2)
            return std::nullopt;
        const Type half = type == Type::StringPair ? Type::String : Type::FilePath;
        const std::optional<VoVariant> first = single(half, values.at(0));
        const std::optional<VoVariant> second = single(half, values.at(1));
        if (!first || !second)
            return std::nullopt;
        if (half == Type::String)
            return VoVariant(VoPair<VoString, VoString>{first->asString(), second->asString()});
        return VoVariant(VoPair<VoFilePath, VoFilePath>{first->asFilePath(), second->asFilePath()});
    }

    std::optional<VoShellValue> list(Type type, const VoDeque<VoVariant>& given) const
    {
        VoDeque<VoVariant> values;
        for (const VoVariant& one : given) {
            std::optional<VoVariant> read = single(type, one);
            if (!read)
                return std::nullopt;
            values.pushBack(*std::move(read));
        }
        return VoShellValue(std::move(values));
    }

private:
    std::optional<VoVariant> ofKind(Type type, const VoVariant& value) const
    {
        if (!m_argument.isTyped || value.type() != Type::String)
            return AsKind(type, value);
        if (type == Type::Null)
            return m_argument.isQuoted ? value : AnyValue(value.asString());
        return VariantFromText(type, value.asString());
    }

    const VoFunctionArgument& m_argument;
    const VoDirectoryPath& m_directory;
};

std::optional<VoShellValue> IfAny(std::optional<VoVariant> value)
{
    return value ? std::optional<VoShellValue>(*std::move(value)) : std::nullopt;
}

} // namespace

std::optional<VoShellValue> ArgumentValue(const VoFunctionParameter& parameter, const VoFunctionArgument& argument,
                                          const VoDirectoryPath& directory)
{
    const VoShellValue& value = argument.value;
    const Reading reading(argument, directory);
    if (parameter.form == Form::Table || value.form() == Form::Table) {
        const bool isAny = parameter.form == Form::Single && parameter.type == Type::Null;
        return value.form() == Form::Table && (parameter.form == Form::Table || isAny) ? std::optional(value)
                                                                                       : std::nullopt;
    }
    if (value.form() == Form::Single && parameter.form == Form::List)
        return reading.list(parameter.type, {value.variant()});
    if (value.form() == Form::Single)
        return IfAny(reading.single(parameter.type, value.variant()));
    if (parameter.form == Form::List || parameter.type == Type::Null)
        return reading.list(parameter.type, value.list());
    if (parameter.type == Type::StringPair || parameter.type == Type::FilePathPair)
        return IfAny(reading.pair(parameter.type, value.list()));
    return std::nullopt;
}

bool IsDefaultFor(const VoFunctionParameter& parameter)
{
    if (parameter.defaultValue->isNull())
        return true;
    const std::optional<VoShellValue> taken = ArgumentValue(parameter, {*parameter.defaultValue}, {});
    return taken && *taken == *parameter.defaultValue;
}

VoString GivenText(const VoFunctionArgument& argument)
{
    const VoShellValue& value = argument.value;
    if (value.form() == Form::Table)
        return "a table";
    VoString text = Printable(value.toText());
    if (text.size() > MostShown) {
        text.resize(MostShown, ' ');
        text += "...";
    }
    if (argument.isTyped)
        return "\"" + text + "\"";
    const char* const kind = value.form() == Form::List ? "list" : VoVariant::TypeString(value.variant().type());
    return "\"" + text + "\" (" + kind + ")";
}

VoVariant AnyValue(const VoString& text)
{
    VoVariant value = vo::csv::DetectedValue(text.toStdString(), VoCSVFormat());
    return value.isNull() ? VoVariant(text) : value;
}

} // namespace vo::detail
