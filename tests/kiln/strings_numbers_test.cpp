#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <tuple>

#include "kiln/numbers.h"
#include "kiln/search_path.h"
#include "kiln/strings.h"

namespace {

TEST(Strings, StripCollapseAndSplit) {
    const std::string text = "\v\r a b\tc\n";  // other white space is text
    std::string strings[] = {" \t" + text + "\r\n", text, " \t\r\n"};
    Kiln::strip(strings[0]);
    Kiln::collapse(strings[1]);
    Kiln::strip(strings[2]);
    EXPECT_EQ(Kiln::join("|", strings, strings + 3), "\v\r a b\tc|\vabc|");

    using Fields = std::vector<std::string>;
    EXPECT_EQ(Kiln::split(",", ",,a,,b,,", 0), (Fields{"", "", "a", "", "b"}));
    EXPECT_EQ(Kiln::split(",", "a,b,", 2), (Fields{"a", "b,"}));
    // Any of the characters ends a field, the length of the set is skipped.
    EXPECT_EQ(Kiln::split(", ", "a,bc d", -1), (Fields{"a", "c", ""}));
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

TEST(Numbers, LeadingNumbersOfTexts) {
    errno = 0;
    EXPECT_EQ(Kiln::leading_int64(" \t\n\v\f\r+12kB"), 12);
    EXPECT_EQ(Kiln::leading_int64("9223372036854775808"), INT64_MAX);
    EXPECT_EQ(Kiln::leading_int("0x10"), 0);
    EXPECT_EQ(Kiln::leading_int("2147483648"), INT32_MIN);
    EXPECT_EQ(Kiln::leading_int("-99999999999999999999"), 0) << "the low bits of the least";
    EXPECT_EQ(errno, 0);
}

TEST(Numbers, TruncationOfFloats) {
    constexpr std::uint64_t top = std::uint64_t{1} << 63;
    // Next to 2^31 the floats are 128 apart, next to 2^63 they are 2^39 below and 2^40 above.
    const std::tuple<float, std::int32_t, std::uint64_t> cases[] = {
        {-1.99F, -1, UINT64_MAX},
        {2147483520.0F, 2147483520, 2147483520},
        {2147483648.0F, INT32_MAX, 2147483648},
        {std::nextafterf(0x1p63F, 0.0F), INT32_MAX, top - (std::uint64_t{1} << 39)},
        {std::nextafterf(0x1p63F, INFINITY), INT32_MAX, top + (std::uint64_t{1} << 40)},
        {NAN, INT32_MIN, top},
    };
    for (const auto& [value, narrow, wide] : cases) {
        EXPECT_EQ(Kiln::truncate_to_int32(value), narrow) << value;
        EXPECT_EQ(Kiln::truncate_to_uint64(value), wide) << value;
    }
}

}  // namespace
