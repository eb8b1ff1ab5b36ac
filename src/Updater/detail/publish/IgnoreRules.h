#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <QtCore/QRegularExpression>

#include <vector>

namespace vo::updater::detail {

/// Which files of a folder are left out when it is published. The rules are those that people know from version
/// control, one pattern each:
///
///     *.pdb          in any folder; * stands for any characters but the separator, ? for one, [a-z] for one of a set
///     /notes.txt     a separator at the beginning or within: the path from the published folder on
///     build/         a separator at the end: folders only, with all that is in them
///     docs/**/*.tmp  ** stands for any folders
///     !keep.pdb      not left out after all, unless a folder on the way to it is
///
/// The last rule that fits decides. Letter case does not count, as in paths; "\" separates like "/".
class VOCORE_PRIVATE_EXPORT IgnoreRules
{
public:
    /// @throws VoInvalidParameterException "Invalid pattern: " + pattern
    void add(const VoString& pattern);
    /// Adds the patterns in the lines of a text file; empty ones and those that begin with "#" say nothing. Throws as
    /// above, and what reading the file throws.
    void addListed(const VoFilePath& list);

    /// Whether a file or folder, given as its path from the published folder on, is left out, those above it not
    /// being so.
    bool leavesOut(const VoFilePath& path, bool isDirectory) const;

private:
    struct Rule
    {
        QRegularExpression pattern;
        bool directoriesOnly;
        bool leavesOut;
    };
    std::vector<Rule> m_rules;
};

} // namespace vo::updater::detail
