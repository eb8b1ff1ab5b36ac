#include <Updater/detail/registry/InstallationJournal.h>

#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/PlainListing.h>
#include <Updater/detail/documents/PlainWriter.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/FileAttributes.h>
#include <Updater/detail/files/FileCheck.h>
#include <Updater/detail/files/FileInstaller.h>
#include <Updater/detail/files/HeldTree.h>
#include <Updater/detail/files/LinkPlaces.h>
#include <XML/VoXMLStreamLoader.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vo::updater::detail {

namespace {

using Kind = PlaceChange::Kind;
using Phase = InstallationJournal::Phase;

constexpr const char* JournalTag = "journal";
constexpr const char* ChangesTag = "changes";
constexpr const char* MadeTag = "made";
constexpr const char* EmptiedTag = "emptied";
constexpr const char* LeftoversTag = "leftovers";
constexpr const char* BeforeAttribute = "before";
constexpr const char* AsideAttribute = "aside";

constexpr const char* KindTags[] = {"added", "replaced", "removed", "inside"};
constexpr const char* Suffixes[] = {".pending", ".placed", ".replaced"};
constexpr Phase Phases[] = {Phase::Pending, Phase::Placed, Phase::Replaced};

template <typename Path>
void WritePaths(VoXMLElementWriter& element, const char* name, const VoDeque<Path>& paths)
{
    const auto container = element.createElement(name);
    for (const Path& path : paths)
        container->createElement(tag::Path)->writeAttribute(attribute::Path, Path::Serialize(path));
}

template <typename Path>
void ReadPaths(VoXMLStreamElementLoader& container, VoDeque<Path>& paths)
{
    container.processChildren(
        [&paths](VoXMLStreamElementLoader& child) { paths.pushBack(ReadAttribute<Path>(child, attribute::Path)); });
}

const char* TagOf(const PlaceChange& change)
{
    return KindTags[static_cast<std::size_t>(change.kind)];
}

WrittenListing Written(const InstalledPackageListing& listing)
{
    return {listing, &listing.installationDirectory(), TableOf(listing.files()), nullptr, &listing.directories()};
}

template <typename Path>
bool ArePlain(const VoDeque<Path>& paths)
{
    return std::all_of(paths.begin(), paths.end(), [](const Path& path) { return IsPlainText(Bytes(path)); });
}

bool IsPlain(const RunNotes& notes)
{
    const auto isPlain = [](const PlaceChange& change) {
        return IsPlainText(Bytes(change.place)) && IsPlainText(Bytes(change.aside));
    };
    return IsPlainListing(Written(notes.result)) && IsPlainText(Bytes(notes.before)) &&
           std::all_of(notes.changes.begin(), notes.changes.end(), isPlain) && ArePlain(notes.made) &&
           ArePlain(notes.emptied) && ArePlain(notes.leftovers);
}

template <typename Path>
void WritePaths(PlainWriter& writer, const char* name, const VoDeque<Path>& paths)
{
    WriteItems(writer, name, paths.size(), [&](std::size_t i) {
        writer.raw("\t\t<path").attribute(attribute::Path, Bytes(Path::Serialize(paths[i]))).raw("/>").endLine();
    });
}

// The element of another document, a level deeper.
void WriteInside(PlainWriter& writer, const VoString& document)
{
    writer.indent(1);
    std::string_view rest = Bytes(document);
    for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
        const std::string_view line = rest.substr(0, end);
        if (line != PlainPrologue)
            writer.raw(line).endLine();
        rest.remove_prefix(end + 1);
    }
    writer.indent(0);
}

// The bytes that the general rules would write, without a step for each attribute: the notes have every file of the
// release, however few of them change.
bool WritePlain(const VoFilePath& path, const RunNotes& notes)
{
    if (!IsPlain(notes))
        return false;
    VoAtomicFileWriter file(path);
    PlainWriter writer(file);
    writer.raw("<").raw(JournalTag).attribute(BeforeAttribute, Bytes(VoDirectoryPath::Serialize(notes.before)));
    writer.raw(">").endLine();
    writer.indent(1);
    WriteListing(writer, Written(notes.result));
    writer.indent(0);
    WriteItems(writer, ChangesTag, notes.changes.size(), [&](std::size_t i) {
        const PlaceChange change = notes.changes[i];
        writer.raw("\t\t<").raw(TagOf(change)).attribute(attribute::Path, Bytes(change.place));
        writer.attribute(AsideAttribute, Bytes(change.aside)).raw("/>").endLine();
    });
    WritePaths(writer, MadeTag, notes.made);
    WritePaths(writer, EmptiedTag, notes.emptied);
    WritePaths(writer, LeftoversTag, notes.leftovers);
    if (notes.result.attributes())
        WriteInside(writer, DocumentText(tag::Attributes, *notes.result.attributes()));
    writer.raw("</").raw(JournalTag).raw(">").endLine();
    writer.flush();
    file.commit();
    return true;
}

