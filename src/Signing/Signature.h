#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>

#include <array>
#include <cstddef>
#include <memory>

/// @file
/// Signatures of documents: Ed25519 over a BLAKE2b hash, in the files of minisign, whose program reads and writes them
/// too. A signature names its key by a number of eight bytes, and carries a comment that is signed with it.

namespace vo::signing {

/// A signature as it stands beside a document. A value; it proves nothing before PublicKey::verify().
class VOCORE_EXPORT Signature
{
public:
    /// Reads a signature's file.
    /// @throws VoValidationException "Not a signature"
    static Signature Parse(const VoString& text);
    /// The four lines of a signature's file.
    VoString toString() const;

    VoString keyId() const;                                             ///< Of the key that is said to have signed.
    const VoString& trustedComment() const { return m_trustedComment; } ///< What was signed with the document.
    const VoString& comment() const { return m_comment; }               ///< For people; anybody may have changed it.

private:
    friend class PublicKey;
    friend class SecretKey;
    Signature() = default;

    std::array<unsigned char, 8> m_keyNumber = {};
    std::array<unsigned char, 64> m_signature = {};        // of the document
    std::array<unsigned char, 64> m_commentSignature = {}; // of the signature and the trusted comment
    VoString m_trustedComment;
    VoString m_comment;
};

/// A key that tells whether signatures are genuine. A value.
class VOCORE_EXPORT PublicKey
{
public:
    /// Reads a public key's file, or its second line alone.
    /// @throws VoValidationException "Not a public key"
    static PublicKey Parse(const VoString& text);
    VoString toString() const; ///< The two lines of a public key's file.
    VoString toLine() const;   ///< The second line alone, as it is passed on.
    VoString id() const;       ///< 16 hexadecimal digits, for people and file names; not a proof of the key.

    /// Returns when the signature is this key's, of these bytes, and its trusted comment with it.
    /// @throws VoValidationException "Signature is of another key: " + Signature::keyId(), "Signature does not fit the
    ///     document", "Trusted comment was changed"
    void verify(const void* data, std::size_t size, const Signature& signature) const;

    /// Whether two keys verify the same signatures, whatever numbers they go by.
    bool isSameKey(const PublicKey& other) const { return m_key == other.m_key; }

    /// Comparison of the whole keys. @{
    friend bool operator==(const PublicKey& a, const PublicKey& b)
    {
        return a.m_number == b.m_number && a.m_key == b.m_key;
    }
    friend bool operator!=(const PublicKey& a, const PublicKey& b) { return !(a == b); }
    /// @}

private:
    friend class SecretKey;
    PublicKey() = default;

    std::array<unsigned char, 8> m_number = {};
    std::array<unsigned char, 32> m_key = {};
};

/// A secret text in memory that is kept from the swap file where the system allows it, and cleared at the end.
class VOCORE_EXPORT Passphrase
{
public:
    Passphrase() noexcept; ///< An empty one.
    /// Copies the bytes; clearing their origin is up to the caller.
    Passphrase(const char* data, std::size_t size);
    Passphrase(Passphrase&& other) noexcept;            ///< Leaves an empty one.
    Passphrase& operator=(Passphrase&& other) noexcept; ///< Leaves an empty one.
    Passphrase(const Passphrase&) = delete;
    Passphrase& operator=(const Passphrase&) = delete;
    ~Passphrase(); ///< Clears the memory.

    const char* data() const noexcept; ///< The bytes; nothing follows them.
    std::size_t size() const noexcept; ///< Their number.

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

/// A key that signs. Its bytes are in memory as those of a Passphrase; moved from, it can only be assigned to.
class VOCORE_EXPORT SecretKey
{
public:
    /// What it takes to try a passphrase on a stolen file, and to open the file with the right one.
    enum class Effort
    {
        Quick, ///< 16 MiB of memory and some milliseconds.
        Full   ///< 1 GiB of memory and some seconds.
    };

    static SecretKey Generate(); ///< A new one.
    /// Reads a secret key's file. One that is not encrypted takes any passphrase.
    /// @throws VoValidationException "Not a secret key", "Wrong passphrase", or "Secret key asks for too much memory"
    /// for
    ///     one that asks for more than 2 GiB
    static SecretKey Parse(const VoString& text, const Passphrase& passphrase);
    SecretKey(SecretKey&& other) noexcept;            ///< Leaves one that can only be assigned to.
    SecretKey& operator=(SecretKey&& other) noexcept; ///< Leaves one that can only be assigned to.
    ~SecretKey();                                     ///< Clears the memory.

    /// The two lines of a secret key's file, encrypted.
    /// @throws VoInvalidParameterException "Empty passphrase"
    VoString toString(const Passphrase& passphrase, Effort effort = Effort::Full) const;
    PublicKey publicKey() const; ///< The key that verifies.
    VoString id() const;         ///< As PublicKey::id().

    /// Signs bytes together with a comment.
    /// @throws VoInvalidParameterException "Invalid comment" for one with a line break or another control character, or
    ///     of more than 1,000 bytes
    Signature sign(const void* data, std::size_t size, const VoString& trustedComment,
                   const VoString& comment = "signature") const;

private:
    class Private;
    explicit SecretKey(std::unique_ptr<Private> state) noexcept;

    std::unique_ptr<Private> m_private;
};

} // namespace vo::signing
