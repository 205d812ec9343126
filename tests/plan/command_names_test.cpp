// Which command a misspelt word was meant to be.
#include "plan/cli/command_names.h"

#include <gtest/gtest.h>

namespace {

TEST(CommandNames, TheNearestIsSuggested) {
    const std::vector<std::string> names = {"check", "record", "report", "limits", "help"};
    const std::pair<const char*, const char*> rows[] = {
        {"reprot", "; did you mean report?"},   {"recoord", "; did you mean record?"},
        {"Limits", "; did you mean limits?"},   {"xxxcheck", "; tarnhwplan help lists them"},
        {"hp", "; tarnhwplan help lists them"},  // as many letters as it has
    };
    for (const auto& [word, end] : rows) {
        EXPECT_EQ(unknown_command(word, names), "no command is called " + std::string(word) + end);
    }
}

}  // namespace
