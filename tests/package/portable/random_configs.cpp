// Prints the configurations of 10,000 random profiles, which must be the same on every machine. All
// is made of integers from a fixed start, so that they are the same too.
#include <cstdint>
#include <cstdio>

#include "calc/counts.h"
#include "calc/env_config.h"
#include "calc/tarn_hwcalc.h"

namespace {

// Small numbers are as likely as large ones; some are negative.
std::int32_t random_count() {
    static std::uint64_t state = 88172645463325252U;
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(state) >> (state >> 59));
}

float random_factor() {
    return static_cast<float>(random_count()) / 1000.0F;
}

}  // namespace

int main() {
    for (int i = 0; i < 10000; ++i) {
        TarnHWCalc calculator;
        calculator.mem_scale = random_factor();
        calculator.disk_scale = random_factor();
        PhysParams profile;
        for (const Count& count : sampled_counts) {
            profile.*count.field = random_count();
        }
        profile.numpty = random_count();
        profile.quotaugidlimit = random_count();
        profile.avnumproc = random_factor() * 300.0F;
        EnvConfig config;
        calculator.calcVPSConf(profile, config);
        std::puts(config.text().c_str());
    }
}
