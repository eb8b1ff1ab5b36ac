#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

#include <ctime>

namespace vo::test {

/// An environment variable has another value while this lives; a time zone ("TZ") is where the machine is meanwhile.
class ScopedEnvironment
{
public:
    ScopedEnvironment(const char* name, const QByteArray& value)
        : m_name(name)
        , m_wasSet(qEnvironmentVariableIsSet(name))
        , m_previous(qgetenv(name))
    {
        qputenv(name, value);
        tzset();
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;
    ~ScopedEnvironment()
    {
        if (m_wasSet)
            qputenv(m_name, m_previous);
        else
            qunsetenv(m_name);
        tzset();
    }

private:
    const char* m_name;
    bool m_wasSet;
    QByteArray m_previous;
};

} // namespace vo::test
