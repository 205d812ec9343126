#include "calc/sample.h"

#include <cfloat>

#include "calc/memory_scan.h"
#include "kiln/numbers.h"

static_assert(FLT_EVAL_METHOD == 0, "a float must be rounded to a float at every step");

namespace {

std::optional<SampleFailure> count_output(const Host& host, const SampleStep& step,
                                          SampleCounts& counts) {
    std::string out;
    std::string err;
    if (host.run(step.command, out, err) != 0) {
        return SampleFailure{SampleFailure::Source::command,
                             "Error running '" + std::string(step.command) + "':\n" + err};
    }
    std::int32_t& count = counts[step.count];
    count = Kiln::wrap_add(count, step.parse(out));
    return {};
}

std::optional<SampleFailure> count_memory(const Host& host, SampleCounts& counts,
                                          ProcessObserver* observer) {
    const Kiln::Done raised = raise_memory(host, counts[&PhysParams::privvmpages],
                                           counts[&PhysParams::lockedpages], observer);
    return raised ? std::nullopt
                  : std::optional(SampleFailure{SampleFailure::Source::processes, raised.reason()});
}

// Of the running maximum, not of the samples: the average nears the largest count from below.
void update_average(PhysParams& profile, std::int32_t pass_no) {
    const float difference = static_cast<float>(profile.numproc) - profile.avnumproc;
    profile.avnumproc = difference / static_cast<float>(pass_no) + profile.avnumproc;
}

}  // namespace

TakenCounts SampleStep::counts() const {
    TakenCounts counts;
    counts.set(place_of(count));
    if (other_count != nullptr) {
        counts.set(place_of(other_count));
    }
    return counts;
}

std::optional<SampleFailure> take_step(const Host& host, const SampleStep& step,
                                       SampleCounts& counts, ProcessObserver* observer) {
    return step.command != nullptr ? count_output(host, step, counts)
                                   : count_memory(host, counts, observer);
}

Sample take_sample(const Host& host) {
    Sample sample;
    for (const SampleStep& step : sample_steps) {
        const std::optional<SampleFailure> failure = take_step(host, step, sample.counts);
        if (failure && !step.forgiven) {
            sample.failure = failure;
            break;
        }
        sample.taken |= step.counts();
    }
    return sample;
}

void keep_largest(PhysParams& profile, const Sample& sample, std::int32_t pass_no) {
    for (std::size_t place = 0; place < sampled_count_number; ++place) {
        if (sample.taken.test(place)) {
            raise_to(profile.*sampled_counts[place].field, sample.counts[place]);
        }
    }
    if (sample.taken.test(place_of(&PhysParams::numproc))) {
        update_average(profile, pass_no);
    }
}
