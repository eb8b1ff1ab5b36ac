#include <vo/release/ReleaseChoice.h>

#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>

#include <Core/VoException.h>

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
    const auto packageID = arguments.identifier("package");
    if (packageID && !(package.packageID() == *packageID))
        throw Failure("option --package: the definition is of package " + package.packageID().toString());
    const auto release = arguments.release("release");
    if (release && !Fits(package.version(), *release))
        throw Failure("option --release: the definition is of release " + ReleaseText(package.version()));
}

} // namespace

VoUUID ChoosePackage(const AdvertisedPackages& declared, const std::optional<VoUUID>& wanted)
{
    std::map<std::string, const Declaration*> packages;
    for (const Declaration& declaration : declared.declarations())
        packages.try_emplace(declaration.packageID().toString().toStdString(), &declaration);
    if (wanted) {
        if (packages.count(wanted->toString().toStdString()) == 0)
            throw Failure("option --package: no release of \"" + wanted->toString() + "\" is declared");
        return *wanted;
    }
    if (packages.empty())
        throw Failure("no release is declared");
    if (packages.size() == 1)
        return packages.begin()->second->packageID();
    VoString text = "several packages are declared, choose one with --package:";
    for (const auto& [id, package] : packages)
        text += " " + VoString(id) + " (" + package->name() + ")";
    throw UsageError(text);
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
    const VoUUID packageID = ChoosePackage(*declared, arguments.identifier("package"));
    const Declaration& declaration = ChooseRelease(*declared, packageID, arguments.release("release"));
    const VoLocation definition = declaration.definition(location);
    ChosenRelease chosen{definition, ReadDefinition(session, definition)};
    if (!(chosen.package->packageID() == declaration.packageID()) ||
        !(chosen.package->versionID() == declaration.versionID()))
        throw CommandError{ExitCode::Unsafe,
                           "Invalid package definition: not the declared release: " + NameOf(arguments, definition)};
    return chosen;
}

} // namespace vo::tool
