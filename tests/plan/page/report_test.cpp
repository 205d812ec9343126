// The report apart from the browser: thinning, tables, and what a recording comes to.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "plan/printable.h"
#include "plan/report_page.h"
#include "plan/report_server.h"
#include "plan/report_sources.h"
#include "plan/report_table.h"
#include "plan/thinning.h"

namespace {

constexpr const char* hostile = "\"><script>alert(1)</script>";

bool holds(const std::vector<ReportPoint>& points, std::int64_t seconds, std::int64_t value) {
    return std::any_of(points.begin(), points.end(), [=](const ReportPoint& point) {
        return point.seconds == seconds && point.value == value;
    });
}

TEST(Thinning, KeepsEveryPeakAndTheEnds) {
    const std::int64_t passes = 2016;
    for (std::int64_t odd = 0; odd < passes; odd += 13) {
        std::vector<ReportPoint> points;
        for (std::int64_t pass = 0; pass < passes; ++pass) {
            points.push_back({pass * 300, pass == odd ? 900 : 100 + pass % 7});
        }
        points[static_cast<std::size_t>((odd + 1000) % passes)].value = 1;
        const std::vector<ReportPoint> kept = thinned(points, 200);
        EXPECT_LE(kept.size(), 200U);
        EXPECT_GE(kept.size(), 190U);
        EXPECT_TRUE(holds(kept, odd * 300, 900)) << odd;
        EXPECT_TRUE(holds(kept, (odd + 1000) % passes * 300, 1)) << odd;
        EXPECT_EQ(kept.front().seconds, 0);
        EXPECT_EQ(kept.back().seconds, (passes - 1) * 300);
        for (std::size_t i = 1; i < kept.size(); ++i) {
            EXPECT_LT(kept[i - 1].seconds, kept[i].seconds);
        }
    }
    const std::vector<ReportPoint> few(200, ReportPoint{1, 5});
    EXPECT_EQ(thinned(few, 200).size(), 200U);
}

TEST(Printable, NothingMovesTheTerminal) {
    const std::pair<std::string, const char*> rows[] = {
        {"web1", "web1"},
        {"B\xc3\xbcro \xe2\x82\xac \xf0\x9f\x92\xbe", "B\xc3\xbcro \xe2\x82\xac \xf0\x9f\x92\xbe"},
        {"a\x1b[2Jb\x07\x7f", "a\\x1b[2Jb\\x07\\x7f"},
        {"df:\nno\r\t", "df:\\nno\\x0d\\x09"},
        {"\xc2\x9b"
         "1m",
         "\\u009b1m"},
        {"a\xe2\x80\xae"
         "b",
         "a\\u202eb"},
        {"\xff\xc0\xaf", "\\xff\\xc0\\xaf"},                    // no UTF-8, and "/" in two bytes
        {"\xed\xa0\x80\xe2\x82", "\\xed\\xa0\\x80\\xe2\\x82"},  // half a pair, half a character
        {"\xe0\x80\x9b\xf4\x90\x80\x80", "\\xe0\\x80\\x9b\\xf4\\x90\\x80\\x80"},
        {"\xf0\x8f\xbf\xbf", "\\xf0\\x8f\\xbf\\xbf"},  // three bytes written as four
        {std::string("\0", 1), "\\x00"},
    };
    for (const auto& [text, shown] : rows) {
        EXPECT_EQ(printable(text), shown);
    }
    EXPECT_EQ(columns_of("B\xc3\xbcro"), 4U);
}

ReportServer done_server(const char* name) {
    ReportServer server;
    server.name = name;
    server.state = ServerState::done;
    server.memory_limit = 3U << 30;
    server.disk = 2097152;
    server.processes = 288;
    server.descriptors = 11174;
    server.coverage = 5;
    server.coverage_grade = "complete";
    server.passes = server.planned_passes = 2016;
    server.longest_gap = 301;
    return server;
}

ReportFleet sample_fleet() {
    ReportFleet fleet;
    fleet.servers = {done_server("w\xc3\xa4"
                                 "b1"),
                     done_server("=cmd|' /C calc'!A0"),
                     failed_server(hostile, "no, \"really\"\x1b")};
    fleet.servers[0].warnings = {"+watch longer", "two"};
    return fleet;
}

TEST(Tables, ForASpreadsheet) {
    const std::string numbers = "3221225472,2097152,288,11174,complete,2016,2016,301,";
    const std::string csv = csv_table(sample_fleet());
    EXPECT_EQ(
        csv.substr(csv.find('\n') + 1),
        "w\xc3\xa4"
        "b1,done,," +
            numbers +
            "2,'+watch longer; two\r\n"
            "'=cmd|' /C calc'!A0,done,," +
            numbers +
            "0,\r\n"
            "\"\"\"><script>alert(1)</script>\",failed,\"no, \"\"really\"\"\\x1b\",,,,,,,,,0,\r\n");
    EXPECT_EQ(std::count(csv.begin(), csv.begin() + static_cast<long>(csv.find('\r')), ','), 12);
    for (const char* formula : {"+1", "-1", "@SUM(A1)"}) {
        EXPECT_NE(
            csv_table({"", "", "", {done_server(formula)}}).find(std::string("\n'") + formula),
            std::string::npos);
    }
}

TEST(Tables, ForATerminal) {
    EXPECT_EQ(text_table(sample_fleet()),
              "SERVER                       STATE    MEMORY     DISK  PROCESSES  DESCRIPTORS  "
              "COVERAGE  WARNINGS\n"
              "w\xc3\xa4"
              "b1                         done    3.0 GiB  2.0 GiB        288        11174  "
              "complete         2\n"
              "    +watch longer\n"
              "    two\n"
              "=cmd|' /C calc'!A0           done    3.0 GiB  2.0 GiB        288        11174  "
              "complete         0\n"
              "\"><script>alert(1)</script>  failed        -        -          -            -  -   "
              "             0\n"
              "    no, \"really\"\\x1b\n"
              "total of 3                   2 done  6.0 GiB  4.0 GiB        576        22348       "
              "            2\n");
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

NamedRecording recording_of(int passes) {
    NamedRecording named{"web1.jsonl", {}};
    named.recording.header.host = "web1";
    named.recording.header.page_size = 4096;
    named.recording.header.spans = {600, 300};
    for (int number = 1; number <= passes; ++number) {
        RecordedPass pass;
        pass.number = number;
        pass.at_ms = (number - 1) * 300000;
        pass.counts.numproc = number == 2 ? 1000 : 300;
        pass.taken.set();
        named.recording.passes.push_back(pass);
    }
    return named;
}

TEST(Server, IsDoneOnlyAtThePlannedEnd) {
    NamedRecording named = recording_of(3);
    EXPECT_EQ(report_server(named, {}).state, ServerState::partly);
    EXPECT_NE(report_server(named, {}).reason, "");

    named.recording.summary = Summary();
    named.recording.summary_is_last = true;
    ReportServer server = report_server(named, {});
    EXPECT_EQ(server.state, ServerState::done);
    EXPECT_EQ(server.reason, "");
    EXPECT_EQ(server.processes, 1200U);
    EXPECT_EQ(server.series[0].peak.value, 1000);
    EXPECT_EQ(server.series[0].peak.seconds, 300);
    EXPECT_EQ(server.series[0].peak_pass, 2);
    EXPECT_EQ(server.series[0].barrier, 1200);
    EXPECT_EQ(server.series[0].floor, 240);
    add_reason(server, "cannot be reached");
    EXPECT_EQ(server.state, ServerState::partly);
    EXPECT_EQ(server.reason, "cannot be reached");

    named.recording.summary_is_last = false;
    EXPECT_EQ(report_server(named, {}).state, ServerState::partly) << "continued since";
    named.recording.summary_is_last = true;
    named.recording.summary->interrupted = true;
    EXPECT_EQ(report_server(named, {}).state, ServerState::partly);
    EXPECT_EQ(report_server(recording_of(0), {}).state, ServerState::failed);
}

TEST(Server, AFolderGivesOneForEveryName) {
    const std::filesystem::path folder = testing::TempDir() + "report_sources";
    std::filesystem::create_directories(folder);
    for (const char* name : {"b.jsonl", "a.failed", "b.failed", "c.conf"}) {
        std::ofstream(folder / name) << "x";
    }
    std::vector<ReportSource> sources;
    EXPECT_EQ(find_report_sources({folder, "/nowhere/d.jsonl"}, sources), "");
    std::filesystem::remove_all(folder);
    ASSERT_EQ(sources.size(), 3U);
    EXPECT_EQ(sources[0].server + sources[0].recording, "a");
    EXPECT_EQ(sources[0].reason, folder / "a.failed");
    EXPECT_EQ(sources[1].recording, folder / "b.jsonl");
    EXPECT_EQ(sources[1].reason, folder / "b.failed");
    EXPECT_EQ(sources[2].recording, "/nowhere/d.jsonl");
}

}  // namespace
