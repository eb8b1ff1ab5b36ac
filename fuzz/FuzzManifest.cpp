#include "Fuzz.h"

#include <Signing/Signature.h>
#include <Updater/ReleaseKeys.h>
#include <Updater/ReleaseManifest.h>

using namespace vo::fuzz;
using vo::updater::ReleaseKeys;
using vo::updater::ReleaseManifest;

namespace {

template <typename Document>
void ReadAndWrite(const VoString& bytes)
{
    Allow([&] {
        const VoString text = Document::Parse(bytes, "input").toDocument();
        Require(Document::Parse(text, "output").toDocument().equal(text, VoString::CaseSensitive),
                "what was written is read and written alike");
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    vo::logging::DisableStandardError();
    const VoString bytes(reinterpret_cast<const char*>(data), size);
    ReadAndWrite<ReleaseManifest>(bytes);
    ReadAndWrite<ReleaseKeys>(bytes);
    Allow([&] { vo::signing::Signature::Parse(bytes).toString(); });
    return 0;
}
