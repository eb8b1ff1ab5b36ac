#include <Core/VoChecksum.h>
#include <Core/VoException.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoWholeFile.h>
#include <Shell/VoFunctionRegistry.h>
#include <Shell/detail/LibraryFunctions.h>
#include <Shell/detail/TableMaker.h>

#include <optional>
#include <string>

namespace vo::detail {
namespace {

constexpr std::size_t LargestText = std::size_t(64) << 20;
constexpr auto Path = VoVariant::FilePath;

VoDirectoryPath Folder(const VoFunctionCall& call, const char* name)
{
    return VoDirectoryPath::FromText(call.value(name).asFilePath().path());
}

VoFileSystem::CopyOptions Replacing(const VoFunctionCall& call)
{
    return call.value("replace").asBoolean() ? VoFileSystem::OverwriteExisting : VoFileSystem::NoOption;
}

VoShellValue Copy(const VoFunctionCall& call)
{
    return VoFileSystem::CopyFile(call.value("from").asFilePath(), call.value("to").asFilePath(), Replacing(call));
}

VoShellValue Move(const VoFunctionCall& call)
{
    VoFileSystem::MoveFile(call.value("from").asFilePath(), call.value("to").asFilePath());
    return {};
}

VoShellValue Read(const VoFunctionCall& call)
{
    const VoFilePath file = call.value("file").asFilePath();
    std::optional<std::string> text = ReadWholeFile(file, LargestText);
    if (!text)
        throw VoInvalidUseException("File is too large: " + file.path());
    return VoString(*std::move(text));
}

VoShellValue Write(const VoFunctionCall& call)
{
    VoAtomicFileWriter writer(call.value("file").asFilePath());
    for (const VoVariant& line : call.list("lines")) {
        const VoString text = VoShellValue(line).toText() + "\n";
        writer.write(text.c_str(), text.size());
    }
    writer.commit();
    return {};
}

VoShellValue List(const VoFunctionCall& call)
{
    const VoDirectoryPath directory = Folder(call, "folder");
    TableMaker table({"name", "bytes"});
    VoFileSystem::ForEachFile(directory, call.value("deep").asBoolean(), true, [&](const VoFilePath& path) {
        call.stop().throwIfStopped();
        const VoVariant size = path.isDirectory() ? VoVariant() : VoVariant(VoFileSystem::FileSize(path));
        table.add({path.relative(directory.toFilePath()), size});
    });
    return table.finish();
}

} // namespace

void AddFileFunctions(VoFunctionRegistry& registry)
{
    const VoFunctionParameter file{"file", Path, "the file"};
    const auto replace = VoFunctionParameter{"replace", VoVariant::Boolean, "whether another file may be there",
                                             VoShellValue::Form::Single, VoShellValue(false)};
    registry.add({"checksum", "The SHA3-256 digest of a file.", {file}, [](const VoFunctionCall& call) {
                      return VoFileSystem::Checksum(call.value("file").asFilePath()).toString();
                  }});
    registry.add({"file.exists", "Whether anything bears a path.", {file}, [](const VoFunctionCall& call) {
                      return VoFileSystem::Exists(call.value("file").asFilePath());
                  }});
    registry.add({"file.size", "The number of bytes in a file.", {file}, [](const VoFunctionCall& call) {
                      return VoFileSystem::FileSize(call.value("file").asFilePath());
                  }});
    registry.add(
        {"file.copy", "Copies a file.", {{"from", Path, "the file"}, {"to", Path, "its copy"}, replace}, Copy});
    registry.add({"file.move",
                  "Moves a file, to the place of another if one is there.",
                  {{"from", Path, "the file"}, {"to", Path, "where it goes"}},
                  Move});
    registry.add({"file.remove",
                  "Removes a file or an empty folder; gives whether there was one.",
                  {file},
                  [](const VoFunctionCall& call) { return VoFileSystem::Remove(call.value("file").asFilePath()); }});
    registry.add({"file.read", "The content of a file of at most 64 MiB, as a text.", {file}, Read});
    registry.add({"file.write",
                  "Writes values into a file, one a line. What was there is replaced when all is written.",
                  {file, {"lines", VoVariant::Null, "the lines", VoShellValue::Form::List}},
                  Write});
    registry.add({"file.list",
                  "The files and folders in a folder, as a table.",
                  {{"folder", Path, "the folder"},
                   {"deep", VoVariant::Boolean, "whether those in its folders too", VoShellValue::Form::Single,
                    VoShellValue(false)}},
                  List});
    registry.add(
        {"folder.create",
         "Makes a folder, with those that it is in; gives whether it is new.",
         {{"folder", Path, "the folder"}},
         [](const VoFunctionCall& call) { return VoFileSystem::CreateDirectory(Folder(call, "folder"), true); }});
}

} // namespace vo::detail