void ReadChanges(VoXMLStreamElementLoader& container, PlaceChanges& changes)
{
    container.processChildren([&changes](VoXMLStreamElementLoader& child) {
        const auto kind = std::find(std::begin(KindTags), std::end(KindTags), child.name());
        if (kind == std::end(KindTags))
            return;
        changes.pushBack({static_cast<Kind>(kind - std::begin(KindTags)),
                          ReadAttribute<VoFilePath>(child, attribute::Path),
                          ReadAttribute<VoFilePath>(child, AsideAttribute)});
    });
}

/// Works on the places of one run. Goes on after a failure and keeps the first one.
class Cleaner
{
public:
    explicit Cleaner(const RunNotes& notes)
        : m_notes(notes)
        , m_heldAfter(notes.result.installationDirectory())
        , m_heldBefore(notes.before)
        , m_after(notes.result.installationDirectory())
        , m_before(notes.before)
    {
    }

    // The order matters: a directory comes back when the file in its place is gone, directories that the run made are
    // removed when they are empty, and a file comes back when the directory in its place is gone.
    bool undo()
    {
        indexResult();
        attempt([&] { findLinksLeft(); });
        if (m_failure)
            return false; // what lies below such a link may be an old file
        for (const PlaceChange& change : m_notes.changes) {
            if (change.kind == Kind::Added || change.kind == Kind::Replaced)
                attempt([&] { eraseNew(change); });
        }
        for (const PlaceChange& change : m_notes.changes) {
            if (change.kind == Kind::Replaced)
                attempt([&] { moveBack(change); });
        }
        bool isComplete = true;
        for (std::size_t i = m_notes.made.size(); i-- > 0;)
            attempt([&] { isComplete = eraseDirectory(m_notes.made[i]) && isComplete; });
        for (const PlaceChange& change : m_notes.changes) {
            if (change.kind == Kind::Removed)
                attempt([&] { moveBack(change); });
        }
        return isComplete;
    }

    void eraseOld()
    {
        for (const PlaceChange& change : m_notes.changes) {
            if (change.kind != Kind::Added)
                attempt([&] { eraseOld(change.aside); });
        }
        for (const VoFilePath& path : m_notes.leftovers)
            attempt([&] { eraseOld(path); });
        for (const VoDirectoryPath& directory : m_notes.emptied)
            attempt([&] { eraseDirectory(directory); });
    }

    const std::exception_ptr& failure() const { return m_failure; }

private:
    template <typename Work>
    void attempt(Work work)
    {
        try {
            work();
        } catch (const VoFileException& exception) {
            Log().warning(exception.message());
            if (!m_failure)
                m_failure = std::current_exception();
        }
    }

    void indexResult()
    {
        for (const InstalledFileListing& file : m_notes.result.files())
            m_files.emplace(ListedFile(file).path(), &file);
        for (const LinkPlace& link : LinkPlacesOf(m_notes.result))
            m_links.emplace(std::string(Bytes(link.place)), link);
    }

    bool isInside(const VoFilePath& path) { return m_after.holds(path) || m_before.holds(path); }

    // Links that were to make room for directories and have not: what seems to lie below them lies elsewhere.
    void findLinksLeft()
    {
        for (const PlaceChange& change : m_notes.changes) {
            if (change.kind == Kind::Removed && ReadLink(change.place))
                m_linksLeft.push_back(std::string(Bytes(change.place)) + '\\');
        }
    }

    bool isBelowLink(const VoFilePath& place) const
    {
        return std::any_of(m_linksLeft.begin(), m_linksLeft.end(),
                           [&place](const std::string& link) { return Bytes(place).substr(0, link.size()) == link; });
    }

    // What stands at the place is ours when it was built and is the file that was to come. A file that was never put in
    // place is still beside it.
    void eraseNew(const PlaceChange& change)
    {
        if (isBelowLink(change.place) || !isInside(change.place))
            return;
        const VoFilePath built = BuiltPath(change.place);
        const bool wasPlaced = KindOf(built) == FileKind::None;
        EraseFile(built);
        const bool isAlone = change.kind == Kind::Added || KindOf(change.aside) == FileKind::Directory;
        if (wasPlaced && isAlone && hasNewContent(change.place))
            EraseFile(change.place);
    }

