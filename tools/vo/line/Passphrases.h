#pragma once

#include <vo/line/Command.h>

#include <Core/VoString.h>
#include <Signing/Signature.h>

#include <vector>

namespace vo::tool {

class Arguments;

/// The options that tell where passphrases come from.
std::vector<Option> PassphraseOptions();

/// The passphrase of a key's file: the first line of --passphrase-file, or of what the command of --passphrase-command
/// prints, which finds the file's name in the environment variable VO_KEY; else as it is typed, without an echo. It is
/// kept in locked memory and never shown. With several files the one at `index` is read, or the last. With `twice` it
/// is typed twice.
/// @throws UsageError when none of them is to be had
/// @throws Failure when the file or the command fails
signing::Passphrase AskPassphrase(const Arguments& arguments, const VoString& keyFile, std::size_t index,
                                  bool twice = false);

} // namespace vo::tool
