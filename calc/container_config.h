// The computation of the container configuration: a pure function of the profile, the two scales
// and the system's page size. Its lines are values that know what they are made from; writing them
// is another step.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "calc/env_config.h"
#include "calc/host_profile.h"

enum class Factor { none, memory, disk, two };

constexpr std::int32_t no_floor = INT32_MIN;

// How a measured count becomes what the container shall have.
struct CountRule {
    const char* count;                   // the profile's name of it
    std::int32_t PhysParams::*measured;  // null for the one that is a float, the average
    std::int32_t floor;                  // or no_floor
    bool floor_is_scaled;                // raised to the floor first, then multiplied
    Factor factor;
};

// One line of the configuration. Numbers are sign-extended to 64 bits: a negative one is written
// with twenty digits.
struct ConfigLine {
    enum class Kind { pair, number, text };

    const char* name;
    Kind kind;
    std::uint64_t barrier;
    std::uint64_t limit;  // of a number: the value
    std::string text;     // when empty, the line is left out
    // What the line is made from, the count that gives it its size first; empty where nothing that
    // was measured changes it.
    std::vector<const CountRule*> sources;
    double margin;  // the factor that is kept in reserve, 1.0 for none
    bool wrapped;   // a product or a sum on the way to it did not fit into 32 bits
};

struct ConfigScales {
    float memory = 1.2F;
    float disk = 1.5F;
};

// What the container shall have where so much was measured.
std::int32_t apply_rule(const CountRule& rule, std::int32_t measured, ConfigScales scales);

// Every line of the configuration that can carry what `profile` holds, in the fixed order. Cannot
// fail; every float, NaN included, has a defined result. `page_size` is in bytes.
std::vector<ConfigLine> compute_config(const PhysParams& profile, ConfigScales scales,
                                       std::int32_t page_size);

// Appends the lines.
void write_config(const std::vector<ConfigLine>& lines, EnvConfig& config);
