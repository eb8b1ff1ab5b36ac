#include "../Download/RunService.h"
#include "InstallFixture.h"

#include <ScriptedHttpServer.h>

#include <Download/VoDownloadException.h>
#include <Download/VoDownloadManager.h>
#include <Download/VoDownloadNotification.h>
#include <Updater/AdvertisedPackages.h>

#include <QtCore/QCoreApplication>

#include <regex>

using namespace vo::test;
using vo::updater::AdvertisedPackages;
using vo::updater::ChunkListing;
using Fault = ScriptedAnswer::Fault;

namespace {

const Files First = {{"same", Noise(300, 1)}, {"changed", Noise(500, 2)}, {"removed", "gone soon"}};
const Files Second = {{"same", Noise(300, 1)}, {"changed", Noise(500, 3)}, {"deep/er/added", Noise(400, 4)}};

/// What a server does with the last chunk of an update, and how the installation ends.
struct Row
{
    const char* name;
    std::function<ScriptedAnswer(const std::string& bytes)> answer;
    const char* text; // of the failure, behind "Installation failed: "; "URL" stands for the chunk's; null: none
};

class RemoteInstall : public InstallTest
{
protected:
    /// Serves everything that is published.
    void serve()
    {
        const auto root = vo::detail::ToNative(declarations().parent());
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
            if (entry.is_regular_file())
                server.get("/" + entry.path().lexically_relative(root).generic_string(),
                           ScriptedAnswer::Body(ReadBytes(vo::detail::FromNative(entry.path()))));
        }
    }

    std::string target(const VoFilePath& published) const
    {
        const auto root = vo::detail::ToNative(declarations().parent());
        return "/" + vo::detail::ToNative(published).lexically_relative(root).generic_string();
    }

    VoUrl url(const VoFilePath& published) const { return VoUrl(server.url(target(published)).c_str()); }

    /// The chunk that is fetched last, of a definition for which others are fetched too.
    VoFilePath lastChunk(const VoFilePath& definition) const
    {
        const auto advert = AdvertisedPackageListing::Open(definition);
        const VoDeque<ChunkListing> chunks = InstalledPackages::Plan(*advert, place()).chunks;
        EXPECT_GT(chunks.size(), 1u);
        return definition.parent().appended(chunks.back().path());
    }

    std::string installFrom(const VoFilePath& definition)
    {
        return Refusal<VoInstallationFailedException>(
            [&] { InstalledPackages::Install(url(definition), place(), VoStopFlag(), options); });
    }

    /// All but what has been fetched so far, which the next run may use.
    Files lasting() const
    {
        Files all = snapshot();
        for (auto entry = all.begin(); entry != all.end();)
            entry = entry->first.compare(0, 17, "updates/download/") == 0 ? all.erase(entry) : std::next(entry);
        return all;
    }

    ScriptedHttpServer server;
};

std::vector<Row> Rows()
{
    const auto failing = [](Fault fault, std::int64_t at) {
        return [=](const std::string& bytes) { return ScriptedAnswer::Body(bytes).failing(fault, at); };
    };
    const auto status = [](int code, const char* reason) {
        return [=](const std::string&) { return ScriptedAnswer::Status(code, reason, "<html></html>"); };
    };
    return {
        {"not found", status(404, "Not Found"),
         "Header request failed: Error transferring URL - server replied: Not Found"},
        {"reset within the body", failing(Fault::Reset, 7), "Connection closed"},
        {"stalled", failing(Fault::Stall, 7), "Download timed out"},
        {"longer than listed", [](const std::string& bytes) { return ScriptedAnswer::Body(bytes + "more"); },
         "Header request failed: Download larger than allowed: URL"},
        {"redirected elsewhere",
         [](const std::string&) { return ScriptedAnswer::Redirect(302, "http://localhost:1/chunk"); },
         "Header request failed: Unsafe domain redirect from (URL) to (http://localhost:1/chunk)"},
        {"wrong bytes of the right length",
         [](const std::string& bytes) { return ScriptedAnswer::Body(std::string(bytes.size(), 'w')); }, nullptr},
    };
}

} // namespace

