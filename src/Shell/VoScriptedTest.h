#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <Threading/VoStopFlag.h>
#include <Time/VoTimeDuration.h>

#include <functional>

/// A script of the command shell that says what it expects of what it does.
///
///     # tags: tables quick
///     # limit: 20s
///     table.load $_folder/gains.csv
///     table.cell $_ 1 Gain
///     expect $_ 3.16 tolerance=0.01
///     expect-error "File not found" table.load none.csv
///     file.write note.txt done
///     expect-file note.txt contains=done
///
/// Beside the shell's own lines there are `expect ACTUAL EXPECTED [tolerance=0]`, which compares numbers by their
/// values and all else by its text, letter by letter; `expect-error TEXT LINE`, which wants the rest of the line to
/// fail with a message that holds the text; and `expect-file FILE [same=FILE] [contains=TEXT] [exists=true]`.
///
/// A value.
struct VOCORE_EXPORT VoScriptedTest
{
    VoFilePath file;                     ///< The script.
    VoString name;                       ///< For people: as the file is seen from the folder that was searched.
    VoDeque<VoString> tags{};            ///< From a comment "# tags: a b" before the first line that does something.
    VoTimeDuration limit = VoSeconds(0); ///< From a comment "# limit: 20s" there; zero without one.

    /// The test that a file holds. Nothing is carried out.
    /// @throws VoFileNotFoundException, VoCannotOpenFileException, VoIOException when it cannot be read
    /// @throws VoInvalidUseException "Script is too large: " + path; "Invalid limit in " + path + ": " + text
    static VoScriptedTest Read(const VoFilePath& file, const VoString& name);

    /// The tests in a folder and its folders: the files named *.vo, in the order of their names. Throws as Read(), and
    /// as VoFileSystem::ForEachFile().
    static VoDeque<VoScriptedTest> Find(const VoDirectoryPath& folder);

    bool hasTag(const VoString& tag) const; ///< Whether it bears a tag, whatever its case.

    /// Carries the script out on this thread, in an empty folder of its own; the global values are afterwards as they
    /// were before.
    /// @param output takes the lines that the script prints; may be empty
    /// @param stop ends it
    /// @throws VoScriptException for a line that fails; of an expectation the cause is a VoValidationException
    /// @throws VoUserCancelledException when `stop` was raised
    void run(const std::function<void(const VoString&)>& output, const VoStopFlag& stop) const;
};
