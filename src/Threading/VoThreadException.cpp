#include <Threading/VoThreadException.h>

#include <Core/VoString.h>

VOCORE_DEFINE_EXCEPTION(VoThreadException, "VoThreadException")
VoThreadException::VoThreadException() = default;
VoThreadException::VoThreadException(const VoString& message)
    : VoException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoDetachThreadException, "VoDetachThreadException")
VoDetachThreadException::VoDetachThreadException()
    : VoThreadException(VoString("Invalid thread detach call"))
{
}

VOCORE_DEFINE_EXCEPTION(VoJoinThreadException, "VoJoinThreadException")
VoJoinThreadException::VoJoinThreadException()
    : VoThreadException(VoString("Invalid thread join call"))
{
}
