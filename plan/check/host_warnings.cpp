#include "plan/check/host_warnings.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "calc/counts.h"
#include "inspect/mount_table.h"
#include "kiln/files.h"
#include "kiln/owners.h"
#include "kiln/strings.h"
#include "plan/check/affected_lines.h"
#include "plan/record/bounded_task.h"

namespace {

constexpr std::uint64_t telling_part = 10;  // less than a tenth more changes no number that counts

std::string joined(const std::vector<std::string>& words) {
    return Kiln::join(", ", words);
}

std::vector<std::string> lines_on_count(CountField count) {
    return lines_on(TakenCounts().set(place_of(count)));
}

// What every container gets of a count that has a floor.
std::uint64_t floor_of(CountField count) {
    return static_cast<std::uint64_t>(count_of(count).floor.value);
}

bool others_may_write(const struct stat& info) {
    return (info.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

// Why the file or folder is not root's alone; empty when it is.
std::string shared_with(const struct stat& info) {
    if (info.st_uid != 0) {
        return "belongs to user " + std::to_string(info.st_uid);
    }
    return others_may_write(info) ? "may be written by others" : "";
}

void add_folder_warning(const std::string& folder, CheckFindings& findings) {
    struct stat info {};
    if (stat(folder.c_str(), &info) != 0) {
        return;  // what is not there is passed over
    }
    const std::string trouble = shared_with(info);
    if (!trouble.empty()) {
        findings.push_back(
            {"PATH has " + folder + ", which " + trouble,
             "leave it out of PATH, or: chown root " + folder + "; chmod go-w " + folder});
    }
}

// Of the script or of something above it. A link's own mode says nothing; in a sticky folder nobody
// else can put root's own entry away.
void add_script_warning(const std::string& path, struct stat info, CheckFindings& findings) {
    if (S_ISLNK(info.st_mode) || (S_ISDIR(info.st_mode) && (info.st_mode & S_ISVTX) != 0)) {
        info.st_mode &= ~static_cast<mode_t>(S_IWGRP | S_IWOTH);
    }
    const std::string trouble = shared_with(info);
    if (!trouble.empty()) {
        findings.push_back(
            {path + ", on the way to the detection script that a run executes, " + trouble,
             "chown -h root " + path + "; chmod go-w " + path});
    }
}

// With the empty words: one at the beginning or the end is the working directory as well.
std::vector<std::string> folders_of(const std::string& path) {
    return Kiln::split(":", path, -1);
}

bool can_be_run(const std::string& name, const std::string& path) {
    if (name.find('/') != std::string::npos) {
        return access(name.c_str(), X_OK) == 0;
    }
    const std::vector<std::string> folders = folders_of(path);
    return std::any_of(folders.begin(), folders.end(), [&](const std::string& folder) {
        return access((folder + "/" + name).c_str(), X_OK) == 0;
    });
}

const char* package_of(const std::string& program) {
    constexpr const char* packages[][2] = {
        {"ps", "procps"}, {"ip", "iproute2"}, {"iptables", "iptables"}, {"ipcs", "util-linux"}};
    for (const auto& row : packages) {
        const std::string name = row[0];
        if (program == name || program == "/usr/bin/" + name) {
            return row[1];
        }
    }
    return "coreutils";
}

// The lines of a table behind its heading.
std::uint64_t table_rows(const std::string& path) {
    std::string text;
    if (Kiln::get_file(path, text) != 0) {
        return 0;
    }
    const auto lines = static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n'));
    return lines > 0 ? lines - 1 : 0;
}

// Tables that a count reads, and those of the same kind that it does not.
struct SocketTables {
    CountField count;
    const char* kind;
    std::vector<const char*> counted;
    std::vector<const char*> uncounted;
};

std::uint64_t rows_of(const Host& host, const std::vector<const char*>& names) {
    std::uint64_t rows = 0;
    for (const char* name : names) {
        rows += table_rows(host.paths.proc + "/net/" + name);
    }
    return rows;
}

void add_socket_warning(const Host& host, const SocketTables& tables, CheckFindings& findings) {
    const std::uint64_t counted = rows_of(host, tables.counted);
    const std::uint64_t uncounted = rows_of(host, tables.uncounted);
    const auto floor = floor_of(tables.count);
    if (uncounted > counted / telling_part && counted + uncounted > floor) {
        findings.push_back({"nothing counts the " + std::to_string(uncounted) + " " + tables.kind +
                                " of IPv6; only " + std::to_string(counted) + " are counted",
                            "raise " + joined(lines_on_count(tables.count)) +
                                " by hand, or use a larger --mem-scale"});
    }
}

// The lines that `ls` prints for a directory: its name, what is in it, an empty line.
std::uint64_t lines_for_directory(const std::string& path) {
    const Kiln::Directory directory(opendir(path.c_str()));
    std::uint64_t lines = 2;
    while (const dirent* entry = directory ? readdir(directory.get()) : nullptr) {
        lines += entry->d_name[0] != '.' ? 1 : 0;
    }
    return lines;
}

void add_descriptors(const std::string& folder, DescriptorArguments& arguments) {
    const Kiln::Directory directory(opendir(folder.c_str()));
    while (const dirent* entry = directory ? readdir(directory.get()) : nullptr) {
        if (entry->d_name[0] == '.') {
            continue;
        }
        const std::string path = folder + "/" + entry->d_name;
        struct stat info {};
        ++arguments.count;
        arguments.bytes += path.size() + 1 + sizeof(char*);
        if (stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
            ++arguments.directories;
            arguments.listed_lines += lines_for_directory(path);
        }
    }
}

std::string ask_mount(const std::string& mount_point) {
    struct statvfs info {};
    return statvfs(mount_point.c_str(), &info) == 0 ? "" : std::strerror(errno);
}

// Why the mount does not answer; empty when it does.
std::string mount_trouble(const std::string& mount_point, int limit_seconds, int wake_fd) {
    const BoundedTask task =
        run_bounded([&] { return ask_mount(mount_point); }, limit_seconds, wake_fd);
    return task.end == BoundedTask::End::finished ? task.text
                                                  : why_not_finished(task, limit_seconds);
}

}  // namespace

CheckFindings user_warnings(bool is_root) {
    if (is_root) {
        return {};
    }
    return {
        {"you are not root: descriptors, rules and quotas of others are not seen, and their "
         "lines will be floors",
         "run it as root"}};
}

CheckFindings search_path_warnings(const std::string& path) {
    CheckFindings findings;
    for (const std::string& folder : folders_of(path)) {
        if (folder.empty() || folder[0] != '/') {
            const std::string word = folder.empty() ? "an empty word" : folder;
            findings.push_back(
                {"PATH has " + word + ": commands may come from the working directory",
                 "have only absolute folders in PATH"});
        } else {
            add_folder_warning(folder, findings);
        }
    }
    return findings;
}

CheckFindings missing_programs(const std::string& command, const std::string& path,
                               const std::vector<std::string>& lines) {
    CheckFindings findings;
    for (std::string part : Kiln::split("|", command, 0)) {
        Kiln::strip(part);
        const std::string program = part.substr(0, part.find(' '));
        if (!can_be_run(program, path)) {
            findings.push_back({program + " is missing: " + joined(lines) + " will be too low",
                                "install " + program + " (Debian: " + package_of(program) + ")"});
        }
    }
    return findings;
}

CheckFindings script_warnings(const std::string& script) {
    struct stat info {};
    if (stat(script.c_str(), &info) != 0) {
        return {};
    }
    CheckFindings findings;
    for (std::size_t end = 0; end != std::string::npos;) {
        end = script.find('/', end + 1);
        const std::string path = end == std::string::npos ? script : script.substr(0, end);
        if (path.back() == '/' || lstat(path.c_str(), &info) != 0) {
            continue;
        }
        add_script_warning(path, info, findings);
    }
    return findings;
}

CheckFindings socket_warnings(const Host& host) {
    CheckFindings findings;
    add_socket_warning(host, {&PhysParams::numtcpsock, "TCP sockets", {"tcp"}, {"tcp6"}}, findings);
    add_socket_warning(host,
                       {&PhysParams::numothersock,
                        "UDP and raw sockets",
                        {"unix", "udp", "raw"},
                        {"udp6", "raw6"}},
                       findings);
    return findings;
}

DescriptorArguments list_descriptors(const Host& host) {
    DescriptorArguments arguments;
    const Kiln::Directory proc(opendir(host.paths.proc.c_str()));
    while (const dirent* entry = proc ? readdir(proc.get()) : nullptr) {
        if (entry->d_name[0] != '.') {
            add_descriptors(host.paths.proc + "/" + entry->d_name + "/fd", arguments);
        }
    }
    return arguments;
}

CheckFindings descriptor_warnings(const DescriptorArguments& arguments, std::uint64_t limit_bytes) {
    CheckFindings findings;
    const std::string lines = joined(lines_on_count(&PhysParams::numfile));
    if (arguments.bytes > limit_bytes / 4 * 3) {
        findings.push_back({"the names of " + std::to_string(arguments.count) +
                                " open descriptors take " + std::to_string(arguments.bytes) +
                                " bytes, a command gets " + std::to_string(limit_bytes) +
                                ": beyond that " + lines + " will be floors",
                            "raise the limit: ulimit -Hs unlimited; ulimit -Ss 24576"});
    }
    const std::uint64_t others = arguments.count - arguments.directories;
    const auto floor = floor_of(&PhysParams::numfile);
    if (arguments.listed_lines > others / telling_part && arguments.listed_lines + others > floor) {
        findings.push_back({std::to_string(arguments.directories) +
                                " descriptors are of directories: ls lists what is in them, " +
                                std::to_string(arguments.listed_lines) + " lines, and " + lines +
                                " will be too high",
                            "end what holds them open (ls -l /proc/*/fd), or correct by hand"});
    }
    return findings;
}

CheckFindings mount_warnings(const Host& host, int limit_seconds, int wake_fd) {
    std::string text;
    if (Kiln::get_file(host.paths.proc + "/self/mounts", text) != 0) {
        Kiln::get_file(host.paths.mtab, text);
    }
    CheckFindings findings;
    for (const MountEntry& mount : parse_mount_table(text)) {
        const std::string trouble = mount_trouble(mount.mount_point, limit_seconds, wake_fd);
        if (!trouble.empty()) {
            findings.push_back({"the mount at " + mount.mount_point + " (" + mount.type +
                                    ") makes df fail: " + trouble,
                                "umount -l " + mount.mount_point});
        }
    }
    return findings;
}
