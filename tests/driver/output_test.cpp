// The file writer, and what the entry changes about its process.
#include "driver/output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "driver/process_setup.h"

namespace {

std::string content(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

mode_t mode_of(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

TEST(Output, CreatesOwnerOnlyFilesAndKeepsTheModeOfExistingOnes) {
    char dir[] = "/tmp/output-test-XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    const std::string path = std::string(dir) + "/vps.conf";
    umask(022);
    EXPECT_EQ(write_configuration(path, "A=\"1\"\n"), 0);
    EXPECT_EQ(content(path), "A=\"1\"\n");
    EXPECT_EQ(mode_of(path), 0600U);

    ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    EXPECT_EQ(write_configuration(path, "B\n"), 0);
    EXPECT_EQ(content(path), "B\n");
    EXPECT_EQ(mode_of(path), 0644U);
    unlink(path.c_str());
    rmdir(dir);
}

TEST(Output, ReportsWhatCannotBeWritten) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(write_configuration("/nonexistent/vps.conf", "text"), -1);
    EXPECT_EQ(write_configuration("/dev/full", "text"), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error: unable to open /nonexistent/vps.conf: No such file or directory\n"
              "Error: unable to write 4 bystes to the /dev/full: No space left on device\n");
}

TEST(Output, ListsWarningsThenExcludePaths) {
    TarnACalculateHWNodeNotes notes;
    notes.warnings.push_back({4, "first"});
    notes.warnings.push_back({0, "second"});
    notes.excludes.push_back({false, "/proc/*"});
    testing::internal::CaptureStderr();
    list_notes(notes);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "first\nsecond\n/proc/*\n");
}

// The time spans of the command line fail on any error number that is left behind.
TEST(ProcessSetup, SetsLocaleAndStackAndLeavesErrnoAlone) {
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_STACK, &limit), 0);
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    errno = 0;
    prepare_process();
    EXPECT_EQ(errno, 0);
    EXPECT_STREQ(getenv("LC_ALL"), "C");
    rlimit after{};
    ASSERT_EQ(getrlimit(RLIMIT_STACK, &after), 0);
    EXPECT_EQ(after.rlim_cur, limit.rlim_max);
    setrlimit(RLIMIT_STACK, &limit);
}

}  // namespace
