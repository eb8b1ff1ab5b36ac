#include <CommaLocale.h>
#include <VoTestSupport.h>

#include "StringTestLocale.h"

#include <Core/detail/CaseFold.h>

#include <QtCore/QString>

namespace {

using vo::test::OddCharacters;
using vo::test::ScopedGlobalLocale;

class StringLocale : public testing::Test
{
protected:
    std::locale m_odd = OddCharacters::Locale();

    VoString odd(const char* text) const
    {
        const ScopedGlobalLocale global(m_odd);
        return VoString(text);
    }
};

TEST_F(StringLocale, IsCapturedOnceFromTheGlobalLocale)
{
    const VoString early("[");
    const VoString late = odd("[");
    EXPECT_EQ(early.locale(), std::locale::classic());
    EXPECT_EQ(late.locale(), m_odd);
    EXPECT_FALSE(early == "{");
    EXPECT_TRUE(late == "{");
    EXPECT_FALSE(early == odd("{")) << "the left operand decides";
    EXPECT_EQ(odd("{").compare(early), 0);
    EXPECT_TRUE(odd("\xC4") == "\xE4");
    const ScopedGlobalLocale global(m_odd);
    EXPECT_EQ(VoString().locale(), m_odd);
    EXPECT_EQ(VoStringView("x").locale(), m_odd);
    EXPECT_EQ(early.locale(), std::locale::classic());
}

TEST_F(StringLocale, GoesWithCopiesAndStaysOnAssignmentFromText)
{
    const VoString source = odd("[Ab");
    VoString text(source);
    for (const VoString& made : {text, source + "x", source + source.substring(1), source + 'x' + QStringLiteral("y"),
                                 "x" + source, source.replaced("b", "c"), source.spacedCapitals()})
        EXPECT_EQ(made.locale(), m_odd) << made;
    EXPECT_EQ((VoString("x") + source).locale(), std::locale::classic());
    text = "y";
    EXPECT_EQ(text.locale(), m_odd);
    text = VoString("z");
    EXPECT_EQ(text.locale(), std::locale::classic());
    text = source;
    EXPECT_EQ(text.locale(), m_odd);
    text = VoString();
    EXPECT_EQ(text.locale(), std::locale::classic());
    VoString moved(odd("m"));
    text = std::move(moved);
    EXPECT_EQ(text.locale(), m_odd);
}

TEST_F(StringLocale, IsSharedByViewsAndNotByWhatIsMadeOfThem)
{
    const VoString source = odd("_a,[_");
    EXPECT_EQ(source.substring(1).locale(), m_odd);
    EXPECT_EQ(source.trimmed().toString().toStdString(), "a,[");
    EXPECT_EQ(source.trimmed().locale(), m_odd);
    const VoDeque<VoStringView> tokens = source.trimmed().tokenize(",");
    ASSERT_EQ(tokens.size(), 2u);
    EXPECT_TRUE(tokens[1] == "{");
    EXPECT_EQ(source.find("{"), 3u);
    EXPECT_EQ(tokens[1].toString().locale(), std::locale::classic());
    EXPECT_EQ(VoString(tokens[1]).locale(), std::locale::classic());
}

TEST_F(StringLocale, ClassifiesBytes)
{
    VoString text = odd("a_b#c");
    EXPECT_TRUE(text.containsWhiteSpace());
    EXPECT_FALSE(VoString("a_b#c").containsWhiteSpace());
    EXPECT_EQ(text.spacedCapitals().toStdString(), "a_b #c");
    EXPECT_EQ(odd("a_#").spacedCapitals().toStdString(), "a_#");

    EXPECT_FALSE(VoString::IsWhiteSpace('_'));
    EXPECT_TRUE(VoString::IsWhiteSpace('\t'));
    const ScopedGlobalLocale global(m_odd);
    EXPECT_TRUE(VoString::IsWhiteSpace('_')) << "asks the global locale at the call";
}

TEST_F(StringLocale, WithTheSameCharactersIsStillItsOwn)
{
    const vo::test::CommaLocale comma;
    const VoString text("1.5");
    EXPECT_EQ(text.locale(), std::locale());
    EXPECT_EQ(text.toDouble(), 1.5);
    EXPECT_TRUE(text.isDouble());
    EXPECT_EQ(VoString(1234.5).toStdString(), "1234.500000");
    EXPECT_EQ(VoString::ToString(1234.5).toStdString(), "1234.5");
    EXPECT_EQ(VoString(1234567).toStdString(), "1234567");
    EXPECT_EQ(VoString("1.234").toSizeT(), 1u);
}

TEST_F(StringLocale, HasOneRecordForTheProcess)
{
    const vo::detail::LocalePtr record = vo::detail::RecordOf(m_odd);
    EXPECT_EQ(vo::detail::RecordOf(std::locale(m_odd)), record);
    vo::detail::LocalePtr ofThread;
    std::thread([&] { ofThread = vo::detail::RecordOf(m_odd); }).join();
    EXPECT_EQ(ofThread, record);
    EXPECT_NE(vo::detail::RecordOf(OddCharacters::Locale()), record);
    EXPECT_EQ(vo::detail::RecordOf(std::locale::classic()), vo::detail::ClassicLocale());
}

TEST_F(StringLocale, IsUsedByManyThreadsAtOnce)
{
    const VoString shared = odd("Shared[\xC4_");
    std::atomic<int> failures{0};
    vo::test::Threads(4, [&] {
        for (int i = 0; i < 300; ++i) {
            // More locales than a thread remembers.
            const std::locale own(std::locale::classic(), new OddCharacters);
            const bool found = shared.find("{\xE4") == 6 && shared == "sHARED{\xE4_";
            const bool viewed = shared.trimmed().size() == 8 && VoString(shared).locale() == m_odd;
            if (!found || !viewed || vo::detail::RecordOf(own)->locale != own)
                ++failures;
        }
    });
    EXPECT_EQ(failures, 0);
}

// Made before main and dropped after it, when the thread's variables are gone.
const VoString AtStart("Made at start");

struct ComparesAtExit
{
    ~ComparesAtExit()
    {
        const std::locale odd = OddCharacters::Locale();
        if (AtStart != "mADE AT START" || vo::detail::RecordOf(odd)->locale != odd)
            std::terminate();
    }
} const comparesAtExit;

TEST_F(StringLocale, IsUsableBeforeMain)
{
    EXPECT_EQ(AtStart, "made at start");
    EXPECT_EQ(AtStart.locale(), std::locale::classic());
}

} // namespace
