#include <Subsystem/detail/SystemLog.h>

#if defined(_WIN32)

#include <windows.h>

namespace vo::logging {

void WriteToSystemLog(const Record& record)
{
    OutputDebugStringW((FormatRecord(record) + "\r\n").toWString().c_str());
}

} // namespace vo::logging

#endif
