#include <VoCore.h>
#include <VoCoreGui.h>

#include <iostream>

int main(int, char** argv)
{
    VoDesktopServices::Install();
    try {
        VoFileSystem::OpenFile(VoFilePath(argv[0]));
    } catch (const VoInvalidCallException& error) {
        std::cout << error.message() << '\n';
    }
}
