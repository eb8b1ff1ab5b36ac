#include "UpdaterFixture.h"

#include <IO/VoFileByteStream.h>
#include <Updater/detail/publish/ChunkWriter.h>

using namespace vo::updater;
using namespace vo::updater::detail;
using namespace vo::test;

namespace {

class ChunkWriting : public UpdaterTest
{
protected:
    void SetUp() override { std::filesystem::create_directory(vo::detail::ToNative(directory("out"))); }

    ChunkWriter writer(std::uint64_t chunkSize, int level = 6, std::size_t workers = 0)
    {
        return ChunkWriter(
            directory("out"), chunkSize, level, [](const VoUUID&, const VoFilePath&) {},
            [this](const ChunkListing& chunk) { chunks.push_back(chunk); }, workers);
    }

    PackedFile pack(ChunkWriter& writer, const std::string& content)
    {
        WriteBytes(file("source"), content);
        VoFileInputByteStream stream(file("source"));
        return writer.append(stream);
    }

    /// The bytes of a chunk, taken apart without the code under test.
    static std::string Content(const VoFilePath& chunk)
    {
        const std::string bytes = ReadBytes(chunk);
        return qUncompress(reinterpret_cast<const uchar*>(bytes.data()), static_cast<int>(bytes.size())).toStdString();
    }

    std::vector<ChunkListing> chunks;
};

using Piece = std::vector<std::uint64_t>;

std::vector<Piece> Pieces(const PackedFile& file)
{
    std::vector<Piece> result;
    for (const auto& piece : file.pieces)
        result.push_back({piece.offset(), piece.length(), piece.index()});
    return result;
}

} // namespace

TEST_F(ChunkWriting, FilesArePackedBackToBack)
{
    ChunkWriter chunkWriter = writer(10);
    const PackedFile first = pack(chunkWriter, "abcd");
    const PackedFile second = pack(chunkWriter, "0123456789xy");
    chunkWriter.settle();
    ASSERT_EQ(chunks.size(), 1u);
    chunkWriter.writeChunk();
    ASSERT_EQ(chunks.size(), 2u);

    EXPECT_EQ(Pieces(first), (std::vector<Piece>{{0, 4, 0}}));
    EXPECT_EQ(Pieces(second), (std::vector<Piece>{{4, 6, 0}, {0, 6, 1}}));
    EXPECT_EQ(first.pieces[0].chunkID(), chunks[0].id());
    EXPECT_EQ(second.pieces[0].chunkID(), chunks[0].id());
    EXPECT_EQ(second.pieces[1].chunkID(), chunks[1].id());
    EXPECT_EQ(Content(chunkWriter.path(chunks[0].id())), "abcd012345");
    EXPECT_EQ(Content(chunkWriter.path(chunks[1].id())), "6789xy");
    EXPECT_EQ(second.size, 12u);
    EXPECT_EQ(second.checksum, ChecksumOf("0123456789xy"));
}

TEST_F(ChunkWriting, NoEmptyChunkIsWritten)
{
    ChunkWriter chunkWriter = writer(4);
    EXPECT_TRUE(pack(chunkWriter, "").pieces.isEmpty());
    EXPECT_EQ(pack(chunkWriter, "").checksum, ChecksumOf(""));
    chunkWriter.writeChunk();
    EXPECT_TRUE(chunks.empty());
    EXPECT_EQ(Pieces(pack(chunkWriter, "12345678")), (std::vector<Piece>{{0, 4, 0}, {0, 4, 1}}));
    chunkWriter.writeChunk();
    EXPECT_EQ(chunks.size(), 2u);
}

TEST_F(ChunkWriting, AnyNumberOfThreadsWritesTheSameChunksInTheSameOrder)
{
    const std::string content = Noise(300000, 3, 7);
    std::vector<std::vector<std::string>> written;
    for (const std::size_t workers : {1, 2, 5}) {
        chunks.clear();
        ChunkWriter chunkWriter = writer(7000, 6, workers);
        const PackedFile file = pack(chunkWriter, content);
        chunkWriter.writeChunk();
        ASSERT_EQ(chunks.size(), 43u);
        written.emplace_back();
        for (std::size_t i = 0; i < chunks.size(); ++i) {
            EXPECT_EQ(chunks[i].id(), file.pieces[i].chunkID());
            written.back().push_back(ReadBytes(chunkWriter.path(chunks[i].id())));
        }
    }
    EXPECT_EQ(written[0], written[1]);
    EXPECT_EQ(written[0], written[2]);
}

TEST_F(ChunkWriting, WhatFailsOnAnyThreadIsThrownHereAndNoByteIsLost)
{
    for (const std::size_t workers : {1, 2}) {
        chunks.clear();
        ChunkWriter chunkWriter = writer(10, 6, workers);
        pack(chunkWriter, "0123456789abcdefgh");
        chunkWriter.settle();
        ASSERT_EQ(chunks.size(), 1u);
        std::filesystem::rename(vo::detail::ToNative(directory("out")), vo::detail::ToNative(directory("away")));
        pack(chunkWriter, "ij0123456789xyz");
        for (int attempt = 0; attempt < 2; ++attempt)
            EXPECT_THROW(chunkWriter.writeChunk(), VoException);
        EXPECT_EQ(chunks.size(), 1u);
        std::filesystem::rename(vo::detail::ToNative(directory("away")), vo::detail::ToNative(directory("out")));
        chunkWriter.writeChunk();
        std::string all;
        for (const ChunkListing& chunk : chunks)
            all += Content(chunkWriter.path(chunk.id()));
        EXPECT_EQ(all, "0123456789abcdefghij0123456789xyz");
    }
}

TEST_F(ChunkWriting, RollingBackTakesOutWhatIsStillInTheBuffer)
{
    ChunkWriter chunkWriter = writer(10);
    pack(chunkWriter, "abc");
    const ChunkWriter::Mark sameChunk = chunkWriter.mark();
    pack(chunkWriter, "XYZ");
    chunkWriter.rollBack(sameChunk);
    EXPECT_EQ(Pieces(pack(chunkWriter, "de")), (std::vector<Piece>{{3, 2, 0}}));

    const ChunkWriter::Mark earlierChunk = chunkWriter.mark();
    pack(chunkWriter, "0123456789");
    chunkWriter.rollBack(earlierChunk);
    EXPECT_EQ(Pieces(pack(chunkWriter, "f")), (std::vector<Piece>{{0, 1, 0}}));
    chunkWriter.writeChunk();
    EXPECT_EQ(Content(chunkWriter.path(chunks[0].id())), "abcde01234");
    EXPECT_EQ(Content(chunkWriter.path(chunks[1].id())), "f");
}

TEST_F(ChunkWriting, ImpossibleChunkSizesAreRefusedAtOnce)
{
    EXPECT_THROW_MSG(writer(0), VoInvalidParameterException, "Chunk size must be greater than zero");
    EXPECT_THROW_MSG(writer(2147483648u), VoOverflowException,
                     "Cannot compress byte array as length is beyond maximum allowed size. Array size 2147483648 "
                     "bytes, maximum size 2147483647 bytes.");
    EXPECT_NO_THROW(writer(2147483647));
}
