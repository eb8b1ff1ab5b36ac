#include <vo/screen/VerificationView.h>

#include <vo/line/Paths.h>
#include <vo/screen/Console.h>

namespace vo::tool {
namespace {

void ShowAll(Console& console, const VoUUID& packageID, const char* kind, const VoDeque<VoFilePath>& paths)
{
    VoString column(kind);
    column.resize(9, ' ');
    for (const VoFilePath& path : paths) {
        const VoString text = PathText(path);
        console.row("findings", column + text, JsonRecord()("package", packageID)("kind", kind)("path", text));
    }
}

} // namespace

void ShowFindings(Console& console, const updater::VerificationReport& report)
{
    console.list("findings");
    ShowAll(console, report.packageID, "missing", report.missing);
    for (const VoDirectoryPath& folder : report.missingFolders)
        ShowAll(console, report.packageID, "missing", {folder.toFilePath()});
    ShowAll(console, report.packageID, "changed", report.changed);
    ShowAll(console, report.packageID, "not-run", report.notExecutable);
    ShowAll(console, report.packageID, "extra", report.extra);
}

} // namespace vo::tool
