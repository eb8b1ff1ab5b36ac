#include <IO/VoStream.h>

#include <ScratchFolder.h>
#include <VoTestSupport.h>

namespace {

const std::string Text = std::string("first\r\nsecond\n\nb\0c\x1a", 19) + "d\nlast";

// The same expectations over a file and over a string.
class VoInputStreamTest : public testing::TestWithParam<bool>
{
protected:
    std::unique_ptr<VoInputStream> stream(const std::string& content) const
    {
        if (GetParam())
            return std::make_unique<VoFileInputStream>(m_folder.write("file", content));
        return std::make_unique<VoStringInputStream>(VoString(content));
    }

private:
    vo::test::ScratchFolder m_folder;
};

} // namespace

TEST_P(VoInputStreamTest, LinesComeWithoutTheirEnd)
{
    const auto in = stream(Text);
    for (const std::string& line :
         {std::string("first\r"), std::string("second"), std::string(), Text.substr(15, 5), std::string("last")})
        EXPECT_EQ(in->getLine().toStdString(), line);
    EXPECT_TRUE(in->eof());
    EXPECT_EQ(in->getLine(), "");
    EXPECT_TRUE(in->fail());
    EXPECT_FALSE(in->bad());
}

TEST_P(VoInputStreamTest, FindsACharacterAndStaysWhereItIs)
{
    const auto in = stream("abcabc");
    in->ignore();
    EXPECT_EQ(in->find('a'), std::streampos(3));
    EXPECT_EQ(in->find('b'), std::streampos(1));
    EXPECT_EQ(in->find('x'), VoStream::eof_pos());
    EXPECT_EQ(in->get(), 'b');
    in->ignore(100);
    EXPECT_TRUE(in->eof());
    EXPECT_EQ(in->find('c'), VoStream::eof_pos());
    EXPECT_EQ(in->get(), -1);
}

TEST_P(VoInputStreamTest, GoesToACharacter)
{
    const auto in = stream("key=\xff;rest");
    EXPECT_TRUE(in->seek('='));
    in->ignore();
    EXPECT_EQ(in->get(), 255);
    EXPECT_FALSE(in->seek('='));
    EXPECT_EQ(in->getLine(), ";rest");
}

INSTANTIATE_TEST_SUITE_P(Sources, VoInputStreamTest, testing::Bool(),
                         [](const auto& source) { return source.param ? "File" : "String"; });

TEST(VoFileInputStream, FailsWithoutAFile)
{
    const vo::test::ScratchFolder folder;
    VoFileInputStream missing(folder.path("missing"));
    EXPECT_TRUE(missing.fail());
    EXPECT_FALSE(missing.good());
    EXPECT_EQ(missing.find('x'), VoStream::eof_pos());
}

TEST(VoOutputStream, WritesTheSameBytesToAFileAndAString)
{
    const vo::test::ScratchFolder folder;
    VoFileOutputStream file(folder.path("file"));
    VoStringOutputStream string;
    for (VoOutputStream* out : std::initializer_list<VoOutputStream*>{&file, &string}) {
        *out << VoString(Text) << "more";
        out->flush();
        EXPECT_TRUE(out->good());
    }
    EXPECT_EQ(folder.read("file"), Text + "more");
    EXPECT_EQ(string.toString().toStdString(), Text + "more");
}

#if defined(__linux__)
TEST(VoFileOutputStream, FailsOnAFullDiskWhenFlushed)
{
    VoFileOutputStream full(VoFilePath("/dev/full"));
    full << "small";
    EXPECT_TRUE(full.good());
    full.flush();
    EXPECT_TRUE(full.fail());
}
#endif
