// What the tests of the companion share: recordings made by hand, and a host that answers.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "calc/sample.h"
#include "kiln/files.h"
#include "plan/explain/explanation.h"
#include "plan/recording/format.h"
#include "tests/support/made_up_host.h"

using Remarks = std::vector<std::string>;

inline RecordingHeader header_of(const std::string& host, ScanSpans spans = {100, 10}) {
    const std::int64_t start = 1773324300;  // 2026-03-12T14:05:00Z
    return {"1.0", host, "x86_64", "6.1.0", 4096, start, spans, {}, {}, {}};
}

// A pass that counted nothing but processes, and took no time.
inline RecordedPass pass_of(std::int32_t number, std::int64_t at_seconds, std::int32_t numproc) {
    RecordedPass pass;
    pass.number = number;
    pass.at_ms = at_seconds * 1000;
    pass.counts[&PhysParams::numproc] = numproc;
    pass.counts[&PhysParams::numfile] = pass.counts[&PhysParams::privvmpages] = 1;
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
    return *combine(recordings);
}

inline Recording parsed(const std::string& text) {
    const Kiln::Result<Recording> result = parse_recording(text);
    EXPECT_EQ(result.reason(), "");
    return result ? *result : Recording();
}

inline std::string text_of(const std::string& path) {
    std::string text;
    Kiln::get_file(path, text);
    return text;
}

// The text with another one in the place of `old`, which is in it.
inline std::string changed(std::string text, const std::string& old, const std::string& now) {
    return text.replace(text.find(old), old.size(), now);
}

inline const std::string df_header = "Filesystem 1K-blocks Used Available Use% Mounted on\n";

// Every command of a pass finds 7 then.
inline void let_commands_answer(MadeUpHost& made_up) {
    for (const SampleStep& step : sample_steps) {
        const std::string command = step.command == nullptr ? "" : step.command;
        const bool is_df = command.rfind("df", 0) == 0;
        const bool is_ipcs = command.find("ipcs") != std::string::npos;
        made_up.answers[command].out = is_df     ? df_header + "/dev/a 9 7 2 78% /\n"
                                       : is_ipcs ? "pages allocated 7\n"
                                                 : "7\n";
    }
    made_up.host.host_name = [] { return std::optional<std::string>("box"); };
}
