#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>
#include <vo/release/Besides.h>
#include <vo/release/Keys.h>
#include <vo/release/ReleaseChoice.h>
#include <vo/release/Totals.h>

#include <Core/VoException.h>
#include <FileSystem/VoFileSystem.h>
#include <Threading/VoReceiver.h>
#include <Time/VoTimer.h>
#include <Updater/PackageBuilder.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/ReleasePatches.h>
#include <Updater/UpdatePackageBuilder.h>
#include <Updater/VoUpdater.h>

#include <memory>
#include <utility>

namespace vo::tool {

using namespace updater;

namespace {

/// What the command line asks for.
struct Request
{
    VoDirectoryPath folder;
    VoFilePath declarations;
    std::optional<VoString> name;
    std::optional<VoUUID> packageID;
    VoVersion version;
    std::uint64_t chunkSize;
    int level;
    bool replace;
    bool older;
    bool onlyFiles;
    ReleaseTerms terms{};
    ReleaseSigning signing{};
};

Request ReadRequest(const Arguments& arguments)
{
    const auto release = arguments.release("release");
    const auto declarations = arguments.file("to");
    if (!release || !declarations)
        throw UsageError(VoString("option --") + (release ? "to" : "release") + " is missing");
    VoVersion version = release->version;
    const auto buildType = arguments.integer("build-type", version.build(), 0, 0x7fffffff);
    version.setBuild(static_cast<VoVersion::BuildType>(buildType));
    return Request{arguments.directoryArgument(0),
                   *declarations,
                   arguments.text("name"),
                   arguments.identifier("package"),
                   version,
                   arguments.bytes("chunk-size", 4u << 20, 1, 0x7fffffff),
                   static_cast<int>(arguments.integer("level", 6, -1, 12)),
                   arguments.has("replace"),
                   arguments.has("older"),
                   arguments.has("no-attributes")};
}

/// The declared package that the request continues, if there is one: the one with the ID, or else with the name.
std::optional<VoUUID> DeclaredPackage(const AdvertisedPackages& declared, const Request& request)
{
    std::optional<VoUUID> found;
    for (const AdvertisedPackages::Declaration& declaration : declared.declarations()) {
        const bool meant = request.packageID
                               ? declaration.packageID() == *request.packageID
                               : request.name && declaration.name().equal(*request.name, VoString::CaseSensitive);
        if (!meant || (found && *found == declaration.packageID()))
            continue;
        if (found)
            throw UsageError("option --name: several packages are called \"" + *request.name +
                             "\"; choose one with --package");
        found = declaration.packageID();
    }
    return found;
}

/// What the package's next release is based on; empty for its first one.
struct Base
{
    std::optional<VoUUID> packageID;
    std::optional<VoUUID> versionID;

