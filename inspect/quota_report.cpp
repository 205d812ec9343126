// The pure half of QuotaMgmt: what the quota tools print, turned into records.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "inspect/quota_mgmt.h"
#include "kiln/numbers.h"
#include "kiln/strings.h"

namespace {

constexpr std::size_t npos = std::string::npos;

struct GraceUnit {
    const char* name;
    std::uint64_t seconds;
};

// As the tools print them; a singular ("1day") is none of them. A month of thirty weeks is
// required.
constexpr GraceUnit grace_units[] = {
    {"seconds", 1},  {"minutes", 60},   {"hours", 3600},
    {"days", 86400}, {"weeks", 604800}, {"months", 18144000},
};

std::uint64_t unit_seconds(const char* name) {
    for (const GraceUnit& unit : grace_units) {
        if (std::strcmp(unit.name, name) == 0) {
            return unit.seconds;
        }
    }
    return 1;
}

// A position in a line that moves from number to number and never past the line's end; at npos it
// stays there and every number reads as 0.
class NumberCursor {
public:
    explicit NumberCursor(const std::string& line) : line_(line) {}

    bool at_end() const { return pos_ == npos; }
    char current() const { return at_end() ? '\0' : line_[pos_]; }
    std::uint64_t number() const {
        return at_end() ? 0 : static_cast<std::uint64_t>(Kiln::leading_int64(line_.c_str() + pos_));
    }

    void to_blank() { pos_ = find(" "); }
    void to_digit() { pos_ = find(Kiln::digits); }
    void to_next_number() {
        to_blank();
        to_digit();
    }
    void past_digits() { pos_ = at_end() ? npos : line_.find_first_not_of(Kiln::digits, pos_); }

    // The text from here to the next blank or the end of the line.
    std::string word() const {
        return at_end() ? std::string() : line_.substr(pos_, line_.find(' ', pos_) - pos_);
    }

private:
    std::size_t find(const char* any_of) const {
        return at_end() ? npos : line_.find_first_of(any_of, pos_);
    }

    const std::string& line_;
    std::size_t pos_ = 0;
};

// The column behind the block limits is a grace time where the soft limit is passed, and missing
// elsewhere: what follows its digits tells. Leaves the cursor at the blank behind the inodes used.
std::uint64_t read_block_grace(NumberCursor& cursor) {
    cursor.to_next_number();
    const NumberCursor field = cursor;
    cursor.past_digits();
    if (cursor.at_end() || cursor.current() == ' ') {
        return 0;
    }
    cursor.to_blank();
    cursor.to_digit();
    cursor.to_blank();
    return QuotaMgmt::grace_atoll(field.word().c_str());
}

// A line reads, without and with graces (columns: id, marks, blocks used, soft, hard, grace, inodes
// used, soft, hard, grace):
// #500      --   20480   50000   60000             12     0     0
// #501      ++   61000   50000   60000  6days     230   200   300  23:59
Quota parse_record(const std::string& line) {
    Quota quota;
    NumberCursor cursor(line);
    cursor.to_next_number();  // blocks used; the marks before it hold no digit
    cursor.to_next_number();
    quota.blocks.soft = cursor.number();
    cursor.to_next_number();
    quota.blocks.hard = cursor.number();
    quota.blocks.grace = read_block_grace(cursor);
    cursor.to_digit();
    quota.inodes.soft = cursor.number();
    cursor.to_next_number();
    quota.inodes.hard = cursor.number();
    cursor.to_next_number();
    quota.inodes.grace = QuotaMgmt::grace_atoll(cursor.word().c_str());
    return quota;
}

}  // namespace

// The reports for users and for groups follow each other, each with such a header:
// *** Report for user quotas on device /dev/sda3
// Block grace time: 7days; Inode grace time: 7days
//                         Block limits                File limits
// User            used    soft    hard  grace    used  soft  hard  grace
// ----------------------------------------------------------------------
// #0        --      20       0       0              2     0     0
// A line of another kind, such as the empty one behind the records, begins the next header.
int QuotaMgmt::limits_parse_phys(const std::string& text, Quotas* usr, Quotas* grp) {
    usr->quotas.clear();
    grp->quotas.clear();
    Quotas* target = usr;
    bool in_header = true;
    for (const std::string& line : Kiln::split("\n", text, 0)) {
        const char first = line.empty() ? '\0' : line[0];
        if (first != '#') {
            in_header = true;
        }
        if (!in_header) {
            const auto id = static_cast<std::uint32_t>(Kiln::leading_int(line.c_str() + 1));
            target->quotas[id] = parse_record(line);
            continue;
        }
        if (Kiln::contains(line, "user quotas")) {
            target = usr;
        } else if (Kiln::contains(line, "group quotas")) {
            target = grp;
        }
        if (first == '-') {
            in_header = false;
        }
    }
    return 0;
}

// Reads "6days", "23:59" (hours and minutes) or "none", which is no number and gives 0.
std::uint64_t QuotaMgmt::grace_atoll(const char* text) {
    if (text[std::strspn(text, " \t")] == '\0') {
        return 0;
    }
    char* rest = nullptr;
    const auto number = static_cast<std::uint64_t>(std::strtoll(text, &rest, 10));
    if (std::strchr(text, ':') != nullptr) {
        // There is a ":" at `rest` or behind it, so one more character can be skipped.
        const auto minutes = static_cast<std::uint64_t>(Kiln::leading_int64(rest + 1));
        return number * 3600 + minutes * 60;
    }
    return number * unit_seconds(rest);
}
