#include <vo/release/ReleaseChoice.h>

#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/release/Keys.h>

#include <Core/VoException.h>
#include <Updater/VoUpdater.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace vo::tool {

using updater::AdvertisedPackageListing;
using updater::AdvertisedPackages;
using Declaration = AdvertisedPackages::Declaration;

namespace {

bool Fits(const VoVersion& version, const ReleaseNumber& wanted)
{
    return version == wanted.version && (!wanted.hasBuildType || version.build() == wanted.version.build());
}

/// A definition file named on the command line must be the one that the options ask for.
void RequireAskedFor(const AdvertisedPackageListing& package, const Arguments& arguments)
{
    const auto wanted = arguments.text("package");
    const bool isOther = wanted && package.packageID() != VoUUID(*wanted) && package.name() != *wanted;
    if (isOther)
        throw Failure("option --package: the definition is of package " + package.packageID().toString());
    const auto release = arguments.release("release");
    if (release && !Fits(package.version(), *release))
        throw Failure("option --release: the definition is of release " + ReleaseText(package.version()));
}

} // namespace

namespace {

/// The declared packages by their IDs; of those that a name is given for, only these.
using Packages = std::map<std::string, const Declaration*>;

Packages PackagesNamed(const AdvertisedPackages& declared, const std::optional<VoString>& name)
{
    Packages packages;
    for (const Declaration& declaration : declared.declarations()) {
        if (!name || declaration.name() == *name)
            packages.try_emplace(declaration.packageID().toString().toStdString(), &declaration);
    }
    return packages;
}

VoUUID OnlyOne(const Packages& packages, const VoString& problem)
{
    if (packages.size() == 1)
        return packages.begin()->second->packageID();
    VoString text = problem;
    for (const auto& [id, package] : packages)
        text += " " + VoString(id) + " (" + package->name() + ")";
    throw UsageError(text);
}

} // namespace

VoUUID ChoosePackage(const AdvertisedPackages& declared, const std::optional<VoString>& wanted)
{
    const Packages all = PackagesNamed(declared, std::nullopt);
    if (!wanted) {
        if (all.empty())
            throw Failure("no release is declared");
        return OnlyOne(all, "several packages are declared, choose one with --package:");
    }
    const auto found = all.find(wanted->toStdString());
    if (found != all.end())
        return found->second->packageID();
    const Packages named = PackagesNamed(declared, wanted);
    if (named.empty())
        throw Failure("option --package: no release of \"" + *wanted + "\" is declared");
    return OnlyOne(named, "option --package: several packages have that name, give one of the IDs:");
}

const Declaration& ChooseRelease(const AdvertisedPackages& declared, const VoUUID& packageID,
                                 const std::optional<ReleaseNumber>& wanted)
{
    if (!wanted)
        return declared.newestPackage(packageID);
    std::vector<const Declaration*> fitting;
    for (const Declaration& declaration : declared.declarations()) {
        if (declaration.packageID() == packageID && Fits(declaration.version(), *wanted))
            fitting.push_back(&declaration);
    }
    if (fitting.empty())
        throw Failure("option --release: release " + ReleaseText(wanted->version) + " is not declared");
    const auto plain = std::find_if(fitting.begin(), fitting.end(), [](const Declaration* declaration) {
        return declaration->version().build() == VoVersion::Release;
    });
    if (plain != fitting.end())
        return **plain;
    if (fitting.size() > 1 && !wanted->hasBuildType)
        throw UsageError("option --release: several build types of " + ReleaseText(wanted->version) +
                         " are declared; write the build type in the third place, as in 4.2.1.17");
    return *fitting.front();
}

VoUniquePtr<AdvertisedPackages> ReadDeclarations(const Session& session, const VoLocation& location)
{
    return Doing(session.arguments, "read", NameOf(session.arguments, location),
                 [&] { return AdvertisedPackages::Open(location, session.stop, session.downloads); });
}

VoUniquePtr<AdvertisedPackageListing> ReadDefinition(const Session& session, const VoLocation& location)
{
    return Doing(session.arguments, "read", NameOf(session.arguments, location),
                 [&] { return AdvertisedPackageListing::Open(location, session.stop, session.downloads); });
}

VoUniquePtr<AdvertisedPackages> OpenDeclarations(const Session& session, const VoLocation& location)
{
    VoUniquePtr<AdvertisedPackages> declared = ReadDeclarations(session, location);
    if (!declared)
        throw Failure(NameOf(session.arguments, location) + " is not a declarations file");
    return declared;
}

