#pragma once

#include <vo/line/Command.h>

#include <Core/VoString.h>
#include <Signing/Signature.h>
#include <Updater/ReleaseSigning.h>

#include <memory>
#include <vector>

namespace vo::tool {

class Session;

/// The content of a key's file. Throws as ReadWholeFile().
/// @throws VoValidationException "Document larger than allowed: " + path, for one that is no key's
VoString ReadKeyFile(const VoFilePath& file);
void WriteKeyFile(const VoFilePath& file, const VoString& text); ///< Replaces the file as a whole.

/// A public key: the file of that name, or the key's line itself.
/// @throws UsageError for a text that is neither
/// @throws CommandError for a file that cannot be read
signing::PublicKey ReadPublicKey(const VoString& text);

/// The options of commands that sign.
std::vector<Option> SigningOptions();
/// What they say: the secret keys that --sign names, opened with their passphrases, and how long the manifest holds.
updater::ReleaseSigning SigningOf(const Session& session);

/// Shows how a manifest stands after a change.
void ShowManifest(Session& session, const updater::ManifestState& state);

} // namespace vo::tool
