#include "Job.h"

#include <Core/VoExceptionText.h>

#include <utility>

Job::Job(QObject& window, Progress progress)
    : m_context(&window)
    , m_progress(std::move(progress))
{
}

Job::~Job()
{
    m_stop.stop();
    m_thread.terminate();
    m_context.setParent(nullptr); // a member: the window must not delete it
}

void Job::tell(std::function<void()> what)
{
    QMetaObject::invokeMethod(&m_context, std::move(what), Qt::QueuedConnection);
}

void Job::start(Work work, Done done)
{
    m_stop = VoStopFlag();
    m_isRunning = true;
    m_thread.start([this, work = std::move(work), done = std::move(done), stop = m_stop] {
        VoString text;
        try {
            text = work(stop, [this](double share, const VoString& what) {
                tell([this, share, what] { m_progress(share, what); });
            });
        } catch (...) {
            text = vo::CurrentExceptionText();
        }
        tell([this, done, text] {
            m_isRunning = false;
            done(text);
        });
    });
}
