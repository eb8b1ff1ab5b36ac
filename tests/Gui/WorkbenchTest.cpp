#include "GuiFixture.h"

#include <VoTestSupport.h>

#include <Core/VoVariant.h>
#include <FileSystem/VoDirectoryPath.h>
#include <Gui/VoClipboard.h>
#include <MainWindow.h>
#include <ScratchFolder.h>
#include <Updater/PackageBuilder.h>
#include <Updater/VoUpdater.h>

#include <QtCore/QItemSelectionModel>
#include <QtWidgets/qaction.h> // the name that both versions of the framework have
#include <QtWidgets/QTableView>

using vo::updater::PackageBuilder;

namespace {

// As of an analysis: a table of runs.
std::string Results(int rows)
{
    std::string csv = "Run,Gain (dB),Bandwidth (kHz),Remark\n";
    for (int i = 0; i < rows; ++i) {
        const double gain = 20.1 + std::sin(i * 1.7) * 0.35;
        csv += std::to_string(i + 1) + "," + std::to_string(gain) + "," + std::to_string(118.2 - gain * 0.9) + "," +
               (i % 7 == 3 ? "warm" : "nominal") + "\n";
    }
    return csv;
}

class Workbench : public vo::test::GuiTest
{
protected:
    Workbench() { window.open(scratch.write("runs.csv", Results(40))); }

    VoVariant cell(int row, int column)
    {
        return window.model().values().at(static_cast<std::size_t>(row), static_cast<std::size_t>(column));
    }

    void type(int row, int column, const char* text)
    {
        window.model().setData(window.model().index(row, column), QString::fromUtf8(text), Qt::EditRole);
    }

    // Through the menu, as the user does it.
    void choose(const char* text)
    {
        for (QAction* const action : window.findChildren<QAction*>()) {
            if (action->text().startsWith(QString::fromUtf8(text)) && action->isEnabled())
                return action->trigger();
        }
        FAIL() << "no action " << text;
    }

    void waitForJob()
    {
        while (window.job().isRunning())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    std::string log() const { return window.log().toStdString(); }

    vo::test::ScratchFolder scratch;
    MainWindow window{scratch.path("settings.xml")};
};

} // namespace

TEST_F(Workbench, EditsCopiesAndTakesBack)
{
    const VoVariant before = cell(2, 1);
    type(2, 1, "21.5");
    EXPECT_EQ(cell(2, 1), VoVariant(21.5));
    EXPECT_TRUE(window.isWindowModified());
    choose("Undo Edit Gain");
    EXPECT_EQ(cell(2, 1), before);
    EXPECT_FALSE(window.isWindowModified());
    choose("Redo Edit Gain");

    QItemSelectionModel* const selection = window.view().selectionModel();
    for (const int row : {2, 3})
        selection->select(window.model().index(row, 1), QItemSelectionModel::Select);
    choose("Copy");
    EXPECT_EQ(VoClipboard::VariantTable().at(0, 0), VoVariant(21.5));
    QCoreApplication::processEvents(); // the clipboard's news
    window.view().setCurrentIndex(window.model().index(39, 2));
    choose("Paste");
    EXPECT_EQ(window.model().rowCount(), 41);
    EXPECT_EQ(cell(39, 2), VoVariant(21.5));
    choose("Undo Paste");
    EXPECT_EQ(window.model().rowCount(), 40);

    choose("Save");
    EXPECT_FALSE(window.isWindowModified());
    EXPECT_NE(scratch.read("runs.csv").find("3,21.5,"), std::string::npos);
}

TEST_F(Workbench, BringsItselfUpToDate)
{
    VoUpdater::OverrideUpdateSystemDirectory(VoDirectoryPath(scratch.path("updates/").path()));
    std::filesystem::create_directories(scratch.native("program"));
    scratch.write("program/workbench", std::string(100000, 'x'));
    const VoFilePath declarations = scratch.path("pub/declarations.xml");
    std::filesystem::create_directories(scratch.native("pub"));
    PackageBuilder builder(VoUpdater::GenerateID(), "Workbench", VoVersion(1, 1, 0, VoVersion::Release), 1 << 16, 6);
    builder.add(VoDirectoryPath(scratch.path("program/").path()), declarations);
    builder.finalise(declarations);

    const VoDirectoryPath place(scratch.path("installed/").path());
    window.update(declarations, place);
    waitForJob();
    EXPECT_EQ(scratch.read("installed/workbench").size(), 100000u) << log();
    window.update(declarations, place);
    EXPECT_NE(log().find("This is the newest release"), std::string::npos) << log();
}

TEST_F(Workbench, RemembersWhatWasChosen)
{
    const VoLayeredProperties kept({VoFilePath(), scratch.path("settings.xml")});
    EXPECT_TRUE(kept.value("workbench.file").asString().contains("runs.csv"));
}

// The picture that README.md shows.
TEST_F(Workbench, WorksLongAndShowsItself)
{
    window.resize(980, 640);
    window.runLine("help echo");
    choose("Estimate Means");
    choose("Stop");
    waitForJob();
    EXPECT_NE(log().find("User cancelled"), std::string::npos) << log();
    choose("Estimate Means");
    waitForJob();
    EXPECT_NE(log().find("Gain (dB): 20."), std::string::npos) << log();
    type(4, 1, "20.75");
    window.view().setCurrentIndex(window.model().index(5, 1));
    window.show();
    QCoreApplication::processEvents();
    EXPECT_TRUE(window.grab().save(QStringLiteral(VOCORE_PICTURES "/workbench.png")));
}
