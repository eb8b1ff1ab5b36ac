#pragma once

#include <Core/VoException.h>

/// A release, or a folder of releases, that its publisher's signatures do not vouch for, or that the publisher does not
/// offer to this installation. Nothing of it was used.
class VOCORE_EXPORT VoUntrustedReleaseException : public VoValidationException
{
    VOCORE_EXCEPTION_CLASS(VoUntrustedReleaseException)
public:
    /// What is wrong.
    enum class Kind
    {
        Unsigned,   ///< A signature is wanted and there is no manifest.
        Signature,  ///< Signatures of known keys are missing, wrong, or too few.
        Keys,       ///< A document of keys is not signed as it has to be, or the known keys lead to no other.
        RolledBack, ///< An older manifest or older keys than were seen before.
        Expired,    ///< The manifest must not be relied on any more.
        Mixed,      ///< A document is not the one that the manifest lists. This may pass.
        Publisher,  ///< An installed package would go over to another publisher, or its record cannot be read.
        NotOffered  ///< Withdrawn, not rolled out yet, of another channel, or too old.
    };

    VoUntrustedReleaseException(Kind kind, const VoString& message); ///< The message.
    Kind kind() const noexcept { return m_kind; }                    ///< What is wrong.

private:
    Kind m_kind;
};
