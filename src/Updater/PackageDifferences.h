#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoUUID.h>

#include <cstdint>
#include <memory>

namespace vo::updater {

/// What happens to one file on the way from one release to another.
class VOCORE_EXPORT FileDifference
{
public:
    /// The kinds of difference. The numbers are fixed.
    enum Type : std::int32_t
    {
        Added = 0,    ///< Only the target release has the file.
        Modified = 1, ///< Both have it, with another content.
        Removed = 2,  ///< Only the source release has it.
    };

    FileDifference(Type type, const VoUUID& fileID); ///< One difference.

    Type type() const;            ///< What happens to the file.
    const VoUUID& fileID() const; ///< Which file.

private:
    VoUUID m_fileID;
    Type m_type;
};

/// All that differs between two releases of one package, in the order found. A plain value.
class VOCORE_EXPORT PackageDifferences
{
public:
    /// No differences yet, between the releases named.
    PackageDifferences(const VoUUID& packageID, const VoUUID& sourceVersionID, const VoUUID& targetVersionID);

    /// @{ Copies are deep; a moved-from object has empty IDs and no differences.
    PackageDifferences(const PackageDifferences& other);
    PackageDifferences(PackageDifferences&& other) noexcept;
    PackageDifferences& operator=(const PackageDifferences& other);
    PackageDifferences& operator=(PackageDifferences&& other) noexcept;
    ~PackageDifferences();
    /// @}

    void fileAdded(const VoUUID& id);    ///< Appends an Added entry.
    void fileModified(const VoUUID& id); ///< Appends a Modified entry.
    void fileRemoved(const VoUUID& id);  ///< Appends a Removed entry.

    const VoUUID& packageID() const;                        ///< The package that both releases belong to.
    const VoUUID& sourceVersionID() const;                  ///< The release that one comes from.
    const VoUUID& targetVersionID() const;                  ///< The release that one goes to.
    const VoDeque<FileDifference>& fileDifferences() const; ///< In the order found.

private:
    struct Private;
    std::unique_ptr<Private> m_private; // empty in a moved-from object
};

} // namespace vo::updater
