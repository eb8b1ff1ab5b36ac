#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>

#include <Documents/VoZipArchive.h>
#include <Documents/VoZipper.h>

#include <string>

namespace vo::tool {
namespace {

ExitCode List(Session& session)
{
    VoZipArchive archive(session.arguments.fileArgument(0), VoZipArchive::Read);
    const VoZipArchive::Listing listing = archive.listing();
    session.console.list("entries");
    for (const auto& entry : listing.entries)
        session.console.row("entries", entry.name, JsonRecord()("path", entry.name)("bytes", entry.size));
    if (!listing.isComplete)
        throw Failure("cannot read " + session.arguments.argument(0) +
                      ": the archive's directory is damaged, there may be entries that are not listed");
    return ExitCode::Done;
}

ExitCode Run(Session& session)
{
    if (session.arguments.has("list")) {
        if (session.arguments.count() != 1)
            throw UsageError("--list takes an archive and no folder");
        return Doing(session.arguments, "read", session.arguments.argument(0), [&] { return List(session); });
    }
    if (session.arguments.count() != 2)
        throw UsageError("unzip needs an archive and a folder");
    const VoDirectoryPath folder = session.arguments.directoryArgument(1);
    Doing(session.arguments, "unzip", session.arguments.argument(0),
          [&] { VoZipper::Unzip(session.arguments.fileArgument(0), folder.toFilePath()); });
    session.console.fact("folder", "folder", PathText(folder));
    return ExitCode::Done;
}

} // namespace

Command UnzipCommand()
{
    return {
        "unzip",
        "ARCHIVE FOLDER | --list ARCHIVE",
        "unpack or list a zip archive",
        "Unpacks an archive into a folder, which is made when it is missing. All names are checked first: an\n"
        "archive with a name that leads out of the folder, or that some system cannot have, is refused as a whole\n"
        "with exit code 6, and so is one whose entries share bytes. Files are replaced one by one, each when it is\n"
        "whole and its checksum is right. Entries that are encrypted, or neither stored nor deflated, are refused.\n",
        {{"list", nullptr, "print the names in the archive, as they are stored, instead of unpacking"}},
        1,
        2,
        Run};
}

} // namespace vo::tool