    bool hasNewContent(const VoFilePath& place) const
    {
        if (const auto file = m_files.find(Bytes(place)); file != m_files.end())
            return IsSound(Expected(place, *file->second));
        const auto link = m_links.find(std::string(Bytes(place)));
        return link != m_links.end() && IsInPlace(link->second);
    }

    void moveBack(const PlaceChange& change)
    {
        if (!isInside(change.place) || !isInside(change.aside) || KindOf(change.aside) == FileKind::None)
            return;
        if (change.kind == Kind::Removed && KindOf(change.place) != FileKind::None)
            throw VoFileException("Cannot restore file: " + change.place.path() + ": something else is in its place",
                                  change.place);
        MoveBack(change.aside, change.place);
    }

    // Of a directory only the empty ones in it: its files go by their own notes, which stand before it.
    void eraseOld(const VoFilePath& path)
    {
        if (!isInside(path))
            return;
        if (KindOf(path) != FileKind::Directory) {
            EraseFile(path);
            return;
        }
        VoDeque<VoDirectoryPath> directories{AsDirectory(path)};
        VoFileSystem::ForEachDirectory(directories.front(), true,
                                       [&](const VoDirectoryPath& inner) { directories.pushBack(inner); });
        for (; !directories.isEmpty(); directories.popBack()) {
            if (!EraseDirectoryIfEmpty(directories.back()))
                Log().warning("Directory not empty: " + directories.back().path());
        }
    }

    bool eraseDirectory(const VoDirectoryPath& directory)
    {
        if (!m_after.mayRemove(directory) && !m_before.mayRemove(directory))
            return true;
        return EraseDirectoryIfEmpty(directory);
    }

    const RunNotes& m_notes;
    const HeldTree m_heldAfter;
    const HeldTree m_heldBefore;
    Containment m_after;
    Containment m_before;
    std::unordered_map<std::string_view, const InstalledFileListing*> m_files; // views of the notes
    std::unordered_map<std::string, LinkPlace> m_links;                        // by place
    std::vector<std::string> m_linksLeft;                                      // with a separator behind
    std::exception_ptr m_failure;
};

} // namespace

void PlaceChanges::pushBack(const PlaceChange& change)
{
    const std::string_view place = Bytes(change.place);
    const std::string_view aside = Bytes(change.aside);
    m_rows.push_back({m_texts.size(), static_cast<std::uint32_t>(place.size()),
                      static_cast<std::uint32_t>(aside.size()), change.kind});
    m_texts.append(place).append(aside);
}

PlaceChange PlaceChanges::operator[](std::size_t number) const
{
    const Row& row = m_rows[number];
    const auto path = [this](std::size_t begin, std::size_t length) {
        return length == 0 ? VoFilePath() : VoFilePath::CreateUnchecked(VoString(m_texts.substr(begin, length)));
    };
    return {row.kind, path(row.begin, row.placeLength), path(row.begin + row.placeLength, row.asideLength)};
}

RunNotes::RunNotes(VoXMLStreamElementLoader& element)
    : before(ReadAttribute<VoDirectoryPath>(element, BeforeAttribute))
{
    std::shared_ptr<const ReleaseAttributes> attributes;
    element.processChildren([&](VoXMLStreamElementLoader& child) {
        const VoString name = child.name();
        if (name == tag::Package)
            result = InstalledPackageListing(child);
        else if (name == ChangesTag)
            ReadChanges(child, changes);
        else if (name == MadeTag)
            ReadPaths(child, made);
        else if (name == EmptiedTag)
            ReadPaths(child, emptied);
        else if (name == LeftoversTag)
            ReadPaths(child, leftovers);
        else if (name == tag::Attributes)
            attributes = std::make_shared<ReleaseAttributes>(child);
    });
    result.setAttributes(std::move(attributes));
}

XMLObject::Type RunNotes::objectType() const
{
    return Type::RunNotes;
}

void RunNotes::writeAttributes(VoXMLElementWriter& element) const
{
    WriteAttribute(element, BeforeAttribute, before);
}

