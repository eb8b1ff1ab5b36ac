#include <Updater/detail/documents/KeyChain.h>

#include <Core/VoException.h>
#include <Signing/Signature.h>
#include <Updater/ReleaseManifest.h>
#include <Updater/VoUntrustedReleaseException.h>

#include <utility>

namespace vo::updater::detail {

namespace {

constexpr std::uint64_t LargestSignature = 4096;

bool HasRole(const ReleaseKeys::Key& key, KeyRole role)
{
    return role == KeyRole::Releases ? key.signsReleases : key.signsKeys;
}

// Empty when the signature is good, else what is wrong.
VoString Problem(const VoString& bytes, const VoString& comment, const signing::PublicKey& key, const VoString& text)
{
    try {
        const signing::Signature signature = signing::Signature::Parse(text);
        key.verify(bytes.c_str(), bytes.size(), signature);
        if (!signature.trustedComment().equal(comment, VoString::CaseSensitive))
            return "Signature is of \"" + signature.trustedComment() + "\" instead of \"" + comment + "\"";
        return VoString();
    } catch (const VoValidationException& failure) {
        return failure.message();
    }
}

VoDeque<VoString> SignatureTexts(const DocumentPlace& place, std::initializer_list<VoFilePath> names)
{
    VoDeque<VoString> texts;
    for (const VoFilePath& name : names) {
        if (auto text = place.find(name, LargestSignature))
            texts.pushBack(std::move(*text));
    }
    return texts;
}

} // namespace

VoFilePath SignatureName(const VoFilePath& document, const VoString& keyId)
{
    return Suffixed(document, "." + keyId + ".minisig");
}

VoFilePath SerialSignatureName(const VoString& keyId, std::uint64_t serial)
{
    return SignatureName(ReleaseManifest::FileName, keyId + "." + VoString(serial));
}

Signers SignersOf(const VoString& bytes, const VoString& comment, const ReleaseKeys& keys, KeyRole role,
                  const std::function<VoDeque<VoString>(const VoString& keyId)>& find)
{
    Signers signers;
    for (const ReleaseKeys::Key& key : keys.keys) {
        if (!HasRole(key, role))
            continue;
        for (const VoString& text : find(key.key.id())) {
            const VoString problem = Problem(bytes, comment, key.key, text);
            if (problem.isEmpty()) {
                ++signers.count;
                break;
            }
            signers.why = problem;
        }
    }
    return signers;
}

Signers SignersOfManifest(const VoString& bytes, const ReleaseManifest& manifest, const ReleaseKeys& keys,
                          const DocumentPlace& place)
{
    return SignersOf(bytes, manifest.signedComment(), keys, KeyRole::Releases, [&](const VoString& keyId) {
        return SignatureTexts(
            place, {SignatureName(ReleaseManifest::FileName, keyId), SerialSignatureName(keyId, manifest.serial)});
    });
}

Signers SignersOfKeys(const VoString& bytes, const ReleaseKeys& document, const ReleaseKeys& keys,
                      const DocumentPlace& place)
{
    return SignersOf(bytes, document.signedComment(), keys, KeyRole::Keys, [&](const VoString& keyId) {
        return SignatureTexts(place, {SignatureName(ReleaseKeys::FileName(document.number), keyId)});
    });
}

ReleaseKeys NewestKeys(const ReleaseKeys& known, const DocumentPlace& place)
{
    using Kind = VoUntrustedReleaseException::Kind;
    ReleaseKeys newest = known;
    for (std::uint64_t number = known.number + 1; number <= ReleaseKeys::LargestNumber; ++number) {
        const VoFilePath name = ReleaseKeys::FileName(number);
        const auto bytes = place.find(name, ReleaseKeys::LargestSize);
        if (!bytes)
            break;
        ReleaseKeys next = ReleaseKeys::Parse(*bytes, place.nameOf(name));
        const bool isNext = next.number == number;
        const bool isOwn = isNext && SignersOfKeys(*bytes, next, next, place).count >= next.keyThreshold;
        const Signers before = isOwn ? SignersOfKeys(*bytes, next, newest, place) : Signers();
        if (isOwn && before.count >= newest.keyThreshold)
            newest = std::move(next);
        else if (newest.number > 0)
            throw VoUntrustedReleaseException(Kind::Keys,
                                              "Keys are not signed by enough of the known ones: " + place.nameOf(name));
        else if (number > 100) // none so far was signed by the keys that the application knows
            break;
    }
    return newest;
}

} // namespace vo::updater::detail
