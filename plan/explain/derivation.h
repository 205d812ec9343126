// How a line that is made from other lines came to its number, in words. Pure; a part of the
// explanation.
#pragma once

#include <string>
#include <vector>

#include "calc/container_config.h"
#include "plan/recording/combined_scan.h"

class Derivations {
public:
    // `lines` are those that could be computed; all must outlive this.
    Derivations(const std::vector<ConfigLine>& lines, const CombinedScan& scan, ConfigScales scales)
        : lines_(lines), scan_(scan), scales_(scales) {}

    // The term that decided and the ones that it beat; empty for a line that is made from none.
    std::string words_of(const ConfigLine& line) const;

    // The lines that it is made from directly.
    static std::vector<std::string> parts_of(const std::string& line);

private:
    std::string open_files() const;
    std::string memory_limit() const;
    std::string each_costs(std::int64_t cost, const std::string& line) const;

    std::uint64_t barrier_of(const std::string& line) const;
    std::uint64_t limit_of(const std::string& line) const;

    const std::vector<ConfigLine>& lines_;
    const CombinedScan& scan_;
    const ConfigScales scales_;
};

// "1.2", the float that is meant.
std::string factor_text(double factor);
