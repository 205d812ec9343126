#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "kiln/error.h"
#include "kiln/files.h"
#include "kiln/log.h"

namespace {

TEST(Error, ComposesDomainMessageAndDetailAndCutsThem) {
    using Kiln::Error;
    for (const int code : {1234, 0}) {
        EXPECT_STREQ(Error(static_cast<Error::Code>(code), "why %d", 7).what(),
                     "[Unknown error domain] Unknown or general internal error. why 7");
    }
    const Error longest(Error::CallerGenericError, "%s", std::string(5000, 'x').c_str());
    const Error copy = longest;
    const std::string prefix = "[Caller] Generic error. ";
    EXPECT_EQ(std::string(copy.error_detail), std::string(4095, 'x'));
    EXPECT_EQ(std::string(copy.what()), prefix + std::string(4095 - prefix.size(), 'x'));
}

class Log : public testing::Test {
protected:
    ~Log() override {
        log_set_file(nullptr);
        log_state() = LogState();
        std::remove(path_.c_str());
    }

    // What `action` makes the log print: standard output, and behind a "2>" standard error.
    template <class Action>
    static std::string printed(const Action& action) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        action();
        const std::string out = testing::internal::GetCapturedStdout();
        const std::string errors = testing::internal::GetCapturedStderr();
        return errors.empty() ? out : out + "2>" + errors;
    }

    // "1700000000 text\n" without the time; "(no time)" when there is none.
    static std::string after_time(const std::string& line) {
        const std::size_t digits = line.find_first_not_of("0123456789");
        const bool stamped = digits != std::string::npos && digits >= 10 && line[digits] == ' ';
        return stamped ? line.substr(digits + 1) : "(no time)";
    }

    std::string in_file() const {
        std::string text;
        Kiln::get_file(path_, text);
        return text;
    }

    // Of this process: ctest runs the cases side by side in one folder.
    const std::string path_ = "kiln_log_test." + std::to_string(getpid());
};

TEST_F(Log, ErrorsAndDetailsGoTheirWaysOnTheConsole) {
    EXPECT_EQ(printed([] { EXPECT_EQ(err(5, 0, "%s", "x"), 5); }), "2>Error: x\n");
    EXPECT_STREQ(get_error_buffer(), "x");
    EXPECT_EQ(printed([] { err(-1, ENOENT, "open %d", 3); }),
              "2>Error: open 3: No such file or directory\n");
    EXPECT_EQ(printed([] { log(0, "plain"); }), "plain\n");
    EXPECT_EQ(after_time(printed([] { log(3, "detail"); })), "detail\n");
    EXPECT_EQ(printed([] { log(4, "too detailed"); }), "");
    EXPECT_STREQ(get_last_error(), "open 3: No such file or directory");
}

TEST_F(Log, TheFileStampsEveryLineAndHasItsOwnThreshold) {
    EXPECT_EQ(log_set_file(path_.c_str()), 0);
    EXPECT_EQ(log_set_level(-1), 3);
    EXPECT_EQ(log_set_quiet(1), 0);
    EXPECT_EQ(printed([] { log(0, "below"), log(-1, "failed"); }), "");
    EXPECT_EQ(after_time(in_file()), "Error: failed\n");
    log_state().enabled = 0;
    log(-1, "disabled");
    EXPECT_EQ(after_time(in_file()), "Error: failed\n");
    EXPECT_STREQ(get_last_error(), "disabled");
    log_state() = {log_state().log_file};  // as it begins, with the file still open
    EXPECT_EQ(printed([] { EXPECT_EQ(log_set_file("/nonexistent/log"), -1); }),
              "2>Error: unable to open log file: /nonexistent/log: No such file or directory\n");
    printed([] { log(0, "unheard"); });
    EXPECT_EQ(after_time(in_file()), "Error: failed\n");
}

TEST_F(Log, AFullDeviceChangesNoErrno) {
    log_set_quiet(1);
    log_set_file("/dev/full");
    errno = EPERM;
    log(0, "lost");
    EXPECT_EQ(errno, EPERM);
}

TEST_F(Log, LongMessagesAreCutAndTheErrorTextOnlyFillsTheRest) {
    log_set_quiet(1);
    const std::pair<std::size_t, std::string> cases[] = {{4093, ": "}, {4094, ":"}, {6000, ""}};
    for (const auto& [length, tail] : cases) {
        err(0, ENOENT, "%s", std::string(length, 'm').c_str());
        EXPECT_EQ(get_last_error(), std::string(std::min<std::size_t>(length, 4095), 'm') + tail);
    }
}

}  // namespace
