// The command line: time spans, options, their messages and what they leave in the settings.
#include "driver/options.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <vector>

#include "driver/time_span.h"

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
        {"0s", 0},
        {"2147483647s", 2147483647},
        {"50000d", 25032704},  // 4,320,000,000 less 2^32
        {"4294967297s", 1},    // the number itself is cut to 32 bits
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
    std::string out;
    std::string err;
};

Parsed parse(std::vector<std::string> args) {
    args.insert(args.begin(), "tarnhwcalc");
    std::vector<char*> argv;
    for (std::string& arg : args) {
        argv.push_back(&arg[0]);
    }
    argv.push_back(nullptr);
    Parsed parsed;
    errno = 0;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    parsed.result =
        parse_args(static_cast<int>(args.size()), argv.data(), &parsed.calc, parsed.out_path);
    parsed.err = testing::internal::GetCapturedStderr();
    parsed.out = testing::internal::GetCapturedStdout();
    errno = 0;
    return parsed;
}

const char* const USAGE =
    "\nUsage: tarnhwcalc [options]\n\n"
    "    -h | -?, --help     print this text\n"
    "    -v, --version       print version\n"
    "    -o, --out           resulting VPS config file path\n"
    "                        'vps.conf' by default\n"
    "    -t, --scan-time     how long to scan for parameters\n"
    "                        ([DDd][HHh][MMm][SSs], e.g. 1h30m)\n"
    "    -p, --scan-period   time interval between scans\n"
    "                        ([DDd] [HHh] [MMm] [SSs])\n"
    "    --mem-scale         memory consumption enlagement factor\n"
    "    --disk-scale        disk consumption enlagement factor\n"
    "    -d, --dist-detect   path to distribution detection script\n";

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
    EXPECT_EQ(all.out + all.err, "");

    EXPECT_EQ(parse({"-o", "x", "-o", ""}).out_path, "");
    EXPECT_TRUE(std::isnan(parse({"--mem-scale", "nan"}).calc.mem_scale));
    EXPECT_EQ(parse({"--mem-scale", "nan"}).result, 0);
}

TEST(Options, HelpVersionAndUnknownOptionsEndTheRunKindly) {
    for (const char* help : {"-h", "-?", "--help"}) {
        const Parsed parsed = parse({help, "-t", "bad"});
        EXPECT_EQ(parsed.result, 1) << help;
        EXPECT_EQ(parsed.err, USAGE);
    }
    for (const char* unknown : {"-x", "-M", "--nothing", "-t"}) {
        const Parsed parsed = parse({unknown});
        EXPECT_EQ(parsed.result, 1) << unknown;
        EXPECT_EQ(parsed.err.substr(parsed.err.find('\n') + 1), USAGE) << unknown;
    }
    const Parsed version = parse({"-v", "-t", "bad"});
    EXPECT_EQ(version.result, 1);
    EXPECT_EQ(version.out, "Corvane hardware configuration calculator v. 1.0\n");
    EXPECT_EQ(version.err, "");
}

TEST(Options, ErrorsEndParsingAtOnce) {
    const struct {
        std::vector<std::string> args;
        std::string message;
    } cases[] = {
        {{"-t", "90", "--nothing"}, "Bad time spec specified for --scan-time: 90\n"},
        {{"-p", "5m ", "-h"}, "Bad time spec specified for --scan-period: 5m \n"},
        {{"--mem-scale", "1.5x"}, "Not a numeric value for --mem-scale: 1.5x\n"},
        {{"--mem-scale", ""}, "--mem-scale must be positive: \n"},
        {{"--mem-scale", "0"}, "--mem-scale must be positive: 0\n"},
        {{"--disk-scale", "one"}, "Not a numeric value for --disk-scale: one\n"},
        {{"--disk-scale", "-1"}, "--disk-scale must be positive: -1\n"},
        {{"-t", "1h", "-p", "0s"}, "--scan-period is 0 while --scan-time is not\n"},
        {{"-t", "1h", "stray"}, std::string("No extra arguments allowed\n") + USAGE},
        // Too large a scale is infinite and passes, but its error number fails the span after it.
        {{"--mem-scale", "1e50", "-t", "1h"}, "Bad time spec specified for --scan-time: 1h\n"},
    };
    for (const auto& c : cases) {
        const Parsed parsed = parse(c.args);
        EXPECT_EQ(parsed.result, -1) << c.message;
        EXPECT_EQ(parsed.err, c.message);
    }
    EXPECT_EQ(parse({"--mem-scale", "-3"}).calc.mem_scale, -3.0F) << "stored before it is checked";
}

// The last check treats the scales unlike: it is reached with values set by other means.
TEST(Options, TheFinalCheckAcceptsADiskScaleOfZero) {
    TarnHWCalc calc;
    std::string path;
    char name[] = "tarnhwcalc";
    char* argv[] = {name, nullptr};
    calc.disk_scale = 0.0F;
    EXPECT_EQ(parse_args(1, argv, &calc, path), 0);
    calc.mem_scale = 0.0F;
    testing::internal::CaptureStderr();
    EXPECT_EQ(parse_args(1, argv, &calc, path), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "--mem-scale and --disk-scale must be positive\n");
}

}  // namespace