TEST_F(RemoteInstall, AFaultOfTheServerLeavesFilesAndRegistryAsTheyWereAndTheNextRunCompletes)
{
    const VoFilePath first = publish("1.0.0", First);
    const VoFilePath second = publish("1.1.0", Second);
    options.downloads.stallTimeout = VoMilliseconds(200);
    for (const Row& row : Rows()) {
        SCOPED_TRACE(row.name);
        wipe();
        server.clear();
        serve();
        ASSERT_EQ(installFrom(first), "");
        const Files before = lasting();
        const VoFilePath chunk = lastChunk(second);
        server.get(target(chunk), row.answer(ReadBytes(chunk)));

        std::string text = installFrom(second);
        if (row.text) {
            const std::string address = url(chunk).toString().toStdString();
            std::string expected = row.text;
            if (const auto at = expected.find("URL"); at != std::string::npos)
                expected.replace(at, 3, address);
            EXPECT_EQ(text, "Installation failed: " + expected);
        } else {
            EXPECT_EQ(text.rfind("Installation failed: File checksum does not match for: ", 0), 0u) << text;
        }
        EXPECT_EQ(lasting(), before);

        serve();
        EXPECT_EQ(installFrom(second), "");
        EXPECT_EQ(FilesBelow(place()), Second);
        EXPECT_FALSE(VoFileSystem::Exists(staging())) << "staged chunks are gone";
    }
}

TEST_F(RemoteInstall, ADamagedChunkIsFetchedAgainAsOftenAsThePolicySays)
{
    const VoFilePath definition = publish("1.0.0", First);
    serve();
    const VoFilePath chunk = lastChunk(definition);
    const ScriptedAnswer good = ScriptedAnswer::Body(ReadBytes(chunk));
    const ScriptedAnswer bad = ScriptedAnswer::Body(std::string(ReadBytes(chunk).size(), 'w'));
    std::vector<std::string> reasons;
    options.downloads.onRetry = [&](const VoDownloadRetry& retry) { reasons.push_back(retry.reason.toStdString()); };
    options.downloads.retries = 1;

    server.get(target(chunk), {bad, bad, good});
    EXPECT_NE(installFrom(definition).find("File checksum does not match for: "), std::string::npos);
    EXPECT_EQ(server.count("GET", target(chunk)), 2u);
    EXPECT_EQ(reasons, std::vector<std::string>{"Chunk checksum mismatch"});

    // The staged damage is found and replaced; nothing else is fetched again.
    server.clear();
    serve();
    server.get(target(chunk), {bad, good});
    EXPECT_EQ(installFrom(definition), "");
    EXPECT_EQ(server.count("GET", target(chunk)), 2u);
    EXPECT_EQ(server.requests().size(), 3u + 2u * 2u) << "definition, no attributes, the chunk twice, with headers";
    EXPECT_EQ(FilesBelow(place()), First);
}

TEST_F(RemoteInstall, WhatTheTargetHasNoSpaceForIsNotDownloaded)
{
    const VoFilePath definition = publish("1.0.0", {{"huge", Noise(100, 1)}}, 1000);
    const std::regex lengths("(size|length)=\"100\"");
    const std::string petabyte = std::regex_replace(ReadBytes(definition), lengths, "$1=\"1125899906842624\"");
    server.get(target(definition), ScriptedAnswer::Body(petabyte));
    const std::string failure = installFrom(definition);
    EXPECT_EQ(failure.rfind("Installation failed: Not enough disk space: 1125899906842624 bytes needed, ", 0), 0u);
    EXPECT_NE(failure.find(" available in " + place().path().toStdString()), std::string::npos) << failure;
    EXPECT_EQ(server.requests().size(), 3u) << "for the definition, and for attributes that there are not";
}

