#include <fcntl.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <fstream>
#include <limits>

#include "kiln/sleep.h"
#include "tests/kiln/kiln_support.h"

namespace {

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

TEST(Numbers, LeadingNumbersOfTexts) {
    struct Case {
        const char* text;
        std::int64_t wide;
        std::int32_t narrow;
    };
    const Case cases[] = {
        {"", 0, 0},
        {" \t\n\v\f\r+12kB", 12, 12},
        {"- 7", 0, 0},
        {"0x10", 0, 0},
        {"2147483648", 2147483648, lowest},
        {"9223372036854775808", INT64_MAX, -1},
        {"-99999999999999999999", INT64_MIN, 0},
    };
    errno = 0;
    for (const Case& c : cases) {
        EXPECT_EQ(Kiln::leading_int64(c.text), c.wide) << c.text;
        EXPECT_EQ(Kiln::leading_int(c.text), c.narrow) << c.text;
    }
    EXPECT_EQ(errno, 0);
}

TEST(Numbers, ArithmeticWraps) {
    EXPECT_EQ(Kiln::wrap_add(highest, 1), lowest);
    EXPECT_EQ(Kiln::wrap_sub(lowest, 1), highest);
    EXPECT_EQ(Kiln::wrap_mul(4096, 0x3FFFFFFF), -4096);
    EXPECT_EQ(Kiln::wrap_shift_left(0x40000001, 1), lowest + 2);
}

TEST(Numbers, TruncationOfFloats) {
    struct Case {
        float value;
        std::int32_t narrow;
        std::uint64_t wide;
    };
    constexpr std::uint64_t top = std::uint64_t{1} << 63;
    constexpr float infinity = std::numeric_limits<float>::infinity();
    // Next to 2^31 the floats are 128 apart, next to 2^63 they are 2^39 below and 2^40 above.
    const Case cases[] = {
        {-1.99F, -1, UINT64_MAX},
        {2147483520.0F, 2147483520, 2147483520},
        {2147483648.0F, highest, 2147483648},
        {-2147483648.0F, lowest, UINT64_MAX - 2147483647},
        {-2147483904.0F, lowest, UINT64_MAX - 2147483903},
        {std::nextafterf(0x1p63F, 0.0F), highest, top - (std::uint64_t{1} << 39)},
        {0x1p63F, highest, top},
        {std::nextafterf(0x1p63F, infinity), highest, top + (std::uint64_t{1} << 40)},
        {infinity, highest, top},
        {-infinity, lowest, top},
        {std::numeric_limits<float>::quiet_NaN(), lowest, top},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Kiln::truncate_to_int32(c.value), c.narrow) << c.value;
        EXPECT_EQ(Kiln::truncate_to_uint64(c.value), c.wide) << c.value;
    }
}

TEST(Files, ReadsWholeFilesOfAnySizeAndKind) {
    const std::set<int> before = open_descriptors();
    std::string text = "before";
    EXPECT_EQ(Kiln::get_file("/nonexistent/file", text), ENOENT);
    EXPECT_EQ(text, "before");
    EXPECT_EQ(Kiln::get_file("/proc/self/status", text), 0);  // its reported size is 0
    EXPECT_EQ(text.rfind("Name:\t", 0), 0U);
    EXPECT_EQ(Kiln::get_file("/", text), EISDIR);  // opens, but cannot be read
    EXPECT_EQ(text, "");

    const std::string large = std::string(200000, 'a') + '\0' + "end";
    std::ofstream("kiln_files_test.txt") << large;
    EXPECT_EQ(Kiln::get_file("kiln_files_test.txt", text), 0);
    EXPECT_EQ(text, large);
    std::remove("kiln_files_test.txt");
    EXPECT_EQ(open_descriptors(), before);
}

TEST(Files, WriteAllReportsWhatIsLeft) {
    const Pipe pipe;
    fcntl(pipe.ends[1], F_SETFL, O_APPEND);
    EXPECT_EQ(Kiln::setFDNonblock(pipe.ends[1]), 0);
    EXPECT_EQ(fcntl(pipe.ends[1], F_GETFL), O_WRONLY | O_NONBLOCK | O_APPEND);
    EXPECT_EQ(Kiln::setFDNonblock(-1), -1);

    const std::string large(70000, 'x');  // a pipe holds 65536
    EXPECT_EQ(Kiln::write_all(pipe.ends[1], large.data(), large.size()), 70000U - 65536U);
    EXPECT_EQ(errno, EAGAIN);
}

TEST(Sleep, LastsTheWholeTimeInASignalStorm) {
    const SignalStorm storm;
    const auto start = std::chrono::steady_clock::now();
    Kiln::sleep_full(1);
    Kiln::sleep_full(-5);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

}  // namespace