    bool operator==(const Base& other) const { return packageID == other.packageID && versionID == other.versionID; }
};

Base FindBase(const AdvertisedPackages& declared, const Request& request)
{
    Base base;
    base.packageID = DeclaredPackage(declared, request);
    if (base.packageID)
        base.versionID = declared.newestPackage(*base.packageID).versionID();
    return base;
}

/// Refuses what takes something away from the declarations without having been asked for.
void RequireAllowed(const AdvertisedPackages& declared, const VoUUID& packageID, const Request& request)
{
    for (const AdvertisedPackages::Declaration& declaration : declared.declarations()) {
        if (declaration.packageID() == packageID && declaration.version() == request.version &&
            declaration.version().build() == request.version.build() && !request.replace)
            throw CommandError{ExitCode::Unsafe, "release " + ReleaseText(request.version) +
                                                     " is declared already; --replace publishes it anew"};
    }
    const VoVersion& newest = declared.newestPackage(packageID).version();
    if (newest > request.version && !request.older)
        throw CommandError{ExitCode::Unsafe, "release " + ReleaseText(request.version) + " is older than release " +
                                                 ReleaseText(newest) +
                                                 ", the newest; --older publishes it all the same"};
}

/// Asked before anything is packed, and again when nobody else can publish any more.
void Approve(const AdvertisedPackages& declared, const Base& base, const Request& request)
{
    const Base now = FindBase(declared, request);
    if (now.packageID)
        RequireAllowed(declared, *now.packageID, request);
    if (!(now == base))
        throw Failure("a release of the package was published by another run meanwhile; give the command again");
}

/// The builder of the package's next release, or of its first one.
std::unique_ptr<AbstractPackageBuilder> MakeBuilder(const Session& session, const Request& request, Base& base)
{
    VoUniquePtr<AdvertisedPackages> declared;
    if (VoFileSystem::Exists(request.declarations)) {
        declared = OpenDeclarations(session, request.declarations);
        base = FindBase(*declared, request);
        Approve(*declared, base, request);
    }
    if (!base.packageID) {
        if (!request.name)
            throw UsageError("option --name is missing: it is needed for a package's first release");
        return std::make_unique<PackageBuilder>(request.packageID.value_or(VoUpdater::GenerateID()), *request.name,
                                                request.version, request.chunkSize, request.level);
    }
    const auto& newest = declared->newestPackage(*base.packageID);
    const auto package = ReadDefinition(session, newest.definition(request.declarations));
    if (request.name && !package->name().equal(*request.name, VoString::CaseSensitive))
        session.console.note("warning: the package keeps its name \"" + package->name() + "\"");
    session.console.fact("baseRelease", "after release", ReleaseText(newest.version()), newest.version().toString());
    return std::make_unique<UpdatePackageBuilder>(std::move(*package), request.version, request.chunkSize,
                                                  request.level);
}

ReleaseTerms TermsOf(const Arguments& arguments)
{
    ReleaseTerms terms;
    terms.channel = arguments.text("channel").value_or(terms.channel);
    if (terms.channel != VoUpdater::ReleaseChannel && terms.channel != VoUpdater::BetaChannel)
        throw UsageError("option --channel: \"" + terms.channel + "\" is neither release nor beta");
    const VoString share = arguments.text("share").value_or("100%");
    const auto parsed = ParseShare(share);
    if (!parsed)
        throw UsageError("option --share: \"" + share + "\" is not a share such as 20%");
    terms.share = *parsed;
    if (const auto from = arguments.release("from"))
        terms.from = from->version;
    terms.notes = arguments.text("notes").value_or("");
    return terms;
}

void LeaveOut(AbstractPackageBuilder& builder, const Session& session, const Request& request)
{
    const VoFilePath list = request.folder.file(".voignore");
    if (VoFileSystem::Exists(list)) {
        builder.exclude("/.voignore");
        builder.excludeListed(list);
    }
    for (const VoString& pattern : session.arguments.texts("exclude"))
        builder.exclude(pattern);
}

void Pack(AbstractPackageBuilder& builder, const Session& session, const Request& request)
{
    const auto refuse = [&] {
        const CommandError told = ToldFailure(session.arguments, "publish", NameOf(session.arguments, request.folder));
        return CommandError{told.code,
                            told.text + "; --exclude PATTERN, or a line in the folder's .voignore, leaves it out",
                            told.tells};
    };
    try {
        builder.addByAge(request.folder, request.declarations);
    } catch (const VoValidationException&) {
        throw refuse();
    } catch (const VoInvalidParameterException&) {
        throw refuse();
    }
    if (builder.package().files().isEmpty())
        throw Failure("cannot publish " + NameOf(session.arguments, request.folder) + ": it holds no files");
}

void Build(Session& session, AbstractPackageBuilder& builder, const Request& request, const Base& base)
{
    Console& console = session.console;
    std::uint64_t begun = 0;
    const VoReceiver receiver = builder.connect([&](const VoSharedPtr<AbstractPackageBuilder::Message>& message) {
        // The builder ends when a receiver wishes so; until the release is declared nothing is published.
        session.stop.throwIfStopped();
        console.detail(TextOfLibrary(message->message()));
        if (message->kind() == AbstractPackageBuilder::Message::FileAdded)
            console.progress("Packing", ProgressLine::Unit::Files, begun++, builder.filesListed());
    });
    builder.setTerms(request.terms, request.signing);
    builder.setApproval([&](const AdvertisedPackages& declared) { Approve(declared, base, request); });
    if (!request.onlyFiles)
        builder.keepAttributes();
    if (!session.arguments.has("no-portable"))
        builder.requirePortableNames();
    LeaveOut(builder, session, request);
    if (session.arguments.has("repack"))
        builder.packAnew();
    builder.makePatches(static_cast<std::size_t>(session.arguments.integer("patches", 0, 0, 1000)));
    Pack(builder, session, request);
    builder.finalise(request.declarations);
    console.endProgress();
}

void ShowRelease(Console& console, const AbstractPackageBuilder& builder, double seconds)
{
    const AdvertisedPackageListing& package = builder.package();
    const std::uint64_t in = TotalBytes(package.files());
    const std::uint64_t out = TotalBytes(package.chunks());
    const double ratio = out > 0 ? static_cast<double>(in) / static_cast<double>(out) : 1.0;

    console.fact("package", "package", package.packageID().toString(), package.packageID());
    console.fact("name", "name", package.name());
    console.fact("release", "release", ReleaseText(package.version()), package.version().toString());
    console.fact("versionID", "version ID", package.versionID().toString(), package.versionID());
    console.fact("files", "files", package.files().size());
    ShowBesidesFigures(console, *package.attributes());
    console.fact("bytesIn", "bytes in", BytesText(in), in);
    console.fact("bytesOut", "bytes out", BytesText(out), out);
    console.fact("chunks", "chunks", package.chunks().size());
    if (builder.chunksShared() > 0)
        console.fact("chunksShared", "of them kept", builder.chunksShared());
    if (!builder.patches().patches.isEmpty()) {
        std::uint64_t bytes = 0;
        for (const ReleasePatches::Patch& patch : builder.patches().patches)
            bytes += patch.size;
        console.fact("patches", "patches", builder.patches().patches.size());
        console.fact("bytesInPatches", "bytes in them", BytesText(bytes), bytes);
    }
    console.fact("ratio", "ratio", RatioText(ratio), ratio);
    console.fact("seconds", "time", TimeText(seconds), seconds);
}

ExitCode Run(Session& session)
{
    Request request = ReadRequest(session.arguments);
    request.terms = TermsOf(session.arguments);
    request.signing = SigningOf(session);
    RequireFolder(session.arguments, request.folder, "publish");
    const VoTimer timer;
    Base base;
    const auto builder = MakeBuilder(session, request, base);
    Doing(session.arguments, "publish", NameOf(session.arguments, request.folder),
          [&] { Build(session, *builder, request, base); });
    ShowRelease(session.console, *builder, timer.elapsed().seconds());
    ShowManifest(session, builder->manifestState());
    return ExitCode::Done;
}

std::vector<Option> Options()
{
    std::vector<Option> all = {
        {"to", "DECLARATIONS", "the declarations file"},
        {"name", "NAME", "what people call the package; needed for its first release"},
        {"release", "V", "the number of the release, such as 4.2.17"},
        {"build-type", "N", "0 release (the default), 1 beta, 2 alpha, 3 development"},
        {"package", "ID", "the package to continue, or the ID to give to a new one"},
        {"exclude", "PATTERN", "leave out the files and folders that fit; may be given again", '\0', true},
        {"no-attributes", nullptr, "publish the bytes of files alone, and what links to files lead to as files"},
        {"no-portable", nullptr, "publish also names that cannot be on Windows, with one of ? * | \" < > in them"},
        {"replace", nullptr, "let the release take the place of one that is declared already"},
        {"older", nullptr, "let the release be older than the newest that is declared"},
        {"chunk-size", "N", "bytes that a chunk holds before compression, such as 512K (the default is 4M)"},
        {"repack", nullptr, "compress all files, also those whose chunks the newest release has already"},
        {"patches", "N", "make patches for who has one of the N releases before (the default is 0)"},
        {"level", "N", "compression from 0 (none) to 12 (smallest, slow; the default is 6)"},
        {"channel", "NAME", "release (the default), or beta: see vo promote"},
        {"share", "SHARE", "to how many installations the release is offered, such as 20%: see vo rollout"},
        {"from", "V", "the lowest installed release that it updates"},
        {"notes", "URL", "where its notes are"},
    };
    const std::vector<Option> signing = SigningOptions();
    all.insert(all.end(), signing.begin(), signing.end());
    return all;
}

} // namespace

Command PublishCommand()
{
    return {
        "publish",
        "FOLDER --to DECLARATIONS --name NAME --release V [OPTIONS]",
        "publish a folder as the next release of a package",
        "Packs the files of a folder into compressed chunks beside a declarations file, which is created when it\n"
        "does not exist, and declares them there as a release. When the declarations already have a package with\n"
        "that ID (or, without --package, with that name) this is its next release: a file at an unchanged place\n"
        "keeps its ID, and the files that changed last are packed first, so that an update fetches little more than\n"
        "what changed. Chunks of the newest release that hold hardly anything but unchanged files are used as they\n"
        "are. Otherwise a new package begins, and its ID is printed. Nothing shows before the last step; what cannot\n"
        "be published is refused before anything is packed. Several runs may publish at the same time.\n"
        "\n"
        "A patch makes a file of the one that an earlier release has. It is kept where it comes to at most 0.7 of the\n"
        "file compressed, and installations take patches or chunks, whichever is less.\n"
        "\n"
        "Files that fit a pattern of --exclude or a line of a file .voignore in the folder are left out, as version\n"
        "control does it: \"*.pdb\" anywhere, \"/notes.txt\" from the folder on, \"build/\" for folders,\n"
        "\"!keep.pdb\" to keep one after all.\n"
        "\n"
        "Links within the folder, empty folders, and which files are executable are published too, in a document\n"
        "attributes.xml of the release. Installations older than that document install the files alone, without\n"
        "links: where there are such ones, --no-attributes publishes the files that links lead to in their places,\n"
        "and nothing else.\n",
        Options(),
        1,
        1,
        Run};
}

} // namespace vo::tool