TEST_F(RemoteInstall, AMirrorStepsInForWhatIsDamagedOrMissing)
{
    const VoFilePath definition = publish("1.0.0", First);
    serve();
    const VoFilePath chunk = lastChunk(definition);
    options.downloads.mirrored = VoUrl(server.url("/").c_str());
    options.downloads.mirrors.pushBack(VoUrl(server.url("/mirror/").c_str()));
    const ScriptedAnswer missing = ScriptedAnswer::Status(404, "Not Found");
    const ScriptedAnswer sound = ScriptedAnswer::Body(ReadBytes(chunk));
    const ScriptedAnswer damaged = ScriptedAnswer::Body(std::string(sound.body.size(), 'w'));
    const std::pair<std::vector<ScriptedAnswer>, ScriptedAnswer> rows[] = {
        {{missing}, sound}, {{damaged}, sound}, {{damaged, sound}, missing}};
    for (const auto& [first, second] : rows) {
        wipe();
        server.get(target(chunk), first);
        server.get("/mirror" + target(chunk), second);
        EXPECT_EQ(installFrom(definition), "") << second.status;
        EXPECT_EQ(FilesBelow(place()), First);
    }
}

TEST_F(RemoteInstall, TheDeclarationsLeadToTheDefinitionAndNowhereElse)
{
    publish("1.0.0", First);
    const VoFilePath second = publish("1.1.0", Second);
    serve();
    const auto declared = AdvertisedPackages::Open(url(declarations()));
    ASSERT_TRUE(declared);
    const VoUrl newest = declared->newestPackage(packageID).definition(url(declarations())).url();
    EXPECT_EQ(newest, url(second));
    EXPECT_EQ(AdvertisedPackageListing::Open(newest)->version().toString(), "1.1.0.0");
    EXPECT_FALSE(AdvertisedPackages::Open(newest)) << "another kind of document";

    VoStopFlag raised;
    raised.stop();
    EXPECT_THROW_MSG(AdvertisedPackages::Open(url(declarations()), raised), VoUserCancelledException, "User cancelled");
    ScriptedAnswer endless = ScriptedAnswer::Body("<packages>").failing(Fault::Endless, 10);
    endless.withLength = false;
    server.get("/endless.xml", endless);
    server.head("/endless.xml", {ScriptedAnswer::Body("<packages>")});
    EXPECT_THROW(AdvertisedPackages::Open(VoUrl(server.url("/endless.xml").c_str())), VoDownloadException);
}

TEST_F(RemoteInstall, StoppingWhileChunksArriveKeepsWhatHasComeForTheNextRun)
{
    const VoFilePath definition = publish("1.0.0", First);
    serve();
    const VoFilePath chunk = lastChunk(definition);
    server.get(target(chunk), ScriptedAnswer::Body(ReadBytes(chunk)).failing(Fault::Stall, 3));
    const VoStopFlag stop;
    const VoReceiver receiver = InstalledPackages::Connect([&](const VoSharedPtr<AbstractMessage>& message) {
        // The last report comes from a transfer that stands still.
        if (message->type() == AbstractMessage::DownloadProgress)
            stop.stop();
    });
    EXPECT_THROW_MSG(InstalledPackages::Install(url(definition), place(), stop, options), VoInstallationFailedException,
                     "Installation failed: User cancelled");
    EXPECT_TRUE(FilesBelow(place()).empty());
    EXPECT_TRUE(InstalledPackages::Packages().isEmpty());

    server.clear();
    serve();
    const auto advert = AdvertisedPackageListing::Open(definition);
    const std::string folder = "updates/download/" + advert->packageID().toString().toStdString() + "/";
    const Files kept = snapshot();
    std::size_t missing = 0; // all of them, should the first report come before the first whole chunk
    for (const ChunkListing& chunkOf : advert->chunks())
        missing += 1 - kept.count(folder + chunkOf.id().toString().toStdString() + ".vochk");
    ASSERT_EQ(installFrom(definition), "");
    EXPECT_EQ(server.requests().size(), 2 * missing + 3); // and those for the definition and the attributes
    EXPECT_EQ(FilesBelow(place()), First);
}

