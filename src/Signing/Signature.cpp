#include <Signing/Signature.h>

#include <Core/VoException.h>

#include <sodium.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The files, each binary part in Base64:
//
//     public key   comment / "Ed", key number 8, key 32
//     secret key   comment / "Ed", key derivation 2, checksum "B2", salt 32, operations 8, memory 8,
//                  and, mixed with the bytes that the passphrase gives: key number 8, key 64, checksum 32
//     signature    comment / "ED", key number 8, signature 64 / trusted comment / signature of both 64
//
// Numbers are little-endian.

namespace vo::signing {
namespace {

constexpr std::string_view CommentMark = "untrusted comment: ";
constexpr std::string_view TrustedMark = "trusted comment: ";
constexpr std::string_view KeyAlgorithm = "Ed";
constexpr std::string_view HashedAlgorithm = "ED"; // of a signature over the document's hash
constexpr std::string_view ScryptDerivation = "Sc";
constexpr std::string_view NoDerivation{"\0\0", 2};
constexpr std::string_view ChecksumAlgorithm = "B2";
constexpr std::size_t LongestComment = 1000;
constexpr unsigned long long MostMemory = 2ull << 30;

using Bytes = std::string; // also of binary parts

[[noreturn]] void Refuse(const char* message)
{
    throw VoValidationException(message);
}

// Chooses the implementations for this processor, once.
void Prepare()
{
    static const int state = sodium_init();
    if (state < 0)
        throw VoInvalidUseException("The cryptographic library cannot be used");
}

Bytes TextOf(const void* data, std::size_t size)
{
    return Bytes(static_cast<const char*>(data), size);
}

const unsigned char* Unsigned(std::string_view bytes)
{
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

std::string Encode(std::string_view bytes)
{
    std::string text(sodium_base64_encoded_len(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
    sodium_bin2base64(text.data(), text.size(), Unsigned(bytes), bytes.size(), sodium_base64_VARIANT_ORIGINAL);
    text.pop_back(); // the terminator
    return text;
}

// The bytes of a line, which must be so many; empty otherwise.
Bytes Decode(std::string_view line, std::size_t size)
{
    Bytes bytes(size, '\0');
    std::size_t decoded = 0;
    if (sodium_base642bin(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size(), line.data(), line.size(),
                          nullptr, &decoded, nullptr, sodium_base64_VARIANT_ORIGINAL) != 0 ||
        decoded != size)
        return {};
    return bytes;
}

// The lines of a file, their ends of either kind left out.
std::vector<std::string_view> LinesOf(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        lines.push_back(line);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

bool StartsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

// Takes parts off the front of bytes whose number was checked.
std::string_view Take(std::string_view& bytes, std::size_t size)
{
    const std::string_view part = bytes.substr(0, size);
    bytes.remove_prefix(size);
    return part;
}

template <std::size_t size>
void Fill(std::array<unsigned char, size>& target, std::string_view& bytes)
{
    const std::string_view part = Take(bytes, size);
    std::copy(part.begin(), part.end(), reinterpret_cast<char*>(target.data()));
}

std::string Hexadecimal(const std::array<unsigned char, 8>& number)
{
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    for (auto byte = number.rbegin(); byte != number.rend(); ++byte) {
        text += digits[*byte >> 4];
        text += digits[*byte & 0x0f];
    }
    return text;
}

std::array<unsigned char, 64> HashOf(const void* data, std::size_t size)
{
    std::array<unsigned char, 64> hash;
    crypto_generichash(hash.data(), hash.size(), static_cast<const unsigned char*>(data), size, nullptr, 0);
    return hash;
}

std::uint64_t LittleEndian(std::string_view bytes)
{
    std::uint64_t value = 0;
    for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte)
        value = value << 8 | static_cast<unsigned char>(*byte);
    return value;
}

Bytes LittleEndian(std::uint64_t value)
{
    Bytes bytes;
    for (int i = 0; i < 8; ++i, value >>= 8)
        bytes += static_cast<char>(value & 0xff);
    return bytes;
}

void RequireComment(const VoString& comment)
{
    const std::string& text = comment.toStdString();
    const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7f; };
    if (text.size() > LongestComment || std::any_of(text.begin(), text.end(), isControl))
        throw VoInvalidParameterException("Invalid comment");
}

// Memory that is locked, guarded and cleared.
class SecretMemory
{
public:
    explicit SecretMemory(std::size_t size)
        : m_size(size)
    {
        Prepare();
        m_data = static_cast<unsigned char*>(sodium_malloc(size));
        if (!m_data)
            throw std::bad_alloc();
    }
    SecretMemory(const SecretMemory&) = delete;
    SecretMemory& operator=(const SecretMemory&) = delete;
    ~SecretMemory() { sodium_free(m_data); }

    unsigned char* data() const { return m_data; }
    std::size_t size() const { return m_size; }

private:
    unsigned char* m_data = nullptr;
    std::size_t m_size;
};

constexpr std::size_t NumberSize = 8;
constexpr std::size_t SecretSize = crypto_sign_SECRETKEYBYTES; // the last half is the public key
constexpr std::size_t ChecksumSize = 32;
constexpr std::size_t SealedSize = NumberSize + SecretSize + ChecksumSize;
constexpr std::size_t SaltSize = crypto_pwhash_scryptsalsa208sha256_SALTBYTES;

// What a passphrase makes of the sealed part, and what makes it out of that again.
void Mix(unsigned char* sealed, const Passphrase& passphrase, std::string_view salt, std::uint64_t operations,
         std::uint64_t memory)
{
    const SecretMemory stream(SealedSize);
    if (crypto_pwhash_scryptsalsa208sha256(stream.data(), stream.size(), passphrase.data(), passphrase.size(),
                                           Unsigned(salt), operations, static_cast<std::size_t>(memory)) != 0)
        throw std::bad_alloc();
    for (std::size_t i = 0; i < SealedSize; ++i)
        sealed[i] = static_cast<unsigned char>(sealed[i] ^ stream.data()[i]);
}

// Over the algorithm and what is sealed but the checksum itself.
void PutChecksum(const unsigned char* sealed, unsigned char* checksum)
{
    crypto_generichash_state state;
    crypto_generichash_init(&state, nullptr, 0, ChecksumSize);
    crypto_generichash_update(&state, Unsigned(KeyAlgorithm), KeyAlgorithm.size());
    crypto_generichash_update(&state, sealed, NumberSize + SecretSize);
    crypto_generichash_final(&state, checksum, ChecksumSize);
}

bool HasItsChecksum(const unsigned char* sealed)
{
    std::array<unsigned char, ChecksumSize> checksum;
    PutChecksum(sealed, checksum.data());
    return sodium_memcmp(checksum.data(), sealed + NumberSize + SecretSize, ChecksumSize) == 0;
}

// Whether the public half is that of the secret one.
bool IsPair(const unsigned char* key)
{
    const SecretMemory again(SecretSize);
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> publicKey;
    crypto_sign_seed_keypair(publicKey.data(), again.data(), key);
    return sodium_memcmp(again.data(), key, SecretSize) == 0;
}

} // namespace

class Passphrase::Private : public SecretMemory
{
public:
    using SecretMemory::SecretMemory;
};

Passphrase::Passphrase() noexcept = default;
Passphrase::Passphrase(Passphrase&& other) noexcept = default;
Passphrase& Passphrase::operator=(Passphrase&& other) noexcept = default;
Passphrase::~Passphrase() = default;

Passphrase::Passphrase(const char* data, std::size_t size)
{
    if (size == 0)
        return;
    m_private = std::make_unique<Private>(size);
    std::memcpy(m_private->data(), data, size);
}

const char* Passphrase::data() const noexcept
{
    return m_private ? reinterpret_cast<const char*>(m_private->data()) : "";
}

std::size_t Passphrase::size() const noexcept
{
    return m_private ? m_private->size() : 0;
}

// Key number, key and checksum, as they are sealed.
class SecretKey::Private : public SecretMemory
{
public:
    Private()
        : SecretMemory(SealedSize)
    {
    }
    unsigned char* key() const { return data() + NumberSize; }
    unsigned char* checksum() const { return key() + SecretSize; }
};

SecretKey::SecretKey(std::unique_ptr<Private> state) noexcept
    : m_private(std::move(state))
{
}

SecretKey::SecretKey(SecretKey&& other) noexcept = default;
SecretKey& SecretKey::operator=(SecretKey&& other) noexcept = default;
SecretKey::~SecretKey() = default;

SecretKey SecretKey::Generate()
{
    auto state = std::make_unique<Private>();
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> publicKey;
    randombytes_buf(state->data(), NumberSize);
    crypto_sign_keypair(publicKey.data(), state->key());
    PutChecksum(state->data(), state->checksum());
    return SecretKey(std::move(state));
}

SecretKey SecretKey::Parse(const VoString& text, const Passphrase& passphrase)
{
    const std::string& bytes = text.toStdString();
    const std::vector<std::string_view> lines = LinesOf(bytes);
    constexpr std::size_t openSize = 6 + SaltSize + 16;
    Bytes content =
        lines.size() == 2 && StartsWith(lines[0], CommentMark) ? Decode(lines[1], openSize + SealedSize) : Bytes();
    if (content.empty())
        Refuse("Not a secret key");
    std::string_view rest = content;
    const bool isKey = Take(rest, 2) == KeyAlgorithm;
    const std::string_view derivation = Take(rest, 2);
    const bool isEncrypted = derivation == ScryptDerivation;
    if (!isKey || Take(rest, 2) != ChecksumAlgorithm || (!isEncrypted && derivation != NoDerivation))
        Refuse("Not a secret key");
    const std::string_view salt = Take(rest, SaltSize);
    const std::uint64_t operations = LittleEndian(Take(rest, 8));
    const std::uint64_t memory = LittleEndian(Take(rest, 8));
    if (isEncrypted && (memory > MostMemory || operations > MostMemory))
        Refuse("Secret key asks for too much memory");

    auto state = std::make_unique<Private>();
    std::memcpy(state->data(), rest.data(), SealedSize);
    sodium_memzero(content.data() + openSize, SealedSize);
    if (isEncrypted)
        Mix(state->data(), passphrase, salt, operations, memory);
    if (isEncrypted && !HasItsChecksum(state->data()))
        Refuse("Wrong passphrase");
    // One that is not encrypted may have no checksum.
    if (!isEncrypted && !IsPair(state->key()))
        Refuse("Not a secret key");
    return SecretKey(std::move(state));
}

VoString SecretKey::toString(const Passphrase& passphrase, Effort effort) const
{
    if (passphrase.size() == 0)
        throw VoInvalidParameterException("Empty passphrase");
    const bool isFull = effort == Effort::Full;
    const std::uint64_t operations = isFull ? crypto_pwhash_scryptsalsa208sha256_OPSLIMIT_SENSITIVE
                                            : crypto_pwhash_scryptsalsa208sha256_OPSLIMIT_INTERACTIVE;
    const std::uint64_t memory = isFull ? crypto_pwhash_scryptsalsa208sha256_MEMLIMIT_SENSITIVE
                                        : crypto_pwhash_scryptsalsa208sha256_MEMLIMIT_INTERACTIVE;
    Bytes salt(SaltSize, '\0');
    randombytes_buf(salt.data(), salt.size());
    const SecretMemory sealed(SealedSize);
    std::memcpy(sealed.data(), m_private->data(), SealedSize);
    Mix(sealed.data(), passphrase, salt, operations, memory);
    const Bytes content = Bytes(KeyAlgorithm) + Bytes(ScryptDerivation) + Bytes(ChecksumAlgorithm) + salt +
                          LittleEndian(operations) + LittleEndian(memory) + TextOf(sealed.data(), SealedSize);
    return VoString(std::string(CommentMark) + "minisign encrypted secret key\n" + Encode(content) + '\n');
}

PublicKey SecretKey::publicKey() const
{
    PublicKey key;
    std::copy_n(m_private->data(), key.m_number.size(), key.m_number.begin());
    std::copy_n(m_private->key() + SecretSize - key.m_key.size(), key.m_key.size(), key.m_key.begin());
    return key;
}

VoString SecretKey::id() const
{
    return publicKey().id();
}

Signature SecretKey::sign(const void* data, std::size_t size, const VoString& trustedComment,
                          const VoString& comment) const
{
    RequireComment(trustedComment);
    RequireComment(comment);
    Signature signature;
    signature.m_keyNumber = publicKey().m_number;
    signature.m_trustedComment = trustedComment;
    signature.m_comment = comment;
    const std::array<unsigned char, 64> hash = HashOf(data, size);
    crypto_sign_detached(signature.m_signature.data(), nullptr, hash.data(), hash.size(), m_private->key());
    const Bytes both =
        TextOf(signature.m_signature.data(), signature.m_signature.size()) + std::string(trustedComment.toStdString());
    crypto_sign_detached(signature.m_commentSignature.data(), nullptr, Unsigned(both), both.size(), m_private->key());
    return signature;
}

PublicKey PublicKey::Parse(const VoString& text)
{
    const std::string& bytes = text.toStdString();
    const std::vector<std::string_view> lines = LinesOf(bytes);
    const bool hasComment = lines.size() == 2 && StartsWith(lines[0], CommentMark);
    PublicKey key;
    Prepare();
    const Bytes content = hasComment || lines.size() == 1
                              ? Decode(lines.back(), KeyAlgorithm.size() + key.m_number.size() + key.m_key.size())
                              : Bytes();
    std::string_view rest = content;
    if (rest.empty() || Take(rest, KeyAlgorithm.size()) != KeyAlgorithm)
        Refuse("Not a public key");
    Fill(key.m_number, rest);
    Fill(key.m_key, rest);
    return key;
}

VoString PublicKey::toString() const
{
    return VoString(std::string(CommentMark) + "minisign public key " + Hexadecimal(m_number) + '\n') + toLine() + "\n";
}

VoString PublicKey::toLine() const
{
    return VoString(
        Encode(Bytes(KeyAlgorithm) + TextOf(m_number.data(), m_number.size()) + TextOf(m_key.data(), m_key.size())));
}

VoString PublicKey::id() const
{
    return VoString(Hexadecimal(m_number));
}

void PublicKey::verify(const void* data, std::size_t size, const Signature& signature) const
{
    if (signature.m_keyNumber != m_number)
        throw VoValidationException("Signature is of another key: " + signature.keyId());
    Prepare();
    const std::array<unsigned char, 64> hash = HashOf(data, size);
    if (crypto_sign_verify_detached(signature.m_signature.data(), hash.data(), hash.size(), m_key.data()) != 0)
        Refuse("Signature does not fit the document");
    const Bytes both = TextOf(signature.m_signature.data(), signature.m_signature.size()) +
                       std::string(signature.m_trustedComment.toStdString());
    if (crypto_sign_verify_detached(signature.m_commentSignature.data(), Unsigned(both), both.size(), m_key.data()) !=
        0)
        Refuse("Trusted comment was changed");
}

Signature Signature::Parse(const VoString& text)
{
    const std::string& bytes = text.toStdString();
    const std::vector<std::string_view> lines = LinesOf(bytes);
    if (lines.size() != 4 || !StartsWith(lines[0], CommentMark) || !StartsWith(lines[2], TrustedMark))
        Refuse("Not a signature");
    Signature signature;
    Prepare();
    const Bytes content =
        Decode(lines[1], HashedAlgorithm.size() + signature.m_keyNumber.size() + signature.m_signature.size());
    const Bytes commentSignature = Decode(lines[3], signature.m_commentSignature.size());
    std::string_view rest = content;
    std::string_view last = commentSignature;
    if (content.empty() || commentSignature.empty() || Take(rest, HashedAlgorithm.size()) != HashedAlgorithm)
        Refuse("Not a signature");
    Fill(signature.m_keyNumber, rest);
    Fill(signature.m_signature, rest);
    Fill(signature.m_commentSignature, last);
    signature.m_comment = VoString(std::string(lines[0].substr(CommentMark.size())));
    signature.m_trustedComment = VoString(std::string(lines[2].substr(TrustedMark.size())));
    return signature;
}

VoString Signature::toString() const
{
    const Bytes content = Bytes(HashedAlgorithm) + TextOf(m_keyNumber.data(), m_keyNumber.size()) +
                          TextOf(m_signature.data(), m_signature.size());
    return VoString(std::string(CommentMark)) + m_comment + "\n" + VoString(Encode(content)) + "\n" +
           VoString(std::string(TrustedMark)) + m_trustedComment + "\n" +
           VoString(Encode(TextOf(m_commentSignature.data(), m_commentSignature.size()))) + "\n";
}

VoString Signature::keyId() const
{
    return VoString(Hexadecimal(m_keyNumber));
}

} // namespace vo::signing
