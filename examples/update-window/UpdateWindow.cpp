#include "UpdateWindow.h"

#include <Core/VoExceptionText.h>
#include <Updater/InstalledPackages.h>
#include <Updater/TrustedReleases.h>

#include <QtCore/QCoreApplication>
#include <QtWidgets/QGridLayout>

#include <algorithm>
#include <chrono>

using namespace vo::updater;

namespace {

// Reads the release anew: what is installed is what is verified here.
void Install(const PackageUpdate& update, const VoStopFlag& stop)
{
    const VoLocation declarations = update.source->declared();
    const auto releases = TrustedReleases::Open(declarations, TrustPolicy(), stop);
    auto release = releases.open(releases.newest(update.packageID));
    InstallationOptions options;
    options.refuseForeignFiles = true;
    options.refuseOlder = true;
    options.proof = release.proof;
    const VoDirectoryPath directory = InstalledPackages::Package(update.packageID)->installationDirectory();
    InstalledPackages::Install(std::move(release.package), release.definition, directory, stop, options);
    PackageSources::Record(update.packageID, {release.definition, declarations});
}

QString Told(const VoDeque<PackageUpdate>& found)
{
    QString text;
    for (const PackageUpdate& update : found) {
        if (update.isAvailable())
            text += QStringLiteral("%1 %2 is available\n")
                        .arg(update.name.toQString(), update.available->toString().toQString());
        else if (!update.isUpToDate())
            text += QStringLiteral("%1 failed: %2\n").arg(update.name.toQString(), update.failure.toQString());
    }
    return text.isEmpty() ? QStringLiteral("Everything is up to date") : text.trimmed();
}

} // namespace

UpdateWindow::UpdateWindow()
{
    setWindowTitle(QStringLiteral("Updates"));
    auto* const layout = new QGridLayout(this);
    m_status.setWordWrap(true);
    layout->addWidget(&m_status, 0, 0, 1, 3);
    layout->addWidget(&m_progress, 1, 0, 1, 3);
    int column = 0;
    for (QPushButton* const button : {&m_look, &m_install, &m_cancel})
        layout->addWidget(button, 2, column++);
    connect(&m_look, &QPushButton::clicked, this, [this] { look(); });
    connect(&m_install, &QPushButton::clicked, this, [this] { install(); });
    connect(&m_cancel, &QPushButton::clicked, this, [this] { m_stop.stop(); });
    m_messages = InstalledPackages::Connect(
        [this](const VoSharedPtr<AbstractMessage>& message) { post([this, message] { showMessage(*message); }); });
    tell(QStringLiteral("Not asked yet"), false);
}

UpdateWindow::~UpdateWindow()
{
    m_stop.stop();
    // Downloads go through this thread's loop, so it must not just wait.
    while (m_work.valid() && m_work.wait_for(std::chrono::milliseconds(10)) != std::future_status::ready)
        QCoreApplication::processEvents();
}

void UpdateWindow::look()
{
    run(
        QStringLiteral("Looking for updates"),
        [this, stop = m_stop = VoStopFlag()] {
            const VoDeque<PackageUpdate> found = InstalledPackages::UpdatesAvailable(stop);
            post([this, found] { m_found = found; });
            return Told(found);
        },
        false);
}

void UpdateWindow::install()
{
    run(
        QStringLiteral("Installing"),
        [this, stop = m_stop = VoStopFlag(), found = m_found] {
            post([this] { m_found.clear(); });
            for (const PackageUpdate& update : found) {
                if (update.isAvailable())
                    Install(update, stop);
            }
            return QStringLiteral("Installed");
        },
        true);
}

// What the work gives, or why it ended, is what the window says then.
void UpdateWindow::run(const QString& doing, std::function<QString()> work, bool changes)
{
    tell(doing, true);
    m_work = std::async(std::launch::async, [this, work = std::move(work), stop = m_stop, changes]() mutable {
        QString text;
        try {
            text = work();
        } catch (...) {
            changes = false;
            text = QStringLiteral("Failed: %1").arg(vo::CurrentExceptionText().toQString());
        }
        post([this, text, stop, changes] {
            tell(stop.isStopped() && !changes ? QStringLiteral("Cancelled; what was installed stays as it was") : text,
                 false);
        });
    });
}

void UpdateWindow::tell(const QString& text, bool isBusy)
{
    m_isBusy = isBusy;
    m_status.setText(text);
    m_progress.setRange(0, isBusy ? 0 : 1);
    m_progress.setValue(0);
    m_look.setDisabled(isBusy);
    m_install.setDisabled(isBusy || std::none_of(m_found.begin(), m_found.end(),
                                                 [](const PackageUpdate& update) { return update.isAvailable(); }));
    m_cancel.setEnabled(isBusy);
}

void UpdateWindow::showMessage(const AbstractMessage& message)
{
    const auto* const files = dynamic_cast<const InstallationProgressMessage*>(&message);
    if (!files || !m_isBusy)
        return;
    m_progress.setRange(0, static_cast<int>(files->filesTotal()));
    m_progress.setValue(static_cast<int>(files->filesProcessed()));
}

void UpdateWindow::post(std::function<void()> function)
{
    QMetaObject::invokeMethod(this, std::move(function), Qt::QueuedConnection);
}
