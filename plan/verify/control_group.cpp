#include "plan/verify/control_group.h"

#include <dirent.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "kiln/plain_file.h"
#include "kiln/strings.h"

namespace {

namespace fs = std::filesystem;
using Amount = GroupValues::Amount;

// Every group has it, the root as well; none of version 1 does.
constexpr const char* of_version_2 = "cgroup.controllers";
// Every group of version 1 has it, and none of version 2.
constexpr const char* of_version_1 = "tasks";

constexpr const char* file_names[] = {
    "memory.max",         "memory.high",     "memory.current",   "memory.peak",
    "memory.events",      "memory.swap.max", "memory.swap.peak", "memory.swap.current",
    "memory.swap.events", "memory.pressure", "pids.max",         "pids.current",
    "pids.peak",          "pids.events",     "cpu.max",          "cpu.weight",
    "cpu.stat",           "cpu.pressure",    "io.pressure",
};

bool exists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

// The folder that is meant.
std::string folder_of(const std::string& group, const std::string& root) {
    // "machine.slice/x" and "/machine.slice/x" are below the root, as a process's own file shows
    // its group; only what is not there may be a folder elsewhere.
    const bool below_root = group == root || group.compare(0, root.size() + 1, root + "/") == 0;
    const std::string inside = root + (group.rfind('/', 0) == 0 ? "" : "/") + group;
    if (below_root || (group.rfind('/', 0) == 0 && !exists(inside) && exists(group))) {
        return group;
    }
    return inside;
}

// Whether the folder is a group of version 2.
Kiln::Done check_group(const std::string& folder, const std::string& root) {
    if (exists(folder + "/" + of_version_2)) {
        return {};
    }
    if (exists(folder + "/" + of_version_1)) {
        return Kiln::Reason{folder + " is a control group of version 1; only version 2 is read"};
    }
    if (!exists(root + "/" + of_version_2) && exists(root + "/memory/" + of_version_1)) {
        return Kiln::Reason{
            folder + " is no control group of version 2; this host has version 1 at " + root};
    }
    if (!exists(folder)) {
        return Kiln::Reason{folder + ": " + std::strerror(ENOENT)};
    }
    return Kiln::Reason{folder + " is no control group: it has no " + of_version_2};
}

// More than any file of a group has. The path is somebody's word: it may lead to what is no group.
Kiln::Result<Kiln::PlainText> read_some_of(const std::string& path) {
    return Kiln::read_plain_file(path, 65536);
}

std::string text_of(const std::string& path) {
    const Kiln::Result<Kiln::PlainText> read = read_some_of(path);
    return read ? read->text : "";
}

void read_file(const std::string& name, GroupFiles& files) {
    const Kiln::Result<Kiln::PlainText> read = read_some_of(files.path + "/" + name);
    // Pressure that is switched off is not supported; a group that goes away has no device.
    const bool is_missing = errno == ENOENT || errno == EOPNOTSUPP || errno == ENODEV;
    if (read) {
        files.texts[name] = read->text;
    } else if (!is_missing) {
        files.unreadable.push_back(name + ": " + read.reason());
    }
}

std::optional<std::int64_t> whole_number(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 0) {
        return {};
    }
    return number;
}

// The number behind the name in lines like "oom_kill 2".
std::optional<std::int64_t> keyed(const std::string& text, const std::string& name) {
    for (const std::string& line : Kiln::split("\n", text, 0)) {
        const std::vector<std::string> words = Kiln::split(" ", line, 0);
        if (words.size() == 2 && words[0] == name) {
            return whole_number(words[1]);
        }
    }
    return {};
}

// Before Linux 6.11 a refused fork is counted in the group where it was tried, not where the limit
// stands.
std::int64_t forks_refused_below(const std::string& folder) {
    std::int64_t refused = 0;
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, fs::directory_options::none, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        if (entry->is_directory(error)) {
            const std::string events = text_of(entry->path().string() + "/pids.events");
            const std::int64_t more = keyed(events, "max").value_or(0);
            refused = more > INT64_MAX - refused ? INT64_MAX : refused + more;
        }
    }
    return refused;
}

// Some engines put a container's limits into a group inside of the one that they name. Those of the
// services of a system that runs in a container are its own affair; they are several.
std::string limited_group_below(const std::string& folder) {
    std::string below;
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        if (entry->is_directory(error)) {
            if (!below.empty()) {
                return {};
            }
            below = entry->path().string();
        }
    }
    for (const char* const limit : {"memory.max", "memory.swap.max", "pids.max", "cpu.max"}) {
        const std::string text = text_of(below + "/" + limit);
        if (!below.empty() && !text.empty() && text.rfind("max", 0) != 0) {
            return below;
        }
    }
    return {};
}

