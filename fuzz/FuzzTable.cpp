#include "Fuzz.h"

#include <Core/VoProperties.h>
#include <Documents/VoDataTable.h>
#include <IO/VoStringDevice.h>
#include <XML/VoXMLObject.h>
#include <XML/VoXMLStreamElementReader.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamReader.h>
#include <XML/VoXMLStreamWriter.h>

using namespace vo::fuzz;

namespace {

template <typename T>
VoString Written(const T& value)
{
    VoStringDevice device;
    VoXMLStreamWriter writer(device);
    VoXMLObject<T>::Write(*writer.createElement("root"), value);
    writer.finishDocument();
    return device.content();
}

template <typename T>
T Read(const VoString& document)
{
    VoStringDevice device(document);
    VoXMLStreamReader reader(device);
    const auto root = reader.nextElement();
    return root ? VoXMLObject<T>::Read(*root) : T();
}

// What was read once is written, read and written the same for ever.
template <typename T>
void ReadAndWrite(const VoString& document)
{
    Allow([&] {
        const VoString written = Written(Read<T>(document));
        Require(Written(Read<T>(written)).toStdString() == written.toStdString(), "what was read comes back");
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const VoString document(reinterpret_cast<const char*>(data), size);
    ReadAndWrite<VoVariant>(document);
    ReadAndWrite<VoProperties>(document);
    ReadAndWrite<VoDataTable>(document);
    return 0;
}
