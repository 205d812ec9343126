#include <sys/stat.h>

#include <regex>

#include "kiln/error.h"
#include "kiln/files.h"
#include "kiln/log.h"
#include "tests/kiln/kiln_support.h"

namespace {

TEST(Error, ComposesDomainMessageAndDetailAndCutsThem) {
    using Kiln::Error;
    EXPECT_STREQ(Error(static_cast<Error::Code>(1234), "why %d", 7).what(),
                 "[Unknown error domain] Unknown or general internal error. why 7");
    const Error longest(Error::CallerGenericError, "%s", std::string(5000, 'x').c_str());
    const std::string prefix = "[Caller] Generic error. ";
    EXPECT_EQ(std::string(longest.what()), prefix + std::string(4095 - prefix.size(), 'x'));
}

std::string without_times(const std::string& text) {
    return std::regex_replace(text, std::regex("[0-9]{10,} "), "TIME ");
}

// What `action` prints: standard output, and behind a "|" standard error.
template <class Action>
std::string printed(const Action& action) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    action();
    const std::string out = testing::internal::GetCapturedStdout();
    return without_times(out + "|" + testing::internal::GetCapturedStderr());
}

TEST(Log, LevelsDecideWhatReachesConsoleAndFile) {
    const Folder folder;
    const std::string path = folder.put("log", "old\n");
    std::string text;
    const auto action = [&] {
        EXPECT_EQ(log_set_file(path.c_str()), 0);
        EXPECT_EQ(log_set_level(0), 3);
        EXPECT_EQ(err(5, ENOENT, "open %d", 3), 5);
        log(0, "plain"), log(3, "detail"), log(4, "too detailed");
        EXPECT_EQ(log_set_quiet(1), 0);
        log(-1, "quiet");
        log_state().enabled = 0;
        log(-1, "disabled");
        EXPECT_EQ(Kiln::get_file(path, text), 0);  // each line is there at once
    };
    EXPECT_EQ(printed(action), "plain\nTIME detail\n|Error: open 3: No such file or directory\n");
    EXPECT_STREQ(get_last_error(), "disabled");
    EXPECT_EQ(
        without_times(text),
        "old\nTIME Error: open 3: No such file or directory\nTIME plain\nTIME Error: quiet\n");
    log_state() = {};
}

TEST(Files, NothingWaitsForAFifoAndTheLogIsNotForOthersToWrite) {
    const Folder folder;
    const std::string fifo = folder.path + "/fifo";
    const std::string log = folder.path + "/log";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    std::string text = "old";
    EXPECT_EQ(Kiln::get_file(fifo, text), EOPNOTSUPP);
    EXPECT_EQ(text, "old");
    EXPECT_EQ(Kiln::get_file(folder.path, text), EISDIR);
    EXPECT_EQ(Kiln::get_file("/dev/null", text), 0);
    EXPECT_EQ(text, "");

    log_set_quiet(1);
    errno = EPERM;
    EXPECT_EQ(log_set_file(fifo.c_str()), -1);
    EXPECT_EQ(get_last_error(), "unable to open log file: " + fifo + ": No such device or address");
    umask(0);
    EXPECT_EQ(log_set_file(log.c_str()), 0);
    EXPECT_EQ(errno, EPERM);
    struct stat status = {};
    EXPECT_EQ(stat(log.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644U);
    log_state() = {};
}

TEST(Log, LongMessagesAreCutAndAFullDeviceChangesNoErrno) {
    log_set_quiet(1);
    log_set_file("/dev/full");
    errno = EPERM;
    const std::pair<std::size_t, std::string> cases[] = {{4093, ": "}, {4094, ":"}, {6000, ""}};
    for (const auto& [length, tail] : cases) {
        err(0, ENOENT, "%s", std::string(length, 'm').c_str());
        EXPECT_EQ(get_last_error(), std::string(std::min<std::size_t>(length, 4095), 'm') + tail);
    }
    EXPECT_EQ(errno, EPERM);
    log_state() = {};
}

}  // namespace
