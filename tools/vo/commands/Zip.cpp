#include <vo/Session.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>

#include <Documents/VoZipper.h>
#include <FileSystem/VoFileSystem.h>

namespace vo::tool {
namespace {

ExitCode Run(Session& session)
{
    const VoFilePath archive = session.arguments.fileArgument(0);
    Doing(session.arguments, "zip", session.arguments.argument(1),
          [&] { VoZipper::Zip(archive, session.arguments.fileArgument(1)); });
    const std::uint64_t size = VoFileSystem::FileSize(archive);
    session.console.fact("archive", "archive", PathText(archive));
    session.console.fact("bytes", "size", BytesText(size), size);
    return ExitCode::Done;
}

} // namespace

Command ZipCommand()
{
    return {"zip",
            "ARCHIVE SOURCE",
            "pack a file or a folder into a zip archive",
            "Packs a file under its bare name, or all files of a folder under their names in it. Dates, owners and\n"
            "permissions are left out: the same files always give the same bytes. Empty folders are left out too. An\n"
            "archive that exists is replaced when the new one is whole.\n",
            {},
            2,
            2,
            Run};
}

} // namespace vo::tool
