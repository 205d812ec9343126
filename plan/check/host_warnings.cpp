#include "plan/check/host_warnings.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <set>

#include "calc/counts.h"
#include "inspect/host_file.h"
#include "kiln/owners.h"
#include "kiln/strings.h"
#include "plan/check/affected_lines.h"
#include "plan/record/trusted_path.h"
#include "plan/text/printable.h"

namespace {

constexpr std::uint64_t telling_part = 10;  // less than a tenth more changes no number that counts

std::string joined(const std::vector<std::string>& words) {
    return Kiln::join(", ", words);
}

std::string number_text(std::uint64_t number) {
    return grouped(static_cast<std::int64_t>(number));
}

// What every container gets of a count that has a floor.
std::uint64_t floor_of(CountField count) {
    return static_cast<std::uint64_t>(count_of(count).floor.value);
}

// With the empty words: one at the beginning or the end is the working directory as well.
std::vector<std::string> folders_of(const std::string& path) {
    return Kiln::split(":", path, -1);
}

bool is_in(const std::vector<std::string>& folders, const std::string& program) {
    return std::any_of(folders.begin(), folders.end(), [&](const std::string& folder) {
        return access((folder + "/" + program).c_str(), X_OK) == 0;
    });
}

bool can_be_run(const std::string& program, const std::string& path) {
    return program.find('/') != std::string::npos ? access(program.c_str(), X_OK) == 0
                                                  : is_in(folders_of(path), program);
}

// By another name too: /bin is /usr/bin on many hosts.
bool is_same_folder(const std::string& one, const std::string& other) {
    struct stat first {};
    struct stat second {};
    return stat(one.c_str(), &first) == 0 && stat(other.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

// The usual folders that are there, and that no word of PATH is.
std::vector<std::string> folders_beside(const std::string& path,
                                        const std::vector<std::string>& usual_folders) {
    const std::vector<std::string> words = folders_of(path);
    std::vector<std::string> beside;
    for (const std::string& usual : usual_folders) {
        const auto is_usual = [&](const std::string& word) { return is_same_folder(usual, word); };
        if (access(usual.c_str(), F_OK) == 0 &&
            std::none_of(words.begin(), words.end(), is_usual) &&
            std::none_of(beside.begin(), beside.end(), is_usual)) {
            beside.push_back(usual);
        }
    }
    return beside;
}

CheckFinding missing_folders(const std::vector<std::string>& folders,
                             const std::vector<MissingProgram>& in_them) {
    CheckFinding finding = {"PATH lacks " + joined(folders),
                            "export PATH=\"$PATH:" + Kiln::join(":", folders) + "\""};
    std::vector<std::string> names;
    TakenCounts counts;
    for (const MissingProgram& program : in_them) {
        names.push_back(program.name);
        counts |= program.counts;
    }
    if (!names.empty()) {
        finding.lines = lines_on(counts);
        finding.text +=
            ", and with it " + joined(names) + ": " + joined(finding.lines) + " will be too low";
    }
    return finding;
}

// As Debian calls them; every other program of a pass is of coreutils.
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
    if (read_host_file(path, text) != 0) {
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
    const std::vector<std::string> lines = lines_on({tables.count});
    if (uncounted > counted / telling_part && counted + uncounted > floor) {
        findings.push_back({"nothing counts the " + number_text(uncounted) + " " + tables.kind +
                                " of IPv6; only " + number_text(counted) + " are counted",
                            "raise " + joined(lines) + " by hand, or use a larger --mem-scale",
                            lines});
    }
}

// What `ls` shows of a folder.
std::vector<std::string> names_in(const std::string& folder) {
    const Kiln::Directory directory(opendir(folder.c_str()));
    std::vector<std::string> names;
    while (const dirent* entry = directory ? readdir(directory.get()) : nullptr) {
        if (entry->d_name[0] != '.') {
            names.emplace_back(entry->d_name);
        }
    }
    return names;
}

void add_descriptors(const std::string& folder, DescriptorArguments& arguments) {
    for (const std::string& name : names_in(folder)) {
        const std::string path = folder + "/" + name;
        struct stat info {};
        ++arguments.count;
        arguments.bytes += path.size() + 1 + sizeof(char*);
        if (stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
            ++arguments.directories;
            arguments.listed_lines += 2 + names_in(path).size();  // its name, and an empty line
        }
    }
}

}  // namespace

CheckFindings user_warnings(bool is_root) {
    if (is_root) {
        return {};
    }
    std::vector<std::string> lines = lines_on({&PhysParams::numfile, &PhysParams::numiptent});
    const std::vector<std::string> quota_lines = lines_on(OneShotStep::quotas);
    lines.insert(lines.end(), quota_lines.begin(), quota_lines.end());
    return {{not_root_text, "run it as root", lines}};
}

// A step has the end of our pipe, and both ends of its command's two.
CheckFindings shortage_warnings() {
    std::array<Kiln::Descriptor, 5> needed;
    for (Kiln::Descriptor& fd : needed) {
        fd.reset(dup(STDERR_FILENO));
        if (!fd && errno != EBADF) {
            return {{std::string("too few files may be open at once to look at everything: ") +
                         std::strerror(errno),
                     "raise the limit: ulimit -n 1024"}};
        }
    }
    return {};
}

std::vector<std::string> programs_of(const std::string& command) {
    std::vector<std::string> programs;
    for (std::string part : Kiln::split("|", command, 0)) {
        Kiln::strip(part);
        programs.push_back(part.substr(0, part.find(' ')));
    }
    return programs;
}

std::vector<MissingProgram> missing_programs(const std::string& path) {
    std::vector<MissingProgram> missing;
    for (const SampleStep& step : sample_steps) {
        for (const std::string& name : programs_of(step.command == nullptr ? "" : step.command)) {
            const auto known =
                std::find_if(missing.begin(), missing.end(),
                             [&](const MissingProgram& program) { return program.name == name; });
            if (known != missing.end()) {
                known->counts |= step.counts();
            } else if (!can_be_run(name, path)) {
                missing.push_back({name, step.counts()});
            }
        }
    }
    return missing;
}

CheckFindings missing_warnings(const std::vector<MissingProgram>& missing, const std::string& path,
                               const std::vector<std::string>& usual_folders) {
    const std::vector<std::string> beside = folders_beside(path, usual_folders);
    std::vector<MissingProgram> in_them;
    CheckFindings findings;
    for (const MissingProgram& program : missing) {
        if (is_in(beside, program.name)) {
            in_them.push_back(program);
            continue;
        }
        const std::vector<std::string> lines = lines_on(program.counts);
        findings.push_back(
            {program.name + " is missing: " + joined(lines) + " will be too low",
             "install " + program.name + " (Debian: " + package_of(program.name) + ")", lines});
    }
    if (!beside.empty()) {
        findings.insert(findings.begin(), missing_folders(beside, in_them));
    }
    return findings;
}

CheckFindings search_path_warnings(const std::string& path, const HostPaths& tables) {
    CheckFindings findings;
    std::set<std::string> seen;
    for (const std::string& folder : folders_of(path)) {
        if (!seen.insert(folder).second) {
            continue;
        }
        if (folder.empty() || folder[0] != '/') {
            const std::string word = folder.empty() ? "an empty word" : folder;
            findings.push_back(
                {"PATH has " + word + ": commands may come from the working directory",
                 "have only absolute folders in PATH"});
        } else if (const auto opened = open_trusted(folder, tables); !opened) {
            findings.push_back(
                {"PATH has " + folder + ": " + opened.reason(),
                 "leave the folder out of PATH, or let nobody but root own and write it"});
        }
    }
    return findings;
}

CheckFinding script_warning(const std::string& reason) {
    return {reason + "; tarnhwcalc itself runs it, whoever put it there",
            "remove it before anybody runs tarnhwcalc; the example with-detection gives a run a "
            "script of your own"};
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
    for (const std::string& name : names_in(host.paths.proc)) {
        add_descriptors(host.paths.proc + "/" + name + "/fd", arguments);
    }
    return arguments;
}

CheckFindings descriptor_warnings(const DescriptorArguments& arguments, std::uint64_t limit_bytes) {
    CheckFindings findings;
    const std::vector<std::string> lines = lines_on({&PhysParams::numfile});
    if (arguments.bytes > limit_bytes / 4 * 3) {
        findings.push_back({"the names of " + number_text(arguments.count) +
                                " open descriptors take " + number_text(arguments.bytes) +
                                " bytes, a command gets " + number_text(limit_bytes) +
                                ": beyond that " + joined(lines) + " will be floors",
                            "raise the limit: ulimit -Hs unlimited; ulimit -Ss 24576", lines});
    }
    const std::uint64_t others = arguments.count - arguments.directories;
    const auto floor = floor_of(&PhysParams::numfile);
    if (arguments.listed_lines > others / telling_part && arguments.listed_lines + others > floor) {
        findings.push_back({number_text(arguments.directories) +
                                " descriptors are of directories: ls lists what is in them, " +
                                number_text(arguments.listed_lines) + " lines, and " +
                                joined(lines) + " will be too high",
                            "end what holds them open (ls -l /proc/*/fd), or correct by hand",
                            lines});
    }
    return findings;
}

std::vector<MountEntry> mounts_of(const Host& host) {
    for (const std::string& table : {host.paths.proc + "/self/mounts", host.paths.mtab}) {
        if (const auto mounts = read_mount_table(table)) {
            return *mounts;
        }
    }
    return {};
}

Kiln::Done check_mount(const std::string& mount_point) {
    struct statvfs info {};
    return statvfs(mount_point.c_str(), &info) == 0 ? Kiln::Done()
                                                    : Kiln::Reason{std::strerror(errno)};
}

// Its name is no part of the command: a mount point may be called anything.
CheckFinding mount_warning(const MountEntry& mount, const std::string& trouble) {
    return {"the mount at " + mount.mount_point + " (" + mount.type + ") makes df fail: " + trouble,
            "unmount it (umount -l), or bring back what it waits for",
            lines_on({&PhysParams::diskspace, &PhysParams::diskinodes})};
}
