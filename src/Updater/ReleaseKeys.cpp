#include <Updater/ReleaseKeys.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <XML/VoXMLStreamLoader.h>

#include <algorithm>

namespace vo::updater {

using namespace detail;

namespace {

constexpr std::size_t MostKeys = 64;

void Require(bool sound, const char* what)
{
    if (!sound)
        throw VoValidationException("Invalid keys: " + VoString(what));
}

const char* TruthText(bool value)
{
    return value ? "true" : "false";
}

bool IsSame(const ReleaseKeys::Key& a, const ReleaseKeys::Key& b)
{
    return a.key == b.key && a.signsReleases == b.signsReleases && a.signsKeys == b.signsKeys;
}

} // namespace

// On Windows no object of the library would have them otherwise, for those who refer to them.
// NOLINTBEGIN(readability-redundant-declaration)
constexpr std::uint64_t ReleaseKeys::LargestNumber;
constexpr std::uint64_t ReleaseKeys::LargestSize;
// NOLINTEND(readability-redundant-declaration)

ReleaseKeys::ReleaseKeys() = default;
ReleaseKeys::ReleaseKeys(const ReleaseKeys& other) = default;
ReleaseKeys::ReleaseKeys(ReleaseKeys&& other) noexcept = default;
ReleaseKeys& ReleaseKeys::operator=(const ReleaseKeys& other) = default;
ReleaseKeys& ReleaseKeys::operator=(ReleaseKeys&& other) noexcept = default;
ReleaseKeys::~ReleaseKeys() = default;

ReleaseKeys::ReleaseKeys(VoXMLStreamElementLoader& element)
    : number(ReadNumber(element, attribute::Number))
    , releaseThreshold(ReadNumber(element, attribute::Releases))
    , keyThreshold(ReadNumber(element, attribute::Keys))
    , serial(ReadNumber(element, attribute::Serial))
{
    element.processChildren([this](VoXMLStreamElementLoader& child) {
        if (child.name() != tag::Key)
            return;
        Require(keys.size() < MostKeys, "too many keys");
        keys.pushBack({signing::PublicKey::Parse(child.attribute(attribute::Line)),
                       child.attribute(attribute::Releases) == "true", child.attribute(attribute::Keys) == "true"});
    });
    validate();
}

void ReleaseKeys::validate() const
{
    Require(number <= LargestNumber, "number");
    std::uint64_t forReleases = 0;
    std::uint64_t forKeys = 0;
    for (auto key = keys.begin(); key != keys.end(); ++key) {
        forReleases += key->signsReleases ? 1 : 0;
        forKeys += key->signsKeys ? 1 : 0;
        // One key under two IDs would count twice.
        for (auto other = keys.begin(); other != key; ++other)
            Require(other->key.id() != key->key.id() && !other->key.isSameKey(key->key), "a key is there twice");
    }
    Require(releaseThreshold > 0 && releaseThreshold <= forReleases, "fewer keys for releases than have to sign");
    Require(keyThreshold > 0 && keyThreshold <= forKeys, "fewer keys for keys than have to sign");
}

ReleaseKeys ReleaseKeys::Parse(const VoString& bytes, const VoString& name)
{
    VoXMLStreamLoader loader;
    loader.addGlobalRule(tag::Keys, Build<ReleaseKeys>);
    const auto keys = DynamicCast<ReleaseKeys>(ParseDocument(loader, bytes, name));
    if (!keys)
        FailLoading(name, "Keys failed to load");
    Require(keys->number > 0, "number");
    return *keys;
}

VoString ReleaseKeys::toDocument() const
{
    validate();
    return DocumentText(tag::Keys, *this);
}

const ReleaseKeys::Key* ReleaseKeys::find(const VoString& keyId) const
{
    const auto found = std::find_if(keys.begin(), keys.end(), [&](const Key& key) { return key.key.id() == keyId; });
    return found == keys.end() ? nullptr : &*found;
}

bool ReleaseKeys::retiresKeyOf(const ReleaseKeys& before) const
{
    return std::any_of(before.keys.begin(), before.keys.end(), [this](const Key& old) {
        const Key* now = find(old.key.id());
        return old.signsReleases && !(now && now->signsReleases && now->key == old.key);
    });
}

VoString ReleaseKeys::signedComment() const
{
    return "keys " + VoString(number);
}

bool operator==(const ReleaseKeys& a, const ReleaseKeys& b)
{
    return a.number == b.number && a.releaseThreshold == b.releaseThreshold && a.keyThreshold == b.keyThreshold &&
           std::equal(a.keys.begin(), a.keys.end(), b.keys.begin(), b.keys.end(), IsSame);
}

VoFilePath ReleaseKeys::FileName(std::uint64_t number)
{
    return VoFilePath("keys." + VoString(number) + ".xml");
}

XMLObject::Type ReleaseKeys::objectType() const
{
    return Type::ReleaseKeys;
}

void ReleaseKeys::writeAttributes(VoXMLElementWriter& element) const
{
    WriteNumber(element, attribute::Number, number);
    WriteNumber(element, attribute::Releases, releaseThreshold);
    WriteNumber(element, attribute::Keys, keyThreshold);
    WriteNumber(element, attribute::Serial, serial);
}

void ReleaseKeys::writeElements(VoXMLElementWriter& element) const
{
    for (const Key& key : keys) {
        const auto child = element.createElement(tag::Key);
        child->writeAttribute(attribute::Line, key.key.toLine());
        child->writeAttribute(attribute::Releases, TruthText(key.signsReleases));
        child->writeAttribute(attribute::Keys, TruthText(key.signsKeys));
    }
}

} // namespace vo::updater
