#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include "calc/tarn_hwcalc.h"
#include "tests/support/private_host.h"

namespace {

const char* const default_script = "/tmp//usr/local/share/tarnp2v/distdetect-common.sh";
const char* const not_detected = "OS distribution was not detected. It must be manually set.";

// The answer, and behind a "|" the texts of the warnings.
std::string detect(const TarnHWCalc& calc) {
    TarnHWCalc::Warnings warnings;
    std::string text = calc.getDistribution(warnings) + "|";
    for (const TarnACalculateHWNodeWarning& warning : warnings) {
        EXPECT_EQ(warning.code, 0);
        text += warning.message;
    }
    return text;
}

TEST(DistributionStep, TakesTheOutputOfAScriptThatSucceeds) {
    private_host::run([] {
        setenv("MARK", "from environment", 1);
        const std::vector<std::pair<std::string, std::string>> cases = {
            {"printf 'two words\\r\\n\\t'; echo $MARK", "twowordsfromenvironment|"},
            {"head -c 3000000 /dev/zero | tr '\\0' ' '; echo deep", "deep|"},
            {"echo noise >&2; cat; echo quiet", "quiet|"},
            {"(sleep 0.3; echo -late) & echo early", "early-late|"},
            {"exit 0", std::string("|") + not_detected},
            {"echo text; kill -9 $$", std::string("|") + not_detected},
        };
        for (const auto& [script, expected] : cases) {
            private_host::write_file(default_script, script + "\n");
            EXPECT_EQ(detect(TarnHWCalc()), expected) << script;
        }
    });
}

TEST(DistributionStep, TriesTheScriptsInOrder) {
    private_host::run([] {
        TarnHWCalc calc;
        calc.dist_detect_scripts = {"/tmp/a", "/tmp/b"};
        EXPECT_EQ(detect(calc), std::string("|OS distribution detection script (/tmp/a, /tmp/b, ") +
                                    default_script +
                                    ") was not found. The DISTRIBUTION parameter of the CT config "
                                    "must be set manually.");
        private_host::write_file(default_script, "echo default\n");
        EXPECT_EQ(detect(calc), "default|");
        private_host::write_file("/tmp/a", "echo a; exit 3\n");
        private_host::write_file("/tmp/b", "echo b\n");
        EXPECT_EQ(detect(calc), "b|");
        private_host::write_file("/tmp/b", "");
        EXPECT_EQ(detect(calc), std::string("|") + not_detected);
    });
}

}  // namespace
