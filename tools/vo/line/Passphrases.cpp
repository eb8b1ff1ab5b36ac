#include <vo/line/Passphrases.h>

#include <vo/line/Arguments.h>
#include <vo/line/CommandError.h>
#include <vo/line/Paths.h>
#include <vo/screen/Terminal.h>

#include <QtCore/QFile>
#include <QtCore/QProcess>

#include <algorithm>
#include <cstddef>

namespace vo::tool {
namespace {

constexpr qint64 LongestPassphrase = 4096;

/// The first line; the bytes are cleared.
signing::Passphrase Taken(QByteArray& bytes)
{
    const char* const end = std::find_if(bytes.constData(), bytes.constData() + bytes.size(),
                                         [](char c) { return c == '\n' || c == '\r'; });
    signing::Passphrase passphrase(bytes.constData(), static_cast<std::size_t>(end - bytes.constData()));
    bytes.fill('\0');
    return passphrase;
}

signing::Passphrase FromFile(const VoString& text)
{
    QFile file(VoString(AbsoluteText(text.toStdString())).toQString());
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        throw Failure("cannot read " + text + ": " + VoString(file.errorString()));
    QByteArray bytes = file.read(LongestPassphrase);
    return Taken(bytes);
}

signing::Passphrase FromCommand(const VoString& command, const VoString& keyFile)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("VO_KEY"), keyFile.toQString());
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.setInputChannelMode(QProcess::ForwardedInputChannel);
    QStringList words = QProcess::splitCommand(command.toQString());
    if (words.isEmpty())
        throw UsageError("option --passphrase-command: it is empty");
    const QString program = words.takeFirst();
    process.start(program, words, QIODevice::ReadOnly);
    const bool hasEnded = process.waitForStarted(-1) && process.waitForFinished(-1);
    QByteArray bytes = process.readAllStandardOutput();
    signing::Passphrase passphrase = Taken(bytes);
    if (!hasEnded || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        throw Failure("option --passphrase-command: the command failed");
    return passphrase;
}

signing::Passphrase Typed(const VoString& prompt)
{
    auto passphrase = ReadSecretLine(prompt.toStdString());
    if (!passphrase)
        throw UsageError("there is no terminal to type a passphrase at; see --passphrase-file and "
                         "--passphrase-command");
    return std::move(*passphrase);
}

signing::Passphrase TypedTwice(const VoString& keyFile)
{
    signing::Passphrase passphrase = Typed("Passphrase for " + keyFile + ": ");
    const signing::Passphrase again = Typed("The same again: ");
    if (passphrase.size() != again.size() || !std::equal(again.data(), again.data() + again.size(), passphrase.data()))
        throw Failure("the two passphrases differ");
    return passphrase;
}

} // namespace

std::vector<Option> PassphraseOptions()
{
    return {
        {"passphrase-file", "FILE", "the key's passphrase is the first line of FILE; may be given for each key", '\0',
         true},
        {"passphrase-command", "COMMAND", "the key's passphrase is what COMMAND prints; VO_KEY names the key's file"},
    };
}

signing::Passphrase AskPassphrase(const Arguments& arguments, const VoString& keyFile, std::size_t index, bool twice)
{
    const std::vector<VoString> files = arguments.texts("passphrase-file");
    if (!files.empty())
        return FromFile(files[std::min(index, files.size() - 1)]);
    if (const auto command = arguments.text("passphrase-command"))
        return FromCommand(*command, keyFile);
    return twice ? TypedTwice(keyFile) : Typed("Passphrase for " + keyFile + ": ");
}

} // namespace vo::tool
