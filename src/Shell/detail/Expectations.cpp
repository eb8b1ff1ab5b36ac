#include <Shell/detail/Expectations.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoPrintable.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoWholeFile.h>
#include <Shell/VoFunctionRegistry.h>
#include <Shell/detail/ShellInterpreter.h>

#include <cmath>
#include <optional>
#include <string>

namespace vo::detail {
namespace {

using Form = VoShellValue::Form;

constexpr std::size_t LargestFile = std::size_t(256) << 20;

VoString Quoted(const VoString& text)
{
    return "\"" + Printable(text) + "\"";
}

std::optional<double> NumberOf(const VoVariant& value)
{
    switch (value.type()) {
    case VoVariant::Integer:
        return value.asInteger();
    case VoVariant::Double:
        return value.asDouble();
    case VoVariant::Size:
        return static_cast<double>(value.asSize());
    default:
        return std::nullopt;
    }
}

bool IsExpected(const VoVariant& actual, const VoVariant& expected, double tolerance)
{
    const std::optional<double> a = NumberOf(actual);
    const std::optional<double> b = NumberOf(expected);
    if (!a || !b)
        return VoShellValue(actual).toText().equal(VoShellValue(expected).toText(), VoString::CaseSensitive);
    // Sizes may be beyond what a double keeps.
    if (tolerance == 0 && actual.type() == VoVariant::Size && expected.type() == VoVariant::Size)
        return actual == expected;
    return *a == *b || std::abs(*a - *b) <= tolerance || (std::isnan(*a) && std::isnan(*b));
}

bool IsExpected(const VoShellValue& actual, const VoShellValue& expected, double tolerance)
{
    if (actual.form() != expected.form())
        return actual.toText().equal(expected.toText(), VoString::CaseSensitive);
    if (actual.form() == Form::Single)
        return IsExpected(actual.variant(), expected.variant(), tolerance);
    if (actual.form() == Form::Table)
        return actual.table() == expected.table();
    bool isExpected = actual.list().size() == expected.list().size();
    for (std::size_t i = 0; isExpected && i < actual.list().size(); ++i)
        isExpected = IsExpected(actual.list().at(i), expected.list().at(i), tolerance);
    return isExpected;
}

VoShellValue Expect(const VoFunctionCall& call)
{
    const VoShellValue& actual = call.argument("actual");
    const VoShellValue& expected = call.argument("expected");
    const double tolerance = call.value("tolerance").asDouble();
    if (IsExpected(actual, expected, tolerance))
        return {};
    VoString text = "Expected " + Quoted(expected.toText()) + ", got " + Quoted(actual.toText());
    if (tolerance != 0)
        text += ", tolerance " + call.argument("tolerance").toText();
    throw VoValidationException(text);
}

std::string ContentOf(const VoFilePath& file)
{
    std::optional<std::string> content = ReadWholeFile(file, LargestFile);
    if (!content)
        throw VoInvalidUseException("File is too large: " + file.path());
    return *std::move(content);
}

VoShellValue ExpectFile(const VoFunctionCall& call)
{
    const VoFilePath file = call.value("file").asFilePath();
    const auto refuse = [&](const VoString& what) {
        throw VoValidationException("Expected " + what + ": " + VoString(ToNative(file).u8string()));
    };
    const bool exists = call.value("exists").asBoolean();
    if (VoFileSystem::Exists(file) != exists)
        refuse(exists ? "a file" : "no file");
    const VoVariant& same = call.value("same");
    if (!same.isNull() && ContentOf(file) != ContentOf(same.asFilePath()))
        refuse("the content of " + VoString(ToNative(same.asFilePath()).u8string()));
    const VoVariant& part = call.value("contains");
    if (!part.isNull() && ContentOf(file).find(part.asString().toStdString()) == std::string::npos)
        refuse(Quoted(part.asString()) + " in it");
    return {};
}

// Gives the message of what a line fails with; none when it does not fail.
std::optional<VoString> FailureOf(ShellInterpreter& interpreter, const VoString& line, const VoStopFlag& stop)
{
    try {
        interpreter.run(line, stop);
        return std::nullopt;
    } catch (const VoUserCancelledException&) {
        throw;
    } catch (...) {
        return CurrentExceptionText();
    }
}

void ExpectError(ShellInterpreter& interpreter, const ShellInterpreter::Line& line)
{
    const VoString wanted = interpreter.text(line.words[1]);
    const ShellWord& rest = line.words[2];
    // Blanks in place of what stands before keep the columns that errors tell.
    const VoString text = VoString(' ', rest.column - 1) + VoString(line.text.toStdString().substr(rest.offset));
    const std::optional<VoString> failure = FailureOf(interpreter, text, line.stop);
    if (!failure)
        throw VoValidationException("Expected an error with " + Quoted(wanted) + ", but nothing failed");
    if (failure->toStdString().find(wanted.toStdString()) == std::string::npos)
        throw VoValidationException("Expected an error with " + Quoted(wanted) + ", got " + Quoted(*failure));
}

} // namespace

void AddExpectations(VoFunctionRegistry& functions)
{
    const auto optional = [](const char* name, VoVariant::Type type, const char* help, VoShellValue value) {
        return VoFunctionParameter{name, type, help, Form::Single, std::move(value)};
    };
    functions.add({"expect",
                   "Fails unless a value is as expected: numbers by value, all else by its text.",
                   {{"actual", VoVariant::Null, "the value"},
                    {"expected", VoVariant::Null, "what it should be"},
                    optional("tolerance", VoVariant::Double, "by how much a number may differ", 0.0)},
                   Expect});
    functions.add({"expect-file",
                   "Fails unless a file is as expected.",
                   {{"file", VoVariant::FilePath, "the file"},
                    optional("same", VoVariant::FilePath, "another file with the same content", {}),
                    optional("contains", VoVariant::String, "a text in it", {}),
                    optional("exists", VoVariant::Boolean, "whether it should be there", true)},
                   ExpectFile});
}

void AddExpectations(ShellInterpreter& interpreter)
{
    interpreter.statements.pushBack(
        {"expect-error", "expect-error text line...",
         "Fails unless the rest of the line fails with a message that holds the text.", 2, static_cast<std::size_t>(-1),
         [&interpreter](const ShellInterpreter::Line& line) { ExpectError(interpreter, line); }});
}

} // namespace vo::detail
