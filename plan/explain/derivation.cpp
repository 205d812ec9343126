#include "plan/explain/derivation.h"

#include <algorithm>
#include <cstdio>
#include <optional>

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
const std::vector<Made>& made() {
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
    return rows;
}

std::string number_text(std::uint64_t number) {
    return grouped(static_cast<std::int64_t>(number));
}

}  // namespace

std::vector<std::string> Derivations::parts_of(const std::string& line) {
    for (const Made& row : made()) {
        if (line == row.line) {
            return row.parts;
        }
    }
    return {};
}

std::uint64_t Derivations::barrier_of(const std::string& line) const {
    const ConfigLine* found = find_line(lines_, line);
    return found == nullptr ? 0 : found->barrier;
}

std::uint64_t Derivations::limit_of(const std::string& line) const {
    const ConfigLine* found = find_line(lines_, line);
    return found == nullptr ? 0 : found->limit;
}

// What was opened itself has been beaten, or the line would not be a derived one.
std::string Derivations::open_files() const {
    const Count& count = count_of(&PhysParams::numfile);
    const std::int32_t seen = scan_.profile.numfile;
    const bool is_floor = seen < count.floor.value;
    const std::string own = (is_floor ? "the floor of " : "") +
                            grouped(is_floor ? count.floor.value : seen) + " x " +
                            factor_text(static_cast<double>(scales_.memory));
    const std::uint64_t for_sockets =
        barrier_of("NUMTCPSOCK") + barrier_of("NUMOTHERSOCK") + barrier_of("NUMPTY");
    const std::uint64_t processes = barrier_of("AVNUMPROC");
    const std::string of_sockets =
        "NUMTCPSOCK + NUMOTHERSOCK + NUMPTY = " + number_text(for_sockets);
    const std::string of_processes = factor_text(static_cast<double>(files_per_process)) +
                                     " for each of " + number_text(processes) + " processes";
    const bool sockets_decide = for_sockets == barrier_of("NUMFILE");
    return sockets_decide
               ? of_sockets + "; " + of_processes + " and " + own + " were less"
               : of_processes + " (AVNUMPROC); " + own + " and " + of_sockets + " were less";
}

std::string Derivations::each_costs(std::int64_t cost, const std::string& line) const {
    return size_text(static_cast<double>(cost)) + " for each of " + number_text(barrier_of(line)) +
           " (" + line + ")";
}

// The largest of what is added up comes first.
std::string Derivations::memory_limit() const {
    struct Term {
        std::string name;
        double bytes;
    };
    // As the sum takes them: a number that wrapped around is negative, and is doubled in 32 bits.
    const auto number = [](std::uint64_t written) { return static_cast<std::int32_t>(written); };
    const auto bytes = [&](std::uint64_t written) { return static_cast<double>(number(written)); };
    const double page = scan_.page_size;
    std::vector<Term> terms = {
        {"PRIVVMPAGES' limit", page * bytes(limit_of("PRIVVMPAGES"))},
        {"LOCKEDPAGES", page * bytes(barrier_of("LOCKEDPAGES"))},
        {"KMEMSIZE", bytes(barrier_of("KMEMSIZE"))},
        {"twice TCPRCVBUF", static_cast<double>(Kiln::wrap_mul(number(limit_of("TCPRCVBUF")), 2))},
        {"OTHERSOCKBUF", bytes(limit_of("OTHERSOCKBUF"))},
        {"DGRAMRCVBUF", bytes(limit_of("DGRAMRCVBUF"))},
    };
    std::stable_sort(terms.begin(), terms.end(),
                     [](const Term& a, const Term& b) { return a.bytes > b.bytes; });
    std::vector<std::string> texts;
    for (const Term& term : terms) {
        texts.push_back(term.name + " " + size_text(term.bytes));
    }
    return "the sum of " + Kiln::join(", ", texts) + "; times " +
           factor_text(static_cast<double>(scales_.memory));
}

std::string Derivations::words_of(const ConfigLine& line) const {
    const std::string name = line.name;
    if (name == "NUMFILE") {
        return open_files();
    }
    if (name == "SLMMEMORYLIMIT") {
        return memory_limit();
    }
    for (const Made& row : made()) {
        if (name == row.line) {
            return row.cost == 0 ? "as many as " + row.parts[0]
                                 : each_costs(row.cost, row.parts[0]) +
                                       (row.parts.size() > 1 ? ", and " + row.parts[1] : "");
        }
    }
    return {};
}

std::string factor_text(double factor) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.6g", factor);
    return text;
}
