// Makes each call that can fail do so, one at a time, through whole runs of the program. A source
// that cannot be read must look exactly like a source that is not there, and a command that cannot
// be run like one that failed: nothing may be half taken over, and nothing else may be said.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

#include "tests/fault/fault_host.h"
#include "tests/support/private_host.h"

namespace {

using Outcomes = std::set<Outcome>;

constexpr const char* call_names[] = {"none",
#define CALL_NAME(name) #name,
                                      FAULT_CALLS(CALL_NAME)
#undef CALL_NAME
};

// What the program runs, by how the commands begin.
constexpr const char* commands[] = {
    "ps ax",
    "wc -l < /proc/net/tcp",
    "cat /proc/net/unix",
    "ls /proc",
    "/usr/bin/",
    "wc -l < /proc/locks",
    "iptables",
    "ip route",
    "df -k",
    "df -i",
    "repquota",
    "VISUAL=cat EDITOR=cat edquota",
    "/tmp//usr",
};

// What it reads; each may be missing without harm.
constexpr const char* sources[] = {
    "/proc/101/status",
    "/proc/102/status",
    "/etc/tarn/tarnnet.conf",
    "/proc/net/vlan/config",
    "/proc/tarn/veth",
    "/proc/tarn/vmth",
    "/etc/sysconfig/network-scripts/ifcfg-eth0",
    "/tmp//usr/local/share/tarnp2v/distdetect-common.sh",
    "/etc/resolv.conf",
    "/proc/filesystems",
    "/etc/fstab",
    "/var/log/lastlog",
    "/tmp/disk",
};

Outcome without_line(Outcome outcome, const std::string& name) {
    const std::size_t start = outcome.out.find(name + "=");
    outcome.out.erase(start, outcome.out.find('\n', start) + 1 - start);
    return outcome;
}

Outcome with_text(Outcome outcome, const std::string& err) {
    outcome.err = err + outcome.err;
    return outcome;
}

std::string without_prefix(const std::string& text, const std::string& prefix) {
    return text.rfind(prefix, 0) == 0 ? text.substr(prefix.size()) : text;
}

// The reason that follows a failed command differs by the fault: a documented one, which may end
// with a line end of its own, becomes "...". A child that cannot be connected to its standard
// output says so on ours, which is no harm.
std::string with_reasons_cut(const std::string& text) {
    std::istringstream lines(text);
    std::string result;
    bool reason = false;
    for (std::string line; std::getline(lines, line);) {
        if (reason && (line.empty() || line.rfind("[Caller] Generic error. ", 0) == 0 ||
                       line.rfind("tarnhwcalc: Can't ", 0) == 0)) {
            line = "...";
        }
        reason = line.rfind("Error: Error running '", 0) == 0;
        if (!line.empty() && line.rfind("tarnhwcalc: Can't make dup2(", 0) != 0) {
            result += line + "\n";
        }
    }
    return result;
}

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The host, and what may come of a run on it.
class Expectations {
public:
    explicit Expectations(FaultHost& host) : host_(host), plain(run({})) {}

    Outcome run(const Fault& fault, const std::vector<std::string>& arguments = {},
                const std::vector<std::string>& environment = {}, int kept = 0) {
        Outcome outcome = host_.run(fault, arguments, environment, kept);
        outcome.err = with_reasons_cut(outcome.err);
        return outcome;
    }

    // Some one of the commands fails, or prints nothing.
    const Outcomes& failed_command() { return all_commands("SHELL_FAILS=", failed_); }
    const Outcomes& silent_command() { return all_commands("SHELL_SILENT=", silent_); }

    // The run on the host without the file; nothing but the plain run for a file that does not
    // matter.
    Outcome without(const std::string& path) {
        if (std::find(std::begin(sources), std::end(sources), path) == std::end(sources)) {
            return plain;
        }
        if (without_.count(path) == 0) {
            without_[path] = host_.run_without(path);
        }
        return without_[path];
    }

    const fault_page& page() const { return host_.page(); }

private:
    const Outcomes& all_commands(const char* variable, Outcomes& outcomes) {
        for (const char* command : commands) {
            if (outcomes.size() < std::size(commands)) {
                outcomes.insert(run({}, {}, {std::string(variable) + command}));
            }
        }
        return outcomes;
    }

