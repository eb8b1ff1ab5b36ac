// Paths, files, devices and digests.

#include <Core/VoChecksum.h>
#include <Core/VoFileException.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryDir.h>
#include <IO/VoStream.h>

#include <iostream>

namespace {

void paths()
{
    //! [paths]
    const VoFilePath model("models/diodes/1N4148.lib"); // either separator; kept with backslashes on every platform
    std::cout << model << ' ' << model.filename() << ' ' << model.stem() << ' ' << model.extension() << '\n';
    std::cout << (model == VoFilePath("MODELS\\diodes\\1n4148.LIB")) << '\n'; // case does not count
    std::cout << VoFilePath("C:\\parts\\models\\x.lib").relative(VoFilePath("C:\\parts\\")) << '\n';
    //! [paths]
}

void replaceWhole(const VoFilePath& settings)
{
    //! [replace]
    VoAtomicFileWriter writer(settings);
    writer.write("grid=10\n", 8);
    writer.commit(); // until here the old file stands; from here on the new one, also after a loss of power
    //! [replace]
}

void readLines(const VoFilePath& settings)
{
    //! [lines]
    VoFileInputStream input(settings);
    for (VoString line = input.getLine(); !line.isEmpty(); line = input.getLine())
        std::cout << line << '\n';
    //! [lines]
}

void walk(const VoDirectoryPath& folder)
{
    //! [walk]
    VoFileSystem::CreateDirectory(folder.directory("a\\b\\"), true);
    VoFileSystem::CopyFile(folder.file("settings.txt"), folder.file("a\\b\\copy.txt"));
    VoFileSystem::ForEachFile(folder, true, false, [&](const VoFilePath& file) {
        std::cout << file.filename() << ' ' << VoFileSystem::FileSize(file) << ' '
                  << VoFileSystem::Checksum(file).toString().substring(0, 8) << '\n';
    });
    //! [walk]
}

void failures(const VoDirectoryPath& folder)
{
    //! [failures]
    try {
        VoFileInputStream input(folder.file("none.txt"));
    } catch (const VoFileNotFoundException& error) {
        std::cout << error.name() << '\n';
    }
    //! [failures]
}

} // namespace

int main()
{
    paths();
    const VoTemporaryDir scratch; // gone with everything in it when it goes out of scope
    replaceWhole(scratch.path("settings.txt"));
    readLines(scratch.path("settings.txt"));
    walk(scratch.path());
    failures(scratch.path());
}

/* Prints:
models\diodes\1N4148.lib 1N4148.lib 1N4148 lib
1
models\x.lib
grid=10
copy.txt 8 85640898
settings.txt 8 85640898
*/
