#include "InstallFixture.h"

#include <Updater/PackageVerifier.h>

namespace vo::test {

namespace {

const Files Content = {{"readme.txt", "first"}, {"lib/a.dat", Noise(100, 1)}, {"lib/deep/b.dat", Noise(70, 2)}};

class PackageVerifierTest : public InstallTest
{
protected:
    bool verify(const VoFilePath& definition)
    {
        texts.clear();
        return vo::updater::PackageVerifier::Verify(
            AdvertisedPackageListing::Open(definition), definition, sourceOf("1.0.0.0"),
            [this](const VoSharedPtr<AbstractMessage>& message) {
                const auto* update = dynamic_cast<const AbstractUpdateMessage*>(message.get());
                if (message->type() == AbstractMessage::FileMismatch || message->type() == AbstractMessage::FileMissing)
                    texts.push_back(update->message().toStdString());
            });
    }

    std::vector<std::string> texts;
};

} // namespace

TEST_F(PackageVerifierTest, ASoundReleaseVerifiesWhateverIsInstalledOnTheMachine)
{
    const VoFilePath definition = publish("1.0.0", Content);
    EXPECT_TRUE(verify(definition));
    EXPECT_TRUE(snapshot().empty());
    install(definition);
    const Files before = snapshot();
    EXPECT_TRUE(verify(definition));
    EXPECT_EQ(snapshot(), before);
    const std::string ids = packageID.toString().toStdString() + ", " +
                            AdvertisedPackageListing::Open(definition)->versionID().toString().toStdString();
    EXPECT_TRUE(log.contains("update builder", "Starting package verification process for [" + ids + "]"));
    EXPECT_TRUE(log.contains("update builder", "Package verification success [" + ids + "]"));
}

TEST_F(PackageVerifierTest, EachFileThatDiffersIsTold)
{
    const VoFilePath definition = publish("1.0.0", Content);
    const VoDirectoryPath source = sourceOf("1.0.0.0");
    VoFileSystem::Remove(source.appended(VoFilePath("readme.txt")));
    std::string changed = Content.at("lib/a.dat");
    changed.back() = static_cast<char>(changed.back() ^ 1);
    WriteBytes(source.appended(VoFilePath("lib/a.dat")), changed);
    WriteBytes(source.appended(VoFilePath("lib/deep/b.dat")), "shorter");
    EXPECT_FALSE(verify(definition));
    std::sort(texts.begin(), texts.end());
    EXPECT_EQ(texts, (std::vector<std::string>{"Files do not match: lib\\a.dat", "Files do not match: lib\\deep\\b.dat",
                                               "Original file missing for listing: readme.txt"}));
    EXPECT_TRUE(log.contains("update builder", "]: Files do not math lib\\a.dat"));
    EXPECT_TRUE(log.contains("update builder", "]: Original file missing readme.txt"));
    EXPECT_TRUE(log.contains("update builder", "Package verification failed ["));
}

TEST_F(PackageVerifierTest, AReleaseThatCannotBeInstalledThrows)
{
    const VoFilePath definition = publish("1.0.0", Content);
    VoFileSystem::RemoveAll(definition.parent().directory("chunks"));
    EXPECT_THROW(verify(definition), VoInstallationFailedException);
    EXPECT_THROW_MSG(vo::updater::PackageVerifier::Verify({}, definition, sourceOf("1.0.0.0"), {}),
                     VoNullPointerException, "VoUniquePtr dereferencing nullptr");
}

} // namespace vo::test
