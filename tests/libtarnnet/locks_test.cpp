// The library's log and its lock: codes, file, messages, and what the lock keeps out.
#include <fcntl.h>
#include <semaphore.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "log.h"
#include "made_up_host.h"

namespace {

class Lock : public MadeUpHost {
protected:
    Lock() { umask(0); }

    static bool free_within_process() {
        int value = -1;
        return sem_getvalue(&state.semaphore, &value) == 0 && value == 1;
    }

    // Whether another process could lock the file in that way now.
    static bool can_lock(int operation) {
        const owned_fd fd(open(state.host.lock_file, O_RDWR));
        return fd.is_open() && flock(fd.get(), operation | LOCK_NB) == 0;
    }
};

TEST_F(Lock, IsLoggedAsOneStampedLineForEachMessageCutTo1023Characters) {
    tarnnetlog("%s", std::string(3000, 'x').c_str());
    tarnnet_set_log(0);
    tarnnetlog("while it is off");
    tarnnet_set_log(1);
    tarnnetlog("%s %d", "second", 2);
    EXPECT_EQ(logged_messages(), std::string(1023, 'x') + "\nsecond 2\n");
    long stamp = 0, process = 0, parent = 0;
    std::ifstream(state.host.log_file) >> stamp >> process >> parent;
    EXPECT_NEAR(static_cast<double>(stamp), static_cast<double>(time(nullptr)), 60);
    EXPECT_TRUE(process == getpid() && parent == getppid());
    EXPECT_EQ(std::filesystem::status(state.host.log_file).permissions(),
              std::filesystem::perms(0644));

    ASSERT_EQ(unlink(state.host.log_file), 0);
    ASSERT_EQ(mkfifo(state.host.log_file, 0644), 0);
    errno = ERANGE;
    tarnnetlog("not waited for");
    EXPECT_EQ(errno, ERANGE);
    const owned_fd reader(open(state.host.log_file, O_RDONLY | O_NONBLOCK));
    tarnnetlog("not for a reader");
    EXPECT_EQ(read(reader.get(), &stamp, 1), 0);
}

TEST_F(Lock, IsWithinTheProcessOrSharedOrExclusiveBetweenProcesses) {
    ASSERT_EQ(grab_shared_tarnnetlock(1), 0);
    EXPECT_FALSE(free_within_process());
    EXPECT_NE(access(state.host.lock_file, F_OK), 0);
    release_tarnnetlock();
    EXPECT_TRUE(free_within_process());

    ASSERT_EQ(grab_shared_tarnnetlock(0), 0);
    EXPECT_TRUE(can_lock(LOCK_SH));
    EXPECT_FALSE(can_lock(LOCK_EX));
    release_tarnnetlock();
    ASSERT_EQ(grab_excl_tarnnetlock(), 0);
    EXPECT_FALSE(can_lock(LOCK_SH));
    release_tarnnetlock();
    EXPECT_TRUE(can_lock(LOCK_EX));
    EXPECT_TRUE(free_within_process());
    EXPECT_EQ(std::filesystem::status(state.host.lock_file).permissions(),
              std::filesystem::perms(0644));
    EXPECT_EQ(logged_messages(),
              "init_libtarnnet_state\n\nlibtarnnet: grab_shared_tarnnetlock\n"
              "libtarnnet: grab_shared_tarnnetlock done\nlibtarnnet: release_tarnnetlock\n"
              "libtarnnet: release_tarnnetlock done\nlibtarnnet: grab_excl_tarnnetlock done\n"
              "libtarnnet: release_tarnnetlock\nlibtarnnet: release_tarnnetlock done\n");
}

TEST_F(Lock, FollowsNoLinkInThePlaceOfItsFile) {
    const std::string elsewhere = state.host.lock_file + std::string(".elsewhere");
    ASSERT_EQ(symlink(elsewhere.c_str(), state.host.lock_file), 0);
    EXPECT_EQ(grab_shared_tarnnetlock(0), 6);
    EXPECT_FALSE(std::filesystem::exists(elsewhere));
    EXPECT_FALSE(free_within_process()) << "who asked releases it all the same";
    release_tarnnetlock();
}

}  // namespace
