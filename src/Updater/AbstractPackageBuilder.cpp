#include <Updater/AbstractPackageBuilder.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/VoVersion.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryDir.h>
#include <FileSystem/detail/NativeFile.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoFileByteStream.h>
#include <Threading/VoBroadcaster.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/IndexedRelease.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/ReleaseTree.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/files/FileAttributes.h>
#include <Updater/detail/files/SeenFiles.h>
#include <Updater/detail/publish/ChunkWriter.h>
#include <Updater/detail/publish/DeclaredHistory.h>
#include <Updater/detail/publish/IgnoreRules.h>
#include <Updater/detail/publish/PatchMaker.h>
#include <Updater/detail/publish/Publication.h>
#include <Updater/detail/publish/PublishingFolder.h>
#include <Updater/detail/publish/SourceTree.h>

#include <map>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vo::updater {

using namespace detail;

namespace {

// Longer targets make trouble below a long installation directory.
constexpr std::size_t LongTarget = 160;

// Where one release goes.
struct ReleasePlaces
{
    ReleasePlaces(const AdvertisedPackageListing& package, const VoFilePath& declarationsFile)
        : relative(ReleaseDirectory(package.packageID(), package.version()).file(Layout::DefinitionName))
        , release(declarationsFile.parent().appended(ReleaseDirectory(package.packageID(), package.version())))
        , chunks(release.directory(Layout::ChunksDirectory))
        , definition(release.file(Layout::DefinitionName))
    {
    }

    VoFilePath relative; // of the definition, as the declarations name it
    VoDirectoryPath release;
    VoDirectoryPath chunks;
    VoFilePath definition;
};

// Those of the first age are asked; the others were read to compare them.
void RequireReadable(const VoFilePath& source)
{
    std::error_code error;
    vo::detail::NativeFile::OpenForReading(vo::detail::ToNative(source), error);
    if (error)
        throw VoCannotOpenFileException(source);
}

} // namespace

struct AbstractPackageBuilder::Message::Private
{
    VoString message;
    Kind kind;
};

AbstractPackageBuilder::Message::Message(const VoString& message, Kind kind)
    : m_private(new Private{message, kind})
{
}

AbstractPackageBuilder::Message::~Message() = default;

const VoString& AbstractPackageBuilder::Message::message() const
{
    return m_private->message;
}

AbstractPackageBuilder::Message::Kind AbstractPackageBuilder::Message::kind() const
{
    return m_private->kind;
}

struct AbstractPackageBuilder::Private
{
    AdvertisedPackageListing package;
    VoTemporaryDir intermediateDirectory;
    const LivingFolder living{intermediateDirectory.path()};
    std::unique_ptr<ChunkWriter> chunks;
    // Those asked about one by one, by their folded names.
    std::unordered_map<std::string, FileTable::Number> targets;
    std::vector<VoDirectoryPath> directories;      // added whole, their output not left out
    KeptChunks kept;                               // for the directory that is being added
    std::unordered_map<VoUUID, VoFilePath> shared; // chunks of the package that an earlier release has, too
    SeenFiles::Stamps stamps;                      // of the package's files
    std::int64_t begun = 0;                        // before the first of them was taken
    bool isPackedAnew = false;
    std::map<VoFilePath, VoFilePath> sources; // by target, for patches
    std::size_t patchedReleases = 0;
    ReleasePatches patches;
    std::vector<VoDirectoryPath> published; // where finalise has moved chunks, also when it failed
    IgnoreRules ignored;
    bool keepsAttributes = false;
    bool isPortable = false;
    ReleaseAttributes attributes;
    Approval approval;
    ReleaseTerms terms;
    ReleaseSigning signing;
    ManifestState manifest;
    std::size_t listed = 0;
    unsigned waits = 0;
    bool busy = false;
    bool finalised = false;
    VoBroadcaster<VoSharedPtr<Message>> broadcaster;

    void broadcast(const VoString& text, const AbstractPackageBuilder& builder, Message::Kind kind = Message::Step);
    void moveChunk(const VoUUID& id, const VoDirectoryPath& directory, Publication& publication);
    void endAge(const SourceFiles& files, const std::vector<SourceFiles::Number>& next);
    FileTable::Number find(const VoFilePath& target);
    bool share(const KeptChunks::Chunk* chunk);
    PackedFile pack(const VoFilePath& source, const VoFilePath& target);
};

