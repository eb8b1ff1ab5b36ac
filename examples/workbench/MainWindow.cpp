#include "MainWindow.h"

#include "Exports.h"
#include "Updates.h"

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <Gui/VoClipboard.h>
#include <Gui/VoDesktopServices.h>
#include <Gui/VoIcons.h>
#include <Gui/VoQActions.h>
#include <Shell/VoShell.h>

#include <QtGui/QCloseEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>

namespace {

const char* const tableFiles = "Tables (*.csv *.xml);;All Files (*)";

VoString Property(const char* name)
{
    return VoString("workbench.") + name;
}

VoFilePath AskForFile(QWidget* window, const char* filter, const VoString& last)
{
    const QString start = last.toQString();
    return VoFilePath(VoString(QFileDialog::getOpenFileName(window, QString(), start, QString::fromLatin1(filter))));
}

} // namespace

MainWindow::MainWindow(const VoFilePath& settings)
    : m_settings({VoFilePath(), settings})
    , m_model(new TableModel(m_history, this))
    , m_view(new QTableView(this))
    , m_job(*this, [this](double share, const VoString& what) {
        m_progress->setFormat(what.toQString() + QStringLiteral(" %p%"));
        m_progress->setValue(static_cast<int>(share * m_progress->maximum()));
    })
{
    for (const char* name : {"file", "workbook", "report", "releases", "geometry"})
        m_settings.define({Property(name), "", "What was chosen last"});
    m_view->setModel(m_model);
    m_view->setAlternatingRowColors(true);
    m_view->horizontalHeader()->setStretchLastSection(true);
    setCentralWidget(m_view);
    addActions();
    addPanes();
    addBars();
    m_historyChanges = m_history.connect([this](const auto&) { showState(); });
    m_clipboardChanges = VoClipboard::Connect([this](bool) { showState(); });
    restoreGeometry(QByteArray::fromBase64(setting("geometry").toQString().toLatin1()));
    showState();
}

MainWindow::~MainWindow() = default;

VoAction& MainWindow::add(const char* id, const char* text, const char* icon, const char* shortcut,
                          const std::function<void()>& function)
{
    VoAction& action = m_actions.emplace_back(id, text, [function](bool) { function(); });
    action.setIconName(icon);
    action.setShortcut(shortcut);
    return action;
}

void MainWindow::addActions()
{
    add("file.open", "Open...", "document-open", "Ctrl+O", [this] {
        const VoFilePath file = AskForFile(this, tableFiles, setting("file"));
        if (!file.isNull() && mayDiscard())
            open(file);
    });
    add("file.save", "Save", "document-save", "Ctrl+S", [this] {
        m_model->save(m_file);
        showState();
    });
    add("file.workbook", "Export Workbook...", "document-export", "",
        [this] { exportTo("Workbooks (*.xlsx)", "workbook", ExportWorkbook); });
    add("file.report", "Export Report...", "RVWReport", "",
        [this] { exportTo("Pages (*.html)", "report", ExportReport); });
    add("file.show", "Show in Folder", "", "", [this] { VoDesktopServices::ShowFile(m_file); });
    add("edit.copy", "Copy", "edit-copy", "Ctrl+C",
        [this] { VoClipboard::SetTable(m_model->block(m_view->selectionModel()->selectedIndexes())); });
    add("edit.paste", "Paste", "edit-paste", "Ctrl+V", [this] {
        const QModelIndex cell = m_view->currentIndex();
        m_model->paste(std::max(cell.row(), 0), std::max(cell.column(), 0), VoClipboard::VariantTable());
    });
    add("job.start", "Estimate Means", "media-playback-start", "F5", [this] { start(EstimateMeans(*m_model)); });
    add("job.stop", "Stop", "process-stop", "Esc", [this] { m_job.stop(); });
    add("help.update", "Check for Updates...", "system-software-update", "", [this] { askAndUpdate(); });
}

void MainWindow::addPanes()
{
    auto* const pane = new QWidget(this);
    auto* const layout = new QVBoxLayout(pane);
    m_log = new QPlainTextEdit(pane);
    m_log->setReadOnly(true);
    m_line = new QLineEdit(pane);
    m_line->setPlaceholderText(QStringLiteral("A line for the shell, as: help"));
    layout->addWidget(m_log);
    layout->addWidget(m_line);
    QObject::connect(m_line, &QLineEdit::returnPressed, this, [this] {
        runLine(m_line->text());
        m_line->clear();
    });
    auto* const dock = new QDockWidget(QStringLiteral("Shell"), this);
    dock->setObjectName(QStringLiteral("shell"));
    dock->setWidget(pane);
    addDockWidget(Qt::BottomDockWidgetArea, dock);
    resizeDocks({dock}, {200}, Qt::Vertical);
}

