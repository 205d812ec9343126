#include <gtest/gtest.h>

#include <cerrno>
#include <regex>

#include "kiln/error.h"
#include "kiln/log.h"

namespace {

TEST(Error, ComposesDomainMessageAndDetailAndCutsThem) {
    using Kiln::Error;
    EXPECT_STREQ(Error(static_cast<Error::Code>(1234), "why %d", 7).what(),
                 "[Unknown error domain] Unknown or general internal error. why 7");
    const Error longest(Error::CallerGenericError, "%s", std::string(5000, 'x').c_str());
    const std::string prefix = "[Caller] Generic error. ";
    EXPECT_EQ(std::string(longest.what()), prefix + std::string(4095 - prefix.size(), 'x'));
}

// What `action` prints: standard output, and behind a "|" standard error.
template <class Action>
std::string printed(const Action& action) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    action();
    const std::string out = testing::internal::GetCapturedStdout();
    const std::string text = out + "|" + testing::internal::GetCapturedStderr();
    return std::regex_replace(text, std::regex("[0-9]{10,} "), "TIME ");
}

TEST(Log, LevelsDecideWhereALineGoesOnTheConsole) {
    EXPECT_EQ(printed([] { EXPECT_EQ(err(5, ENOENT, "open %d", 3), 5); }),
              "|Error: open 3: No such file or directory\n");
    EXPECT_EQ(printed([] { log(0, "plain"), log(3, "detail"), log(4, "too detailed"); }),
              "plain\nTIME detail\n|");
    EXPECT_STREQ(get_last_error(), "open 3: No such file or directory");
}

TEST(Log, TheFileStampsEveryLineAndHasItsOwnThreshold) {
    const auto action = [] {
        EXPECT_EQ(log_set_file("/proc/self/fd/1"), 0);
        EXPECT_EQ(log_set_level(0), 3);
        EXPECT_EQ(log_set_quiet(1), 0);
        log(1, "too detailed"), log(0, "plain"), log(-1, "failed");
        log_state().enabled = 0;
        log(-1, "disabled");
        EXPECT_STREQ(get_last_error(), "disabled");
        log_state() = {log_state().log_file};  // as it begins, with the file still open
        EXPECT_EQ(log_set_file("/none/log"), -1);
        log(-1, "without a file");
    };
    EXPECT_EQ(printed(action),
              "TIME plain\nTIME Error: failed\n|"
              "Error: unable to open log file: /none/log: No such file or directory\n"
              "Error: without a file\n");
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
    log_set_file(nullptr);
    log_state() = {};
}

}  // namespace
