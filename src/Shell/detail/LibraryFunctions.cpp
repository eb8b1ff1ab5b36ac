#include <Shell/detail/LibraryFunctions.h>

#include <Application/VoGlobalValues.h>
#include <Application/VoValueDefinition.h>
#include <Core/VoMathsException.h>
#include <Shell/VoFunctionRegistry.h>
#include <Shell/detail/TableMaker.h>
#include <Time/VoTimeDuration.h>

#include <cstdint>

namespace vo::detail {
namespace {

using Form = VoShellValue::Form;

constexpr double LongestWait = 86400; // seconds

VoShellValue Echo(const VoFunctionCall& call)
{
    VoString text;
    const char* separator = "";
    for (const VoVariant& value : call.list("values")) {
        text += separator + VoShellValue(value).toText();
        separator = " ";
    }
    call.print(text);
    return {};
}

VoShellValue Show(const VoFunctionCall& call)
{
    call.print(call.argument("value").toText());
    return {};
}

VoShellValue Wait(const VoFunctionCall& call)
{
    const double seconds = call.value("seconds").asDouble();
    if (!(seconds >= 0 && seconds <= LongestWait))
        throw VoDomainException(seconds, 0, LongestWait);
    call.stop().waitFor(VoMilliseconds(static_cast<std::int64_t>(seconds * 1000)));
    call.stop().throwIfStopped();
    return {};
}

VoShellValue ListValues(const VoFunctionCall&)
{
    TableMaker table({"name", "value", "default", "allowed", "description"});
    for (const VoString& name : VoGlobalValues::Names()) {
        const VoValueDefinition definition = VoGlobalValues::Definition(name);
        table.add({definition.name, VoGlobalValues::Value(name), definition.defaultValue, definition.allowedForm(),
                   definition.description});
    }
    return table.finish();
}

} // namespace

void AddLibraryFunctions(VoFunctionRegistry& registry)
{
    registry.add({"echo",
                  "Prints values, with blanks between.",
                  {{"values", VoVariant::Null, "what to print", Form::List, VoShellValue(VoDeque<VoVariant>())}},
                  Echo});
    registry.add(
        {"show", "Prints a value of any form, such as a table.", {{"value", VoVariant::Null, "what to print"}}, Show});
    registry.add({"wait", "Does nothing for some time.", {{"seconds", VoVariant::Double, "how long"}}, Wait});
    registry.add({"value.list", "The global values, as a table.", {}, ListValues});
    AddFileFunctions(registry);
    AddTableFunctions(registry);
    AddPackageFunctions(registry);
    AddProblemFunctions(registry);
}

} // namespace vo::detail
