// A publisher who is killed at a call of the system, or whose calls fail from one on. Whatever he leaves, an
// installation that knows his keys sees the old release or the new one, and the next publication mends the rest.

#include "SystemCalls_linux.h"
#include "TrustFixture.h"

#include <cerrno>
#include <sys/wait.h>
#include <unistd.h>

namespace vo::test {

namespace {

using FaultKind = CallFault::Kind;

const Files Old = {{"program", Noise(900, 1)}, {"same", "same"}};
const Files New = {{"program", "!" + Noise(900, 1)}, {"same", "same"}};

class TrustFault : public TrustTest
{
protected:
    TrustFault()
    {
        release("1.0.0", Old, {key});
        now = Day(1);
    }

    // How often a fault of that kind may strike the work, which is done in a process of its own.
    template <typename Work>
    static void strike(const CallFault& fault, Work work)
    {
        const pid_t child = ::fork();
        if (child == 0) {
            Arm(fault);
            try {
                work();
            } catch (const VoException&) {
            }
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
    }

    // Tries the work struck at about that many of its calls, each time from the same folder.
    template <typename Work>
    void matrix(FaultKind kind, std::size_t few, Work work)
    {
        const Files before = folder();
        CallFault fault{kind, static_cast<std::size_t>(-1), kind == FaultKind::FailAll ? ENOSPC : 0};
        Arm(fault);
        work();
        const std::size_t calls = Disarm();
        const Files after = folder();
        ASSERT_GT(calls, 10u);
        for (std::size_t i = 0; i < std::min(few, calls); ++i) {
            fault.number = 1 + i * calls / std::min(few, calls);
            SCOPED_TRACE("call " + std::to_string(fault.number) + " of " + std::to_string(calls));
            putFolder(before);
            wipe();
            strike(fault, work);
            EXPECT_THAT(offered(at(Day(2))), testing::AnyOf("1.0.0.0", "2.0.0.0"));
            EXPECT_EQ(install(at(Day(2))), "");
            work();
            EXPECT_EQ(offered(at(Day(2))), "2.0.0.0");
            EXPECT_EQ(install(at(Day(2))), "");
        }
    }
};

} // namespace

TEST_F(TrustFault, AKilledPublicationStrandsNobody)
{
    matrix(FaultKind::Kill, 25, [this] { release("2.0.0", New, {key}); });
}

TEST_F(TrustFault, AFullDiskStrandsNobody)
{
    matrix(FaultKind::FailAll, 12, [this] { release("2.0.0", New, {key}); });
}

TEST_F(TrustFault, AKilledReplacementStrandsNobody)
{
    release("2.0.0", Old, {key});
    matrix(FaultKind::Kill, 25, [this] { release("2.0.0", New, {key}); });
}

TEST_F(TrustFault, KilledRotationsAndClearingsStrandNobody)
{
    release("2.0.0", New, {key});
    matrix(FaultKind::Kill, 15, [this] {
        ReleaseSigner::KeyChange change;
        change.added.pushBack({other->publicKey(), true, true});
        signer({key, other}).rotate(change);
        signer({key}).clear(1, false);
    });
}

} // namespace vo::test
