// Publishes a folder as the first release of a package, and prints what the release is made of.

#include <VoCore.h>

#include <iostream>

namespace {

void publish(const VoDirectoryPath& folder, const VoFilePath& declarations)
{
    constexpr int chunkSize = 1 << 20;
    constexpr int compressionLevel = 6;
    vo::updater::PackageBuilder builder(VoUpdater::GenerateID(), "Consumer's files",
                                        VoVersion(1, 0, 0, VoVersion::Release), chunkSize, compressionLevel);
    const VoReceiver receiver = builder.connect([](const auto& message) { std::cerr << message->message() << '\n'; });
    builder.add(folder, declarations);
    builder.finalise(declarations);
    for (const auto& file : builder.package().files())
        std::cout << file.checksum().toString() << "  " << file.target() << '\n';
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: consumer FOLDER DECLARATIONS\n";
        return 2;
    }
    try {
        publish(VoDirectoryPath::FromText(argv[1]), VoFilePath(argv[2]));
        return 0;
    } catch (...) {
        // Library exceptions are not standard exceptions; this function knows them all.
        std::cerr << vo::CurrentExceptionText() << '\n';
        return 1;
    }
}
