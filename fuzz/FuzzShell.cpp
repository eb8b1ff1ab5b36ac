#include "Fuzz.h"

#include <Core/VoDeque.h>
#include <Shell/VoShell.h>

#include <string>

using namespace vo::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Scratch scratch;
    static VoFunctionRegistry* const functions = [] {
        auto* const registry = new VoFunctionRegistry;
        registry->add({"f",
                       "",
                       {{"number", VoVariant::Double, "", VoShellValue::Form::Single, VoShellValue()},
                        {"pair", VoVariant::FilePathPair, "", VoShellValue::Form::Single, VoShellValue()},
                        {"rest", VoVariant::Null, "", VoShellValue::Form::List, VoShellValue(VoDeque<VoVariant>())}},
                       [](const VoFunctionCall& call) { return call.argument("rest"); }});
        return registry;
    }();
    VoShell shell(nullptr, *functions);
    shell.setDirectory(scratch.directory());
    const VoString text(std::string(reinterpret_cast<const char*>(data), size));
    Allow([&] { shell.runText(text, "text"); });
    const VoShell::Completions completions = shell.completions(text, size / 2);
    Require(completions.start <= size, "a word begins within the line");
    return 0;
}
