#pragma once

#include <Core/VoDeque.h>
#include <Threading/VoReceiver.h>
#include <Threading/VoStopFlag.h>
#include <Updater/PackageUpdate.h>

#include <QtWidgets/QLabel>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QWidget>

#include <functional>
#include <future>

/// Looks for updates of all installed packages, and installs them.
class UpdateWindow : public QWidget
{
public:
    UpdateWindow();
    ~UpdateWindow() override; ///< Stops what is going on; nothing is left half-installed.

    bool isBusy() const { return m_cancel.isEnabled(); }

private:
    void run(const QString& doing, std::function<QString(const VoStopFlag&)> work);
    void tell(const QString& text, bool isBusy);
    void post(std::function<void()> function); ///< To the window's thread, from any.

    QLabel m_status;
    QProgressBar m_progress;
    QPushButton m_look{QStringLiteral("Look for updates")};
    QPushButton m_install{QStringLiteral("Install")};
    QPushButton m_cancel{QStringLiteral("Cancel")};
    VoDeque<vo::updater::PackageUpdate> m_found; // what can be installed
    VoStopFlag m_stop;
    VoReceiver m_messages;
    std::future<void> m_work; // last: its end waits
};
