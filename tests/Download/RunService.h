#pragma once

#include <QtCore/QEventLoop>
#include <QtCore/QTimer>

namespace vo::test {

/// Runs the loop of the download service, on the thread that owns it, until a condition holds that other threads bring
/// about.
template <typename Condition>
void RunServiceUntil(Condition condition)
{
    QEventLoop loop;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
        if (condition())
            loop.quit();
    });
    timer.start(2);
    loop.exec();
}

} // namespace vo::test
