#include "UpdateWindow.h"

#include <Core/VoExceptionText.h>
#include <Updater/InstalledPackages.h>
#include <Updater/UpdateMessages.h>

#include <QtCore/QCoreApplication>
#include <QtWidgets/QGridLayout>

#include <chrono>
#include <initializer_list>
#include <utility>

using namespace vo::updater;

UpdateWindow::UpdateWindow()
{
    setWindowTitle(QStringLiteral("Updates"));
    m_status.setWordWrap(true);
    auto* const layout = new QGridLayout(this);
    layout->addWidget(&m_status, 0, 0, 1, 3);
    layout->addWidget(&m_progress, 1, 0, 1, 3);
    for (QPushButton* const button : {&m_look, &m_install, &m_cancel})
        layout->addWidget(button, 2, layout->count() - 2);
    connect(&m_look, &QPushButton::clicked, this, [this] {
        run(QStringLiteral("Looking for updates"), [this](const VoStopFlag& stop) {
            VoString text;
            VoDeque<PackageUpdate> found;
            for (const PackageUpdate& update : InstalledPackages::UpdatesAvailable(stop)) {
                if (update.isAvailable()) {
                    found.push_back(update);
                    text += update.name + " " + update.available->toString() + " is available\n";
                } else if (!update.isUpToDate())
                    text += update.name + " failed: " + update.failure + "\n";
            }
            post([this, found] { m_found = found; });
            return text.isEmpty() ? QStringLiteral("Everything is up to date") : text.toQString().trimmed();
        });
    });
    connect(&m_install, &QPushButton::clicked, this, [this] {
        run(QStringLiteral("Installing"), [found = std::exchange(m_found, {})](const VoStopFlag& stop) {
            InstallationOptions options;
            options.refuseForeignFiles = true;
            for (const PackageUpdate& update : found)
                InstalledPackages::Update(update.packageID, stop, TrustPolicy(), options);
            return QStringLiteral("Installed");
        });
    });
    connect(&m_cancel, &QPushButton::clicked, this, [this] { m_stop.stop(); });
    m_messages = InstalledPackages::Connect([this](const VoSharedPtr<AbstractMessage>& message) {
        if (const auto* const files = dynamic_cast<const InstallationProgressMessage*>(message.get()))
            post([this, total = static_cast<int>(files->filesTotal()),
                  done = static_cast<int>(files->filesProcessed())] {
                m_progress.setRange(0, total);
                m_progress.setValue(done);
            });
    });
    tell(QStringLiteral("Not asked yet"), false);
}

UpdateWindow::~UpdateWindow()
{
    m_stop.stop();
    // Downloads go through this thread's loop, so it must not just wait.
    while (m_work.valid() && m_work.wait_for(std::chrono::milliseconds(10)) != std::future_status::ready)
        QCoreApplication::processEvents();
}

// What the work gives, or why it ended, is what the window says then.
void UpdateWindow::run(const QString& doing, std::function<QString(const VoStopFlag&)> work)
{
    m_stop = VoStopFlag();
    tell(doing, true);
    m_work = std::async(std::launch::async, [this, work = std::move(work), stop = m_stop] {
        QString text;
        try {
            text = work(stop);
        } catch (...) {
            text = stop.isStopped() ? QStringLiteral("Cancelled; what was installed stays as it was")
                                    : QStringLiteral("Failed: %1").arg(vo::CurrentExceptionText().toQString());
        }
        post([this, text] { tell(text, false); });
    });
}

void UpdateWindow::tell(const QString& text, bool isBusy)
{
    m_status.setText(text);
    m_progress.setRange(0, isBusy ? 0 : 1); // none until it is known how much there is to do
    m_progress.setValue(0);
    m_look.setDisabled(isBusy);
    m_install.setDisabled(isBusy || m_found.isEmpty());
    m_cancel.setEnabled(isBusy);
}

void UpdateWindow::post(std::function<void()> function)
{
    QMetaObject::invokeMethod(this, std::move(function), Qt::QueuedConnection);
}
