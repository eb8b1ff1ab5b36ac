#include "../Documents/RawZip.h"
#include "VoProgram.h"

#include <QtCore/QJsonArray>

namespace {

class ZipTool : public VoProgram
{
protected:
    void writeArchive(const std::vector<vo::test::RawEntry>& entries)
    {
        write("a.zip", QByteArray::fromStdString(vo::test::RawArchive(entries)));
    }
};

} // namespace

TEST_F(ZipTool, AFolderComesBackFromItsArchive)
{
    fillSource("in", 20);
    const QJsonObject packed = voJson("zip @a.zip @in");
    EXPECT_EQ(packed[QLatin1String("bytes")].toInt(), read("a.zip").size());
    const Outcome again = vo("zip @b.zip @in");
    EXPECT_EQ(again.code, 0) << again;
    EXPECT_EQ(read("a.zip"), read("b.zip"));
    voJson("unzip @a.zip @out/deep");
    EXPECT_EQ(tree("out/deep"), tree("in"));
    EXPECT_EQ(voJson("unzip --list @a.zip")[QLatin1String("entries")].toArray().size(), 20);
}

TEST_F(ZipTool, HostileArchivesAreListedButRefusedAsUnsafe)
{
    writeArchive({{"good", "x"}, {"../evil\x1b[31m", "xyz"}});
    const Outcome list = vo("unzip --list @a.zip");
    EXPECT_EQ(list.code, 0) << list;
    EXPECT_EQ(list.out, "good\n../evil\\x1b[31m\n") << "control characters are shown, not obeyed";
    const Outcome refused = vo("unzip @a.zip @out");
    EXPECT_EQ(refused.code, 6) << refused;
    EXPECT_NE(refused.err.find("Invalid path in zip archive: ../evil"), std::string::npos) << refused;
    EXPECT_FALSE(exists("evil\x1b[31m"));
    writeArchive({{"good", "x"}, {"same", "x", 0, 0, -1, 0, 0, false, 0}});
    EXPECT_EQ(vo("unzip @a.zip @out").code, 6) << "entries that share bytes can grow to any size";
    EXPECT_FALSE(exists("out"));
}

TEST_F(ZipTool, ADamagedArchiveLeavesNothing)
{
    writeArchive({{"a", "0123456789", 0, 0, -1, 1}});
    EXPECT_EQ(vo("unzip @a.zip @damaged").code, 1);
    write("no.zip", "PK\3\4junk");
    EXPECT_EQ(vo("unzip @no.zip @out").err, "vo: cannot unzip " + text("no.zip") + ": Zip archive is not complete\n");
    EXPECT_TRUE(tree("damaged").empty());
}
