// The command line: time spans, and what the options leave in the settings. The scenarios show the
// messages.
#include "driver/options.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <vector>

#include "calc/arguments.h"

namespace {

TEST(TimeSpan, GrammarOfTerms) {
    const std::pair<const char*, int> good[] = {
        {"", 0},
        {"1d2h3m4s", 93784},
        {"30s1h", 3630},
        {"1m1m", 120},
        {"1d 2h", 93600},
        {"h", 0},
        {"1h-30m", 1800},
        {"\t+5m", 300},
        {"2147483647s", 2147483647},
        {"4294967297s", 1},    // the number itself is cut to 32 bits
        {"50000d", 25032704},  // 4,320,000,000 less 2^32
    };
    for (const auto& [text, expected] : good) {
        errno = 0;
        int seconds = -7;
        EXPECT_EQ(parse_time(text, &seconds), 0) << text;
        EXPECT_EQ(seconds, expected) << text;
    }
    for (const char* bad : {"90", "5m ", "1H", "1w", "x", "-1s", "1h-2h", "25000d", "1.5h", " ",
                            "2147483648s", "99999999999999999999s"}) {
        errno = 0;
        int seconds = -7;
        EXPECT_EQ(parse_time(bad, &seconds), -1) << bad;
        EXPECT_EQ(seconds, 0) << bad;
    }
}

TEST(TimeSpan, AnErrorNumberLeftByEarlierCodeFailsTheSpan) {
    errno = ERANGE;
    int seconds = 0;
    EXPECT_EQ(parse_time("1h", &seconds), -1);
    EXPECT_EQ(parse_time("", &seconds), 0) << "an empty span converts nothing";
    errno = 0;
}

struct Parsed {
    int result = 0;
    TarnHWCalc calc;
    std::string out_path;
};

Parsed parse(std::vector<std::string> args, Parsed parsed = Parsed()) {
    args.insert(args.begin(), "tarnhwcalc");
    std::vector<char*> argv;
    for (std::string& arg : args) {
        argv.push_back(&arg[0]);
    }
    argv.push_back(nullptr);
    errno = 0;
    parsed.result =
        parse_args(static_cast<int>(args.size()), argv.data(), &parsed.calc, parsed.out_path);
    return parsed;
}

TEST(Options, FillTheSettings) {
    const Parsed none = parse({});
    EXPECT_EQ(none.result, 0);
    EXPECT_EQ(none.calc.scan_time, 0);
    EXPECT_EQ(none.calc.mem_scale, 1.2F);
    EXPECT_EQ(none.calc.disk_scale, 1.5F);

    const Parsed all = parse({"-t", "1h", "--scan-period=5m", "--mem-scale", "2.5", "--disk-scale",
                              "0x1p1", "-d", "/some/script", "-o", "x.conf"});
    EXPECT_EQ(all.result, 0);
    EXPECT_EQ(all.calc.scan_time, 3600);
    EXPECT_EQ(all.calc.scan_period, 300);
    EXPECT_EQ(all.calc.mem_scale, 2.5F);
    EXPECT_EQ(all.calc.disk_scale, 2.0F);
    EXPECT_EQ(all.out_path, "x.conf");
    EXPECT_TRUE(all.calc.dist_detect_scripts.empty()) << "-d is accepted and ignored";

    EXPECT_EQ(parse({"-o", "x", "-o", ""}).out_path, "");
    EXPECT_TRUE(std::isnan(parse({"--mem-scale", "nan"}).calc.mem_scale));
    const Parsed refused = parse({"--mem-scale", "-3", "-t", "1h"});
    EXPECT_EQ(refused.result, -1);
    EXPECT_EQ(parse({"--disk-scale", "0"}).result, -1);
    EXPECT_EQ(refused.calc.mem_scale, -3.0F) << "stored before it is checked";
    EXPECT_EQ(refused.calc.scan_time, 0) << "an error ends parsing at once";
}

// The last check treats the scales unlike: it is reached with values set by other means.
TEST(Options, TheFinalCheckAcceptsADiskScaleOfZero) {
    Parsed kept;
    kept.calc.disk_scale = 0.0F;
    EXPECT_EQ(parse({}, kept).result, 0);
    kept.calc.mem_scale = 0.0F;
    testing::internal::CaptureStderr();
    EXPECT_EQ(parse({}, kept).result, -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "--mem-scale and --disk-scale must be positive\n");
}

}  // namespace
