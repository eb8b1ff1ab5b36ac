#pragma once

#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>

#include <optional>

class VoUrl;

namespace vo::updater::detail {

/// The documents that were fetched last, with what their server calls these versions ("ETag"), so that only changed
/// ones are transferred again.
///
///     <update directory>\documents\<digest of the URL>     the tag, the digest of the document, and the document
///
/// A convenience only: what cannot be read or written is no failure. Processes may use it at the same time. A document
/// behind a user name is not kept.
class DocumentCache
{
public:
    explicit DocumentCache(const VoUrl& url);

    /// What the server called the version that is kept; empty when none is, or not as it was written.
    VoString tag() const;
    /// Writes the document that is kept. False when there is none.
    bool copyTo(const VoFilePath& target) const;
    /// Keeps a document in place of an older version, and forgets the oldest when there are many.
    void keep(const VoString& tag, const VoFilePath& document) const;

private:
    struct Entry
    {
        VoString tag;
        VoString document;
    };
    std::optional<Entry> read() const;

    VoFilePath m_path; // null: nothing is kept
    std::optional<Entry> m_entry;
};

} // namespace vo::updater::detail
