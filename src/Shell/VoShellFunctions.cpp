#include <Shell/VoShellFunctions.h>

#include <Application/VoApplication.h>
#include <Application/VoLayeredProperties.h>
#include <Core/VoProperties.h>
#include <Shell/VoFunctionRegistry.h>
#include <Shell/detail/TableMaker.h>
#include <Subsystem/Registry.h>

#include <mutex>

namespace {

const VoFunctionParameter& TheName()
{
    static const auto* const name = new VoFunctionParameter{"name", VoVariant::String, "the property's name"};
    return *name; // never destroyed
}

VoShellValue List(const VoLayeredProperties& properties)
{
    vo::detail::TableMaker table({"name", "value", "from", "allowed", "description"});
    for (const VoProperty& property : properties.properties()) {
        const auto definition = properties.definition(property.name());
        table.add({property.name(), property.value(), VoLayeredProperties::LayerName(properties.layer(property.name())),
                   definition ? definition->allowedForm() : VoString(),
                   definition ? definition->description : VoString()});
    }
    return table.finish();
}

} // namespace

void VoShellFunctions::AddProperties(VoFunctionRegistry& functions, VoLayeredProperties& properties)
{
    functions.add({"property.list",
                   "The application's properties and the layers that they come from, as a table.",
                   {},
                   [&properties](const VoFunctionCall&) { return List(properties); }});
    functions.add({"property.get", "The value of a property.", {TheName()}, [&properties](const VoFunctionCall& call) {
                       return properties.value(call.value("name").asString());
                   }});
    functions.add({"property.set",
                   "Sets a property of the user, for now; property.save keeps it.",
                   {TheName(), {"value", VoVariant::Null, "its value"}},
                   [&properties](const VoFunctionCall& call) {
                       properties.setText(call.value("name").asString(), call.argument("value").toText());
                       return VoShellValue();
                   }});
    functions.add(
        {"property.reset", "Takes away what the user has set.", {TheName()}, [&properties](const VoFunctionCall& call) {
             properties.reset(call.value("name").asString());
             return VoShellValue();
         }});
    functions.add({"property.save",
                   "Keeps what the user has set in the file of properties.",
                   {},
                   [&properties](const VoFunctionCall&) {
                       properties.save();
                       return VoShellValue();
                   }});
}

void VoShellFunctions::RemoveProperties(VoFunctionRegistry& functions)
{
    for (const char* name : {"property.list", "property.get", "property.set", "property.reset", "property.save"})
        functions.remove(name);
}

namespace vo::subsystem {

void RegisterShell()
{
    static std::once_flag once;
    std::call_once(once, [] {
        RegisterLibrary();
        const auto start = [] {
            VoShellFunctions::AddProperties(VoFunctionRegistry::Global(), VoApplication::Get().properties());
        };
        const auto stop = [] { VoShellFunctions::RemoveProperties(VoFunctionRegistry::Global()); };
        Registry::Global().add({"shell", {"application"}, start, stop});
    });
}

} // namespace vo::subsystem
