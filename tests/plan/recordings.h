// Recordings made by hand, for the tests of what is done with them.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "plan/combined_scan.h"
#include "plan/recording.h"

inline RecordingHeader header_of(const std::string& host, ScanSpans spans = {100, 10}) {
    RecordingHeader header;
    header.version = "1.0";
    header.host = host;
    header.machine = "x86_64";
    header.kernel = "6.1.0";
    header.page_size = 4096;
    header.start = 1773324300;  // 2026-03-12T14:05:00Z
    header.spans = spans;
    return header;
}

// A pass that counted nothing but processes, and took no time.
inline RecordedPass pass_of(std::int32_t number, std::int64_t at_seconds, std::int32_t numproc) {
    RecordedPass pass;
    pass.number = number;
    pass.at_ms = at_seconds * 1000;
    pass.counts.numproc = numproc;
    pass.taken.set();
    return pass;
}

// Passes that lie `period` apart.
inline NamedRecording recording_of(const std::vector<std::int32_t>& numprocs,
                                   ScanSpans spans = {100, 10}) {
    NamedRecording named = {"a.rec", {}};
    named.recording.header = header_of("box", spans);
    for (const std::int32_t numproc : numprocs) {
        const auto done = static_cast<std::int32_t>(named.recording.passes.size());
        named.recording.passes.push_back(
            pass_of(done + 1, std::int64_t{done} * spans.period, numproc));
    }
    return named;
}

inline Summary summary_of(std::int64_t at_seconds) {
    Summary summary;
    summary.at_ms = at_seconds * 1000;
    summary.findings.hostname = "box";
    return summary;
}

inline CombinedScan combined(const std::vector<NamedRecording>& recordings) {
    return std::get<CombinedScan>(combine(recordings));
}
