#include <VoTestSupport.h>

#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileDevice.h>
#include <XML/VoXMLPath.h>

#include <exception>

namespace {

struct Row
{
    const char* name;
    const char* message;
    std::function<void()> raise;
};

template <typename Exception, typename... Args>
std::function<void()> Raise(Args... args)
{
    return [args...] { throw Exception(args...); };
}

std::vector<Row> GeneralRows()
{
    const VoString text("text");
    return {
        {"VoIndexOutOfBoundsException", "Index out of bounds", Raise<VoIndexOutOfBoundsException>()},
        {"VoIndexOutOfBoundsException", "Index out of bounds [7,3]", Raise<VoIndexOutOfBoundsException>(7, 3)},
        {"VoIndexOutOfBoundsException", "Index out of bounds [-1,3]", Raise<VoIndexOutOfBoundsException>(-1, 3)},
        {"VoIndexOutOfBoundsException", "Index out of bounds [7,3]", Raise<VoIndexOutOfBoundsException>(7u, 3L)},
        {"VoIndexOutOfBoundsException", "Index out of bounds [18446744073709551615,0]",
         Raise<VoIndexOutOfBoundsException>(~std::size_t{0}, std::size_t{0})},
        {"VoIndexOutOfBoundsException", "text [1,2]", Raise<VoIndexOutOfBoundsException>(text, 1, 2)},
        {"VoInvalidCallException", "", Raise<VoInvalidCallException>()},
        {"VoInvalidCastException", "Invalid cast from a to b", Raise<VoInvalidCastException>("a", "b")},
        {"VoInvalidConversionException", "Invalid conversion from a to b",
         Raise<VoInvalidConversionException>("a", "b")},
        {"VoUndefinedFunctionException", "text", Raise<VoUndefinedFunctionException>("text")},
        {"VoNotFoundException", "Item not found", Raise<VoNotFoundException>()},
        {"VoNotFoundException", "Item not found: ", Raise<VoNotFoundException>("")},
        {"VoNotFoundException", "Item not found: 100 % \xC3\xA9", Raise<VoNotFoundException>("100 % \xC3\xA9")},
        {"VoNotImplementedException", "Not implemented", Raise<VoNotImplementedException>()},
        {"VoNotImplementedException", "Not implemented: text", Raise<VoNotImplementedException>("text")},
        {"Validation exception", "", Raise<VoValidationException>()},
        {"Buffer exception", "", Raise<VoBufferException>()},
        {"Buffer underflow exception", "", Raise<VoBufferUnderflowException>()},
        {"VoInvalidMimeDataException", "No MIME data available available", Raise<VoInvalidMimeDataException>()},
        {"VoInvalidMimeDataException", "No MIME data of given type available: text/x",
         Raise<VoInvalidMimeDataException>("text/x")},
        {"VoNoClipboardException", "No clipboard available", Raise<VoNoClipboardException>()},
        {"VoBadAllocException", "Bad memory allocation: text", Raise<VoBadAllocException>("text")},
        {"VoMathsException", "Maths error", Raise<VoMathsException>()},
        {"VoDomainException", "Value (1.5) is outside range [0, 1]", Raise<VoDomainException>(1.5, 0.0, 1.0)},
        {"VoDomainException", "Invalid operation", Raise<VoDomainException>()},
        {"VoInvalidOperationMathsException", "Invalid operation", Raise<VoInvalidOperationMathsException>()},
        {"VoUnderflowException", "Underflow - result too small", Raise<VoUnderflowException>()},
        {"VoInvalidXMLException", "Invalid XML", Raise<VoInvalidXMLException>()},
        {"VoInvalidXMLException", "Invalid XML: C:\\a.xml", Raise<VoInvalidXMLException>(VoFilePath("C:/a.xml"))},
        {"VoInvalidXMLException", "Invalid XML: a.xml, for schema: b.xsd",
         Raise<VoInvalidXMLException>(VoFilePath("a.xml"), VoFilePath("b.xsd"))},
        {"VoInvalidXMLSchemaException", "Invalid XML schema: [a] b", Raise<VoInvalidXMLSchemaException>("a", "b")},
        {"VoXMLDuplicateRuleException", "Duplicate rule for XML path", Raise<VoXMLDuplicateRuleException>()},
    };
}

std::vector<Row> FileRows()
{
    return {
        {"VoFileException", "text", Raise<VoFileException>("text")},
        {"VoCannotOpenFileException", "Cannot open file: C:/x", Raise<VoCannotOpenFileException>("C:/x")},
        {"VoCannotOpenFileException", "Cannot open file: C:\\x", Raise<VoCannotOpenFileException>(VoFilePath("C:/x"))},
        {"VoCannotOpenFileException", "Cannot open file: C:\\x\\",
         Raise<VoCannotOpenFileException>(VoDirectoryPath("C:/x/"))},
        {"VoFileLockedException", "File already locked: a", Raise<VoFileLockedException>("a")},
        {"VoFileNotFoundException", "File not found: a", Raise<VoFileNotFoundException>("a")},
        {"VoFileNotFoundException", "File not found: a\\b", Raise<VoFileNotFoundException>(VoFilePath("a/b"))},
        {"VoFileSaveException", "Cannot save [book]", Raise<VoFileSaveException>("book", "a.xml")},
        {"VoInvalidPathFileException", "Invalid path: ", Raise<VoInvalidPathFileException>(VoFilePath("a"))},
        {"VoInvalidPathFileException", "text: a\\", Raise<VoInvalidPathFileException>("text", VoDirectoryPath("a/"))},
        {"VoPathSizeFileException", "Path size too long", Raise<VoPathSizeFileException>()},
    };
}

template <typename Base>
void ExpectCaughtAs(const Row& row)
{
    try {
        row.raise();
        ADD_FAILURE() << row.name << " was not thrown";
    } catch (const Base& e) {
        EXPECT_STREQ(row.name, e.name());
        EXPECT_STREQ(row.message, e.what()) << row.name;
    } catch (...) {
        ADD_FAILURE() << row.name << " is not caught by its base: " << vo::CurrentExceptionText().toStdString();
    }
}

template <typename Base, typename... Exceptions>
constexpr bool IsBaseOf = (std::is_base_of_v<Base, Exceptions> && ...);

static_assert(IsBaseOf<VoMathsException, VoDivideByZeroException, VoDomainException, VoOverflowException,
                       VoUnderflowException, VoInvalidOperationMathsException>);
static_assert(IsBaseOf<VoXMLException, VoInvalidXMLException, VoUnknownXMLElementException, VoInvalidXMLOperation,
                       VoNullDomElementException, VoXMLDuplicateRuleException, VoInvalidXMLSchemaException>);
static_assert(IsBaseOf<VoBufferException, VoBufferOverflowException, VoBufferUnderflowException>);

} // namespace

