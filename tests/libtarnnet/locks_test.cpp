// The library lock: its codes, its file, its log, and what it keeps out.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <semaphore.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "state.h"
#include "tarnnet.h"
#include "tests/support/private_host.h"

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

std::string messages() {
    std::ifstream log("/var/log/tarnnetcfg.log");
    std::string result;
    for (std::string line; std::getline(log, line);)
        result += line.substr(line.rfind('\t') + 1) + "\n";
    return result;
}

TEST(Lock, WithinTheProcessNeedsNoFile) {
    private_host::run([] {
        ASSERT_EQ(grab_shared_tarnnetlock(1), 0);
        EXPECT_FALSE(free_within_process());
        EXPECT_NE(access(lock_path, F_OK), 0);
        release_tarnnetlock();
        EXPECT_TRUE(free_within_process());
        EXPECT_EQ(messages(), "init_libtarnnet_state\n\n");
    });
}

TEST(Lock, BetweenProcessesIsSharedOrExclusive) {
    private_host::run([] {
        umask(0);
        ASSERT_EQ(grab_shared_tarnnetlock(0), 0);
        EXPECT_TRUE(can_lock(LOCK_SH));
        EXPECT_FALSE(can_lock(LOCK_EX));
        struct stat status = {};
        ASSERT_EQ(stat(lock_path, &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0644u);
        release_tarnnetlock();
        ASSERT_EQ(grab_excl_tarnnetlock(), 0);
        EXPECT_FALSE(can_lock(LOCK_SH));
        release_tarnnetlock();
        EXPECT_TRUE(can_lock(LOCK_EX));
        EXPECT_TRUE(free_within_process());
        EXPECT_EQ(messages(),
                  "init_libtarnnet_state\n\n"
                  "libtarnnet: grab_shared_tarnnetlock\n"
                  "libtarnnet: grab_shared_tarnnetlock done\n"
                  "libtarnnet: release_tarnnetlock\n"
                  "libtarnnet: release_tarnnetlock done\n"
                  "libtarnnet: grab_excl_tarnnetlock done\n"
                  "libtarnnet: release_tarnnetlock\n"
                  "libtarnnet: release_tarnnetlock done\n");
    });
}

TEST(Lock, WhoseFileCannotBeOpenedStaysTakenWithinTheProcess) {
    private_host::run([] {
        std::filesystem::create_directory(lock_path);
        EXPECT_EQ(grab_shared_tarnnetlock(0), 6);
        EXPECT_FALSE(free_within_process());
        release_tarnnetlock();
        EXPECT_TRUE(free_within_process());
        EXPECT_EQ(grab_excl_tarnnetlock(), 6);
        EXPECT_FALSE(free_within_process());
    });
}

}  // namespace