void RunNotes::writeElements(VoXMLElementWriter& element) const
{
    WriteChild(element, tag::Package, result);
    {
        const auto container = element.createElement(ChangesTag);
        for (const PlaceChange& change : changes) {
            const auto child = container->createElement(TagOf(change));
            WriteAttribute(*child, attribute::Path, change.place);
            WriteAttribute(*child, AsideAttribute, change.aside);
        }
    }
    WritePaths(element, MadeTag, made);
    WritePaths(element, EmptiedTag, emptied);
    WritePaths(element, LeftoversTag, leftovers);
    if (result.attributes())
        WriteChild(element, tag::Attributes, *result.attributes());
}

InstallationJournal InstallationJournal::OfListing(const VoFilePath& listing)
{
    return InstallationJournal(listing);
}

InstallationJournal::InstallationJournal() = default;

InstallationJournal::InstallationJournal(const VoFilePath& listing)
    : m_listing(listing)
{
}

VoFilePath InstallationJournal::path(Phase phase) const
{
    constexpr std::string_view listingSuffix = ".xml";
    const std::string_view text = Bytes(m_listing);
    std::string result(text.substr(0, text.size() - listingSuffix.size()));
    result += Suffixes[static_cast<std::size_t>(phase)];
    return VoFilePath::CreateUnchecked(VoString(std::move(result)));
}

bool InstallationJournal::exists() const
{
    return !m_listing.isNull() && std::any_of(std::begin(Phases), std::end(Phases),
                                              [this](Phase phase) { return KindOf(path(phase)) != FileKind::None; });
}

VoUniquePtr<RunNotes> InstallationJournal::read(Phase phase) const
{
    if (m_listing.isNull() || KindOf(path(phase)) == FileKind::None)
        return {};
    try {
        VoXMLStreamLoader loader;
        loader.addGlobalRule(JournalTag, Build<RunNotes>);
        loader.addGlobalRule(tag::File, Build<InstalledFileListing>);
        if (auto notes = DynamicCast<RunNotes>(LoadDocument(loader, path(phase), VoString())))
            return notes;
        Log().warning("Journal of an interrupted installation is another document: " + path(phase).path());
    } catch (const VoFileException&) {
        throw;
    } catch (const VoException& exception) {
        Log().warning("Journal of an interrupted installation cannot be used: " + path(phase).path() + ": " +
                      exception.message());
    }
    return {};
}

void InstallationJournal::begin(const RunNotes& notes) const
{
    if (m_listing.isNull())
        return;
    const VoFilePath document = path(Phase::Pending);
    VoFileSystem::CreateDirectory(document.parent(), true);
    AtStep(FileStep::WriteDocument, document.path());
    if (!WritePlain(document, notes))
        WriteDocument(document, JournalTag, notes);
    // They took its leftovers over. Killed in between, recovering meets both, and erasing what is gone does nothing.
    remove(Phase::Replaced);
}

void InstallationJournal::change(Phase from, Phase to) const
{
    if (m_listing.isNull())
        return;
    const VoFilePath document = path(to);
    AtStep(FileStep::ChangePhase, document.path());
    VoFileSystem::MoveFile(path(from), document);
    try {
        VoFileSystem::SyncDirectory(document.parent());
    } catch (const VoFileException& exception) {
        // The phase has changed; a caller that took it for unchanged would do the wrong thing.
        Log().warning("Directory cannot be forced to disk: " + document.parent().path() + ": " + exception.message());
    }
}

void InstallationJournal::remove(Phase phase) const
{
    if (!m_listing.isNull())
        EraseFile(path(phase));
}

bool Undo(const RunNotes& notes)
{
    Cleaner cleaner(notes);
    const bool isComplete = cleaner.undo();
    if (cleaner.failure())
        std::rethrow_exception(cleaner.failure());
    return isComplete;
}

bool EraseOld(const RunNotes& notes)
{
    Cleaner cleaner(notes);
    cleaner.eraseOld();
    return !cleaner.failure();
}

// The oldest run first: notes of the phase "replaced" may be those of the run before, and old files that it left aside
// are gone before those of the next one are moved back or erased. What throws keeps its notes and all later ones.
void Recover(const InstallationJournal& journal, const std::function<bool(const InstalledPackageListing&)>& record)
{
    if (const auto notes = journal.read(Phase::Replaced); notes && EraseOld(*notes))
        journal.remove(Phase::Replaced);
    if (const auto notes = journal.read(Phase::Placed); notes && record(notes->result)) {
        journal.change(Phase::Placed, Phase::Replaced);
        if (EraseOld(*notes))
            journal.remove(Phase::Replaced);
    }
    if (const auto notes = journal.read(Phase::Pending); notes && Undo(*notes))
        journal.remove(Phase::Pending);
}

} // namespace vo::updater::detail
