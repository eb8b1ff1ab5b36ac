#include <Core/VoByteBuffer.h>

#include <FileSystem/VoFilePath.h>
#include <IO/VoFileByteStream.h>
#include <IO/VoIOException.h>

#include <ScratchFolder.h>
#include <VoTestSupport.h>

namespace {

std::string Text(const VoByteBuffer& buffer)
{
    return std::string(buffer.bytes().cdata() ? buffer.bytes().cdata() : "", buffer.size());
}

} // namespace

TEST(VoByteBuffer, PacksFilesBackToBackAndSplitsThemWhereItIsFull)
{
    const vo::test::ScratchFolder folder;
    const VoFilePath first = folder.write("first", "0123456");
    const VoFilePath second = folder.write("second", "abcdefgh");
    std::string chunks;
    VoByteBuffer buffer(5);
    for (const VoFilePath& path : {first, second}) {
        VoFileInputByteStream stream(path);
        while (!stream.atEnd()) {
            buffer.grab(stream);
            if (buffer.isFull()) {
                const VoByteArray chunk = buffer.take();
                chunks += std::string(chunk.cdata(), chunk.size()) + '|';
            }
        }
    }
    EXPECT_EQ(chunks + Text(buffer), "01234|56abc|defgh|");
    EXPECT_EQ(buffer.grab(*std::make_unique<VoFileInputByteStream>(folder.write("empty", ""))), 0u);
}

TEST(VoByteBuffer, AStreamThatCannotBeReadLeavesItUnchanged)
{
    const vo::test::ScratchFolder folder;
    VoByteBuffer buffer(5);
    buffer << 'a';
    VoFileInputByteStream missing(folder.path("missing"));
    EXPECT_THROW_MSG(buffer.grab(missing), VoIOException, "Error occurred on reading from file");
    EXPECT_EQ(Text(buffer), "a");
}

TEST(VoByteBuffer, TakesBytesUpToItsCapacityAndResizingClearsNewBytesAlsoWhereOldOnesLay)
{
    VoByteBuffer buffer(4);
    EXPECT_TRUE(buffer.isEmpty() && buffer.capactiy() == 4u);
    buffer << 'a' << 'b' << 'c' << 'd';
    EXPECT_TRUE(buffer.isFull() && Text(buffer) == "abcd");
    EXPECT_THROW_MSG(buffer << 'e', VoBufferOverflowException, "");
    buffer.resize(1);
    buffer.resize(3);
    EXPECT_EQ(Text(buffer), std::string("a\0\0", 3));
    EXPECT_THROW_MSG(buffer.resize(5), VoBufferOverflowException, "");
    EXPECT_EQ(buffer.size(), 3u);
}
