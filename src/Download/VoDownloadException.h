#pragma once

#include <Core/VoException.h>

/// A download that failed, or could not be made.
class VOCORE_EXPORT VoDownloadException : public VoException
{
public:
    VoDownloadException(); ///< "Download exception"
    explicit VoDownloadException(const VoString& message);
    VoDownloadException(const VoDownloadException& other);
    VoDownloadException& operator=(const VoDownloadException& other);
    ~VoDownloadException() override;

    const char* name() const override;
};