TEST(VoException, EveryClassReportsItsNameAndMessageThroughTheRoot)
{
    for (const Row& row : GeneralRows())
        ExpectCaughtAs<VoException>(row);
}

TEST(VoException, FileClassesAreCaughtAsFileExceptions)
{
    for (const Row& row : FileRows())
        ExpectCaughtAs<VoFileException>(row);
    const std::string path(261, 'p');
    const std::string tooLong = "Path exceeds maximum length by 1 characters for: " + path;
    ExpectCaughtAs<VoFileException>(
        {"VoPathSizeFileException", tooLong.c_str(), Raise<VoPathSizeFileException>(VoFilePath(path.c_str()))});
}

TEST(VoFileException, PathsTravelWithTheException)
{
    const VoFileException two("m", VoFilePath("a/b"), VoFilePath("c"));
    EXPECT_EQ("a\\b", two.path1().path().toStdString());
    EXPECT_EQ("c", two.path2().path().toStdString());

    const VoInvalidPathFileException hidden(VoFilePath("secret"));
    EXPECT_EQ("secret", hidden.path1().path().toStdString());

    EXPECT_EQ("a\\b", VoCannotOpenFileException("a/b").path1().path().toStdString())
        << "the message keeps the text as given, the path is normalised";
    EXPECT_TRUE(VoPathSizeFileException(VoFilePath("p")).path1().isNull());

    VoFileException assigned("x");
    assigned = two;
    EXPECT_STREQ("m", assigned.what());
    EXPECT_EQ(two.path2(), assigned.path2());
}

TEST(VoFileException, ADeviceThatCannotBeOpenedTellsWhy)
{
    VoFileDevice device(VoFilePath("no/such/directory/file"));
    ASSERT_FALSE(device.open(VoIODevice::Write));
    const VoCannotOpenFileException e(device);
    EXPECT_STREQ("Cannot open file (Failed to open file in given mode): no\\such\\directory\\file", e.what());
    EXPECT_EQ(device.path(), e.path1());
}

TEST(VoException, TheMessageMayHoldZeroBytesWhereWhatEnds)
{
    const VoNotFoundException e(VoString(std::string("a\0b", 3)));
    EXPECT_EQ(std::string("Item not found: a\0b", 19), e.message().toStdString());
    EXPECT_STREQ("Item not found: a", e.what());
}

TEST(VoException, TravelsToAnotherThreadAndBack)
{
    std::exception_ptr caught;
    std::thread([&] {
        try {
            throw VoCannotOpenFileException("file");
        } catch (...) {
            caught = std::current_exception();
        }
    }).join();
    EXPECT_THROW_MSG(std::rethrow_exception(caught), VoCannotOpenFileException, "Cannot open file: file");
}

TEST(CurrentExceptionText, DescribesWhateverIsInFlight)
{
    EXPECT_EQ("", vo::CurrentExceptionText().toStdString());
    const auto textOf = [](const std::function<void()>& raise) {
        try {
            raise();
        } catch (...) {
            return vo::CurrentExceptionText().toStdString();
        }
        return std::string("nothing thrown");
    };
    EXPECT_EQ("Divide by zero", textOf([] { throw VoDivideByZeroException(); }));
    EXPECT_EQ("standard", textOf([] { throw std::runtime_error("standard"); }));
    EXPECT_EQ("Unknown exception", textOf([] { throw 1; }));
}
