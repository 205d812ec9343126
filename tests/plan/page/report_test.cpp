// The report apart from the browser: thinning, tables, and what a recording comes to.
#include <gtest/gtest.h>

#include <map>

#include "plan/report/report_server.h"
#include "plan/report/report_sources.h"
#include "plan/report/report_table.h"
#include "plan/report/usage_points.h"
#include "plan/text/printable.h"
#include "tests/plan/recordings.h"

namespace {

TEST(Thinning, KeepsEveryPeakAndTheEnds) {
    const std::int64_t passes = 2016;
    for (std::int64_t odd = 0; odd < passes; odd += 13) {
        const std::int64_t low = (odd + 1000) % passes;
        std::vector<ReportPoint> points;
        for (std::int64_t pass = 0; pass < passes; ++pass) {
            points.push_back({pass, pass == odd ? 900 : pass == low ? 1 : 100 + pass % 7});
        }
        std::map<std::int64_t, std::int64_t> kept = {{-1, 0}};  // one before all
        for (const ReportPoint& point : thinned(points, 200)) {
            EXPECT_LT(kept.rbegin()->first, point.seconds) << "in their order";
            kept[point.seconds] = point.value;
        }
        EXPECT_LE(kept.size(), 201U);
        EXPECT_GE(kept.size(), 191U);
        EXPECT_EQ(kept.count(0) + kept.count(passes - 1), 2U) << "the ends";
        EXPECT_EQ(kept[low], 1);
        EXPECT_EQ(kept[odd], 900);
    }
}

TEST(Printable, NothingMovesTheTerminal) {
    const std::pair<std::string, const char*> rows[] = {
        {"B\xc3\xbcro \xe2\x82\xac \xf0\x9f\x92\xbe", "B\xc3\xbcro \xe2\x82\xac \xf0\x9f\x92\xbe"},
        {std::string("a\x1b[2Jb\x07\x7f\n\r\t\0", 12), "a\\x1b[2Jb\\x07\\x7f\\n\\x0d\\x09\\x00"},
        {"\xc2\x9b.\xe2\x80\xae", "\\u009b.\\u202e"},
        {"\u00ad\u2060\U000e0001\U000e007f", "\\u00ad\\u2060\\U000e0001\\U000e007f"},
        {"\xff\xc0\xaf\xe0\x80\xaf",
         "\\xff\\xc0\\xaf\\xe0\\x80\\xaf"},  // no UTF-8; "/" in two and three bytes
        {"\xed\xa0\x80\xe2\x82", "\\xed\\xa0\\x80\\xe2\\x82"},  // half a pair, half a character
    };
    for (const auto& [text, shown] : rows) {
        EXPECT_EQ(printable(text), shown);
    }
    EXPECT_EQ(harmless_lines("\u00e4\xe4\xad\n\t\x1b\x9b\u202e"),
              "\u00e4\xe4\xad\n\t\\x1b\\x9b\\u202e");
    EXPECT_EQ(harmless_lines("a\r\nb\r"), "a\r\nb\\x0d") << "the rows of a spreadsheet";
    EXPECT_EQ(printable_json("{\n\"\u00e4\u202e\U000e0001\x7f\"}"),
              "{\n\"\u00e4\\u202e\\udb40\\udc01\\u007f\"}");
}

// What the golden tables of a folder do not show.
ReportFleet odd_fleet() {
    ReportFleet fleet;
    fleet.servers = {failed_server("=w\u00e4b1", "-no, \"really\"\x1b"),
                     failed_server("@larger than a column", "")};
    fleet.servers[0].warnings = {"+watch longer", "two"};
    fleet.servers[1].warnings = {"three"};
    fleet.servers[0].host = "web7;\x1b";
    return fleet;
}

TEST(Tables, ForASpreadsheet) {
    const std::string csv = csv_table(odd_fleet());
    EXPECT_EQ(csv.substr(csv.find("\r\n")),
              "\r\n'=w\u00e4b1,failed,\"'-no, \"\"really\"\"\\x1b\",,,,,,,,,2,"
              "\"'+watch longer; two\",\"web7;\\x1b\"\r\n"
              "'@larger than a column,failed,,,,,,,,,,1,three,\r\n");
}

TEST(Tables, ForATerminal) {
    EXPECT_EQ("\n" + text_table(odd_fleet()), R"(
SERVER      STATE    MEMORY     DISK  PROCS  FILES  COVERAGE  WARN
=wäb1       failed        -        -      -      -  -            2
    it calls itself web7;\x1b
    -no, "really"\x1b
    +watch longer
    two
@larger than a column
            failed        -        -      -      -  -            1
    three
total of 2  0 done  0 bytes  0 bytes      0      0               3
)");
}

TEST(Server, IsWhatItsRecordingComesTo) {
    NamedRecording named = recording_of({300, 1000, 300}, {600, 300});
    named.recording.summary = summary_of(600);
    named.recording.summary_is_last = true;
    ReportServer server = report_server("db1", named, {});
    EXPECT_EQ(server.state, State::done);
    EXPECT_EQ(server.points[0][1].value, 1000);
    add_reason(server, "cannot be reached");
    EXPECT_EQ(server.state, State::partly);
    EXPECT_EQ(server.reason, "cannot be reached");
    EXPECT_EQ(report_server("db1", recording_of({}), {}).state, State::failed);
}

TEST(Server, AFolderGivesOneForEveryName) {
    const MadeUpHost files;
    for (const char* name : {"b.jsonl", "a.failed", "b.failed", "c.conf"}) {
        files.put(name, "x");
    }
    std::string found;
    const auto sources = find_report_sources({files.root, "/nowhere/d.x.jsonl", "e.example.org"});
    for (const ReportSource& source : *sources) {
        found += source.server + ": " + source.recording + " " + source.reason + "\n";
    }
    const std::string in = files.root + "/";
    EXPECT_EQ(found, "a:  " + in + "a.failed\nb: " + in + "b.jsonl " + in + "b.failed\n" +
                         "d.x: /nowhere/d.x.jsonl \ne.example.org: e.example.org \n");
}

}  // namespace