ChosenRelease OpenChosenRelease(const Session& session)
{
    const Arguments& arguments = session.arguments;
    const VoLocation location = arguments.locationArgument(0);
    const VoUniquePtr<AdvertisedPackages> declared = ReadDeclarations(session, location);
    if (!declared) {
        ChosenRelease chosen{location, ReadDefinition(session, location)};
        RequireAskedFor(*chosen.package, arguments);
        return chosen;
    }
    const VoUUID packageID = ChoosePackage(*declared, arguments.text("package"));
    const Declaration& declaration = ChooseRelease(*declared, packageID, arguments.release("release"));
    const VoLocation definition = declaration.definition(location);
    ChosenRelease chosen{definition, ReadDefinition(session, definition)};
    if (!(chosen.package->packageID() == declaration.packageID()) ||
        !(chosen.package->versionID() == declaration.versionID()))
        throw CommandError{ExitCode::Unsafe,
                           "Invalid package definition: not the declared release: " + NameOf(arguments, definition)};
    return chosen;
}

std::vector<Option> TrustOptions()
{
    return {
        {"key", "KEY", "believe only what this key (file or line) has signed; may be given again", '\0', true},
        {"require-signature", nullptr, "refuse releases that are not signed"},
        {"allow-expired", nullptr, "go on although the publisher's manifest has expired"},
        {"channel", "NAME", "release (the default), or beta for what is not released yet as well"},
    };
}

updater::TrustPolicy TrustOf(const Session& session)
{
    const Arguments& arguments = session.arguments;
    updater::TrustPolicy policy;
    for (const VoString& text : arguments.texts("key"))
        policy.keys.pushBack(ReadPublicKey(text));
    policy.requireSignature = arguments.has("require-signature");
    policy.allowExpired = arguments.has("allow-expired");
    policy.allowOtherPublisher = arguments.has("move");
    policy.channel = arguments.text("channel").value_or(policy.channel);
    if (policy.channel != VoUpdater::ReleaseChannel && policy.channel != VoUpdater::BetaChannel)
        throw UsageError("option --channel: \"" + policy.channel + "\" is neither release nor beta");
    return policy;
}

updater::TrustedReleases OpenTrusted(const Session& session, const VoLocation& location)
{
    const updater::TrustPolicy policy = TrustOf(session);
    return Doing(session.arguments, "read", NameOf(session.arguments, location),
                 [&] { return updater::TrustedReleases::Open(location, policy, session.stop, session.downloads); });
}

namespace {

// A refusal names what it refuses; whatever else goes wrong is told of the definition.
updater::TrustedReleases::Release OpenDefinition(const Session& session, const updater::TrustedReleases& releases,
                                                 const Declaration& declaration)
{
    try {
        return releases.open(declaration);
    } catch (const VoValidationException&) {
        throw;
    } catch (...) {
        const Arguments& arguments = session.arguments;
        const VoLocation definition = declaration.definition(arguments.locationArgument(0));
        throw ToldFailure(arguments, "read", NameOf(arguments, definition));
    }
}

ChosenRelease OpenDeclared(const Session& session, const updater::TrustedReleases& releases)
{
    const Arguments& arguments = session.arguments;
    const AdvertisedPackages& declared = *releases.declarations();
    const VoUUID packageID = ChoosePackage(declared, arguments.text("package"));
    const auto wanted = arguments.release("release");
    const Declaration& declaration = wanted ? ChooseRelease(declared, packageID, wanted) : releases.newest(packageID);
    auto opened = OpenDefinition(session, releases, declaration);
    ChosenRelease chosen{
        opened.definition, std::move(opened.package), std::move(opened.proof), {}, arguments.locationArgument(0)};
    for (const Declaration& other : declared.declarations()) {
        const bool isNewer = other.packageID() == packageID && other.version() > declaration.version();
        const VoString why = isNewer ? releases.whyNotOffered(other) : VoString();
        if (!why.isEmpty())
            chosen.refused.emplace_back(other.version(), why);
    }
    return chosen;
}

} // namespace

ChosenRelease OpenOfferedRelease(const Session& session)
{
    const VoLocation location = session.arguments.locationArgument(0);
    const updater::TrustedReleases releases = OpenTrusted(session, location);
    if (releases.declarations())
        return Doing(session.arguments, "", "", [&] { return OpenDeclared(session, releases); });
    return Doing(session.arguments, "read", NameOf(session.arguments, location), [&] {
        auto opened = releases.openDefinition();
        RequireAskedFor(*opened.package, session.arguments);
        return ChosenRelease{location, std::move(opened.package), std::move(opened.proof), {}};
    });
}

} // namespace vo::tool
