#include "GuiFixture.h"

#include <VoTestSupport.h>

#include <FileSystem/VoDirectoryPath.h>
#include <ScratchFolder.h>
#include <UpdateWindow.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/InstalledPackages.h>
#include <Updater/PackageBuilder.h>
#include <Updater/VoUpdater.h>

#include <QtGui/QPixmap>

using namespace vo::updater;

namespace {

class UpdateWindowTest : public vo::test::GuiTest
{
protected:
    UpdateWindowTest()
    {
        VoUpdater::OverrideUpdateSystemDirectory(VoDirectoryPath(scratch.path("updates/").path()));
        std::filesystem::create_directories(scratch.native("pub"));
        publish(1);
        const VoLocation definition = newest();
        InstalledPackages::Install(definition, VoDirectoryPath(scratch.path("installed/").path()), VoStopFlag());
        PackageSources::Record(id, {definition, declarations});
    }

    void publish(int minor)
    {
        for (int i = 0; i < 20; ++i)
            scratch.write("program/file" + std::to_string(i), std::string(1000, static_cast<char>('a' + minor)));
        PackageBuilder builder(id, "Simulator", VoVersion(1, minor, 0, VoVersion::Release), 1 << 16, 6);
        builder.add(VoDirectoryPath(scratch.path("program/").path()), declarations);
        builder.finalise(declarations);
    }

    VoLocation newest() const
    {
        return AdvertisedPackages::Open(declarations)->newestPackage(id).definition(declarations);
    }

    void press(UpdateWindow& window, const char* button)
    {
        for (QPushButton* const each : window.findChildren<QPushButton*>()) {
            if (each->text() == QString::fromUtf8(button))
                each->click();
        }
    }

    // What the window says once it is done.
    std::string after(UpdateWindow& window, const char* button)
    {
        press(window, button);
        while (window.isBusy())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return window.findChild<QLabel*>()->text().toStdString();
    }

    vo::test::ScratchFolder scratch;
    const VoFilePath declarations = scratch.path("pub/declarations.xml");
    const VoUUID id = VoUpdater::GenerateID();
};

} // namespace

TEST_F(UpdateWindowTest, FindsCancelsInstallsAndTellsFailures)
{
    UpdateWindow window;
    EXPECT_EQ(after(window, "Look for updates"), "Everything is up to date");
    publish(2);
    press(window, "Look for updates");
    EXPECT_EQ(after(window, "Cancel").substr(0, 9), "Cancelled");
    EXPECT_EQ(after(window, "Look for updates"), "Simulator 1.2.0.0 is available");
    window.resize(420, 120);
    EXPECT_TRUE(window.grab().save(QStringLiteral(VOCORE_PICTURES "/update-window.png")));
    EXPECT_EQ(after(window, "Install"), "Installed");
    EXPECT_EQ(scratch.read("installed/file7"), std::string(1000, 'c'));
    EXPECT_EQ(after(window, "Look for updates"), "Everything is up to date");
    PackageSources::Record(id, {newest(), newest()});
    EXPECT_THROW_MSG(InstalledPackages::Update(id, VoStopFlag()), VoValidationException,
                     ("Not a declarations file: " + newest().toString().toStdString()).c_str());
    PackageSources::Forget(id);
    EXPECT_THROW_MSG(InstalledPackages::Update(id, VoStopFlag()), VoInvalidCallException,
                     "it is not recorded where the package was installed from");
    PackageSources::Record(id, {newest(), declarations});
    std::filesystem::remove(scratch.native("pub/declarations.xml"));
    EXPECT_EQ(after(window, "Look for updates").substr(0, 17), "Simulator failed:");
    press(window, "Look for updates"); // the window ends while it looks
}
