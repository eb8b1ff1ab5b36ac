// A file from a server, and what becomes of one that is not there.
// usage: downloads URL

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoSharedPtr.h>
#include <Download/VoDownloadException.h>
#include <Download/VoDownloadManager.h>
#include <Download/VoDownloadPolicy.h>
#include <Download/VoDownloadRequest.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryDir.h>
#include <FileSystem/VoUrl.h>
#include <Threading/VoStopFlag.h>

#include <QtCore/QCoreApplication>

#include <iostream>

namespace {

void fetch(const VoUrl& url, const VoFilePath& target)
{
    //! [fetch]
    VoDownloadPolicy policy;
    policy.retries = 3; // what may pass is tried again, after a growing delay
    policy.onRetry = [](const VoDownloadRetry& retry) { std::cout << "again: " << retry.reason << '\n'; };
    policy.onReceived = [](const VoDownloadReceipt& receipt) { std::cout << receipt.transferred << " bytes\n"; };
    const auto request = VoSharedPtr<VoDownloadRequest>::Make(url, target);
    request->setPolicy(policy);
    VoDownloadManager::RequestWait(request, VoStopFlag()); // another thread may raise the flag
    //! [fetch]
    std::cout << VoFileSystem::FileSize(target) << '\n';
}

void missing(const VoUrl& url, const VoFilePath& target)
{
    //! [missing]
    try {
        VoDownloadManager::RequestWait(VoUrl(url.toString() + ".none"), target);
    } catch (const VoDownloadException& error) {
        std::cout << error.httpStatus() << (error.isTransient() ? ", may pass" : ", stays so") << '\n';
    }
    std::cout << VoFileSystem::FileSize(target) << '\n'; // the file that was there
    //! [missing]
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv); // the service runs on an event loop of the framework
    if (argc != 2)
        return 2;
    try {
        const VoTemporaryDir scratch;
        fetch(VoUrl(argv[1]), scratch.path("file"));
        missing(VoUrl(argv[1]), scratch.path("file"));
        return 0;
    } catch (...) {
        std::cerr << vo::CurrentExceptionText() << '\n';
        return 1;
    }
}

/* Prints:
10 bytes
10
404, stays so
10
*/
