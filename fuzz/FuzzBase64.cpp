#include "Fuzz.h"

#include <Core/VoBase64.h>
#include <Core/VoByteArrayOLD.h>
#include <Core/VoHostTypes.h>

using namespace vo::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const VoString text(reinterpret_cast<const char*>(data), size);
    VoBase64Converter converter;
    Allow([&] { VoBase64ConverterCore::Decode(text); });
    Allow([&] { converter.decodeDouble(text); });
    Allow([&] { converter.decodeInteger(text); });
    Allow([&] { converter.decodeString(text); });

    const VoString coded(converter.encodeString(text));
    Require(coded.size() == (size + 2) / 3 * 4, "four characters for each three bytes begun");
    if (size > 0) {
        const std::string decoded(VoString(converter.decodeString(coded)).toStdString());
        const std::string expected = text.toStdString().substr(0, text.toStdString().find('\0'));
        Require(decoded == expected, "a text comes back up to its first zero byte");
    }
    return 0;
}
