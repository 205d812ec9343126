// The report apart from the browser: thinning, tables, and what a recording comes to.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "plan/report/report_page.h"
#include "plan/report/report_server.h"
#include "plan/report/report_sources.h"
#include "plan/report/report_table.h"
#include "plan/report/usage_points.h"
#include "plan/text/printable.h"
#include "tests/plan/recordings.h"

namespace {

constexpr const char* hostile = "@\"><script>alert(1)</script>";

TEST(Thinning, KeepsEveryPeakAndTheEnds) {
    const std::int64_t passes = 2016;
    for (std::int64_t odd = 0; odd < passes; odd += 13) {
        const std::int64_t low = (odd + 1000) % passes;
        std::vector<ReportPoint> points;
        for (std::int64_t pass = 0; pass < passes; ++pass) {
            points.push_back({pass, pass == odd ? 900 : pass == low ? 1 : 100 + pass % 7});
        }
        const std::vector<ReportPoint> kept = thinned(points, 200);
        EXPECT_LE(kept.size(), 200U);
        EXPECT_GE(kept.size(), 190U);
        EXPECT_EQ(kept.front().seconds, 0);
        EXPECT_EQ(kept.back().seconds, passes - 1);
        std::map<std::int64_t, std::int64_t> at_value;
        for (std::size_t i = 0; i < kept.size(); ++i) {
            EXPECT_TRUE(i == 0 || kept[i - 1].seconds < kept[i].seconds);
            at_value[kept[i].value] = kept[i].seconds;
        }
        EXPECT_EQ(at_value.begin()->second, low);
        EXPECT_EQ(at_value.rbegin()->second, odd);
    }
    EXPECT_EQ(thinned(std::vector<ReportPoint>(200, {1, 5}), 200).size(), 200U);
}

TEST(Printable, NothingMovesTheTerminal) {
    const std::pair<std::string, const char*> rows[] = {
        {"B\xc3\xbcro \xe2\x82\xac \xf0\x9f\x92\xbe", "B\xc3\xbcro \xe2\x82\xac \xf0\x9f\x92\xbe"},
        {std::string("a\x1b[2Jb\x07\x7f\n\r\t\0", 12), "a\\x1b[2Jb\\x07\\x7f\\n\\x0d\\x09\\x00"},
        {"\xc2\x9b.\xe2\x80\xae", "\\u009b.\\u202e"},
        {"\u00ad\u2060\U000e0001\U000e007f", "\\u00ad\\u2060\\U000e0001\\U000e007f"},
        {"\xed\x9f\xbf\xee\x80\x80", "\xed\x9f\xbf\xee\x80\x80"},  // beside the halves of pairs
        {"\xff\xc0\xaf", "\\xff\\xc0\\xaf"},                       // no UTF-8, and "/" in two bytes
        {"\xed\xa0\x80\xe2\x82", "\\xed\\xa0\\x80\\xe2\\x82"},     // half a pair, half a character
        {"\xe0\x80\x9b\xf4\x90\x80\x80", "\\xe0\\x80\\x9b\\xf4\\x90\\x80\\x80"},
        {"\xf0\x8f\xbf\xbf", "\\xf0\\x8f\\xbf\\xbf"},  // three bytes written as four
    };
    for (const auto& [text, shown] : rows) {
        EXPECT_EQ(printable(text), shown);
    }
    EXPECT_EQ(harmless_lines("/\xe4\xad\n\t\x1b\x9b\u202e"), "/\xe4\xad\n\t\\x1b\\x9b\\u202e");
    EXPECT_EQ(harmless_lines("a\r\nb\r"), "a\r\nb\\x0d") << "the rows of a spreadsheet";
    EXPECT_EQ(printable_json("{\n\"\u00e4\u202e\U000e0001\x7f\"}"),
              "{\n\"\u00e4\\u202e\\udb40\\udc01\\u007f\"}");
    EXPECT_EQ(grouped(999), "999");
    EXPECT_EQ(grouped(-100000), "-100,000");
    EXPECT_EQ(size_text(-61862), "-60.4 KiB");
}

ReportServer done_server(const std::string& name) {
    ReportServer server;
    server.name = name;
    server.state = State::done;
    server.memory_limit = 3U << 30;
    server.disk = 2097152;
    server.processes = 288;
    server.descriptors = 11174;
    Coverage& coverage = server.explanation.emplace().coverage;
    coverage.grade = 5;
    coverage.taken = coverage.planned = 2016;
    coverage.longest_gap_ms = 301999;
    return server;
}

ReportFleet sample_fleet() {
    ReportFleet fleet;
    fleet.servers = {done_server("w\u00e4b1"), done_server("=cmd|' /C calc'!A0"),
                     failed_server(hostile, "-no, \"really\"\x1b")};
    fleet.servers[0].warnings = {"+watch longer", "two"};
    fleet.servers[0].host = "web7;\x1b";
    fleet.servers[1].host = fleet.servers[1].name;
    fleet.servers[2].warnings = {"three"};
    return fleet;
}

TEST(Tables, ForASpreadsheet) {
    const std::string csv = csv_table(sample_fleet());
    const std::size_t heading = csv.find("\r\n");
    EXPECT_EQ(std::count(csv.begin(), csv.begin() + static_cast<long>(heading), ','), 13);
    EXPECT_EQ(csv.substr(heading + 2),
              "w\u00e4b1,done,,3221225472,2097152,288,11174,complete,2016,2016,301,2,"
              "\"'+watch longer; two\",\"web7;\\x1b\"\r\n"
              "'=cmd|' /C calc'!A0,done,,3221225472,2097152,288,11174,complete,2016,2016,301,0,,"
              "'=cmd|' /C calc'!A0\r\n"
              R"("'@""><script>alert(1)</script>",failed,"'-no, ""really""\x1b",,,,,,,,,1,three,)"
              "\r\n");
}

TEST(Tables, ForATerminal) {
    EXPECT_EQ("\n" + text_table(sample_fleet()), R"(
SERVER      STATE    MEMORY     DISK  PROCS  FILES  COVERAGE  WARN
wäb1        done    3.0 GiB  2.0 GiB    288  11174  complete     2
    it calls itself web7;\x1b
    +watch longer
    two
=cmd|' /C calc'!A0
            done    3.0 GiB  2.0 GiB    288  11174  complete     0
@"><script>alert(1)</script>
            failed        -        -      -      -  -            1
    -no, "really"\x1b
    three
total of 3  2 done  6.0 GiB  4.0 GiB    576  22348               3
)");
}

TEST(Page, WhatAHostSaysCannotLeaveTheData) {
    if (!has_page()) {
        GTEST_SKIP() << "built without the page";
    }
    ReportFleet fleet = sample_fleet();
    fleet.title = "</script><!--\xe2\x80\xa8\xff";
    fleet.servers[0].notes = {hostile};
    const std::string empty_page = report_page({});
    const std::string page = report_page(fleet);
    const auto tags = [](const std::string& text) {
        return std::count(text.begin(), text.end(), '<');
    };
    EXPECT_EQ(tags(page), tags(empty_page) + 2 * 3) << "a pair for each server's data, no more";
    EXPECT_EQ(page.find('\xff'), std::string::npos);
    EXPECT_NE(page.find("\\u003c/script>\\u003c!--\\u2028\\ufffd"), std::string::npos);
}

TEST(Server, IsDoneOnlyAtThePlannedEnd) {
    NamedRecording named = recording_of({300, 1000, 300}, {600, 300});
    EXPECT_EQ(report_server("db1", named, {}).state, State::partly);

    named.recording.summary = summary_of(600);
    named.recording.summary_is_last = true;
    ReportServer server = report_server("db1", named, {});
    EXPECT_EQ(server.state, State::done);
    EXPECT_EQ(server.reason, "");
    EXPECT_EQ(server.name, "db1");
    EXPECT_EQ(server.host, "box");
    EXPECT_EQ(server.processes, 1200U);
    EXPECT_EQ(server.points[0][1].value, 1000);
    named.recording.summary->findings.distribution = "a$b";
    EXPECT_EQ(report_server("db1", named, {}).warnings,
              Remarks{"DISTRIBUTION has what a shell acts on: a$b"});
    add_reason(server, "cannot be reached");
    EXPECT_EQ(server.state, State::partly);
    EXPECT_EQ(server.reason, "cannot be reached");

    named.recording.summary_is_last = false;
    EXPECT_EQ(report_server("db1", named, {}).state, State::partly) << "continued since";
    EXPECT_EQ(report_server("db1", recording_of({}), {}).state, State::failed);
}

TEST(Server, AFolderGivesOneForEveryName) {
    const MadeUpHost files;
    for (const char* name : {"b.jsonl", "a.failed", "b.failed", "c.conf"}) {
        files.put(name, "x");
    }
    const auto found = find_report_sources({files.root, "/nowhere/d.x.jsonl", "e.example.org"});
    ASSERT_TRUE(found);
    const std::vector<ReportSource>& sources = *found;
    ASSERT_EQ(sources.size(), 4U);
    EXPECT_EQ(sources[0].server + sources[0].recording, "a");
    EXPECT_EQ(sources[0].reason, files.path("a.failed"));
    EXPECT_EQ(sources[1].recording, files.path("b.jsonl"));
    EXPECT_EQ(sources[1].reason, files.path("b.failed"));
    EXPECT_EQ(sources[2].recording, "/nowhere/d.x.jsonl");
    EXPECT_EQ(sources[2].server, "d.x");
    EXPECT_EQ(sources[3].server, "e.example.org");
}

TEST(Server, OnesThatCallThemselvesTheSameAreTold) {
    std::vector<ReportServer> servers = {done_server("a"), done_server("b"), done_server("c"),
                                         failed_server("a", "x"), failed_server("b", "x")};
    servers[0].host = servers[2].host = "web7";
    servers[1].host = "web8";
    warn_of_same_hosts(servers);
    const Remarks told = {"several servers here call themselves web7; each is counted"};
    for (std::size_t i = 0; i < servers.size(); ++i) {
        EXPECT_EQ(servers[i].warnings, i == 0 || i == 2 ? told : Remarks()) << i;
    }
}

}  // namespace
