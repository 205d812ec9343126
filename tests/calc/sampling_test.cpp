// The parsers of the counting commands' output, and what a scan leaves behind.
#include <gtest/gtest.h>

#include <cstdlib>

#include "calc/sample_parsers.h"
#include "calc/tarn_hwcalc.h"

namespace {

TEST(SampleParsers, Counts) {
    const std::pair<std::string, int> cases[] = {{"143\n", 143},    {"  12 345\r\n", 12345},
                                                 {"", 0},           {"wc: no\n", 0},
                                                 {"-3\n", -3},      {"7x9", 7},
                                                 {"4294967297", 1}, {std::string("1\0002", 3), 1}};
    for (const auto& [text, count] : cases) {
        EXPECT_EQ(parse_count(text), count) << text;
    }
}

TEST(SampleParsers, SharedMemoryPages) {
    EXPECT_EQ(parse_shm_pages("\n------ Shared Memory Status --------\nsegments allocated 7\n"
                              "pages allocated 1043\npages resident  55\n"),
              1043);
    EXPECT_EQ(parse_shm_pages("pages allocated\n\n x12\n"), 12);
    EXPECT_EQ(parse_shm_pages("pages allocated none\n"), 0);
    EXPECT_EQ(parse_shm_pages("pages resident  55\n"), 0);
    EXPECT_EQ(parse_shm_pages(""), 0);
}

TEST(SampleParsers, UsedColumn) {
    const std::string header = "Filesystem 1K-blocks 9 Available Use% Mounted on\n";
    const std::pair<std::string, int> cases[] = {
        {"", 0},
        {"/dev/a 1 2 3 4% /\n", 2},  // the header goes by place, not by text
        {"/dev/a 100 20 80 20% /\n/dev/b\t50\t7\t43 14% /b", 27},
        {"/dev/mapper/a-very-long-name\n      100 20 80 20% /\n/dev/b 50 7 43 14% /b\n", 27},
        {"/dev/a 100\n/dev/b 50 \n\n/dev/c\n", 0},  // lines that lack the column
        {"/dev/a 0 - - 30% /\n", 30},               // the next digits, wherever they stand
        {"/dev/a 9 2147483647 1\n/dev/b 9 1 1\n", -2147483647 - 1},
    };
    for (const auto& [lines, sum] : cases) {
        EXPECT_EQ(sum_used_column(header + lines), sum) << lines;
    }
}

// What a failing command leaves behind; the scenarios show the loop at work.
TEST(SamplingLoop, AFailingCommandIsNamedWithWhatItSaid) {
    const std::string path = getenv("PATH");
    setenv("PATH", "/nonexistent", 1);
    TarnHWCalc calc;
    PhysParams p;
    EXPECT_EQ(calc.calcProcParams(&p), TarnHWCalc::ERR_EXEC);
    setenv("PATH", path.c_str(), 1);
    const std::string text = calc.error_text;
    EXPECT_EQ(text.rfind("Error running 'ps ax | wc -l':\n", 0), 0U) << text;
    EXPECT_NE(text.find("Can't execute sh: No such file or directory\n"), std::string::npos);
    EXPECT_EQ(p.numpty, 255) << "set before the first pass";
    EXPECT_EQ(p.numproc, 0);
}

TEST(MemoryScan, OnlyEverRaises) {
    TarnHWCalc calc;
    PhysParams p;
    p.privvmpages = 2147483647;
    EXPECT_EQ(calc.calcMemInfoByVmSize(&p), 0);
    EXPECT_EQ(p.privvmpages, 2147483647);
    p.privvmpages = 0;
    EXPECT_EQ(calc.calcMemInfoByVmSize(&p), 0);
    EXPECT_GT(p.privvmpages, 0);
}

}  // namespace
