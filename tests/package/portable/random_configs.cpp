// Prints the configurations of 10,000 random profiles, which must be the same on every machine. The
// profiles are made of integers from a fixed start, so that they are the same too.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "calc/env_config.h"
#include "calc/tarn_hwcalc.h"

namespace {

std::uint64_t random_bits() {  // xorshift
    static std::uint64_t state = 88172645463325252U;
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return state;
}

// Small numbers are as likely as large ones; some are negative.
std::int32_t random_count() {
    const std::uint64_t bits = random_bits();
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(bits) >> (bits >> 59));
}

// Mostly a sensible factor, now and then anything that a float can be.
float random_factor() {
    const auto bits = static_cast<std::uint32_t>(random_bits());
    if (bits % 16 != 0) {
        return static_cast<float>(bits % 4000) / 1000.0F;
    }
    float any = 0;
    static_assert(sizeof(any) == sizeof(bits));
    std::memcpy(&any, &bits, sizeof(any));
    return any;
}

PhysParams random_profile() {
    PhysParams profile;
    for (std::int32_t* counter :
         {&profile.numproc, &profile.numtcpsock, &profile.numothersock, &profile.numfile,
          &profile.numpty, &profile.privvmpages, &profile.lockedpages, &profile.shmpages,
          &profile.numflock, &profile.numiptent, &profile.diskspace, &profile.diskinodes,
          &profile.quotaugidlimit}) {
        *counter = random_count();
    }
    profile.avnumproc = static_cast<float>(random_count()) / 3.0F;
    return profile;
}

}  // namespace

int main() {
    for (int i = 0; i < 10000; ++i) {
        TarnHWCalc calculator;
        calculator.mem_scale = random_factor();
        calculator.disk_scale = random_factor();
        EnvConfig config;
        calculator.calcVPSConf(random_profile(), config);
        std::puts(config.text().c_str());
    }
}
