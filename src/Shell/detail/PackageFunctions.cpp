#include <Core/VoException.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Shell/VoFunctionRegistry.h>
#include <Shell/detail/LibraryFunctions.h>
#include <Shell/detail/TableMaker.h>
#include <Updater/InstalledPackages.h>

namespace vo::detail {
namespace {

using namespace updater;

const char* ChangeText(FileDifference::Type type)
{
    switch (type) {
    case FileDifference::Added:
        return "add";
    case FileDifference::Modified:
        return "update";
    case FileDifference::Removed:
        return "remove";
    default:
        return "keep";
    }
}

VoShellValue List(const VoFunctionCall&)
{
    TableMaker table({"package", "name", "version"});
    const auto names = InstalledPackages::Names();
    for (const auto& [id, version] : InstalledPackages::Packages()) {
        VoString name;
        for (const auto& named : names)
            name = named.first == id ? named.second : name;
        table.add({id, name, version.toString()});
    }
    return table.finish();
}

VoShellValue Plan(const VoFunctionCall& call)
{
    const VoDirectoryPath directory = VoDirectoryPath::FromText(call.value("folder").asFilePath().path());
    const InstallationPlan plan = InstalledPackages::Plan(call.value("definition").asFilePath(), directory);
    TableMaker table({"change", "file", "bytes"});
    for (const InstallationPlan::File& file : plan.files)
        table.add({ChangeText(file.type), file.path, file.bytes});
    return table.finish();
}

// An ID, or the name of one installed package.
VoUUID PackageOf(const VoString& text)
{
    for (const auto& package : InstalledPackages::Packages()) {
        if (package.first == VoUUID(text))
            return package.first;
    }
    VoDeque<VoUUID> named;
    for (const auto& [id, name] : InstalledPackages::Names()) {
        if (name == text)
            named.pushBack(id);
    }
    if (named.size() > 1)
        throw VoInvalidUseException("Several installed packages have the name: " + text);
    if (named.isEmpty())
        throw VoNotFoundException("installed package " + text);
    return named.front();
}

VoShellValue Verify(const VoFunctionCall& call)
{
    const VerificationReport report =
        InstalledPackages::Verify(PackageOf(call.value("package").asString()), call.stop());
    TableMaker table({"finding", "file"});
    for (const VoFilePath& file : report.missing)
        table.add({"missing", file});
    for (const VoFilePath& file : report.changed)
        table.add({"changed", file});
    for (const VoFilePath& file : report.extra)
        table.add({"extra", file});
    return table.finish();
}

} // namespace

void AddPackageFunctions(VoFunctionRegistry& registry)
{
    registry.add({"package.list", "The installed packages, as a table.", {}, List});
    registry.add({"package.plan",
                  "What installing a release would change, as a table. Nothing is changed.",
                  {{"definition", VoVariant::FilePath, "the release's package.xml"},
                   {"folder", VoVariant::FilePath, "where it would be installed"}},
                  Plan});
    registry.add({"package.verify",
                  "Files of an installed package that are missing, changed or of no package, as a table. Nothing is "
                  "changed.",
                  {{"package", VoVariant::String, "its ID or name"}},
                  Verify});
}

} // namespace vo::detail
