// Keys and passphrases of the tool, and what its options of trust take. The walk through signed releases is
// examples/trust.sh.

#include "VoProgram.h"

#include <vo/line/Values.h>

#include <QtCore/QFile>

using testing::HasSubstr;
using testing::Not;
using namespace vo::tool;

namespace {

class TrustTool : public VoProgram
{
protected:
    TrustTool()
    {
        write("pass", "correct horse\nsecond line");
        write("wrong", "battery staple\n");
        fillSource("src", 3);
    }
};

} // namespace

TEST_F(TrustTool, PassphrasesComeFromAFileOrACommandAndAreNeverShown)
{
    ASSERT_EQ(vo("key new @k --quick --passphrase-file @pass").code, 0);
#if defined(__unix__)
    EXPECT_EQ(QFile::permissions(path("k")) & (QFile::ReadGroup | QFile::ReadOther), 0);
#endif
    const QByteArray secret = read("k");
    const std::string publish = "publish @src --to @pub/declarations.xml --name N --replace --release 1 -v --sign @k ";
    struct Row
    {
        std::string arguments;
        int code;
        const char* says;
    };
    const std::vector<Row> rows = {
        {publish + "--passphrase-file @pass", 0, "1 of 1"},
        {publish + "--passphrase-file @wrong", 6, "Wrong passphrase"},
        {publish + "--passphrase-file @missing", 1, "cannot read"},
        {publish + "--passphrase-command false", 1, "the command failed"},
        {publish + "--passphrase-command missing-program-", 1, "the command failed"},
        {"key new @l --quick --passphrase-file @pass", 0, "l.pub"},
        {"publish @src --to @pub/declarations.xml --name N --release 2 -v --sign @l --passphrase-file @pass", 1,
         "Key does not sign releases here"},
        {"verify-release @pub/declarations.xml --key @k.pub", 0, "signed            1"},
        {"verify-release @pub/declarations.xml --key @l.pub", 6, "is not signed by any known key"},
        {"key new @k --quick --passphrase-file @pass", 6, "exists already; a key is never replaced"},
        {"key new @other --quick --passphrase-file @src/empty", 1, "cannot read"},
        {"key show @k", 0, "public key"},
        {"key show @pass", 2, "is not a public key"},
        {"key turn @k", 2, "neither new nor show nor list"},
        {"keys show @src/none.xml", 1, "nothing is signed beside"},
        {"keys rotate @pub/declarations.xml --sign @k --passphrase-file @pass", 1, "Nothing to change"},
        {"keys rotate @pub/declarations.xml --sign @k --passphrase-file @pass --add-release-key @l.pub", 0,
         "  releases\n"},
        {"sign @pub/declarations.xml", 2, "option --sign is missing"},
        {"sign @pub/none.xml --sign @k --passphrase-file @pass", 1, "File not found"},
        {"sign @pub/declarations.xml --sign @k --expires soon", 2, "is not a duration"},
        {"rollout @pub/declarations.xml --share 101%", 2, "is not a share"},
        {"withdraw @pub/declarations.xml --release 7", 1, "is not declared"},
        {"install @pub/declarations.xml --to @app --key nonsense", 2, "neither a public key nor a file"},
        {"install @pub/declarations.xml --to @app --channel nightly", 2, "neither release nor beta"},
        {"install @pub/declarations.xml --to @app --require-signature", 6, "No key is known"},
    };
    for (const Row& row : rows) {
        const Outcome run = vo(row.arguments);
        EXPECT_EQ(run.code, row.code) << row.arguments << run;
        EXPECT_THAT(run.out + run.err, HasSubstr(row.says)) << row.arguments;
        EXPECT_THAT(run.out + run.err, Not(HasSubstr("correct horse"))) << row.arguments;
    }
#if defined(__unix__) // with its shell
    write("tell", "printf 'correct horse' && test -f \"$VO_KEY\"");
    const QString command = QStringLiteral("sh ") + path("tell");
    const Outcome told = vo(QStringList{QStringLiteral("sign"), path("pub/declarations.xml"), QStringLiteral("--sign"),
                                        path("k"), QStringLiteral("--passphrase-command"), command});
    EXPECT_EQ(told.code, 0) << told;
#endif
    EXPECT_EQ(read("k"), secret);
    const QJsonObject plan = voJson("plan @pub/declarations.xml --to @app --key @k.pub");
    EXPECT_TRUE(plan[QStringLiteral("verified")].toBool());
    EXPECT_EQ(vo("install @pub/declarations.xml --to @app --key @k.pub").code, 0);
    EXPECT_THAT(vo("repair N").err, HasSubstr("nothing to repair"));
}

TEST(TrustValues, DurationsAndSharesAreReadWholly)
{
    const std::vector<std::pair<const char*, std::int64_t>> durations = {
        {"1s", 1}, {"90m", 5400}, {"12h", 43200}, {"30d", 2592000}, {"0d", 0},   {"", -1},
        {"d", -1}, {"30", -1},    {"3.5h", -1},   {"-1d", -1},      {"1dd", -1}, {"4000000000d", -1},
    };
    for (const auto& [text, seconds] : durations) {
        const auto duration = ParseDuration(text);
        EXPECT_EQ(duration ? static_cast<std::int64_t>(duration->seconds()) : -1, seconds) << text;
    }
    const std::vector<std::pair<const char*, std::int64_t>> shares = {
        {"20%", 2000},  {"20", 2000}, {"0.5%", 50}, {"0.05", 5}, {"100%", 10000}, {"0%", 0},
        {"100.01", -1}, {"", -1},     {"%", -1},    {"1.", -1},  {"1.234", -1},   {"-1", -1},
    };
    for (const auto& [text, share] : shares) {
        const auto parsed = ParseShare(text);
        EXPECT_EQ(parsed ? static_cast<std::int64_t>(*parsed) : -1, share) << text;
        EXPECT_EQ(ParseShare(ShareText(parsed.value_or(0))).value_or(1), parsed.value_or(0)) << text;
    }
}
