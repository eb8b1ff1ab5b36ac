#include "UpdaterFixture.h"

#include <HostileNames.h>

#include <Updater/detail/documents/PackageValidator.h>

using namespace vo::updater;
using namespace vo::updater::detail;
using namespace vo::test;

namespace {

AdvertisedFileListing Listing(const char* id, const char* target, VoDeque<ChunkReferenceListing> pieces,
                              std::int64_t size)
{
    return {VoFilePath::CreateUnchecked(target), pieces, VoUUID(id), VoChecksum(), Bytes(size)};
}

ChunkListing ChunkAt(const char* path)
{
    return {VoUUID("c"), VoChecksum(), Bytes(1), VoFilePath::CreateUnchecked(path)};
}

const VoUUID C("c");
constexpr std::uint64_t Most = 18446744073709551615u;

} // namespace

TEST(PackageValidator, ASoundPackagePasses)
{
    ValidatePackage(Package("{0a-1}", "v",
                            {Listing("f1", "dir\\a", {{C, 0, 4, 0}, {VoUUID("C-2"), 0, 6, 1}}, 10),
                             Listing("F1", "dir\\a.b", {{C, 4, 6, 0}}, 6), Listing("f3", "dira", {}, 0),
                             Listing("f4", "d\xC3\xA9j\xC3\xA0\\vu", {{C, 9223372036854775806u, 1, 0}}, 1)},
                            {Chunk("c"), Chunk("C-2", 0)}));
}

TEST(PackageValidator, RefusesEachFaultByName)
{
    const struct
    {
        AdvertisedPackageListing package;
        const char* message;
    } rows[] = {
        {Package("packages", "v"), "Invalid identifier: packages"},
        {Package("..\\p", "v"), "Invalid identifier: ..\\p"},
        {Package("", "v"), "Invalid identifier: "},
        {Package("p", ""), "Invalid identifier: "},
        {Package("p", "v\n"), "Invalid identifier: v\n"},
        {Package("p", "v", {Listing("f\x1b", "a", {}, 0)}), "Invalid identifier: f\x1b"},
        {Package("p", "v", {}, {Chunk("a/b")}), "Invalid identifier: a/b"},
        {Package("p", "v", {}, {ChunkAt("..\\c.vochk")}), "Invalid chunk path: ..\\c.vochk"},
        {Package("p", "v", {}, {ChunkAt("\\\\host\\c")}), "Invalid chunk path: \\\\host\\c"},
        {Package("p", "v", {}, {ChunkAt("http:\\host\\c")}), "Invalid chunk path: http:\\host\\c"},
        {Package("p", "v", {}, {Chunk("abc"), Chunk("ABC")}), "Invalid package definition: duplicate chunk ABC"},
        {Package("p", "v", {}, {Chunk("c", -1)}), "Invalid package definition: negative size of chunk c"},
        {Package("p", "v", {Listing("f", "a", {}, 0), Listing("f", "b", {}, 0)}),
         "Invalid package definition: duplicate file f"},
        {Package("p", "v", {Listing("f", "a\\B", {}, 0), Listing("g", "A\\b", {}, 0)}),
         "Invalid package definition: duplicate target A\\b"},
        {Package("p", "v", {Listing("f", "\xC3\x89", {}, 0), Listing("g", "\xC3\xA9", {}, 0)}),
         "Invalid package definition: duplicate target \xC3\xA9"},
        {Package("p", "v", {Listing("f", "a.b", {}, 0), Listing("g", "A\\x\\y", {}, 0), Listing("h", "a", {}, 0)}),
         "Invalid package definition: target is also a directory: a"},
        {Package("p", "v", {Listing("f", "a", {{C, 0, 1, 0}}, 1)}),
         "Invalid package definition: unknown chunk referenced by a"},
        {Package("p", "v", {Listing("f", "a", {}, -1)}), "Invalid package definition: negative size of a"},
        {Package("p", "v", {Listing("f", "a", {}, 1)}),
         "Invalid package definition: pieces do not add up to the size of a"},
        {Package("p", "v", {Listing("f", "a", {{C, 0, 3, 0}}, 2)}, {Chunk("c")}),
         "Invalid package definition: pieces do not add up to the size of a"},
        {Package("p", "v", {Listing("f", "a", {{C, Most, 2, 0}}, 2)}, {Chunk("c")}),
         "Invalid package definition: piece out of range in a"},
        {Package("p", "v", {Listing("f", "a", {{C, 1, 9223372036854775807u, 0}}, 1)}, {Chunk("c")}),
         "Invalid package definition: piece out of range in a"},
        {Package("p", "v", {Listing("f", "a", {{C, 0, 1u << 31, 0}, {C, 0, 9223372036854775807u, 1}}, 1)},
                 {Chunk("c")}),
         "Invalid package definition: piece out of range in a"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.message);
        EXPECT_THROW_MSG(ValidatePackage(row.package), VoValidationException, row.message);
    }
}

TEST(PackageValidator, RefusesTargetsThatLeaveTheirDirectoryOrDoNotSurviveTheDocument)
{
    std::vector<std::string> targets(std::begin(HostileNames), std::end(HostileNames));
    for (std::string& target : targets)
        std::replace(target.begin(), target.end(), '/', '\\');
    for (const char* more : {".", ".\\a", "a\\", "a\\\\b", "a/../b", "a\tb", " a", "caf\xE9", "x\xEF\xBF\xBE"})
        targets.emplace_back(more);
    for (const std::string& target : targets) {
        SCOPED_TRACE(target);
        const VoFilePath path = VoFilePath::CreateUnchecked(VoString(target));
        EXPECT_THROW_MSG(RequireSafeTarget(path), VoValidationException, "Invalid target path: " + VoString(target));
        EXPECT_THROW_MSG(RequireSafeChunkPath(path), VoValidationException, "Invalid chunk path: " + VoString(target));
        EXPECT_THROW_MSG(RequireSafeDefinitionPath(path), VoValidationException,
                         "Invalid definition path: " + VoString(target));
    }
    for (const char* target : {"a", "a\\b.c", ".profile", "..a", "a b", "d\xC3\xA9j\xC3\xA0", "nullable", "a\\b\\c\\d"})
        EXPECT_NO_THROW(RequireSafeTarget(VoFilePath(target))) << target;
    EXPECT_NO_THROW(RequireSafeTarget(VoFilePath(VoString('x', 260))));
    EXPECT_THROW(RequireSafeTarget(VoFilePath(VoString('x', 261))), VoValidationException);
}
