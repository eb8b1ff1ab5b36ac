#pragma once

#include <Core/VoException.h>

#include <ios>

/// A transfer or a flush of a device failed.
class VOCORE_EXPORT VoIOException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoIOException)
public:
    VoIOException();                                               ///< Empty message.
    VoIOException(const VoString& message);                        ///< The message.
    VoIOException(const char* message);                            ///< The message.
    explicit VoIOException(const std::ios_base::failure& failure); ///< The text of the stream's failure.
    /// The device's last error; of a device over a file also its path, as subject(), and its reason.
    explicit VoIOException(const VoIODevice& device);
};

/// A device was read whose mode does not permit it.
class VOCORE_EXPORT VoIOInvalidReadException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoIOInvalidReadException)
public:
    VoIOInvalidReadException();                        ///< Empty message.
    VoIOInvalidReadException(const VoString& message); ///< The message.
    VoIOInvalidReadException(const char* message);     ///< The message.
};

/// A device was written whose mode does not permit it.
class VOCORE_EXPORT VoIOInvalidWriteException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoIOInvalidWriteException)
public:
    VoIOInvalidWriteException();                        ///< Empty message.
    VoIOInvalidWriteException(const VoString& message); ///< The message.
    VoIOInvalidWriteException(const char* message);     ///< The message.
};