TEST_F(RemoteInstall, WhatIsInstalledIsWhatWasReadWhateverTheServerSaysByNow)
{
    const VoFilePath first = publish("1.0.0", First);
    const VoFilePath second = publish("1.1.0", Second);
    serve();
    server.get(target(second), {ScriptedAnswer::Body(ReadBytes(second)), ScriptedAnswer::Body(ReadBytes(first))});
    auto advert = AdvertisedPackageListing::Open(url(second));
    ASSERT_EQ(InstalledPackages::Plan(*advert, place()).version.toString(), "1.1.0.0");
    InstalledPackages::Install(std::move(advert), url(second), place(), VoStopFlag(), options);
    EXPECT_EQ(FilesBelow(place()), Second);
    EXPECT_EQ(server.count("GET", target(second)), 1u);
}

TEST_F(RemoteInstall, ADocumentComesAgainOnlyWhenItHasChanged)
{
    const std::string one = ReadBytes(publish("1.0.0", First));
    const std::string two = ReadBytes(publish("1.1.0", Second));
    const VoUrl document(server.url("/p.xml").c_str());
    const ScriptedAnswer unchanged = ScriptedAnswer::Status(304, "Not Modified");
    const auto version = [](const std::string& body, const char* tag) {
        return ScriptedAnswer::Body(body).with("ETag", tag);
    };
    server.get("/p.xml", {version(one, "\"1\""), unchanged, version(two, "\"2\""), unchanged, version(two, "\"2\"")});
    server.head("/p.xml", {ScriptedAnswer::Body(one)});
    VoDownloadReceipt receipt;
    options.downloads.onReceived = [&](const VoDownloadReceipt& received) { receipt = received; };
    std::string asked;
    for (const auto& [release, bytes] : std::vector<std::pair<const char*, std::size_t>>{{"1.0.0.0", one.size()},
                                                                                         {"1.0.0.0", 0},
                                                                                         {"1.1.0.0", two.size()},
                                                                                         {"1.1.0.0", 0},
                                                                                         {"1.1.0.0", two.size()}}) {
        if (asked == "-\"1\"\"1\"\"2\"") {
            // What was damaged is not asked for changes, and not used.
            for (const auto& entry :
                 std::filesystem::directory_iterator(vo::detail::ToNative(updates().directory("documents"))))
                std::ofstream(entry.path(), std::ios::app) << "x";
        }
        EXPECT_EQ(AdvertisedPackageListing::Open(document, VoStopFlag(), options.downloads)->version().toString(),
                  release);
        EXPECT_EQ(receipt.transferred, static_cast<std::int64_t>(bytes));
        EXPECT_EQ(receipt.isUnchanged, bytes == 0);
        const auto headers = server.requests().back().headers;
        const auto tag = headers.find("if-none-match");
        asked += tag == headers.end() ? "-" : tag->second;
    }
    EXPECT_EQ(asked, "-\"1\"\"1\"\"2\"-");
}

TEST_F(RemoteInstall, TheOwnerOfTheServiceWaitsForAnotherThreadWithItsLoopRunningOrNotAtAll)
{
    const VoFilePath definition = publish("1.0.0", First);
    serve();
    VoDownloadManager::Get();
    std::atomic<bool> isInside{false};
    const VoReceiver progress = InstalledPackages::Connect([&](const VoSharedPtr<AbstractMessage>& message) {
        isInside = isInside || message->type() == AbstractMessage::DownloadStarted;
    });
    std::string refusal;
    const VoReceiver downloads = VoDownloadManager::Connect([&](const VoSharedPtr<VoDownloadNotification>&) {
        refusal = Refusal<VoInvalidCallException>([&] { InstalledPackages::Uninstall(packageID); });
    });
    std::string end = "did not end";
    std::thread worker([&] { end = installFrom(definition); });
    RunServiceUntil([&] { return isInside.load(); });
    InstalledPackages::Uninstall(packageID);
    worker.join();
    EXPECT_EQ(end, "");
    EXPECT_TRUE(InstalledPackages::Packages().isEmpty()) << "installed, and then uninstalled";
    EXPECT_EQ(refusal, "An installation is already running");
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    // Downloads need an application object, and their events are delivered by this thread.
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