// Marks the builder as working, which refuses calls from its own messages.
class AbstractPackageBuilder::Session
{
public:
    explicit Session(Private& builder)
        : m_builder(builder)
    {
        if (m_builder.busy)
            throw VoInvalidCallException("Package builder called from within one of its messages");
        if (m_builder.finalised)
            throw VoInvalidCallException("Package has already been finalised");
        m_builder.busy = true;
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() { m_builder.busy = false; }

private:
    Private& m_builder;
};

void AbstractPackageBuilder::Private::broadcast(const VoString& text, const AbstractPackageBuilder& builder,
                                                Message::Kind kind)
{
    try {
        broadcaster.broadcast(VoSharedPtr<Message>::Make(text, kind));
    } catch (const VoUserCancelledException&) {
        throw;
    } catch (...) {
        builder.error("Receiver of messages failed: " + CurrentExceptionText());
    }
}

void AbstractPackageBuilder::Private::moveChunk(const VoUUID& id, const VoDirectoryPath& directory,
                                                Publication& publication)
{
    const VoFilePath target = directory.file(ChunkFileName(id));
    const VoFilePath fresh = chunks->path(id);
    if (VoFileSystem::Exists(fresh)) {
        publication.moveFile(fresh, target);
        return;
    }
    if (VoFileSystem::Exists(target))
        return;
    // A finalise that failed may have been given another place, and could not take the chunk back.
    for (const VoDirectoryPath& place : published) {
        const VoFilePath moved = place.file(ChunkFileName(id));
        if (VoFileSystem::Exists(moved)) {
            publication.moveFile(moved, target);
            return;
        }
    }
    throw VoFileNotFoundException(fresh);
}

// A client that lacks the files of one age seldom lacks those of the next. But each chunk is a file and a request: ages
// of hardly any bytes go on in the same one.
void AbstractPackageBuilder::Private::endAge(const SourceFiles& files, const std::vector<SourceFiles::Number>& next)
{
    const std::uint64_t most = chunks->capacity() / 16;
    std::uint64_t bytes = chunks->mark().size;
    for (auto file = next.begin(); bytes > 0 && bytes <= most && file != next.end(); ++file) {
        const VoFilePath source = files.source(*file);
        bytes += IsRegularFile(source) ? VoFileSystem::FileSize(source) : 0;
    }
    if (bytes > most)
        chunks->endChunk();
}

// Of a single folder, as a rule all of a package, nobody asks.
FileTable::Number AbstractPackageBuilder::Private::find(const VoFilePath& target)
{
    const FileTable& files = TableOf(package.files());
    for (auto file = static_cast<FileTable::Number>(targets.size()); file < files.size(); ++file)
        targets.emplace(FoldedName(VoString(std::string(files.path(file)))).toStdString(), file);
    const auto known = targets.find(FoldedName(target.path()).toStdString());
    return known == targets.end() ? FileTable::None : known->second;
}

// Whether a chunk is kept; it is one of the package then.
bool AbstractPackageBuilder::Private::share(const KeptChunks::Chunk* chunk)
{
    if (chunk && shared.count(chunk->listing.id()) == 0) {
        shared.emplace(chunk->listing.id(), chunk->path);
        package.add(chunk->listing);
    }
    return chunk != nullptr;
}

PackedFile AbstractPackageBuilder::Private::pack(const VoFilePath& source, const VoFilePath& target)
{
    const AdvertisedFileListing* earlier = kept.file(target);
    VoFileInputByteStream stream(source);
    stream.requireOpen();
    if (!earlier)
        return chunks->append(stream);
    PackedFile packed =
        chunks->append(stream, earlier->chunks(), [this](const VoUUID& id) { return share(kept.find(id)); });
    if (packed.checksum != earlier->checksum())
        throw VoFileException("File changed while being added: " + source.path(), source);
    return packed;
}

AbstractPackageBuilder::AbstractPackageBuilder(const VoUUID& packageID, const VoString& name, const VoVersion& version,
                                               std::uint64_t chunkSize, int compressionLevel)
    : m_private(new Private)
{
    RequireSafeIdentifier(packageID);
    RequireShowableName(name);
    m_private->package = AdvertisedPackageListing(packageID, VoUpdater::GenerateID(), name, version);
    m_private->attributes = ReleaseAttributes(packageID, m_private->package.versionID());
    m_private->chunks = std::make_unique<ChunkWriter>(
        m_private->intermediateDirectory.path(), chunkSize, compressionLevel,
        [this](const VoUUID& id, const VoFilePath& path) {
            announce("Writing chunk " + id.toString() + " to " + path.path());
        },
        [this](const ChunkListing& chunk) { m_private->package.add(chunk); });
}

AbstractPackageBuilder::~AbstractPackageBuilder() = default;

void AbstractPackageBuilder::add(const VoFilePath& source, const VoFilePath& target)
{
    const Session session(*m_private);
    addFile({source, target, {}}, true);
}

void AbstractPackageBuilder::add(const VoDirectoryPath& directory)
{
    const Session session(*m_private);
    m_private->directories.push_back(directory);
    addDirectory(directory, VoFilePath());
}

void AbstractPackageBuilder::add(const VoDirectoryPath& directory, const VoFilePath& declarationsFile)
{
    const Session session(*m_private);
    addDirectory(directory, declarationsFile);
}

void AbstractPackageBuilder::addByAge(const VoDirectoryPath& directory, const VoFilePath& declarationsFile)
{
    const Session session(*m_private);
    addDirectory(directory, declarationsFile, true);
}

void AbstractPackageBuilder::addDirectory(const VoDirectoryPath& directory, const VoFilePath& declarationsFile,
                                          bool byAge)
{
    const auto warn = [this](const VoString& text) { warning(text); };
    if (!declarationsFile.isNull())
        requirePublishable(declarationsFile);
    if (m_private->stamps.empty())
        m_private->begun = SeenFiles::Now();
    ReleaseAttributes attributes = m_private->attributes;
    const SourceFiles sources = ListSources(directory, declarationsFile, m_private->ignored, warn,
                                            m_private->keepsAttributes ? &attributes : nullptr);
    requirePackable(sources);
    requireSound(attributes, sources);
    m_private->listed += sources.size();
    if (m_private->stamps.empty())
        m_private->stamps.reserve(sources.size());
    std::vector<std::vector<SourceFiles::Number>> ages;
    if (byAge) {
        const auto reading = [this](const VoFilePath& file) { announce("Comparing file: " + file.path()); };
        const std::uint64_t capacity = m_private->isPackedAnew ? 0 : m_private->chunks->capacity();
        AgedSources aged = SortedByAge(sources, packageID(), declarationsFile, base(), capacity, reading, warn);
        ages = std::move(aged.ages);
        m_private->kept = std::move(aged.kept);
    } else {
        ages.emplace_back(sources.size());
        std::iota(ages.front().begin(), ages.front().end(), SourceFiles::Number{0});
    }
    for (const SourceFiles::Number file : ages.front())
        RequireReadable(sources.source(file));
    for (std::size_t age = 0; age < ages.size(); ++age) {
        if (age > 0)
            m_private->endAge(sources, ages[age]);
        for (const SourceFiles::Number file : ages[age])
            addFile(sources.file(file), false);
    }
    m_private->chunks->settle();
    m_private->kept = KeptChunks();
    m_private->attributes.links = std::move(attributes.links);
    m_private->attributes.folders = std::move(attributes.folders);
}

std::shared_ptr<const IndexedRelease> AbstractPackageBuilder::base() const
{
    return nullptr;
}

void AbstractPackageBuilder::requireSound(const ReleaseAttributes& attributes, const SourceFiles& sources) const
{
    if (attributes.isEmpty())
        return;
    for (const ReleaseAttributes::Link& link : attributes.links)
        requireTarget(link.target);
    for (const VoFilePath& folder : attributes.folders)
        requireTarget(folder);
    std::vector<VoFilePath> targets;
    targets.reserve(sources.size() + package().files().size());
    for (SourceFiles::Number file = 0; file < sources.size(); ++file)
        targets.push_back(sources.target(file));
    for (const AdvertisedFileListing& file : package().files())
        targets.push_back(file.target());
    ValidateAttributes(attributes, targets);
}

// What would be refused after hours of packing is refused now.
void AbstractPackageBuilder::requirePackable(const SourceFiles& sources) const
{
    const FileTable& added = TableOf(package().files());
    std::vector<std::string_view> targets;
    targets.reserve(sources.size() + added.size());
    for (SourceFiles::Number file = 0; file < sources.size(); ++file) {
        const VoFilePath target = sources.target(file);
        requireTarget(target);
        requireNew(target);
        targets.push_back(sources.targetText(file));
    }
    for (FileTable::Number file = 0; file < added.size(); ++file)
        targets.push_back(added.path(file));
    if (const auto clash = FindTargetClash(targets)) {
        const VoString first{std::string(clash->first)};
        const VoString second{std::string(clash->second)};
        if (clash->isDirectory)
            throw VoValidationException("Invalid target path: " + first + ": it is also the directory of " + second);
        throw VoInvalidParameterException("File already added to package: " + first + " and " + second +
                                          " differ only in letter case");
    }
}

void AbstractPackageBuilder::requireNew(const VoFilePath& target) const
{
    const FileTable::Number known = m_private->find(target);
    if (known == FileTable::None)
        return;
    VoString text = "File already added to package: " + target.path();
    const VoString other(std::string(TableOf(package().files()).path(known)));
    if (!other.equal(target.path(), VoString::CaseSensitive))
        text += " and " + other + " differ only in letter case";
    throw VoInvalidParameterException(text);
}

void AbstractPackageBuilder::requireTarget(const VoFilePath& target) const
{
    RequirePublishableTarget(target);
    if (m_private->isPortable)
        RequirePortableTarget(target);
}

void AbstractPackageBuilder::exclude(const VoString& pattern)
{
    m_private->ignored.add(pattern);
}

void AbstractPackageBuilder::excludeListed(const VoFilePath& list)
{
    m_private->ignored.addListed(list);
}

void AbstractPackageBuilder::addFile(const SourceFile& file, bool isAlone)
{
    const VoFilePath& target = file.target;
    if (isAlone) { // those of a directory have been asked about together
        requireTarget(target);
        requireNew(target);
    }

    announce("Adding file to package: " + target.path(), Message::FileAdded);
    if (target.path().size() > LongTarget) {
        warning("File path exceeds 160 characters: " + target.path());
        m_private->broadcast("Warning - File path exceeds 160 characters: " + target.path(), *this);
    }
    const ChunkWriter::Mark mark = m_private->chunks->mark();
    try {
        const AdvertisedFileListing* const earlier = keptFile(file);
        const AdvertisedFileListing packed = earlier ? AdvertisedFileListing() : packFile(file.source, target);
        if (isAlone)
            m_private->chunks->settle();
        const bool isProgram = m_private->keepsAttributes && MarksExecutables() && IsExecutable(file.source);
        m_private->package.add(earlier ? *earlier : packed);
        m_private->stamps.push_back(file.stamp);
        if (isProgram)
            m_private->attributes.executables.pushBack(target);
    } catch (...) {
        m_private->chunks->rollBack(mark);
        throw;
    }
    if (m_private->patchedReleases > 0)
        m_private->sources.emplace(target, file.source);
}

// The file as the earlier release lists it, when it can be listed so again: all its bytes are in kept chunks. It was
// compared, and is not read again.
const AdvertisedFileListing* AbstractPackageBuilder::keptFile(const SourceFile& file)
{
    const AdvertisedFileListing* earlier = m_private->kept.file(file.target);
    if (!earlier || ListedFile(*earlier).path() != file.target.path().toStdString() ||
        earlier->id() != fileID(file.target))
        return nullptr;
    const auto chunks = m_private->kept.chunksOf(*earlier);
    if (chunks.empty())
        return nullptr;
    if (VoFileSystem::FileSize(file.source) != static_cast<std::uint64_t>(earlier->size().bytes()))
        throw VoFileException("File changed while being added: " + file.source.path(), file.source);
    for (const KeptChunks::Chunk* chunk : chunks)
        m_private->share(chunk);
    return earlier;
}

AdvertisedFileListing AbstractPackageBuilder::packFile(const VoFilePath& source, const VoFilePath& target)
{
    // A pipe or a device could have no end.
    if (!IsRegularFile(source)) {
        if (!VoFileSystem::Exists(source))
            throw VoFileNotFoundException(source);
        throw VoCannotOpenFileException(source);
    }
    const PackedFile packed = m_private->pack(source, target);
    if (packed.size != VoFileSystem::FileSize(source))
        throw VoFileException("File changed while being added: " + source.path(), source);
    return AdvertisedFileListing(target, packed.pieces, fileID(target), packed.checksum,
                                 VoDownloadSize(static_cast<std::int64_t>(packed.size)));
}

void AbstractPackageBuilder::finalise(const VoFilePath& declarationsFile)
{
    const Session session(*m_private);
    if (declarationsFile.isNull())
        throw VoInvalidPathFileException(declarationsFile);
    warnOfOwnOutput(declarationsFile);

    const ReleasePlaces places(m_private->package, declarationsFile);
    writeChunk();
    m_private->package.setAttributes(std::make_shared<ReleaseAttributes>(m_private->attributes));
    ValidatePackage(m_private->package);
    ValidateAttributes(m_private->attributes, m_private->package);
    m_private->broadcast("Finalising build", *this);

    Publication publication(declarationsFile, [&] { waitForOthers(declarationsFile); });
    requireDeclarable(publication.declarations());
    if (VoFileSystem::Exists(places.release))
        warning("Release directory already exists: " + places.release.path());
    publication.makeDirectory(places.chunks);

    m_private->broadcast("Moving chunks to output directory", *this);
    m_private->published.push_back(places.chunks);
    for (const ChunkListing& chunk : m_private->package.chunks()) {
        const auto shared = m_private->shared.find(chunk.id());
        if (shared != m_private->shared.end())
            publication.shareFile(Expected(shared->second, chunk), places.chunks.file(ChunkFileName(chunk.id())));
        else
            m_private->moveChunk(chunk.id(), places.chunks, publication);
    }
    VoFileSystem::SyncDirectory(places.chunks);

    m_private->broadcast("Writing definition file: " + places.definition.path(), *this);
    publication.writeDefinition(m_private->package, places.definition, places.relative);
    publishPatches(publication, declarationsFile, places.release);

    m_private->broadcast("Updating declarations file: " + declarationsFile.path(), *this);
    m_private->manifest =
        publication.declare(m_private->package, places.relative, m_private->terms, m_private->signing);
    m_private->finalised = true;
    SeenFiles::Keep(declarationsFile.parent().file(SeenFiles::PublishedName), places.definition, m_private->stamps,
                    m_private->begun);

    try {
        m_private->broadcast("Package creation complete", *this);
    } catch (const VoUserCancelledException&) {
        // Too late: the release is published.
    }
}

// Before the release is declared: whoever is killed here leaves the former releases as they were.
void AbstractPackageBuilder::publishPatches(Publication& publication, const VoFilePath& declarationsFile,
                                            const VoDirectoryPath& release)
{
    const auto working = [this](const VoFilePath& target) { announce("Making patch: " + target.path()); };
    const auto warn = [this](const VoString& text) { warning(text); };
    PatchMaker maker(m_private->package, m_private->sources, m_private->intermediateDirectory.path(), working, warn);
    std::size_t left = m_private->patchedReleases;
    for (const VoFilePath& definition : left > 0
                                            ? DefinitionsOf(publication.declarations(), packageID(), declarationsFile)
                                            : std::vector<VoFilePath>()) {
        if (left == 0 || definition == release.file(Layout::DefinitionName))
            continue;
        --left;
        try {
            maker.addFrom(definition);
        } catch (const VoUserCancelledException&) {
            throw;
        } catch (const VoException&) {
            warning("No patches from release: " + definition.path() + ": " + vo::CurrentExceptionText());
        }
    }
    const VoDirectoryPath directory = release.directory(ReleasePatches::Directory);
    std::optional<VoString> document;
    if (!maker.patches().patches.isEmpty()) {
        publication.makeDirectory(directory);
        for (const ReleasePatches::Patch& patch : maker.patches().patches)
            publication.moveFile(maker.path(patch), directory.file(maker.path(patch).filename()));
        VoFileSystem::SyncDirectory(directory);
        document = maker.patches().toDocument();
    }
    publication.writeBeside(release.file(ReleasePatches::FileName), document);
    m_private->patches = maker.patches();
}

void AbstractPackageBuilder::makePatches(std::size_t releases)
{
    m_private->patchedReleases = releases;
}

const ReleasePatches& AbstractPackageBuilder::patches() const
{
    return m_private->patches;
}

void AbstractPackageBuilder::packAnew()
{
    m_private->isPackedAnew = true;
}

std::size_t AbstractPackageBuilder::chunksShared() const
{
    return m_private->shared.size();
}

void AbstractPackageBuilder::keepAttributes()
{
    m_private->keepsAttributes = true;
}

void AbstractPackageBuilder::requirePortableNames()
{
    m_private->isPortable = true;
}

void AbstractPackageBuilder::setApproval(Approval approval)
{
    m_private->approval = std::move(approval);
}

void AbstractPackageBuilder::setTerms(const ReleaseTerms& terms, const ReleaseSigning& signing)
{
    m_private->terms = terms;
    m_private->signing = signing;
}

const ManifestState& AbstractPackageBuilder::manifestState() const
{
    return m_private->manifest;
}

void AbstractPackageBuilder::requireDeclarable(const AdvertisedPackages& declarations) const
{
    for (const AdvertisedPackages::Declaration& declaration : declarations.declarations())
        RequireNoOtherSpelling(packageID(), declaration.packageID());
    if (m_private->approval)
        m_private->approval(declarations);
}

// All that finalise would refuse, before a byte is packed. That the place can be written to shows in the lock's file.
void AbstractPackageBuilder::requirePublishable(const VoFilePath& declarationsFile)
{
    const ReleasePlaces places(m_private->package, declarationsFile);
    vo::detail::RequireValidLength(places.chunks.file(ChunkFileName(VoUpdater::GenerateID())));
    Publication trial(declarationsFile, [&] { waitForOthers(declarationsFile); });
    requireDeclarable(trial.declarations());
    trial.manifest().requireSigners(m_private->signing);
}

// Tells now and then, so that a receiver can end the wait.
void AbstractPackageBuilder::waitForOthers(const VoFilePath& declarationsFile)
{
    constexpr unsigned between = 50;
    if (m_private->waits++ % between == 0)
        m_private->broadcast("Waiting for another publication to: " + declarationsFile.path(), *this);
}

void AbstractPackageBuilder::warnOfOwnOutput(const VoFilePath& declarationsFile) const
{
    for (const VoDirectoryPath& directory : m_private->directories) {
        if (vo::detail::IsInsideCanonical(directory, declarationsFile))
            warning("Declarations file lies inside an added directory: " + declarationsFile.path());
    }
}

VoReceiver AbstractPackageBuilder::connect(std::function<void(const VoSharedPtr<Message>&)> callback)
{
    return m_private->broadcaster.connect(std::move(callback));
}

const AdvertisedPackageListing& AbstractPackageBuilder::package() const
{
    return m_private->package;
}

const VoUUID& AbstractPackageBuilder::packageID() const
{
    return m_private->package.packageID();
}

const VoUUID& AbstractPackageBuilder::versionID() const
{
    return m_private->package.versionID();
}

const VoVersion& AbstractPackageBuilder::version() const
{
    return m_private->package.version();
}

std::size_t AbstractPackageBuilder::filesListed() const
{
    return m_private->listed;
}

VoString AbstractPackageBuilder::labelled(const VoString& text) const
{
    return text + " [packageID=" + packageID().toString() + "] [versionID=" + versionID().toString() + "]";
}

void AbstractPackageBuilder::diagnostic(const VoString& text) const
{
    if (PublishingLog().isEnabled(vo::logging::Level::Diagnostic))
        PublishingLog().diagnostic(labelled(text));
}

void AbstractPackageBuilder::warning(const VoString& text) const
{
    PublishingLog().warning(labelled(text));
}

void AbstractPackageBuilder::error(const VoString& text) const
{
    PublishingLog().error(labelled(text));
}

void AbstractPackageBuilder::announce(const VoString& text, Message::Kind kind)
{
    diagnostic(text);
    m_private->broadcast(text, *this, kind);
}

void AbstractPackageBuilder::writeChunk()
{
    m_private->chunks->writeChunk();
}

} // namespace vo::updater
