// What a container of today needs, and how each engine is told.
#include "plan/limits/limits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
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
        {-5, 1.2, 1, 0},
        {1024, 1, 1024, 1},
        {1025, 1, 1024, 2},
        {1000000, 1.1, 100000, 11},
        {100, 0.07, 1, 7},
        {100000000, 1e-300, 1, 1},
        {5, std::nan(""), 1, 1},
        {3, 1e300, 1, 3000000},
        {INT64_MAX, 1, 1, INT64_MAX},
        {INT64_MAX, 1.2, 1, INT64_MAX},
        {INT64_MAX, 0.999999, 100000, 92233628134828},  // 92,233,628,134,827.39
        {999999, 123.456, 1, 123455877},                // 123,455,876.544
    };
    for (const auto& [value, factor, unit, expected] : cases) {
        EXPECT_EQ(scaled_up(value, decimal_of(factor), unit, INT64_MAX), expected)
            << value << " * " << factor << " / " << unit;
    }
    EXPECT_EQ(scaled_up(1000, decimal_of(2), 1, 500), 500);
    const std::pair<double, const char*> texts[] = {{static_cast<double>(1.2F), "1.2"},
                                                    {2, "2"},
                                                    {1.05, "1.05"},
                                                    {123.4567, "123.457"},
                                                    {1000000, "1000000"},
                                                    {0.0000125, "0.0000125"}};
    for (const auto& [factor, text] : texts) {
        EXPECT_EQ(decimal_of(factor).text(), text);
    }
}

TEST(Limits, FloorsAndRounding) {
    const std::tuple<LimitKind, std::int64_t, std::int64_t> cases[] = {
        {LimitKind::memory, 54613, 64},  // 65,535.6 KiB
        {LimitKind::memory, 54614, 65},
        {LimitKind::memory, std::int64_t{1} << 60, (std::int64_t{1} << 43) - 1},
        {LimitKind::swap, 0, 0},
        {LimitKind::swap, 1, 1},
        {LimitKind::swap, 10 * 1024, 12},
        {LimitKind::tasks, 426, 512},
        {LimitKind::tasks, 427, 513},
        {LimitKind::tasks, 4000000, 4194304},
        {LimitKind::shm, 64 * 1024, 64},
        {LimitKind::shm, 64 * 1024 + 1, 65},
        {LimitKind::descriptors, 853, 1024},
        {LimitKind::descriptors, 854, 1025},
        {LimitKind::descriptors, 1000000000, 1073741816},
        {LimitKind::locked, 6826, 8},  // 8,191.2 KiB
        {LimitKind::locked, 6827, 9},
    };
    for (const auto& [kind, number, expected] : cases) {
        NamedRecording named = recording_of({1});
        Usage& usage = named.recording.passes[0].usage.emplace();
        usage.memory_kib = usage.swap_kib = usage.tasks = usage.shm_kib = number;
        usage.descriptors = usage.locked_kib = ProcessFigure{number, ""};
        EXPECT_EQ(sheet_of(named)[kind]->value, expected) << number;
    }
}

// Two passes, ten seconds apart, and so many milliseconds of processor time between them.
NamedRecording with_cpu_time(std::int64_t cpu_ms) {
    NamedRecording named = recording_of({1, 1});
    for (const std::size_t i : {0U, 1U}) {
        Usage& usage = named.recording.passes[i].usage.emplace();
        usage.uptime_ms = i * 10000;
        usage.cpu_ms = static_cast<std::int64_t>(i) * cpu_ms;
    }
    return named;
}

