#pragma once

#include <Core/VoDeque.h>
#include <Core/VoUniquePtr.h>
#include <FileSystem/VoFilePath.h>
#include <Signing/Signature.h>
#include <Updater/XMLObject.h>

#include <cstdint>

namespace vo::updater {

/// The keys by which a publisher's releases are known, number n of a series. It stands beside the declarations as
/// "keys.<n>.xml", is never changed, and holds from when it is there: signed by enough keys of itself and of number
/// n - 1, so that who knows one finds the newest. A plain value.
///
///     <keys number releases keys serial>
///         <key line releases keys/> ...
///     </keys>
class VOCORE_EXPORT ReleaseKeys : public XMLObject
{
public:
    static constexpr std::uint64_t LargestNumber = 100'000; ///< No series is longer.
    static constexpr std::uint64_t LargestSize = 64u << 10; ///< Bytes that such a document may have.

    /// A key and what it may sign.
    struct VOCORE_EXPORT Key
    {
        signing::PublicKey key;    ///< The key.
        bool signsReleases = true; ///< Whether it counts for manifests.
        bool signsKeys = true;     ///< Whether it counts for documents like this one.
    };

    ReleaseKeys(); ///< None, number 0.
    /// Reads a `keys` element.
    /// @throws VoValidationException as Parse()
    explicit ReleaseKeys(VoXMLStreamElementLoader& element);
    /// @{ Values: copies are deep, a moved-from object is only good for being assigned to.
    ReleaseKeys(const ReleaseKeys& other);
    ReleaseKeys(ReleaseKeys&& other) noexcept;
    ReleaseKeys& operator=(const ReleaseKeys& other);
    ReleaseKeys& operator=(ReleaseKeys&& other) noexcept;
    ~ReleaseKeys() override;
    /// @}

    /// Reads a document from memory; `name` is what errors and the log call it.
    /// @throws VoNullPointerException "Keys failed to load", for a document of another kind
    /// @throws VoValidationException "Invalid keys: " + what is wrong, for one that cannot be; and what malformed
    /// documents throw
    static ReleaseKeys Parse(const VoString& bytes, const VoString& name);
    /// The whole document.
    /// @throws VoValidationException as Parse()
    VoString toDocument() const;

    std::uint64_t number = 0;           ///< Of the series, from 1; 0 for the keys that an application knows.
    std::uint64_t releaseThreshold = 1; ///< How many keys must sign a manifest.
    std::uint64_t keyThreshold = 1;     ///< How many keys must sign a document like this one.
    std::uint64_t serial = 0;           ///< The manifest when this was made: no older one holds under these keys.
    VoDeque<Key> keys;                  ///< The keys; no two are equal or have one ID.

    const Key* find(const VoString& keyId) const; ///< The key of that ID; null when there is none.
    /// Whether `before` has a key for manifests that counts no more: what it signed is not to be believed.
    bool retiresKeyOf(const ReleaseKeys& before) const;
    VoString signedComment() const; ///< What signatures repeat in their trusted comment: "keys 2".
    /// Equality of number, thresholds and keys.
    /// @{
    friend VOCORE_EXPORT bool operator==(const ReleaseKeys& a, const ReleaseKeys& b);
    friend bool operator!=(const ReleaseKeys& a, const ReleaseKeys& b) { return !(a == b); }
    /// @}

    /// "keys.<n>.xml"
    static VoFilePath FileName(std::uint64_t number);

    /// Refuses what Parse() refuses.
    /// @throws VoValidationException as Parse()
    void validate() const;

    Type objectType() const override;
    void writeAttributes(VoXMLElementWriter& element) const override;
    void writeElements(VoXMLElementWriter& element) const override;
};

} // namespace vo::updater