void MainWindow::addBars()
{
    const auto failed = [this](const VoString& text) { tell(text); };
    QToolBar* const bar = addToolBar(QStringLiteral("Main"));
    bar->setObjectName(QStringLiteral("main"));
    QMenu* const file = menuBar()->addMenu(QStringLiteral("&File"));
    QMenu* const edit = menuBar()->addMenu(QStringLiteral("&Edit"));
    QMenu* const tools = menuBar()->addMenu(QStringLiteral("&Tools"));
    QAction* const undo = VoQActions::MakeUndo(m_history, this, "Undo", failed);
    QAction* const redo = VoQActions::MakeRedo(m_history, this, "Redo", failed);
    edit->addActions({undo, redo});
    for (VoAction& action : m_actions) {
        QAction* const shown = VoQActions::Make(action, this, failed);
        QMenu* const menu = action.id().substring(0, 4) == "file"   ? file
                            : action.id().substring(0, 4) == "edit" ? edit
                                                                    : tools;
        menu->addAction(shown);
        if (!action.iconName().isEmpty())
            bar->addAction(shown);
        if (action.id() == "file.report")
            bar->addActions({undo, redo});
    }
    m_progress = new QProgressBar(this);
    m_progress->setMaximum(1000);
    statusBar()->addPermanentWidget(m_progress);
}

VoString MainWindow::setting(const char* name) const
{
    return m_settings.value(Property(name)).asString();
}

void MainWindow::keep(const char* name, const VoString& value)
{
    m_settings.set(Property(name), value);
    m_settings.save();
}

void MainWindow::tell(const VoString& text)
{
    m_log->appendPlainText(VoString(text).trimmed().toString().toQString());
}

QString MainWindow::log() const
{
    return m_log->toPlainText();
}

VoAction& MainWindow::action(const VoString& id)
{
    const auto found =
        std::find_if(m_actions.begin(), m_actions.end(), [&](const VoAction& action) { return action.id() == id; });
    if (found == m_actions.end())
        throw VoNotFoundException(id);
    return *found;
}

// What can be done now, and what it is called.
void MainWindow::showState()
{
    const bool hasTable = m_model->rowCount() > 0;
    for (const char* id : {"file.save", "file.workbook", "file.report", "file.show", "edit.copy"})
        action(id).setEnabled(hasTable);
    action("edit.paste")
        .setEnabled(hasTable && (VoClipboard::Contains("text/plain") || VoClipboard::Contains("text/html")));
    action("job.start").setEnabled(hasTable && !m_job.isRunning());
    action("help.update").setEnabled(!m_job.isRunning());
    action("job.stop").setEnabled(m_job.isRunning());
    m_progress->setVisible(m_job.isRunning());
    setWindowModified(!m_history.isClean());
    setWindowFilePath(m_file.isNull() ? QString() : m_file.toString().toQString());
    const VoString name = m_file.isNull() ? VoString("no table") : m_file.filename().toString();
    setWindowTitle(name.toQString() + QStringLiteral("[*] - Workbench"));
    setWindowIcon(VoIcons::Icon("GraphIcon"));
}

void MainWindow::open(const VoFilePath& file)
{
    m_model->load(file);
    m_file = file;
    keep("file", file.toString());
    m_view->resizeColumnsToContents();
    tell(file.filename().toString() + ": " + VoString(m_model->rowCount()) + " rows");
    showState();
}

bool MainWindow::mayDiscard()
{
    return m_history.isClean() || QMessageBox::question(this, QStringLiteral("Workbench"),
                                                        QStringLiteral("Discard the changes?")) == QMessageBox::Yes;
}

void MainWindow::exportTo(const char* filter, const char* name, void (*write)(const TableModel&, const VoFilePath&))
{
    const QString last = setting(name).toQString();
    const QString chosen = QFileDialog::getSaveFileName(this, QString(), last, QString::fromLatin1(filter));
    if (chosen.isEmpty())
        return;
    const VoFilePath file{VoString(chosen)};
    write(*m_model, file);
    keep(name, file.toString());
    tell(file.filename().toString() + " is written");
}

void MainWindow::start(Job::Work work)
{
    m_progress->setValue(0);
    m_job.start(std::move(work), [this](const VoString& text) {
        tell(text);
        showState();
    });
    showState();
}

void MainWindow::askAndUpdate()
{
    const VoFilePath declarations = AskForFile(this, "Releases (*.xml)", setting("releases"));
    if (declarations.isNull())
        return;
    keep("releases", declarations.toString());
    update(declarations, VoDirectoryPath::FromText(VoString(QApplication::applicationDirPath())));
}

void MainWindow::update(const VoFilePath& declarations, const VoDirectoryPath& directory)
{
    const std::optional<Update> update = FindUpdate(declarations, "Workbench");
    if (update)
        start(InstallUpdate(*update, directory));
    else
        tell("This is the newest release");
}

void MainWindow::runLine(const VoString& line)
{
    tell("> " + line);
    try {
        VoShell shell([this](const VoString& text) { tell(text); });
        const VoShellValue value = shell.run(line);
        if (!value.isNull())
            tell(value.toText());
    } catch (const VoException& error) {
        tell(error.message());
    }
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    event->setAccepted(mayDiscard());
    if (event->isAccepted())
        keep("geometry", VoString(QString::fromLatin1(saveGeometry().toBase64())));
}