TEST(Limits, SharesOfTheProcessors) {
    const std::tuple<std::int64_t, const char*, const char*, const char*, const char*> cases[] = {
        {0, "CPUQuota=10%\n", "CPUWeight=1\n", "shares=11\n", "\"10m\""},
        {10000, "CPUQuota=120%\n", "CPUWeight=120\n", "--cpus=1.2\n", "\"1200m\""},
        {10001, "CPUQuota=130%\n", "CPUWeight=121\n", "shares=1240\n", "\"1300m\""},
        {2000000, "CPUQuota=24000%\n", "Weight=10000\n", "shares=245760\n", "\"240000m\""},
        {9000000, "CPUQuota=108000%\n", "Weight=10000\n", "shares=262144\n", "\"1080000m\""},
        {900000000000, "=10000000%\n", "Weight=10000\n", "--cpus=100000.0\n", "\"100000000m\""},
    };
    for (const auto& [cpu_ms, quota, weight, podman, kubernetes] : cases) {
        const NamedRecording named = with_cpu_time(cpu_ms);
        EXPECT_TRUE(says(Engine::systemd, named, quota)) << quota;
        EXPECT_TRUE(says(Engine::systemd, named, weight)) << quota;
        EXPECT_TRUE(says(Engine::podman, named, podman)) << podman;
        EXPECT_TRUE(says(Engine::kubernetes, named, kubernetes)) << kubernetes;
    }
    EXPECT_TRUE(says(Engine::podman, with_cpu_time(0), R"(
# at least 1 hundredth of a core; 95th percentile of 1 value: 0.00 cores, times 1.2, 1,024 for each
#   core
    --cpu-shares=11
# at least 1 tenth of a core; peak of 0.00 cores, 2026-03-12 14:05 UTC, pass 2, times 1.2
)"));
    LimitOptions options;
    options.cpu_percentile = 50;
    options.cpu_scale = 2;
    const LimitSheet sheet = sheet_of(small_server(), options);
    EXPECT_FALSE(sheet[LimitKind::cpu]) << "only where it is asked for";
    EXPECT_EQ(sheet[LimitKind::cpu_share]->value, 200);
    EXPECT_EQ(sheet[LimitKind::cpu_share]->source,
              "50th percentile of 4 values: 1.00 cores, times 2");
}

TEST(Limits, PeriodsAndPercentilesInWords) {
    const std::pair<ScanSpans, const char*> spans[] = {
        {{1000000, 1}, " 1 second,"},      {{1000000, 90}, " 90 seconds,"},
        {{1000000, 60}, " 1 minute,"},     {{1000000, 86400}, " 1 day,"},
        {{1000000, 129600}, " 36 hours,"}, {{600, 3600}, " 10 minutes,"}};
    for (const auto& [of_scan, words] : spans) {
        NamedRecording named = small_server();
        named.recording.header.spans = of_scan;
        EXPECT_NE(sheet_of(named).notes.at(2).find(words), std::string::npos) << words;
    }
    const std::pair<int, const char*> percentiles[] = {
        {1, "1st "},   {2, "2nd "},   {3, "3rd "},   {4, "4th "},    {11, "11th "},
        {12, "12th "}, {13, "13th "}, {21, "21st "}, {100, "100th "}};
    for (const auto& [percentile, words] : percentiles) {
        LimitOptions options;
        options.cpu_percentile = percentile;
        const std::string source = sheet_of(small_server(), options)[LimitKind::cpu_share]->source;
        EXPECT_EQ(source.rfind(words, 0), 0U) << words;
    }
}

TEST(Limits, SwapThatWasUsed) {
    NamedRecording named = small_server();
    std::optional<std::int64_t>& swap_kib = named.recording.passes[4].usage->swap_kib;
    swap_kib = 100 * 1024;
    EXPECT_TRUE(says(Engine::systemd, named, "\nMemorySwapMax=120M\n"));
    EXPECT_TRUE(says(Engine::lxc, named, "memory.swap.max = 125829120\n"));
    EXPECT_TRUE(says(Engine::podman, named, " --memory-swap=1567m\n")) << "together with memory";
    swap_kib = INT64_MAX;
    EXPECT_EQ(sheet_of(named)[LimitKind::swap]->source,
              "peak of 8192 EiB, 2026-03-12 14:25 UTC, pass 5, times 1.2, cut to the most that "
              "there can be");
    EXPECT_TRUE(says(Engine::podman, named, " --memory-swap=8796093022207m\n"));
}

TEST(Limits, MoreDescriptorsThanAHardLimitOrAKernelAllows) {
    NamedRecording named = recording_of({1});
    std::optional<ProcessFigure>& figure = named.recording.passes[0].usage.emplace().descriptors;
    figure = ProcessFigure{873813, "many"};
    EXPECT_TRUE(says(Engine::lxc, named, "lxc.prlimit.nofile = 1048576:1048576\n"));
    EXPECT_FALSE(says(Engine::lxc, named, "fs.nr_open"));
    figure->value = 873814;
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

    named.recording.passes[0].usage.emplace().tasks = 9;
    named.recording.summary.reset();
    const LimitsText some = text_of(Engine::podman, named);
    EXPECT_EQ(some.complaints,
              (Remarks{"left out: the limit from memory in use (no pass has it)",
                       "left out: the limit from swap in use (no pass has it)",
                       "left out: the limit from cores in use (it takes two passes of one boot "
                       "that have it)",
                       "left out: the limit from descriptors of one process (no pass has it)",
                       "left out: the limit from locked memory of one process (no pass has it)",
                       "left out: the limit from /dev/shm in use (no pass has it)",
                       "left out: #IP_ADDRESS (there is no recording with its last line)",
                       "left out: SEARCHDOMAIN (there is no recording with its last line)",
                       "left out: NAMESERVER (there is no recording with its last line)",
                       "left out: FEATURES (there is no recording with its last line)"}));
    EXPECT_FALSE(says(Engine::podman, named, "--memory"));
    const Remarks no_paths = {"the paths to leave out are not known: do not copy with this file"};
    EXPECT_EQ(text_of(Engine::rsync, named).complaints, no_paths);
    named.recording.summary = summary_of(1200);
    EXPECT_EQ(text_of(Engine::rsync, named).complaints, Remarks{});
    named.recording.summary->findings.failures = {{OneShotStep::mounts, "late"}};
    EXPECT_EQ(text_of(Engine::rsync, named).complaints, no_paths);

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
    EXPECT_TRUE(nlohmann::json::accept(text_of(Engine::kubernetes, odd).text));
    EXPECT_TRUE(says(Engine::nspawn, odd, "# File: /etc/systemd/nspawn/server."));
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
    EXPECT_TRUE(says(Engine::kubernetes, named,
                     R"("tarnhwplan/missing": "HOSTNAME \"DB_1\" is left out: a Pod's)"));
    findings.notes.excludes = {{true, "/a\rb"}, {true, "/a\nb"}, {true, "a"}, {true, ""}};
    EXPECT_EQ(text_of(Engine::rsync, named).complaints.size(), 4U);
    findings.hostname = "db";
    findings.ns_attrs = {{}, Remarks(32, "example.org")};
    EXPECT_EQ(text_of(Engine::kubernetes, named).complaints, Remarks{});
    findings.ns_attrs.search_domains.emplace_back("last.org");
    EXPECT_EQ(text_of(Engine::kubernetes, named).complaints,
              Remarks{"SEARCHDOMAIN \"last.org\" is left out: a Pod takes 32"});
    EXPECT_FALSE(says(Engine::kubernetes, named, "dnsPolicy"))
        << "none of its own without a server";
}

TEST(Limits, QuotedAsEachFormatWantsIt) {
    const std::string odd = "/a b'\"\\:%$`*?[x]";
    EXPECT_EQ(shell_quoted(odd), R"('/a b'\''"\:%$`*?[x]')");
    EXPECT_EQ(shell_quoted("/srv/a-b_c.d:e"), "/srv/a-b_c.d:e");
    EXPECT_EQ(shell_quoted(""), "''");
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
    EXPECT_TRUE(is_dns_name("a-1.b"));
    for (const char* name : {"", "-a", "a-", "a.", ".a", "a_b", "A", "a b"}) {
        EXPECT_FALSE(is_dns_name(name)) << name;
    }
    EXPECT_TRUE(is_dns_label(std::string(63, 'a')));
    EXPECT_FALSE(is_dns_label(std::string(64, 'a')));
    EXPECT_TRUE(is_host_name("DB_1.x"));
    for (const char* name : {"$(reboot)", "a b", "-h", "a..b", "db\xC3\xA9", "a\nb"}) {
        EXPECT_FALSE(is_host_name(name)) << name;
    }
    const std::string label = std::string(63, 'a') + ".";
    EXPECT_TRUE(is_host_name(std::string(62, 'a') + ".b"));
    EXPECT_TRUE(is_domain_name(label + label + label + std::string(61, 'b')));
    EXPECT_FALSE(is_host_name(std::string(62, 'a') + ".bc"));
    EXPECT_FALSE(is_domain_name(label + label + label + std::string(62, 'b')));
    EXPECT_FALSE(is_ip_address("192.0.2"));
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
