#include "FileSystemFixture.h"

#include <FileSystem/VoFileLock.h>

#if !defined(_WIN32)
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

using FileLocks = vo::test::FileSystemFixture;

} // namespace

TEST_F(FileLocks, ALockExcludesWhateverItsFileHeldBeforeAndLetsGo)
{
    const VoFilePath path = at("l.lock");
    for (const char* left : {"", "12345\nanother program\nanother machine\n"}) {
        write("l.lock", left);
        {
            const VoFileLock lock(path);
            EXPECT_TRUE(lock.isHeld());
            EXPECT_FALSE(VoFileLock(path).isHeld());
        }
        EXPECT_EQ(VoFileSystem::Exists(path), *left != '\0') << "only what a lock made goes with it";
        VoFileSystem::Remove(path);
    }

    // The file is made and removed all the time.
    std::atomic<int> inside{0};
    std::atomic<bool> haveMet{false};
    vo::test::Threads(4, [&] {
        for (int round = 0; round < 50; ++round) {
            const VoFileLock lock(path, [] {});
            if (++inside > 1)
                haveMet = true;
            std::this_thread::yield();
            --inside;
        }
    });
    EXPECT_FALSE(haveMet);
    EXPECT_FALSE(VoFileSystem::Exists(path));
}

#if !defined(_WIN32)
TEST_F(FileLocks, ALockEndsWithItsProcess)
{
    const VoFilePath path = at("l.lock");
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const VoFileLock lock(path);
        const char held = lock.isHeld() ? 'y' : 'n';
        if (::write(ready[1], &held, 1) == 1)
            ::pause();
        ::_exit(1);
    }
    char held = 0;
    ASSERT_EQ(::read(ready[0], &held, 1), 1);
    EXPECT_EQ(held, 'y');
    int waits = 0;
    const VoFileLock lock(path, [&] {
        if (waits++ == 0)
            ::kill(child, SIGKILL);
    });
    EXPECT_GT(waits, 0);
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
    ::close(ready[0]);
    ::close(ready[1]);
}
#endif
