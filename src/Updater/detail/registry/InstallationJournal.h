#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoUniquePtr.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/InstalledPackageListing.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace vo::updater::detail {

/// What a run does to one place. The name aside is beside the place and was free when the run began.
struct PlaceChange
{
    enum class Kind
    {
        Added,    ///< Nothing was there; a new file comes.
        Replaced, ///< What was there goes aside, a file or a whole directory; a new file comes.
        Removed,  ///< What was there goes aside, and no file comes. A directory may come.
        Inside,   ///< Goes aside with the directory that it lies in; noted so that it is erased in the end.
    };

    Kind kind;
    VoFilePath place;
    VoFilePath aside; ///< Null for Added.
};

/// The changes of a run in their order. Their names are one text: a first installation has a change for each file.
class VOCORE_PRIVATE_EXPORT PlaceChanges
{
public:
    /// Goes through the changes, each made when it is asked for.
    class Iterator
    {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = PlaceChange;
        using difference_type = std::ptrdiff_t;
        using pointer = const PlaceChange*;
        using reference = PlaceChange;

        Iterator(const PlaceChanges& changes, std::size_t number)
            : m_changes(&changes)
            , m_number(number)
        {
        }
        PlaceChange operator*() const { return (*m_changes)[m_number]; }
        Iterator& operator++()
        {
            ++m_number;
            return *this;
        }
        bool operator==(const Iterator& other) const { return m_number == other.m_number; }
        bool operator!=(const Iterator& other) const { return m_number != other.m_number; }

    private:
        const PlaceChanges* m_changes;
        std::size_t m_number;
    };

    void pushBack(const PlaceChange& change);
    PlaceChange operator[](std::size_t number) const;
    std::size_t size() const { return m_rows.size(); }
    bool isEmpty() const { return m_rows.empty(); }
    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, m_rows.size()}; }

private:
    struct Row
    {
        std::size_t begin; // of the place among the texts; the name aside follows
        std::uint32_t placeLength;
        std::uint32_t asideLength;
        PlaceChange::Kind kind;
    };

    std::string m_texts;
    std::vector<Row> m_rows;
};

/// What a run is going to do, noted before it does the first of it.
class VOCORE_PRIVATE_EXPORT RunNotes final : public XMLObject
{
public:
    RunNotes() = default;
    explicit RunNotes(VoXMLStreamElementLoader& element);

    Type objectType() const override;
    void writeAttributes(VoXMLElementWriter& element) const override;
    void writeElements(VoXMLElementWriter& element) const override;

    /// The record of the installation as it will be; has every file that is Added or Replaced.
    InstalledPackageListing result;
    /// Where the release before it is installed; null for none. Nothing outside of this directory and of that of
    /// `result` is changed, whatever the notes say.
    VoDirectoryPath before;
    /// Each place once. Of two places none lies below the other, but for a Removed one that becomes a directory, and
    /// for those that are Inside a Replaced one.
    PlaceChanges changes;
    VoDeque<VoDirectoryPath> made; ///< Directories that this run or an interrupted one makes, outermost first.
    /// Recorded directories that hold nothing any more in the end, innermost first; `result` does not have them.
    VoDeque<VoDirectoryPath> emptied;
    /// What earlier runs moved aside and could not erase yet, as the file of a program that was running.
    VoDeque<VoFilePath> leftovers;
};

/// Notes on disk what an installation does, so that one that was killed at any point ends as if it had not begun or as
/// if it had gone through, whichever operation comes next:
///
///     <update directory>\installed\<packageID>.pending    to be undone: old files are moved back, new ones removed
///     <update directory>\installed\<packageID>.placed     all new files are in place and checked: to be recorded
///     <update directory>\installed\<packageID>.replaced   recorded as well: old files are to be erased
///
/// One document bears these names one after the other. Renaming it is what decides: up to the name "placed" no old file
/// is lost, and from then on no new one is needed.
class VOCORE_PRIVATE_EXPORT InstallationJournal
{
public:
    enum class Phase
    {
        Pending,
        Placed,
        Replaced,
    };

    /// The journal of the package whose listing has that path.
    static InstallationJournal OfListing(const VoFilePath& listing);
    /// A journal that keeps nothing.
    InstallationJournal();

    bool exists() const; ///< Whether there are notes of any phase.
    /// The notes of a phase; empty when there are none. Notes that are no such document are logged and count as none;
    /// those that cannot be read for another reason throw what reading throws.
    VoUniquePtr<RunNotes> read(Phase phase) const;
    /// Notes what a run is going to do; older notes of any phase are gone then, so the new ones take over what is left
    /// to do of them.
    void begin(const RunNotes& notes) const;
    void change(Phase from, Phase to) const; ///< @throws VoFileException
    void remove(Phase phase) const;          ///< Forgets; nothing when there are no such notes.

private:
    explicit InstallationJournal(const VoFilePath& listing);
    VoFilePath path(Phase phase) const;

    VoFilePath m_listing; // null: keeps nothing
};

/// Takes back what a run did, in whichever state it ended; may be repeated. The result is false while a directory that
/// the run made holds something else: then the notes had better be kept, so that a later operation still knows where it
/// comes from. Does all it can, then throws the first VoFileException that it met.
VOCORE_PRIVATE_EXPORT bool Undo(const RunNotes& notes);

/// Erases the old files of a run that is recorded, and the directories that are empty without them; may be repeated.
/// The result is false when some could not be erased, which is logged.
VOCORE_PRIVATE_EXPORT bool EraseOld(const RunNotes& notes);

/// Ends a run that was interrupted: undoes it, or records and ends it. `record` keeps a listing and tells whether all
/// of that succeeded.
/// @throws VoFileException when an old file cannot be moved back, and what `record` throws; the notes are kept then
VOCORE_PRIVATE_EXPORT void Recover(const InstallationJournal& journal,
                                   const std::function<bool(const InstalledPackageListing&)>& record);

} // namespace vo::updater::detail
