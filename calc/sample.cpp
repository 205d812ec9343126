#include "calc/sample.h"

#include <cfloat>

#include "calc/memory_scan.h"
#include "calc/sample_parsers.h"
#include "kiln/numbers.h"

static_assert(FLT_EVAL_METHOD == 0, "a float must be rounded to a float at every step");

const std::array<SampleField, sample_field_count> sample_fields = {{
    {"numproc", &SampleCounts::numproc, &PhysParams::numproc},
    {"numtcpsock", &SampleCounts::numtcpsock, &PhysParams::numtcpsock},
    {"numothersock", &SampleCounts::numothersock, &PhysParams::numothersock},
    {"numfile", &SampleCounts::numfile, &PhysParams::numfile},
    {"privvmpages", &SampleCounts::privvmpages, &PhysParams::privvmpages},
    {"lockedpages", &SampleCounts::lockedpages, &PhysParams::lockedpages},
    {"shmpages", &SampleCounts::shmpages, &PhysParams::shmpages},
    {"numflock", &SampleCounts::numflock, &PhysParams::numflock},
    {"numiptent", &SampleCounts::numiptent, &PhysParams::numiptent},
    {"diskspace", &SampleCounts::diskspace, &PhysParams::diskspace},
    {"diskinodes", &SampleCounts::diskinodes, &PhysParams::diskinodes},
}};

// The header lines that the sources print are counted too; that is the rule. A host without a
// packet filter or without the routing tool still gets a rule count: those two are forgiven.
const std::array<SampleStep, sample_step_count> sample_steps = {{
    {"ps ax | wc -l", parse_count, &SampleCounts::numproc, false},
    {"wc -l < /proc/net/tcp", parse_count, &SampleCounts::numtcpsock, false},
    {"cat /proc/net/unix /proc/net/udp /proc/net/raw | wc -l", parse_count,
     &SampleCounts::numothersock, false},
    {"ls /proc/*/fd/* | wc -l", parse_count, &SampleCounts::numfile, false},
    {nullptr, nullptr, nullptr, false},  // the memory scan
    {"/usr/bin/ipcs -m -u", parse_shm_pages, &SampleCounts::shmpages, false},
    {"wc -l < /proc/locks", parse_count, &SampleCounts::numflock, false},
    {"iptables -n -L -t filter | wc -l", parse_count, &SampleCounts::numiptent, true},
    {"ip route list | wc -l", parse_count, &SampleCounts::numiptent, true},
    {"df -k -l", sum_used_column, &SampleCounts::diskspace, false},
    {"df -i -l", sum_used_column, &SampleCounts::diskinodes, false},
}};

namespace {

constexpr std::size_t process_count_step = 0;

std::optional<SampleFailure> count_output(const Host& host, std::size_t step,
                                          SampleCounts& counts) {
    const SampleStep& row = sample_steps[step];
    std::string out;
    std::string err;
    if (host.run(row.command, out, err) != 0) {
        return SampleFailure{SampleFailure::Source::command,
                             "Error running '" + std::string(row.command) + "':\n" + err, step};
    }
    std::int32_t& count = counts.*row.count;
    count = Kiln::wrap_add(count, row.parse(out));
    return {};
}

std::optional<SampleFailure> count_memory(const Host& host, std::size_t step,
                                          SampleCounts& counts) {
    const Kiln::Result<MemoryPages> found = scan_memory(host);
    if (!found) {
        return SampleFailure{SampleFailure::Source::processes, found.reason(), step};
    }
    counts.privvmpages = found->privvmpages;
    counts.lockedpages = found->lockedpages;
    return {};
}

// Of the running maximum, not of the samples: the average nears the largest count from below.
void update_average(PhysParams& profile, std::int32_t pass_no) {
    const float difference = static_cast<float>(profile.numproc) - profile.avnumproc;
    profile.avnumproc = difference / static_cast<float>(pass_no) + profile.avnumproc;
}

}  // namespace

std::optional<SampleFailure> take_step(const Host& host, std::size_t step, SampleCounts& counts) {
    const bool is_command = sample_steps[step].command != nullptr;
    return is_command ? count_output(host, step, counts) : count_memory(host, step, counts);
}

Sample take_sample(const Host& host) {
    Sample sample;
    for (std::size_t step = 0; step < sample_steps.size(); ++step) {
        const std::optional<SampleFailure> failure = take_step(host, step, sample.counts);
        if (failure && !sample_steps[step].forgiven) {
            sample.failure = failure;
            break;
        }
    }
    return sample;
}

void keep_largest(PhysParams& profile, const Sample& sample, std::int32_t pass_no) {
    for (const SampleField& field : sample_fields) {
        raise_to(profile.*field.largest, sample.counts.*field.count);
    }
    if (!sample.failure || sample.failure->step > process_count_step) {
        update_average(profile, pass_no);
    }
}
