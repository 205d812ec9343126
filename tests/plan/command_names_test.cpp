// Which command a misspelt word was meant to be.
#include "plan/cli/command_names.h"

#include <gtest/gtest.h>

namespace {

TEST(CommandNames, TheNearestIsSuggested) {
    const std::vector<std::string> names = {"check", "record", "report", "limits", "help"};
    const std::pair<const char*, const char*> rows[] = {
        {"reprot", "report"},   // swapped
        {"rceorf", "record"},   // swapped, and another letter
        {"repor", "report"},    // left out
        {"recoord", "record"},  // put in
        {"chekk", "check"},     // exchanged
        {"cehkc", "check"},     // swapped twice
        {"Limits", "limits"},
        {"reort", "report"},  // nearer than record
        {"hlp", "help"},
        {"hp", ""},  // as many letters as it has
        {"h", ""},
        {"xxcheck", "check"},
        {"xxxcheck", ""},
        {"xxxck", ""},
        {"", ""},
    };
    for (const auto& [word, meant] : rows) {
        const std::string end = *meant == '\0' ? "; tarnhwplan help lists them"
                                               : "; did you mean " + std::string(meant) + "?";
        EXPECT_EQ(unknown_command(word, names), "no command is called " + std::string(word) + end);
    }
    EXPECT_EQ(unknown_command("a", {}), "no command is called a; tarnhwplan help lists them");
}

}  // namespace
