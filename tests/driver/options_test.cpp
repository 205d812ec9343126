// The command line: time spans, and what the options leave in the settings. Scenarios show the
// texts.
#include "driver/options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include "calc/arguments.h"
#include "kiln/strings.h"

namespace {

TEST(TimeSpan, GrammarOfTerms) {
    // A number is cut to 32 bits by itself; 50000 days are 4,320,000,000 seconds less 2^32.
    const std::string cases =
        "=0|1d2h3m4s=93784|30s1h=3630|1m1m=120|1d 2h=93600|h=0|1h-30m=1800|\t+5m=300|"
        "2147483647s=2147483647|4294967297s=1|50000d=25032704|90=bad 0|5m =bad 0|1H=bad 0|"
        "1w=bad 0|x=bad 0|-1s=bad 0|1h-2h=bad 0|25000d=bad 0|1.5h=bad 0| =bad 0|"
        "2147483648s=bad 0|99999999999999999999s=bad 0";
    errno = 0;
    int seconds = -7;
    for (const std::string& one : Kiln::split("|", cases, 0)) {
        const std::string span = one.substr(0, one.find('='));
        const std::string result = parse_time(span.c_str(), &seconds) == 0 ? "=" : "=bad ";
        EXPECT_EQ(span + result + std::to_string(seconds), one);
        seconds = -7;
    }
    EXPECT_EQ(errno, ERANGE) << "left by the last one";
    EXPECT_EQ(parse_time("", &seconds), 0) << "an empty span converts nothing";
    EXPECT_EQ(parse_time("1h", &seconds), -1) << "what was left fails the span";
}

struct Parsed {
    int result = 0;
    TarnHWCalc calc;
    std::string out_path;
};

Parsed parse(std::vector<std::string> args, Parsed parsed = Parsed()) {
    args.insert(args.begin(), "tarnhwcalc");
    std::vector<char*> argv(args.size() + 1);
    std::transform(args.begin(), args.end(), argv.begin(), [](auto& arg) { return arg.data(); });
    errno = 0;
    parsed.result =
        parse_args(static_cast<int>(args.size()), argv.data(), &parsed.calc, parsed.out_path);
    return parsed;
}

TEST(Options, FillTheSettings) {
    const Parsed all = parse({"-t", "1h", "--scan-period=5m", "--mem-scale", "2.5", "--disk-scale",
                              "0x1p1", "-d", "/some/script", "-o", "x.conf"});
    EXPECT_EQ(std::tuple(all.result, all.calc.scan_time, all.calc.scan_period, all.calc.mem_scale,
                         all.calc.disk_scale, all.out_path),
              std::tuple(0, 3600, 300, 2.5F, 2.0F, "x.conf"));
    EXPECT_TRUE(all.calc.dist_detect_scripts.empty()) << "-d is accepted and ignored";
    EXPECT_EQ(parse({"-o", "x", "-o", ""}).out_path, "");
    EXPECT_TRUE(std::isnan(parse({"--mem-scale", "nan"}).calc.mem_scale));

    const Parsed refused = parse({"--mem-scale", "-3", "-t", "1h"});
    EXPECT_EQ(std::tuple(refused.result, refused.calc.scan_time), std::tuple(-1, 0));
    EXPECT_EQ(refused.calc.mem_scale, -3.0F) << "stored before it is checked";
    // The last check treats the scales unlike: it is reached with values set by other means.
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
