#include <sys/stat.h>

#include <fstream>
#include <regex>
#include <thread>

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

struct Log : testing::Test {
    ~Log() override {
        log_state() = {};
        std::filesystem::remove_all(folder);
    }
    std::string folder = testing::TempDir() + "kiln test.XXXXXX";
    const std::string path = std::string(mkdtemp(folder.data())) + "/log";
    std::string text = "old\n";
};

TEST_F(Log, LevelsDecideWhatReachesConsoleAndFile) {
    std::ofstream(path) << text;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(log_set_file(path.c_str()), 0);
    EXPECT_EQ(log_set_level(0), 3);
    EXPECT_EQ(err(5, ENOENT, "open %d", 3), 5);
    log(0, "plain"), log(3, "detail"), log(4, "too detailed");
    EXPECT_EQ(log_set_quiet(1), 0);
    log(-1, "quiet");
    log_state().enabled = 0;
    log(-1, "disabled");
    EXPECT_STREQ(get_last_error(), "disabled");
    EXPECT_EQ(Kiln::get_file(path, text), 0);  // each line is there at once
    text += "|" + testing::internal::GetCapturedStdout();
    text += "|" + testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::regex_replace(text, std::regex("[0-9]{10,} "), "TIME "),
              "old\nTIME Error: open 3: No such file or directory\nTIME plain\nTIME Error: quiet\n"
              "|plain\nTIME detail\n|Error: open 3: No such file or directory\n");
}

TEST_F(Log, AFileOfAnyKindIsReadWhole) {
    EXPECT_EQ(Kiln::get_file(path, text), ENOENT);
    EXPECT_EQ(text, "old\n");
    const std::string much(200000, 'x');  // more than a pipe holds
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::thread writer([&] { std::ofstream(path) << much << std::flush << 'y'; });
    EXPECT_EQ(Kiln::get_file(path, text), 0);
    writer.join();
    EXPECT_TRUE(text == much + "y") << text.size();
    EXPECT_EQ(Kiln::get_file(folder, text), EISDIR);
    EXPECT_EQ(text, "");
}

TEST_F(Log, LongMessagesAreCutAndAFullDeviceChangesNoErrno) {
    log_set_quiet(1);
    EXPECT_EQ(log_set_file("/dev/full"), 0);
    errno = EPERM;
    for (const auto& [length, tail] : {std::pair(4093UL, ": "), {4094, ":"}, {6000, ""}}) {
        err(0, ENOENT, "%s", std::string(length, 'm').c_str());
        EXPECT_EQ(get_last_error(), std::string(std::min<std::size_t>(length, 4095), 'm') + tail);
    }
    EXPECT_EQ(errno, EPERM);
}

}  // namespace
