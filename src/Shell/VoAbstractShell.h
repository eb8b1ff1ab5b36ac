#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Shell/VoShellValue.h>
#include <Threading/VoStopFlag.h>

#include <memory>

/// A command shell: what lines of text are handed to. The host application makes one of its own shell and sets it;
/// without a host there is the embedded one, VoShell.
class VOCORE_EXPORT VoAbstractShell
{
public:
    virtual ~VoAbstractShell();

    /// Carries out a line. Throws whatever the line's function throws.
    /// @throws VoUserCancelledException when `stop` was raised
    virtual VoShellValue run(const VoString& line, const VoStopFlag& stop) = 0;

    /// The host's shell; a new VoShell while there is none. Any thread may call.
    static std::shared_ptr<VoAbstractShell> Current();
    /// Makes the host's shell the one that Current() gives; null: there is none any more. Any thread may call.
    static void SetHost(std::shared_ptr<VoAbstractShell> shell);
};
