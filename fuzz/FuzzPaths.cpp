#include "Fuzz.h"

#include <Core/VoChecksum.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <FileSystem/VoUrl.h>
#include <FileSystem/detail/SafePath.h>

using namespace vo::fuzz;

namespace {

void useFilePath(const VoString& text)
{
    const VoFilePath path(text);
    Require(VoFilePath(path.path()).path().toStdString() == path.path().toStdString(),
            "normalising twice is normalising");
    path.rootName().toString();
    path.filename().toString();
    path.stem().toString();
    path.extension().toString();
    Allow([&] { path.parent(); });
    Allow([&] { path.relative(VoFilePath("base\\folder\\")); });
    const VoFilePath base("\\base\\folder\\");
    if (vo::detail::SafeRelativePath(path)) {
        const VoFilePath below = base.appended(path);
        Require(base.isAncestor(below), "a safe path stays below its base");
        Require(below.relative(base) == path, "and is the same seen from there");
    }
    Allow([&] { path.absolute(base); });
}

void useDirectoryPath(const VoString& text)
{
    Allow([&] { VoDirectoryPath path{text}; });
    Allow([&] {
        const VoDirectoryPath path = VoDirectoryPath::FromText(text);
        path.appended(VoFilePath("a\\..\\..\\b"));
    });
}

void useVersion(const VoString& text)
{
    const VoVersion version = VoVersion::Deserialize(text);
    Require(VoVersion::Deserialize(version.toString()).toString() == version.toString(), "a version's text is stable");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const VoString text(reinterpret_cast<const char*>(data), size);
    useFilePath(text);
    useDirectoryPath(text);
    useVersion(text);
    VoChecksum::Deserialize(text).toString();
    Require(VoUUID(text).toString().toStdString() == text.toStdString(), "a UUID keeps its text");
    Allow([&] {
        const VoUrl url(text);
        url.filename();
        url.parent().appended(VoFilePath("chunks\\a b.vochk"));
    });
    return 0;
}
