#include <VoTestSupport.h>
#include <vo/line/CommandError.h>
#include <vo/release/ReleaseChoice.h>

using namespace vo::tool;
using namespace vo::updater;

namespace {

class ReleaseChoice : public testing::Test
{
protected:
    void declare(const char* package, const char* version, const char* versionID)
    {
        declared.add(AdvertisedPackageListing(VoUUID(package), VoUUID(versionID), VoString("name of ") + package,
                                              VoVersion::Deserialize(version)),
                     VoString("packages\\") + versionID);
    }

    /// The version ID of the release that a number chooses; the error's text when there is none.
    std::string chosen(const char* release)
    {
        try {
            const auto number = release == nullptr ? std::nullopt : ParseRelease(release);
            return ChooseRelease(declared, VoUUID("p"), number).versionID().toString().toStdString();
        } catch (const CommandError& error) {
            return error.text.toStdString();
        }
    }

    AdvertisedPackages declared;
};

} // namespace

TEST_F(ReleaseChoice, TheNewestReleaseIsTakenWhenNoneIsNamed)
{
    declare("p", "1.0.0.0", "first");
    declare("p", "1.10.0.0", "newest");
    declare("p", "1.9.0.0", "late");
    declare("q", "2.0.0.0", "other");
    EXPECT_EQ(chosen(nullptr), "newest");
}

TEST_F(ReleaseChoice, AReleaseIsFoundByItsNumber)
{
    declare("p", "1.0.0.0", "first");
    declare("p", "1.0.0.7", "seventh");
    declare("q", "3.0.0.0", "other");
    EXPECT_EQ(chosen("1.0.7"), "seventh");
    EXPECT_EQ(chosen("1"), "first");
    EXPECT_EQ(chosen("3.0.0"), "option --release: release 3.0.0 is not declared");
}

TEST_F(ReleaseChoice, TheBuildTypeDecidesAmongReleasesOfOneNumber)
{
    declare("p", "1.0.1.0", "beta");
    EXPECT_EQ(chosen("1.0.0"), "beta") << "the only one";
    declare("p", "1.0.2.0", "alpha");
    EXPECT_EQ(chosen("1.0.0").substr(0, 47), "option --release: several build types of 1.0.0 ");
    EXPECT_EQ(chosen("1.0.2.0"), "alpha");
    declare("p", "1.0.0.0", "release");
    EXPECT_EQ(chosen("1.0.0"), "release");
    EXPECT_EQ(chosen("1.0.1.0"), "beta");
}

TEST_F(ReleaseChoice, ThePackageNeedsNoNameWhenItIsTheOnlyOne)
{
    EXPECT_THROW(ChoosePackage(declared, std::nullopt), Failure) << "none is declared";
    declare("p", "1.0.0.0", "first");
    declare("p", "2.0.0.0", "second");
    EXPECT_EQ(ChoosePackage(declared, std::nullopt).toString().toStdString(), "p");
    declare("q", "1.0.0.0", "other");
    EXPECT_EQ(vo::test::Caught<UsageError>([&] { ChoosePackage(declared, std::nullopt); }).text,
              VoString("several packages are declared, choose one with --package: p (name of p) q (name of q)"));
    EXPECT_EQ(ChoosePackage(declared, VoString("q")).toString().toStdString(), "q");
    EXPECT_THROW(ChoosePackage(declared, VoString("Q")), Failure) << "identifiers are exact";
    EXPECT_EQ(ChoosePackage(declared, VoString("Name of Q")).toString().toStdString(), "q") << "names are not";
    declare("name of q", "1.0.0.0", "confusing");
    EXPECT_EQ(ChoosePackage(declared, VoString("name of q")).toString().toStdString(), "name of q");
    EXPECT_EQ(ChoosePackage(declared, VoString("Name of q")).toString().toStdString(), "q");
}