std::string text_of(const GroupFiles& files, const std::string& name) {
    const auto found = files.texts.find(name);
    return found == files.texts.end() ? std::string() : found->second;
}

std::vector<std::string> words_of(const GroupFiles& files, const std::string& name) {
    std::string line = text_of(files, name);
    Kiln::strip(line);
    return Kiln::split(" ", line, 0);
}

// "9437184" or "max"
Amount amount_of(const std::string& word) {
    if (word == "max") {
        return {true, true, 0};
    }
    const std::optional<std::int64_t> number = whole_number(word);
    return {number.has_value(), false, number.value_or(0)};
}

Amount amount(const GroupFiles& files, const std::string& name) {
    const std::vector<std::string> words = words_of(files, name);
    return words.size() == 1 ? amount_of(words[0]) : Amount();
}

// Of the files "memory.max", "memory.current", "memory.peak" and "memory.events".
GroupValues::Resource resource(const GroupFiles& files, const std::string& name,
                               const std::string& limit) {
    return {amount(files, name + "." + limit), amount(files, name + ".current"),
            amount(files, name + ".peak"), keyed(text_of(files, name + ".events"), limit)};
}

// some avg10=0.00 avg60=0.12 avg300=0.05 total=1234567
// full avg10=0.00 avg60=0.00 avg300=0.00 total=234567
std::optional<Pressure> pressure(const GroupFiles& files, const std::string& name) {
    const std::string average = "avg300=";
    const std::string total = "total=";
    for (const std::string& line : Kiln::split("\n", text_of(files, name), 0)) {
        const std::vector<std::string> fields = Kiln::split(" ", line, 0);
        if (fields.size() == 5 && fields[0] == "some" && fields[3].rfind(average, 0) == 0 &&
            fields[4].rfind(total, 0) == 0) {
            const std::optional<std::int64_t> number = whole_number(fields[4].substr(total.size()));
            const double percent = std::strtod(fields[3].c_str() + average.size(), nullptr);
            if (number && percent >= 0) {
                return Pressure{percent, *number};
            }
        }
    }
    return {};
}

}  // namespace

Kiln::Result<GroupFiles> read_control_group(const std::string& group, const std::string& root) {
    GroupFiles files;
    files.path = folder_of(group, root);
    if (const Kiln::Done good = check_group(files.path, root); !good) {
        return Kiln::Reason{good.reason()};
    }
    for (const char* const name : file_names) {
        read_file(name, files);
    }
    files.forks_refused_below = forks_refused_below(files.path);
    files.limited_below = limited_group_below(files.path);
    // Half of its files would look like a group without limits.
    if (!exists(files.path + "/" + of_version_2)) {
        return Kiln::Reason{files.path + " vanished while it was read"};
    }
    return files;
}

GroupValues parse_control_group(const GroupFiles& files) {
    GroupValues values;
    static_cast<GroupFacts&>(values) = files;
    values.memory = resource(files, "memory", "max");
    values.memory_high = resource(files, "memory", "high");
    values.swap = resource(files, "memory.swap", "max");
    values.tasks = resource(files, "pids", "max");
    // "200000 100000", the quota and its period
    const std::vector<std::string> quota = words_of(files, "cpu.max");
    values.cpu_period_us = quota.size() == 2 ? whole_number(quota[1]).value_or(0) : 0;
    values.cpu_quota_us = values.cpu_period_us > 0 ? amount_of(quota[0]) : Amount();
    if (const Amount weight = amount(files, "cpu.weight"); weight.there && !weight.unlimited) {
        values.cpu_weight = weight.value;
    }
    const std::string cpu = text_of(files, "cpu.stat");
    values.cpu_usage_us = keyed(cpu, "usage_usec");
    values.cpu_periods = keyed(cpu, "nr_periods");
    values.cpu_throttled = keyed(cpu, "nr_throttled");
    values.cpu_throttled_us = keyed(cpu, "throttled_usec");
    values.memory_oom = keyed(text_of(files, "memory.events"), "oom");
    values.memory_oom_kill = keyed(text_of(files, "memory.events"), "oom_kill");
    values.swap_failed = keyed(text_of(files, "memory.swap.events"), "fail");
    values.cpu_pressure = pressure(files, "cpu.pressure");
    values.memory_pressure = pressure(files, "memory.pressure");
    values.io_pressure = pressure(files, "io.pressure");
    return values;
}
