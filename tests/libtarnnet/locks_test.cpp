// The library's log and its lock: codes, file, messages, and what the lock keeps out.
#include <fcntl.h>
#include <semaphore.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <csignal>
#include <ctime>

#include "inventory_host.h"
#include "log.h"
#include "state.h"

namespace {

constexpr char lock_path[] = "/tmp/tarnnetcfg.lck";

bool free_within_process() {
    int value = -1;
    sem_getvalue(&libtarnnet_state.semaphore, &value);
    return value == 1;
}

// Whether another process could lock the file in that way now.
bool can_lock(int operation) {
    const int fd = open(lock_path, O_RDWR);
    const bool locked = fd >= 0 && flock(fd, operation | LOCK_NB) == 0;
    close(fd);
    return locked;
}

TEST(Log, HasOneStampedLineForEachMessageCutTo1023Characters) {
    private_host::run([] {
        tarnnetlog("%s", std::string(3000, 'x').c_str());
        tarnnetlog("%s %d", "second", 2);
        EXPECT_EQ(inventory_host::logged_messages(), std::string(1023, 'x') + "\nsecond 2\n");
        long stamp = 0, process = 0, parent = 0;
        std::ifstream("/var/log/tarnnetcfg.log") >> stamp >> process >> parent;
        EXPECT_NEAR(static_cast<double>(stamp), static_cast<double>(time(nullptr)), 60);
        EXPECT_TRUE(process == getpid() && parent == getppid());
    });
}

TEST(Lock, IsWithinTheProcessOrSharedOrExclusiveBetweenProcesses) {
    private_host::run([] {
        ASSERT_EQ(grab_shared_tarnnetlock(1), 0);
        EXPECT_FALSE(free_within_process());
        EXPECT_NE(access(lock_path, F_OK), 0);
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
        EXPECT_EQ(inventory_host::logged_messages(),
                  "init_libtarnnet_state\n\nlibtarnnet: grab_shared_tarnnetlock\n"
                  "libtarnnet: grab_shared_tarnnetlock done\nlibtarnnet: release_tarnnetlock\n"
                  "libtarnnet: release_tarnnetlock done\nlibtarnnet: grab_excl_tarnnetlock done\n"
                  "libtarnnet: release_tarnnetlock\nlibtarnnet: release_tarnnetlock done\n");
    });
}

// A signal ends the wait for another process's lock.
TEST(Lock, ThatIsRefusedLeavesNothingHeldUnlessItsFileCannotBeOpened) {
    private_host::run([] {
        const int other = open(lock_path, O_RDWR | O_CREAT, 0644);
        ASSERT_EQ(flock(other, LOCK_EX), 0);
        struct sigaction action = {};
        action.sa_handler = [](int) {};  // without SA_RESTART
        sigaction(SIGALRM, &action, nullptr);
        const itimerval often = {{0, 20000}, {0, 20000}};
        setitimer(ITIMER_REAL, &often, nullptr);
        EXPECT_EQ(grab_excl_tarnnetlock(), 8);
        EXPECT_EQ(grab_shared_tarnnetlock(0), 8);
        EXPECT_TRUE(free_within_process());
        EXPECT_EQ(dup(other), other + 1) << "a descriptor is left open";

        ASSERT_EQ(unlink(lock_path), 0);
        std::filesystem::create_directory(lock_path);
        EXPECT_EQ(grab_shared_tarnnetlock(0), 6);
        EXPECT_FALSE(free_within_process());
        release_tarnnetlock();
        EXPECT_EQ(grab_excl_tarnnetlock(), 6);
        EXPECT_FALSE(free_within_process());
    });
}

}  // namespace
