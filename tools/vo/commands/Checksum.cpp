#include <vo/Session.h>
#include <vo/line/Failures.h>

#include <Core/VoChecksum.h>
#include <Core/VoException.h>
#include <FileSystem/VoFileSystem.h>

namespace vo::tool {
namespace {

ExitCode Run(Session& session)
{
    bool failed = false;
    session.console.list("files");
    for (std::size_t i = 0; i < session.arguments.count(); ++i) {
        session.stop.throwIfStopped();
        const VoString& name = session.arguments.argument(i);
        try {
            const VoString digest = VoFileSystem::Checksum(session.arguments.fileArgument(i)).toString();
            session.console.row("files", digest + "  " + name, JsonRecord()("path", name)("checksum", digest));
        } catch (const VoException&) {
            session.console.error(ToldFailure(session.arguments, "read", name));
            failed = true;
        }
    }
    return failed ? ExitCode::Failed : ExitCode::Done;
}

} // namespace

Command ChecksumCommand()
{
    return {
        "checksum",
        "FILE...",
        "print the digests of files",
        "Prints the SHA3-256 digest of each file, in the form \"digest  path\". A file that cannot be read does not\n"
        "keep the others from being done.\n",
        {},
        1,
        AnyNumber,
        Run};
}

} // namespace vo::tool
