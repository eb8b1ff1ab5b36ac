#include "Fuzz.h"

#include <IO/VoStringDevice.h>
#include <XML/VoXMLPath.h>
#include <XML/VoXMLStreamElementReader.h>
#include <XML/VoXMLStreamReader.h>

using namespace vo::fuzz;

namespace {

void walk(const VoString& document)
{
    VoStringDevice device(document);
    VoXMLStreamReader reader(device);
    while (const auto element = reader.nextElement()) {
        reader.attributes();
        Require(!reader.currentPath().toString().isEmpty(), "an open element has a path");
        reader.readText();
    }
    Require(reader.next() == VoXMLStreamReader::EndDocument, "no element means the end of the document");
    Require(reader.nextElement() == nullptr, "the end stays the end");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    vo::logging::DisableStandardError();
    const VoString document(reinterpret_cast<const char*>(data), size);
    Allow([&] { walk(document); });
    Allow([&] {
        VoStringDevice device(document);
        VoXMLStreamReader reader(device);
        if (reader.nextElement())
            reader.readAsText();
    });
    return 0;
}
