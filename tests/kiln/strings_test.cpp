#include "kiln/strings.h"

#include <gtest/gtest.h>

#include <tuple>

#include "kiln/search_path.h"

namespace {

TEST(Strings, StripAndCollapse) {
    const std::string text = "\v\r a b\tc\n";  // other white space is text
    std::string strings[] = {" \t" + text + "\r\n", text, " \t\r\n"};
    Kiln::strip(strings[0]);
    Kiln::collapse(strings[1]);
    Kiln::strip(strings[2]);
    EXPECT_EQ(Kiln::join("|", strings, strings + 3), "\v\r a b\tc|\vabc|");
}

TEST(Strings, Split) {
    const std::tuple<const char*, const char*, int, std::vector<std::string>> cases[] = {
        {",", ",,a,,b,,", 0, {"", "", "a", "", "b"}},
        {",", "a,b,", 2, {"a", "b,"}},
        // Any of the characters ends a field, the length of the set is skipped.
        {", ", "a,bc d", -1, {"a", "c", ""}},
    };
    for (const auto& [delims, text, max, fields] : cases) {
        EXPECT_EQ(Kiln::split(delims, text, max), fields) << text << " max " << max;
    }
}

TEST(SearchPath, TakesTheFirstElementThatHoldsTheName) {
    const std::tuple<const char*, std::list<std::string>, const char*> cases[] = {
        {"passwd", {"A=b", "PATH=/none/:/etc/:/usr/bin", "PATH=/usr/bin"}, "/etc/passwd"},
        {"passwd", {"PATH=/etc//"}, "/etc//passwd"},  // only one slash is dropped
        {"self", {"PATH=/bin:/proc"}, "/proc/self"},  // any kind of file
        {"no-such-file", {"PATH=/bin"}, "no-such-file"},
        {"sh", {"XPATH=/bin"}, "sh"},
        {"/bin/any", {"PATH=/bin"}, "/bin/any"},
        {"[", {"PATH=/usr/bin"}, ""},
        // An empty element is refused, but only when the search comes to it.
        {"sh", {"PATH=/bin::/none"}, "/bin/sh"},
    };
    for (const auto& [name, env, expected] : cases) {
        EXPECT_EQ(Kiln::get_full_name(name, env), expected) << name;
    }
}

}  // namespace
