// What a container of today needs, and how each engine is told.
#include "plan/limits/limits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <tuple>

#include "plan/limits/decimal.h"
#include "plan/limits/engines.h"
#include "plan/limits/host_text.h"
#include "tests/plan/recordings.h"

namespace {

// Five passes of a small server, 2026-03-12 from 14:05 on; what each engine's text of it is,
// golden_test shows.
NamedRecording small_server() {
    std::ifstream file(TARN_GOLDEN_LIMITS "/db1.jsonl");
    return {"db1.jsonl", parsed({std::istreambuf_iterator<char>(file), {}})};
}

LimitSheet sheet_of(const NamedRecording& named, LimitOptions options = {}) {
    return work_out_limits({named}, combined({named}), options);
}

LimitsText text_of(Engine engine, const NamedRecording& named) {
    LimitOptions options;
    options.cpu_limit = true;
    return limits_text(engine, sheet_of(named, options));
}

bool says(Engine engine, const NamedRecording& named, const std::string& text) {
    return text_of(engine, named).text.find(text) != std::string::npos;
}

TEST(Limits, FactorsAreThoseThatAreWritten) {
    const std::tuple<std::int64_t, double, std::int64_t, std::int64_t> cases[] = {
        {10, static_cast<double>(1.2F), 1, 12},
        {11, 1.2, 1, 14},  // 13.2
        {INT64_MAX, 1.2, 1, INT64_MAX},
        {INT64_MAX, 0.999999, 100000, 92233628134828},  // 92,233,628,134,827.39
        {999999, 123.456, 1, 123455877},                // 123,455,876.544
    };
    for (const auto& [value, factor, unit, expected] : cases) {
        EXPECT_EQ(scaled_up(value, decimal_of(factor), unit, INT64_MAX), expected) << value;
    }
    EXPECT_EQ(decimal_of(static_cast<double>(1.2F)).text(), "1.2");
    EXPECT_EQ(decimal_of(123.4567).text(), "123.457");
}

TEST(Limits, FloorsAndTheMostThatThereCanBe) {
    // In the order of LimitKind, without the processors.
    const std::pair<std::int64_t, std::vector<std::int64_t>> cases[] = {
        {0, {64, 0, 512, 1024, 8, 64}},
        {100000, {118, 118, 120000, 120000, 118, 98}},  // 120,000 KiB are 117.2 MiB
        {std::int64_t{1} << 60,
         {8796093022207, 8796093022207, 4194304, 1073741816, 8796093022207, 8796093022207}},
    };
    for (const auto& [number, expected] : cases) {
        NamedRecording named = recording_of({1});
        Usage& usage = named.recording.passes[0].usage.emplace();
        usage.memory_kib = usage.swap_kib = usage.tasks = usage.shm_kib = number;
        usage.descriptors = usage.locked_kib = ProcessFigure{number, ""};
        std::vector<std::int64_t> limits;
        for (const std::optional<Limit>& limit : sheet_of(named).limits) {
            if (limit) {
                limits.push_back(limit->value);
            }
        }
        EXPECT_EQ(limits, expected) << number;
    }
}

TEST(Limits, SharesOfTheProcessors) {
    const std::tuple<std::int64_t, const char*, const char*, const char*, const char*> cases[] = {
        {0, "CPUQuota=10%\n", "CPUWeight=1\n", "shares=11\n", "\"10m\""},
        {10001, "CPUQuota=130%\n", "CPUWeight=121\n", "shares=1240\n", "\"1300m\""},
        {9000000, "CPUQuota=108000%\n", "Weight=10000\n", "shares=262144\n", "\"1080000m\""},
    };
    for (const auto& [cpu_ms, quota, weight, podman, kubernetes] : cases) {
        NamedRecording named = recording_of({1, 1});
        for (const std::int64_t i : {0, 1}) {  // ten seconds apart
            Usage& usage = named.recording.passes[static_cast<std::size_t>(i)].usage.emplace();
            usage.uptime_ms = i * 10000;
            usage.cpu_ms = i * cpu_ms;
        }
        EXPECT_TRUE(says(Engine::systemd, named, quota)) << quota;
        EXPECT_TRUE(says(Engine::systemd, named, weight)) << quota;
        EXPECT_TRUE(says(Engine::podman, named, podman)) << podman;
        EXPECT_TRUE(says(Engine::kubernetes, named, kubernetes)) << kubernetes;
    }
    LimitOptions options;
    options.cpu_percentile = 50;
    options.cpu_scale = 2;
    const LimitSheet sheet = sheet_of(small_server(), options);
    EXPECT_FALSE(sheet[LimitKind::cpu]) << "only where it is asked for";
    EXPECT_EQ(sheet[LimitKind::cpu_share]->value, 200);
    EXPECT_EQ(sheet[LimitKind::cpu_share]->source,
              "50th percentile of 4 values: 1.00 cores, times 2");
}

TEST(Limits, SwapThatWasUsed) {
    NamedRecording named = small_server();
    named.recording.passes[4].usage->swap_kib = 100 * 1024;
    EXPECT_TRUE(says(Engine::systemd, named, "\nMemorySwapMax=120M\n"));
    EXPECT_TRUE(says(Engine::lxc, named, "memory.swap.max = 125829120\n"));
    EXPECT_TRUE(says(Engine::podman, named, " --memory-swap=1567m\n")) << "together with memory";
}

TEST(Limits, MoreDescriptorsThanAHardLimitOrAKernelAllows) {
    NamedRecording named = recording_of({1});
    named.recording.passes[0].usage.emplace().descriptors = ProcessFigure{873814, "many"};
    EXPECT_TRUE(says(Engine::lxc, named, "lxc.prlimit.nofile = 1048577:1048577\n"));
    EXPECT_EQ(sheet_of(named)[LimitKind::descriptors]->source,
              "peak of 873,814 descriptors of one process (many), 2026-03-12 14:05 UTC, pass 1, "
              "times 1.2; raise fs.nr_open on the new host to as many first");
}

TEST(Limits, OfSeveralRecordings) {
    NamedRecording second = recording_of({1});
    second.recording.header.start += 86400;
    second.recording.passes[0].usage.emplace().tasks = 7000;
    const std::vector<NamedRecording> recordings = {recording_of({1}), second};
    const LimitSheet sheet = work_out_limits(recordings, combined(recordings), {});
    EXPECT_EQ(sheet[LimitKind::tasks]->source,
              "peak of 7,000 tasks, 2026-03-13 14:05 UTC, pass 1 of recording 2, times 1.2");
    EXPECT_EQ(sheet.notes.at(0), "usage: in 1 of 2 passes");
}

TEST(Limits, WhatIsNotKnownIsSaid) {
    NamedRecording named = small_server();
    for (RecordedPass& pass : named.recording.passes) {
        pass.usage.reset();
    }
    const LimitsText none = text_of(Engine::systemd, named);
    ASSERT_EQ(none.complaints.size(), 1U);
    EXPECT_EQ(none.complaints[0].rfind("no pass has usage: ", 0), 0U);
    EXPECT_TRUE(says(Engine::systemd, named, "# ! no pass has usage: "));
    EXPECT_TRUE(says(Engine::systemd, named, "# disk: 7,500,000 KiB")) << "what can be given";
    EXPECT_FALSE(says(Engine::systemd, named, "Max="));

    named = small_server();
    for (RecordedPass& pass : named.recording.passes) {
        pass.usage->swap_kib = pass.usage->cpu_ms = std::nullopt;
        pass.taken.reset(place_of(&PhysParams::diskspace));
        pass.taken.reset(place_of(&PhysParams::diskinodes));
    }
    named.recording.summary.reset();
    EXPECT_EQ(text_of(Engine::podman, named).complaints,
              (Remarks{"left out: the limit from swap in use (no pass has it)",
                       "left out: the limit from cores in use (it takes two passes of one boot "
                       "that have it)",
                       "left out: DISKSPACE (no pass counted diskspace)",
                       "left out: DISKINODES (no pass counted diskinodes)",
                       "left out: #IP_ADDRESS (there is no recording with its last line)",
                       "left out: SEARCHDOMAIN (there is no recording with its last line)",
                       "left out: NAMESERVER (there is no recording with its last line)",
                       "left out: FEATURES (there is no recording with its last line)"}));
    const Remarks no_paths = {"the paths to leave out are not known: do not copy with this file"};
    EXPECT_EQ(text_of(Engine::rsync, named).complaints, no_paths);
    named.recording.summary = summary_of(1200);
    EXPECT_EQ(text_of(Engine::rsync, named).complaints, Remarks{});
    named.recording.summary->findings.failures = {{OneShotStep::mounts, "late"}};
    EXPECT_EQ(text_of(Engine::rsync, named).complaints, no_paths);

    named = small_server();
    named.recording.passes[0].counts[&PhysParams::diskspace] = 2000000000;
    const Remarks large = sheet_of(named).complaints;
    EXPECT_EQ(std::count(large.begin(), large.end(),
                         "left out: DISKSPACE (it did not fit into 32 bits: set it by hand)"),
              1);
}

TEST(Limits, ATextThatAFormatCannotCarryIsRefused) {
    NamedRecording odd = small_server();
    Findings& odd_findings = odd.recording.summary->findings;
    odd_findings.hostname = "a\nMemoryMax=1";
    odd_findings.ns_attrs = {{"192.0.2.53 x", "fe80::1%eth0"}, {"a;b", "`x`"}};
    odd_findings.notes.excludes = {{true, "/mnt/a\nb/*"}};
    const std::pair<Engine, std::size_t> complaints[] = {
        {Engine::systemd, 2}, {Engine::nspawn, 3},     {Engine::lxc, 3},
        {Engine::podman, 7},  {Engine::kubernetes, 6}, {Engine::rsync, 1}};
    for (const auto& [engine, count] : complaints) {
        EXPECT_EQ(text_of(engine, odd).complaints.size(), count) << name_of(engine);
        EXPECT_FALSE(says(engine, odd, "\nMemoryMax=1\n")) << name_of(engine);
        EXPECT_FALSE(says(engine, odd, "\nb/")) << name_of(engine);
    }
    EXPECT_TRUE(says(Engine::podman, odd, "# ! HOSTNAME \"a\\nMemoryMax=1\" is left out: "));
    EXPECT_TRUE(says(Engine::kubernetes, odd, "\n    \"name\": \"server\"")) << "of the Pod";
    EXPECT_EQ(text_of(Engine::rsync, odd).complaints,
              Remarks{"the path \"/mnt/a\\nb/*\" is left out: a line cannot hold it"});
}

TEST(Limits, APodTakesLess) {
    NamedRecording named = small_server();
    Findings& findings = named.recording.summary->findings;
    findings.hostname = "DB_1";  // a host name, but none of a Pod
    findings.ns_attrs = {{"192.0.2.1", "192.0.2.2", "192.0.2.3", "192.0.2.4"}, {"Example.org"}};
    EXPECT_EQ(text_of(Engine::podman, named).complaints, Remarks{});
    EXPECT_EQ(text_of(Engine::kubernetes, named).complaints,
              (Remarks{"HOSTNAME \"DB_1\" is left out: a Pod's has up to 63 small letters, digits "
                       "and hyphens",
                       "NAMESERVER \"192.0.2.4\" is left out: a Pod takes 3",
                       "SEARCHDOMAIN \"Example.org\" is left out: it is no domain of small "
                       "letters"}));
}

TEST(Limits, QuotedAsEachFormatWantsIt) {
    const std::string odd = "/a b'\"\\:%$`*?[x]";
    EXPECT_EQ(shell_quoted(odd), R"('/a b'\''"\:%$`*?[x]')");
    EXPECT_EQ(shell_quoted("~"), "'~'");
    EXPECT_EQ(unit_quoted(odd), R"("/a b'\"\\:%%$`*?[x]")");
    EXPECT_EQ(nspawn_escaped(odd), R"(/a b'"\\\:%$`*?[x])");
    EXPECT_EQ(fstab_escaped(odd), R"(/a\040b'"\134:%$`*?[x])");
    EXPECT_EQ(rsync_pattern(odd, ""), R"(/a b'"\\:%$`\*\?\[x])");
    EXPECT_EQ(rsync_pattern("/a\\b", ""), R"(/a\b)") << "no wildcard, no escapes";
    EXPECT_EQ(rsync_pattern("/a\\b", "/*"), R"(/a\\b/*)");
    for (const char* path : {"", "a", "/a ", "/a\tb", "/a\xFF", "/\xE2\x80\xAE"}) {
        EXPECT_FALSE(is_plain_path(path)) << path;
    }
    EXPECT_TRUE(is_plain_path("/caf\xC3\xA9"));
    EXPECT_TRUE(is_host_name("DB_1.x"));
    for (const char* name : {"$(reboot)", "a b", "-h", "a..b", "db\xC3\xA9", "a\nb"}) {
        EXPECT_FALSE(is_host_name(name)) << name;
    }
    EXPECT_FALSE(is_host_name(std::string(62, 'a') + ".bc")) << "65 characters";
    EXPECT_FALSE(is_ip_address(std::string("192.0.2.1\0x", 11)));
}

// What the text for rsync has: all of them, and in their order.
TEST(Limits, EveryLineOfTheConfigurationIsAccountedFor) {
    std::vector<std::string> lines;
    for (const ConfigLine& line : compute_config(PhysParams(), ConfigScales(), 4096)) {
        lines.push_back(line.name);
    }
    EXPECT_EQ(lacking_lines(Engine::rsync).at(0).lines, lines);
}

}  // namespace
