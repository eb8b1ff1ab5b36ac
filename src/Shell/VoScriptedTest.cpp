#include <Shell/VoScriptedTest.h>

#include <Application/VoGlobalValues.h>
#include <Core/VoException.h>
#include <Core/VoProperties.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryDir.h>
#include <FileSystem/detail/NativePath.h>
#include <Shell/VoFunctionRegistry.h>
#include <Shell/detail/Expectations.h>
#include <Shell/detail/ShellInterpreter.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <sstream>
#include <string>

namespace {

class KeptValues
{
public:
    KeptValues() = default;
    KeptValues(const KeptValues&) = delete;
    KeptValues& operator=(const KeptValues&) = delete;
    ~KeptValues() { VoGlobalValues::Restore(m_values); }

private:
    const VoProperties m_values = VoGlobalValues::Changed();
};

// What follows a word such as "tags:" in a comment.
std::optional<std::string> Remark(const std::string& line, const std::string& word)
{
    const std::size_t start = line.find_first_not_of("# \t");
    if (start == std::string::npos || line.compare(start, word.size(), word) != 0)
        return std::nullopt;
    const std::size_t end = line.find_last_not_of(" \t\r");
    return line.substr(start + word.size(), end + 1 - start - word.size());
}

VoTimeDuration LimitOf(const VoFilePath& file, const std::string& text)
{
    try {
        const VoTimeDuration limit = VoTimeDuration::Parse(VoString(text).trimmed().toString());
        if (limit > VoTimeDuration())
            return limit;
    } catch (const VoException&) { // told below
    }
    throw VoInvalidUseException("Invalid limit in " + file.path() + ":" + VoString(text));
}

} // namespace

VoScriptedTest VoScriptedTest::Read(const VoFilePath& file, const VoString& name)
{
    VoScriptedTest test{file, name};
    std::istringstream lines(vo::detail::ReadScript(file));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t start = line.find_first_not_of(" \t\r");
        if (start != std::string::npos && line[start] != '#')
            break;
        if (const auto tags = Remark(line, "tags:")) {
            std::istringstream words(*tags);
            for (std::string tag; words >> tag;)
                test.tags.pushBack(VoString(tag));
        }
        if (const auto limit = Remark(line, "limit:"))
            test.limit = LimitOf(file, *limit);
    }
    return test;
}

VoDeque<VoScriptedTest> VoScriptedTest::Find(const VoDirectoryPath& folder)
{
    VoDeque<VoScriptedTest> tests;
    VoFileSystem::ForEachFile(folder, true, false, [&](const VoFilePath& path) {
        if (VoString(path.extension()) != "vo")
            return;
        const VoFilePath relative = path.relative(folder.toFilePath());
        tests.pushBack(Read(path, VoString(vo::detail::ToNative(relative).replace_extension().generic_u8string())));
    });
    return tests;
}

bool VoScriptedTest::hasTag(const VoString& tag) const
{
    return std::find(tags.begin(), tags.end(), tag) != tags.end();
}

void VoScriptedTest::run(const std::function<void(const VoString&)>& output, const VoStopFlag& stop) const
{
    const VoTemporaryDir scratch;
    const KeptValues values;
    VoFunctionRegistry functions;
    vo::detail::AddExpectations(functions);
    functions.setHost(std::shared_ptr<const VoAbstractFunctionRegistry>(&VoFunctionRegistry::Global(), [](auto*) {}));
    vo::detail::ShellInterpreter interpreter(output, functions);
    vo::detail::AddExpectations(interpreter);
    const VoFilePath script = vo::detail::FromNative(std::filesystem::absolute(vo::detail::ToNative(file)));
    interpreter.context.directory = scratch.path();
    interpreter.runScript(script, stop);
}