    FaultHost& host_;
    Outcomes failed_;
    Outcomes silent_;
    std::map<std::string, Outcome> without_;

public:
    const Outcome plain;
};

int tried = 0;

// Lets the first such call fail, then the second, and so on until a run has fewer of them. Each
// outcome must satisfy `is_fine(outcome, subject)`.
template <class IsFine>
void fail_each(Expectations& host, Fault fault, IsFine is_fine, int kept = 0, int most = 10000) {
    for (fault.at = 1; fault.at <= most; ++fault.at) {
        const Outcome outcome = host.run(fault, {}, {}, kept);
        if (host.page().hit == 0) {
            break;
        }
        ++tried;
        const std::string subject = host.page().subject;
        EXPECT_TRUE(is_fine(outcome, subject))
            << call_names[fault.call] << " number " << fault.at << " of \"" << subject
            << "\", failing with \"" << std::strerror(fault.error) << "\":\n"
            << outcome;
        if (testing::Test::HasFailure()) {
            return;
        }
    }
    EXPECT_GT(fault.at, 1) << "no " << call_names[fault.call] << " in a whole run";
}

auto one_of(const Outcomes& outcomes) {
    return [&outcomes](const Outcome& outcome, const std::string& /*subject*/) {
        return outcomes.count(outcome) != 0;
    };
}

auto nothing_changes(const Expectations& host) {
    return [&host](const Outcome& outcome, const std::string& /*subject*/) {
        return outcome == host.plain;
    };
}

// Runs the body on a made-up host where the program is known to do well.
void on_fault_host(const std::function<void(Expectations&)>& body) {
    FaultHost host;
    private_host::run([&] {
        if (!host.raise()) {
            GTEST_SKIP() << "no mounts, or no pair links";
        }
        Expectations expectations(host);
        ASSERT_EQ(expectations.plain.status, 0) << expectations.plain;
        ASSERT_EQ(expectations.plain.err, "/cd/*\n/proc/*\n/x/*\n/var/log/lastlog\n");
        ASSERT_NE(expectations.plain.out.find("\n#IP_ADDRESS=\"10.0.0.1 fd00::1 10.0.1.1 \"\n"),
                  std::string::npos)
            << expectations.plain;
        body(expectations);
        std::printf("%d faults tried\n", tried);
    });
}

TEST(Faults, AFileThatCannotBeOpenedLooksMissing) {
    on_fault_host([](Expectations& host) {
        const std::string reading = "Error: Error reading '/etc/mtab': Permission denied\n";
        const auto looks_missing = [&](const Outcome& outcome, const std::string& path) {
            if (path == "/etc/mtab") {  // of the quotas, which are not counted then
                return outcome ==
                       with_text({0, host.without("/tmp/disk").out, host.plain.err}, reading);
            }
            return outcome == host.without(path);
        };
        fail_each(host, {FAULT_open, 0, EACCES}, looks_missing);
        fail_each(host, {FAULT_fdopen, 0, ENOMEM}, looks_missing);
        fail_each(host, {FAULT_access, 0, EACCES}, looks_missing);
        // The bridges and the interface files are still found by name where they matter here.
        fail_each(host, {FAULT_scandir, 0, ENOMEM}, nothing_changes(host));
        fail_each(host, {FAULT_opendir, 0, EACCES},
                  [](const Outcome& outcome, const std::string& /*path*/) {
                      return outcome == Outcome{3, "", ""};
                  });

        Outcome without_live_mounts = host.plain;
        without_live_mounts.err = "/cd/*\n/var/log/lastlog\n";
        const Outcomes no_mtab = {{4, "", ""}, without_line(without_live_mounts, "FEATURES")};
        fail_each(host, {FAULT_setmntent, 0, EACCES},
                  [&](const Outcome& outcome, const std::string& path) {
                      return path == "/etc/mtab" ? no_mtab.count(outcome) != 0
                                                 : outcome == host.without(path);
                  });
    });
}

TEST(Faults, AReadErrorLooksLikeAMissingFileOrASilentCommand) {
    on_fault_host([](Expectations& host) {
        const std::string reading = "Error: Error reading '/etc/mtab': Input/output error\n";
        const Outcome no_quotas =
            with_text({0, host.without("/tmp/disk").out, host.plain.err}, reading);
        const auto looks_missing = [&](const Outcome& outcome, const std::string& path) {
            if (path.empty()) {
                return outcome == host.plain || host.silent_command().count(outcome) != 0;
            }
            return outcome == (path == "/etc/mtab" ? no_quotas : host.without(path));
        };
        fail_each(host, {FAULT_read, 0, EIO}, looks_missing);
    });
}

TEST(Faults, WhatIsMerelyAskedForIsLeftOut) {
    on_fault_host([](Expectations& host) {
        const std::string missing =
            "Error: Partition or mount point '/tmp/disk' is missing from /etc/mtab\n";
        const Outcome unlisted =
            with_text({0, host.without("/tmp/disk").out, host.plain.err}, missing);
        fail_each(host, {FAULT_stat, 0, EIO}, [&](const Outcome& outcome, const std::string& path) {
            return outcome == host.without(path) || (path == "/tmp/disk" && outcome == unlisted);
        });
        const Outcomes nameless = {without_line(host.plain, "HOSTNAME")};
        fail_each(host, {FAULT_gethostname, 0, EFAULT}, one_of(nameless));
        fail_each(host, {FAULT_sysconf, 0, EINVAL}, nothing_changes(host));
        fail_each(host, {FAULT_close, 0, EIO}, nothing_changes(host));
    });
}

TEST(Faults, ACommandThatCannotBeRunHasFailed) {
    on_fault_host([](Expectations& host) {
        ASSERT_EQ(host.failed_command().size(), 6U);  // most of them end the run with one status
        const auto failed = one_of(host.failed_command());
        fail_each(host, {FAULT_pipe2, 0, EMFILE}, failed);
        fail_each(host, {FAULT_fork, 0, EAGAIN}, failed);
        fail_each(host, {FAULT_fcntl, 0, EBADF}, failed);
        fail_each(host, {FAULT_ppoll, 0, ENOMEM}, failed);
        fail_each(host, {FAULT_waitpid, 0, EINVAL}, failed);
        // Once may be a mistake of the kernel's; it is asked again a second later.
        fail_each(host, {FAULT_waitpid, 0, ECHILD}, nothing_changes(host), 0, 2);

        fail_each(host, {FAULT_dup2, 0, EBUSY, true}, failed);
        fail_each(host, {FAULT_execve, 0, ENOMEM, true}, failed);
        fail_each(host, {FAULT_access, 0, EACCES, true}, failed);
        fail_each(host, {FAULT_close, 0, EIO, true}, nothing_changes(host));
    });
}

TEST(Faults, WithoutTheKernelsAnswerTheOtherSourcesAreRead) {
    on_fault_host([](Expectations& host) {
        const auto says = [&](const char* text, int error) {
            const Outcome dark = without_line(host.plain, "#IP_ADDRESS");
            return Outcomes{with_text(dark, text + std::string(std::strerror(error)) + "\n")};
        };
        const int socket_stays_open = 1;
        fail_each(host, {FAULT_socket, 0, EMFILE},
                  one_of(says("Cannot open netlink socket: ", EMFILE)));
        Outcomes buffers = says("SO_SNDBUF: ", ENOMEM);
        buffers.merge(says("SO_RCVBUF: ", ENOMEM));
        fail_each(host, {FAULT_setsockopt, 0, ENOMEM}, one_of(buffers), socket_stays_open);
        fail_each(host, {FAULT_bind, 0, ENOMEM},
                  one_of(says("Cannot bind netlink socket: ", ENOMEM)), socket_stays_open);
        fail_each(host, {FAULT_getsockname, 0, ENOBUFS},
                  one_of(says("Cannot getsockname: ", ENOBUFS)), socket_stays_open);
        fail_each(host, {FAULT_sendto, 0, ENOBUFS},
                  one_of(says("Cannot send dump request: ", ENOBUFS)));
        const Outcomes lost = {
            with_text(without_line(host.plain, "#IP_ADDRESS"),
                      "netlink receive error No buffer space available (105)\nDump terminated\n")};
        fail_each(host, {FAULT_recvmsg, 0, ENOBUFS}, one_of(lost));
        fail_each(host, {FAULT_recvmsg, 0, EAGAIN}, nothing_changes(host));
        const Outcomes no_library = {{1, "", ""}};
        fail_each(host, {FAULT_sem_init, 0, ENOSYS}, one_of(no_library));
    });
}

// Whether the addresses of `line` are some of those of `all`, each whole and once.
bool has_whole_addresses(const std::string& line, std::set<std::string> all) {
    std::istringstream words(line);
    for (std::string word; words >> word;) {
        if (all.erase(word) == 0) {
            return false;
        }
    }
    return true;
}

TEST(Faults, WithoutMemoryAnInterfaceIsLeftOutOrTheRunEnds) {
    on_fault_host([](Expectations& host) {
        const std::string key = "#IP_ADDRESS=\"";
        const Outcome bare = without_line(host.plain, "#IP_ADDRESS");
        const auto is_fine = [&](Outcome outcome, const std::string& /*subject*/) {
            if (outcome == Outcome{1, "", ""}) {
                return true;
            }
            outcome.err = without_prefix(outcome.err, "Dump terminated\n");
            const std::size_t start = outcome.out.find(key);
            if (start == std::string::npos) {
                return outcome == bare;
            }
            const std::size_t value = start + key.size();
            const std::string line =
                outcome.out.substr(value, outcome.out.find('"', value) - value);
            return without_line(outcome, "#IP_ADDRESS") == bare &&
                   has_whole_addresses(line, {"10.0.0.1", "fd00::1", "10.0.1.1"});
        };
        for (const fault_call call : {FAULT_malloc, FAULT_calloc, FAULT_realloc, FAULT_strdup}) {
            fail_each(host, {call, 0, ENOMEM}, is_fine);
        }
    });
}

TEST(Faults, AnOutputThatCannotBeWrittenIsReported) {
    on_fault_host([](Expectations& host) {
        const std::string full = "No space left on device\n";
        const Outcomes lost = {
            {0, "", "Error: unable to write to standard output: " + full + host.plain.err},
            {0, host.plain.out, ""},  // the notes themselves
            host.plain,               // the library's log
        };
        fail_each(host, {FAULT_write, 0, ENOSPC}, one_of(lost));

        const std::string path = "/tmp/vps.conf";
        const std::string size = std::to_string(host.plain.out.size());
        const std::string unwritten = "Error: unable to write " + size + " bystes to the ";
        for (const fault_call call : {FAULT_open, FAULT_write, FAULT_close}) {
            Fault fault = {call, 1, ENOSPC};
            Outcome outcome = host.run(fault, {"-o", path});
            for (; host.page().hit != 0; outcome = host.run(fault, {"-o", path})) {
                const std::string file = read_file(path);
                std::filesystem::remove(path);
                ++fault.at;
                ++tried;
                EXPECT_EQ(outcome.out, "");
                if (outcome.err == "Error: unable to open " + path + ": " + full ||
                    outcome.err == unwritten + path + ": " + full) {
                    EXPECT_EQ(file, "");
                } else if (host.page().subject == path) {
                    EXPECT_EQ(call, FAULT_close);
                    EXPECT_EQ(file, host.plain.out);
                }
            }
            EXPECT_EQ(read_file(path), host.plain.out);
        }
    });
}

TEST(Faults, AShortTransferChangesNothing) {
    on_fault_host([](Expectations& host) {
        fail_each(host, {FAULT_read, 0, 0}, nothing_changes(host));
        fail_each(host, {FAULT_write, 0, 0}, nothing_changes(host));
        // But half a netlink message ends the process as it stands.
        const Outcomes ended = {{1, "", ""}};
        const int socket_stays_open = 1;
        fail_each(host, {FAULT_recvmsg, 0, 0}, one_of(ended), socket_stays_open);
    });
}

TEST(Faults, AnInterruptionChangesNothing) {
    on_fault_host([](Expectations& host) {
        const auto same = nothing_changes(host);
        for (const fault_call call : {FAULT_open, FAULT_read, FAULT_write, FAULT_close, FAULT_ppoll,
                                      FAULT_waitpid, FAULT_recvmsg}) {
            fail_each(host, {call, 0, EINTR}, same);
        }
        fail_each(host, {FAULT_dup2, 0, EINTR, true}, same);
    });
}

// The sleep between two passes is interrupted as well, and lasts as long as ever.
TEST(Faults, AStormOfAlarmsChangesNothing) {
    FaultHost host;
    private_host::run([&] {
        if (!host.raise()) {
            GTEST_SKIP() << "no mounts, or no pair links";
        }
        const Outcome plain = host.run({});
        host.set_alarms(200);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(host.run({}, {"-t", "2s", "-p", "1s"}), plain);
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
        EXPECT_GT(host.page().alarms, 100);
    });
}

}  // namespace
