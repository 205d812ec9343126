#include "kiln/strings.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "kiln/search_path.h"

namespace {

using Fields = std::vector<std::string>;

TEST(Strings, StripAndCollapse) {
    const char* const cases[][3] = {
        {" \t\r\n", "", ""},
        {"12 345\n", "12 345", "12345"},
        {"\r\na b\tc", "a b\tc", "abc"},
        {"\v x\f", "\v x\f", "\vx\f"},  // other white space is text
    };
    for (const auto& [text, expected_stripped, expected_collapsed] : cases) {
        std::string stripped = text;
        std::string collapsed = text;
        Kiln::strip(stripped);
        Kiln::collapse(collapsed);
        EXPECT_EQ(stripped, expected_stripped);
        EXPECT_EQ(collapsed, expected_collapsed);
    }
}

TEST(Strings, SplitAndJoin) {
    struct Case {
        const char* delims;
        const char* text;
        int max;
        Fields fields;
    };
    const Case cases[] = {
        {",", "", 0, {}},
        {",", "", -1, {""}},
        {",", ",,a,,b,,", 0, {"", "", "a", "", "b"}},
        {",", "a,b", 1, {"a,b"}},
        {",", "a,b,", 2, {"a", "b,"}},
        {",", "a,b,", 3, {"a", "b", ""}},  // a limit keeps the trailing empty field
        // Any of the characters ends a field, the length of the set is skipped.
        {", ", "a,bc d", -1, {"a", "c", ""}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Kiln::split(c.delims, c.text, c.max), c.fields) << c.text << " max " << c.max;
    }
    const Fields fields = {"a", "", "b"};
    EXPECT_EQ(Kiln::join(", ", fields.begin(), fields.end()), "a, , b");
}

TEST(SearchPath, TakesTheFirstElementThatHoldsTheName) {
    struct Case {
        const char* name;
        std::list<std::string> env;
        const char* expected;
    };
    const Case cases[] = {
        {"passwd", {"A=b", "PATH=/none/:/etc/:/usr/bin", "PATH=/usr/bin"}, "/etc/passwd"},
        {"passwd", {"PATH=/etc//"}, "/etc//passwd"},  // only one slash is dropped
        {"self", {"PATH=/bin:/proc"}, "/proc/self"},  // any kind of file
        {"etc", {"PATH=/"}, "/etc"},
        {"no-such-file", {"PATH=/bin"}, "no-such-file"},
        {"sh", {"XPATH=/bin"}, "sh"},
        {"/bin/any", {"PATH=/bin"}, "/bin/any"},
        {"[", {"PATH=/usr/bin"}, ""},
        // An empty element is refused, but only when the search comes to it.
        {"sh", {"PATH=/bin::/none"}, "/bin/sh"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Kiln::get_full_name(c.name, c.env), c.expected) << c.name;
    }
    EXPECT_THROW(Kiln::get_full_name("no-such-file", {"PATH=/bin::/none"}), std::out_of_range);
}

}  // namespace
