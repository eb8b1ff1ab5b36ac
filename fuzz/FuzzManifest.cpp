#include "Fuzz.h"

#include <Signing/Signature.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/ReleaseKeys.h>
#include <Updater/ReleaseManifest.h>
#include <Updater/ReleasePatches.h>
#include <Updater/detail/documents/ReleaseTree.h>

using namespace vo::fuzz;
using vo::updater::ReleaseAttributes;
using vo::updater::ReleaseKeys;
using vo::updater::ReleaseManifest;
using vo::updater::ReleasePatches;

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
    ReadAndWrite<ReleaseAttributes>(bytes);
    ReadAndWrite<ReleasePatches>(bytes);
    Allow([&] {
        const auto attributes = ReleaseAttributes::Parse(bytes, "input");
        const VoFilePath file("so\\l.so.1");
        const vo::updater::detail::ReleaseTree tree({&file}, attributes);
        tree.copies();
        tree.validate();
    });
    Allow([&] { vo::signing::Signature::Parse(bytes).toString(); });
    return 0;
}
