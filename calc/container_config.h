// The computation of the container configuration: a pure function of the profile, the two scales
// and the system's page size. Its lines are values that know what they are made from; writing them
// is another step.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "calc/config_scales.h"
#include "calc/counts.h"
#include "calc/env_config.h"
#include "calc/host_profile.h"
#include "calc/one_shot_steps.h"

// The counts that a line is made from, the one that gives it its size first; none where nothing
// that was measured changes it.
class Sources {
public:
    template <class... Rows>
    static constexpr Sources of(const Rows&... rows) {
        Sources sources;
        sources.rows_ = {&rows...};
        sources.size_ = sizeof...(rows);
        return sources;
    }

    constexpr const Count* const* begin() const { return rows_.data(); }
    constexpr const Count* const* end() const { return rows_.data() + size_; }
    constexpr bool empty() const { return size_ == 0; }
    constexpr const Count& front() const { return *rows_[0]; }

private:
    std::array<const Count*, 6> rows_ = {};
    std::size_t size_ = 0;
};

// What a line is, whatever its numbers are. A row has every cell.
struct LineFacts {
    enum class Kind { pair, number, text };

    constexpr LineFacts(const char* its_name, Kind its_kind, Unit its_unit, const char* its_label,
                        Sources its_sources, double its_margin, std::optional<OneShotStep> its_step)
        : name(its_name),
          kind(its_kind),
          unit(its_unit),
          label(its_label),
          sources(its_sources),
          margin(its_margin),
          step(its_step) {}

    const char* name;
    Kind kind;
    Unit unit;
    const char* label;  // what its things are called; empty where the unit says it, or for a text
    Sources sources;
    double margin;                    // the factor that is kept in reserve, 1.0 for none
    std::optional<OneShotStep> step;  // that gives the line its text or number
};

// One line of the configuration. Numbers are sign-extended to 64 bits: a negative one is written
// with twenty digits.
struct ConfigLine : LineFacts {
    explicit ConfigLine(const LineFacts& facts) : LineFacts(facts) {}

    std::uint64_t barrier = 0;
    std::uint64_t limit = 0;  // of a number: the value
    std::string text;         // when empty, the line is left out
    bool wrapped = false;     // a product or a sum on the way to it did not fit into 32 bits
};

// What every line is, in the order of the configuration.
std::vector<LineFacts> config_line_facts();

// What the container shall have where so much was measured.
std::int32_t apply_rule(const Count& count, std::int32_t measured, ConfigScales scales);

// Every line of the configuration that can carry what `profile` holds, in the fixed order. Cannot
// fail; every float, NaN included, has a defined result. `page_size` is in bytes.
std::vector<ConfigLine> compute_config(const PhysParams& profile, ConfigScales scales,
                                       std::int32_t page_size);

// Appends the lines.
void write_config(const std::vector<ConfigLine>& lines, EnvConfig& config);
