#include "plan/explain/derivation.h"

#include <algorithm>
#include <cstdio>

#include "calc/unit_costs.h"
#include "kiln/numbers.h"
#include "kiln/strings.h"
#include "plan/text/printable.h"

namespace {

// A line that is made from others. Where it has a cost, it is that many bytes for each of the
// first; without one it is as many.
struct Made {
    const char* line;
    std::vector<std::string> parts;
    std::int64_t cost = 0;
};

// As calc/container_config.cpp computes them; a line that is missing here is made from none.
const Made* find_made(const std::string& line) {
    static const std::vector<Made> rows = {
        {"NUMFILE", {"NUMTCPSOCK", "NUMOTHERSOCK", "NUMPTY", "AVNUMPROC"}},
        {"DCACHESIZE", {"NUMFILE"}, dentry_bytes_per_file},
        {"KMEMSIZE", {"NUMPROC", "DCACHESIZE"}, kernel_bytes_per_process},
        {"TCPSNDBUF", {"NUMTCPSOCK"}, socket_buffer_bytes},
        {"TCPRCVBUF", {"NUMTCPSOCK"}, socket_buffer_bytes},
        {"OTHERSOCKBUF", {"NUMOTHERSOCK"}, socket_buffer_bytes},
        {"VMGUARPAGES", {"PRIVVMPAGES"}},
        {"OOMGUARPAGES", {"PRIVVMPAGES"}},
        {"SLMMEMORYLIMIT",
         {"KMEMSIZE", "TCPRCVBUF", "OTHERSOCKBUF", "DGRAMRCVBUF", "PRIVVMPAGES", "LOCKEDPAGES"}},
    };
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [&](const Made& candidate) { return line == candidate.line; });
    return row == rows.end() ? nullptr : &*row;
}

std::string number_text(std::uint64_t number) {
    return grouped(static_cast<std::int64_t>(number));
}

// The number of the line of that name; 0 without one.
std::uint64_t number_of(const std::vector<ConfigLine>& lines, const std::string& name,
                        std::uint64_t ConfigLine::*number) {
    const ConfigLine* found = find_line(lines, name);
    return found == nullptr ? 0 : found->*number;
}

// What was opened itself has been beaten, or the line would not be a derived one.
std::string open_files(const ConfigLine& line, const std::vector<ConfigLine>& lines,
                       std::int32_t seen, ConfigScales scales) {
    const auto barrier_of = [&](const char* name) {
        return number_of(lines, name, &ConfigLine::barrier);
    };
    const std::int32_t floor = count_of(&PhysParams::numfile).floor.value;
    const std::string own = (seen < floor ? "the floor of " : "") + grouped(std::max(seen, floor)) +
                            " x " + factor_text(static_cast<double>(scales.memory));
    const std::uint64_t for_sockets =
        barrier_of("NUMTCPSOCK") + barrier_of("NUMOTHERSOCK") + barrier_of("NUMPTY");
    const std::string of_sockets =
        "NUMTCPSOCK + NUMOTHERSOCK + NUMPTY = " + number_text(for_sockets);
    const std::string of_processes = factor_text(static_cast<double>(files_per_process)) +
                                     " for each of " + number_text(barrier_of("AVNUMPROC")) +
                                     " processes";
    return for_sockets == line.barrier
               ? of_sockets + "; " + of_processes + " and " + own + " were less"
               : of_processes + " (AVNUMPROC); " + own + " and " + of_sockets + " were less";
}

// The largest of what is added up comes first.
std::string memory_limit(const std::vector<ConfigLine>& lines, double page, ConfigScales scales) {
    struct Term {
        std::string name;
        double bytes;
    };
    // As the sum takes them: a number that wrapped around is negative, and is doubled in 32 bits.
    const auto number = [&](const char* name, std::uint64_t ConfigLine::*which) {
        return static_cast<std::int32_t>(number_of(lines, name, which));
    };
    const auto barrier = [&](const char* name) -> double {
        return number(name, &ConfigLine::barrier);
    };
    const auto limit = [&](const char* name) -> double { return number(name, &ConfigLine::limit); };
    const double twice = Kiln::wrap_mul(number("TCPRCVBUF", &ConfigLine::limit), 2);
    std::vector<Term> terms = {
        {"PRIVVMPAGES' limit", page * limit("PRIVVMPAGES")},
        {"LOCKEDPAGES", page * barrier("LOCKEDPAGES")},
        {"KMEMSIZE", barrier("KMEMSIZE")},
        {"twice TCPRCVBUF", twice},
        {"OTHERSOCKBUF", limit("OTHERSOCKBUF")},
        {"DGRAMRCVBUF", limit("DGRAMRCVBUF")},
    };
    std::stable_sort(terms.begin(), terms.end(),
                     [](const Term& a, const Term& b) { return a.bytes > b.bytes; });
    std::vector<std::string> texts;
    for (const Term& term : terms) {
        texts.push_back(term.name + " " + size_text(term.bytes));
    }
    return "the sum of " + Kiln::join(", ", texts) + "; times " +
           factor_text(static_cast<double>(scales.memory));
}

}  // namespace

std::string derivation_of(const ConfigLine& line, const std::vector<ConfigLine>& lines,
                          const CombinedScan& scan, ConfigScales scales) {
    const std::string name = line.name;
    const Made* row = find_made(name);
    if (row == nullptr) {
        return {};
    }
    if (name == "NUMFILE") {
        return open_files(line, lines, scan.profile.numfile, scales);
    }
    if (name == "SLMMEMORYLIMIT") {
        return memory_limit(lines, scan.page_size, scales);
    }
    const std::string& part = row->parts[0];
    if (row->cost == 0) {
        return "as many as " + part;
    }
    return size_text(static_cast<double>(row->cost)) + " for each of " +
           number_text(number_of(lines, part, &ConfigLine::barrier)) + " (" + part + ")" +
           (row->parts.size() > 1 ? ", and " + row->parts[1] : "");
}

std::vector<std::string> parts_of(const std::string& line) {
    const Made* row = find_made(line);
    return row == nullptr ? std::vector<std::string>() : row->parts;
}

std::string factor_text(double factor) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.6g", factor);
    return text;
}
