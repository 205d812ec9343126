// What the check of a host notices.
#include "plan/check/host_check.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <tuple>

#include "inspect/distribution.h"
#include "kiln/strings.h"
#include "plan/check/host_warnings.h"
#include "plan/check/output_shapes.h"
#include "plan/record/one_shot_steps.h"
#include "plan/record/trusted_path.h"
#include "plan/recording/finding.h"
#include "tests/plan/recordings.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t ps_step = 0;
constexpr std::size_t ls_step = 3;
constexpr std::size_t ipcs_step = 5;
constexpr std::size_t iptables_step = 7;
constexpr std::size_t df_step = 9;

TEST(OutputShapes, WhatTheParsersCannotRead) {
    const std::tuple<std::size_t, std::string, const char*, std::string> cases[] = {
        {ps_step, "143\n", "", ""},
        {ps_step, "  143\n", "ps: not found\n", "it says \"ps: not found\""},
        {ps_step, "0\n", "", "it counts none, which cannot be"},
        {ps_step, "143 lines\n", "", "it prints \"143 lines\n\" where a number should be"},
        {ls_step, "512\n", "ls: cannot access '/proc/9/fd/3'\n", ""},
        {ls_step, "0\n", "sh: ls: too long\n", "it says \"sh: ls: too long\""},
        {ipcs_step, "pages allocated 12\n", "", ""},
        {ipcs_step, "pages allocated\n", "", "it does not say how many pages are allocated"},
        {df_step, df_header + "/dev/a 100 20 80 20% /\ntmpfs 9 0 9 0% /run\n", "", ""},
        {df_step, df_header + "/dev/long\n 100 20 80 20% /\n", "",
         "the number in use is not the third word of \"/dev/long\""},
        {df_step,
         "Filesystem Type 1K-blocks Used Available Use% Mounted on\n/dev/a ext4 9 2 7 22% /\n", "",
         "its third column is not the one in use: "
         "\"Filesystem Type 1K-blocks Used Available Use% Mounted on\""},
    };
    for (const auto& [step, out, err, objection] : cases) {
        EXPECT_EQ(check_shape(sample_steps[step], out, err).reason(), objection) << out;
    }
}

// What is said and what to do, without what comes from who runs the test, and where. Before it is
// the first of the lines where the text does not name them.
std::string told(const CheckFindings& findings) {
    std::string told;
    for (const CheckFinding& finding : findings) {
        if (finding.text.find("you are not root") == std::string::npos &&
            finding.text.find("belongs to user") == std::string::npos) {
            const std::string lines = Kiln::join(", ", finding.lines);
            std::string text = finding.text + "\n  " + finding.remedy + "\n";
            while (finding.lines.size() > 1 && text.find(lines) != std::string::npos) {
                text = changed(text, lines, "LINES");
            }
            told += (names_its_lines(finding) ? "" : finding.lines.front() + ": ") + text;
        }
    }
    return told;
}

class CheckedHost : public testing::Test {
protected:
    CheckedHost() {
        let_commands_answer(made_up_);
        made_up_.host.paths.program_folders.clear();
        EXPECT_TRUE(
            made_up_.shell("touch mtab && mkdir bin && cd bin && "
                           "touch ps wc cat ls iptables ip df && chmod 755 *"));
        setenv("PATH", made_up_.path("bin").c_str(), 1);
    }
    ~CheckedHost() override { setenv("PATH", path_.c_str(), 1); }

    void put(const std::string& name, std::size_t lines) const {
        made_up_.put(name, std::string(lines, '\n'));
    }
    MadeUpHost::Answer& answer(std::size_t step) {
        return made_up_.answers[sample_steps[step].command];
    }

    MadeUpHost made_up_;
    const Host& host_ = made_up_.host;
    const std::string& folder_ = made_up_.root;
    const std::string path_ = getenv("PATH");
};

TEST_F(CheckedHost, NothingIsFoundOnAGoodOne) {
    const HostCheck check = check_host(host_);
    if (!check.steps.at(12).succeeded) {
        GTEST_SKIP() << "the machine has no network interface";
    }
    EXPECT_TRUE(check.run_succeeds());
    EXPECT_EQ(told(check.findings), "");
    ASSERT_EQ(check.steps.size(), 17U);
    EXPECT_EQ(check.steps[0].result, "numproc 7");
    EXPECT_EQ(check.steps[4].lines.front(), "PRIVVMPAGES");
    EXPECT_EQ(check.steps[9].lines, std::vector<std::string>{"DISKSPACE"});
}

TEST_F(CheckedHost, AStepThatFailsIsNamedWithItsReason) {
    const std::string begin = "Error running 'iptables -n -L -t filter | wc -l':";
    answer(iptables_step) = {1, "", "it does not want to\n"};
    const HostCheck check = check_host(host_);
    EXPECT_TRUE(check.run_succeeds());
    EXPECT_EQ(check.steps[iptables_step].result, begin + "\nit does not want to\n");
    EXPECT_EQ(told(check.findings), "NUMIPTENT: " + begin +
                                        " it does not want to\n"
                                        "  a run goes on without it; see why it fails\n");
    answer(iptables_step).status = -1;
    EXPECT_FALSE(check_host(host_).run_succeeds()) << "the command was not even run";
    fs::remove_all(folder_);
    const HostCheck empty = check_host(host_);
    EXPECT_EQ(empty.steps[4].result,
              "Error opening " + host_.paths.proc + ": No such file or directory");
    EXPECT_EQ(empty.steps[11].result,
              "Error opening '" + host_.paths.mtab + "': No such file or directory");
}

TEST_F(CheckedHost, AStepThatHangsIsLeft) {
    std::size_t hanging = iptables_step;
    made_up_.host.run = [&, usual = made_up_.host.run](const std::string& command, std::string& out,
                                                       std::string& err) {
        return command == sample_steps[hanging].command ? pause() : usual(command, out, err);
    };
    made_up_.host.host_name = [] {
        usleep(20000);
        return std::optional<std::string>("box");
    };
    made_up_.put("mtab", "none " + folder_ + "/gone none rw 0 0\n");
    const HostCheck check = check_host(host_, 1);
    EXPECT_EQ(told(check.findings), "") << "only where df fails the mounts are looked at";
    EXPECT_FALSE(check.run_succeeds()) << "a run would hang as well";
    EXPECT_GE(check.steps[iptables_step].took_ms, 1000);
    EXPECT_GE(check.steps.at(14).took_ms, 20) << check.steps[14].what;
    EXPECT_EQ(check.steps[iptables_step].result, "no answer within 1 s; it was left");
    EXPECT_TRUE(check.steps[iptables_step + 1].succeeded);

    hanging = df_step;
    const HostCheck short_check = check_host(host_, 10, -1, 1);
    EXPECT_EQ(short_check.steps[df_step].result, "no answer within 1 s; it was left");
    EXPECT_EQ(short_check.steps[df_step + 1].result, "left out: the check has taken too long");
    EXPECT_EQ(
        told(short_check.findings),
        "the check ends after 1 s, and left out: inodes, which mounts answer, quotas, "
        "interfaces, distribution, host name, resolver, mounts, what the open descriptors are "
        "of\n  see by tarnhwplan check what takes so long\n");
}

TEST_F(CheckedHost, WhatPathLacks) {
    ASSERT_TRUE(
        made_up_.shell("cp -r bin sbin && cd sbin && rm ps wc cat ls ip df && cd .. && "
                       "ln -s bin again && mkdir -p open/within && chmod 777 open"));
    made_up_.host.paths.program_folders = {folder_ + "/again", folder_ + "/sbin"};
    const std::string within = folder_ + "/open/within";
    setenv("PATH", (folder_ + "/bin:" + within + ":relative::").c_str(), 1);
    const std::string folder = "PATH lacks " + folder_ + "/sbin";
    const std::string remedy = "\n  export PATH=\"$PATH:" + folder_ + "/sbin\"\n";
    const std::string why =
        ": commands may come from the working directory\n  have only absolute folders in PATH\n";
    const std::string strange =
        "PATH has " + within + ": " + folder_ +
        "/open may be written by everybody\n"
        "  leave the folder out of PATH, or let nobody but root own and write it\n"
        "PATH has relative" +
        why + "PATH has an empty word" + why;
    EXPECT_EQ(told(check_host(host_).findings), folder + remedy + strange);
    ASSERT_TRUE(made_up_.shell("cd bin && rm iptables ps ip df"));
    answer(ps_step).out = "many\n";
    const HostCheck check = check_host(host_);
    EXPECT_TRUE(check.run_succeeds());
    EXPECT_EQ(told(check.findings),
              folder + ", and with it iptables: NUMIPTENT will be too low" + remedy +
                  "ps is missing: LINES will be too low\n  install ps (Debian: procps)\n"
                  "ip is missing: NUMIPTENT will be too low\n  install ip (Debian: iproute2)\n"
                  "df is missing: LINES will be too low\n  install df (Debian: coreutils)\n" +
                  strange);
}

TEST_F(CheckedHost, SocketsThatNothingCounts) {
    put("net/tcp6", 301);
    EXPECT_EQ(told(socket_warnings(host_)), "") << "the floor is enough for them";
    put("net/tcp", 101);
    EXPECT_EQ(told(check_host(host_).findings),
              "NUMTCPSOCK: nothing counts the 300 TCP sockets of IPv6; only 100 are counted\n"
              "  raise LINES by hand, or use a larger --mem-scale\n");
    put("net/tcp6", 0);
    put("net/raw6", 500);
    put("net/udp6", 0);
    put("net/raw", 8);
    put("net/udp", 4);
    put("net/unix", 6);
    EXPECT_EQ(
        told(socket_warnings(host_)),
        "NUMOTHERSOCK: nothing counts the 499 UDP and raw sockets of IPv6; only 15 are counted\n"
        "  raise LINES by hand, or use a larger --mem-scale\n");
}

TEST_F(CheckedHost, DescriptorsAsArguments) {
    ASSERT_TRUE(made_up_.shell("mkdir -p 1/fd/1 && touch 1/fd/0 && cd 1/fd/1 && touch a b c d e"));
    const DescriptorArguments listed = list_descriptors(host_);
    EXPECT_EQ(listed.count, 2U);
    EXPECT_EQ(listed.bytes, 2 * (folder_.size() + sizeof("/1/fd/0") + sizeof(char*)));
    EXPECT_EQ(listed.directories, 1U);
    EXPECT_EQ(listed.listed_lines, 7U);

    EXPECT_EQ(told(descriptor_warnings({750, 10, 0, 0}, 1000)), "");
    EXPECT_EQ(told(descriptor_warnings({751, 10, 0, 0}, 1000)),
              "the names of 10 open descriptors take 751 bytes, a command gets 1,000: beyond that "
              "LINES will be floors\n  raise the limit: ulimit -Hs unlimited; ulimit -Ss 24576\n");
    EXPECT_EQ(told(descriptor_warnings({1, 8000, 1, 1314}, 1000)),
              "1 descriptors are of directories: ls lists what is in them, 1,314 lines, and "
              "LINES will be too high\n  end what holds them open (ls -l /proc/*/fd), or correct "
              "by hand\n");
}

TEST(UserWarnings, AreForWhoIsNotRoot) {
    EXPECT_TRUE(user_warnings(true).empty());
    const CheckFinding finding = user_warnings(false).at(0);
    EXPECT_EQ(finding.text + "\n" + finding.remedy,
              "you are not root: descriptors, rules and quotas of others are not seen, and their "
              "lines will be floors\nrun it as root");
    EXPECT_EQ(Kiln::join(" ", finding.lines),
              "NUMFILE DCACHESIZE KMEMSIZE NUMIPTENT SLMMEMORYLIMIT QUOTAUGIDLIMIT");
}

// What root would run: judged before it is, and what was judged is run.
class DetectionScript : public CheckedHost {
protected:
    DetectionScript() {
        setenv("PATH", path_.c_str(), 1);
        made_up_.put("users", "root:x:0:0::/:/bin/sh\nmallory:x:65534:4::/:/bin/sh\n");
        made_up_.put("groups", "mallory:x:4:\nstaff:x:50:\n");
        made_up_.host.paths.users = made_up_.path("users");
        made_up_.host.paths.groups = made_up_.path("groups");
        made_up_.host.paths.detect_script = temporary_ + "usr/share/script";
        plant();
    }

    // Root's own, in a sticky folder.
    void plant() const {
        ASSERT_TRUE(made_up_.shell(
            "rm -rf tmp usr second mark && mkdir -p tmp/usr/share && chmod 1777 tmp && "
            "echo ': >'$PWD'/mark; echo \"debian-12 $0 $#\"' >tmp/usr/share/script"));
    }

    // The reason why it is not run, without the folder in front; what it says when it is.
    std::string outcome() const {
        const Findings findings =
            take_one_shot_step(host_, OneShotStep::distribution, 10, -1).findings;
        EXPECT_EQ(fs::exists(made_up_.path("mark")), !findings.distribution.empty());
        if (findings.failures.empty()) {
            return findings.distribution;
        }
        const std::string begin = "the detection script is not run: " + temporary_;
        const std::string& text = findings.failures.at(0).text;
        return text.rfind(begin, 0) == 0 ? text.substr(begin.size()) : "? " + text;
    }

    const std::string temporary_ = folder_ + "/tmp/";
    const std::string answer_ = "debian-12" + temporary_ + "usr/share/script0";
};

TEST_F(DetectionScript, IsRunAsItWasUnlessOthersHaveItInTheirHands) {
    const std::string anybody = " may have been put there by anybody: others may write its folder";
    const std::string his = " belongs to user 65534 (mallory)";
    const std::pair<std::string, std::string> cases[] = {
        {"true", answer_},  // it sees its own name, and no argument
        {"chmod 602 usr/share/script", "usr/share/script may be written by everybody"},
        {"mv usr .. && ln -s ../usr usr && chmod 777 ../usr", "../usr may be written by everybody"},
        {"chmod 1777 usr/share", "usr/share/script" + anybody},
        {"rm usr/share/script && mkfifo usr/share/script", "usr/share/script is no file"},
        {"mv usr real && ln -s real usr", answer_},
        {"mv usr real && ln -s real usr && ln usr ../second", "usr" + anybody},
        {"mv usr real && ln -s real usr && chown -h 65534 usr", "usr" + his},
        {"chown 65534 usr/share/script", "usr/share/script" + his},
        {"chgrp 50 usr/share && chmod 775 usr/share",
         "usr/share may be written by group 50 (staff)"},
        {"chown 65534 usr && rm usr/share/script", ""},
    };
    for (const auto& [change, expected] : cases) {
        plant();
        if (made_up_.shell("cd tmp && " + change)) {
            EXPECT_EQ(outcome(), expected) << change;
        } else {
            EXPECT_NE(geteuid(), 0U) << change;
        }
    }
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
}

TEST_F(DetectionScript, WhatWasOpenedIsRunWhateverTakesItsPlace) {
    const auto script = open_trusted(host_.paths.detect_script, host_.paths);
    ASSERT_TRUE(script);
    ASSERT_TRUE(
        made_up_.shell("cd tmp/usr && mv share away && mkdir share && "
                       "echo 'echo evil' >share/script"));
    EXPECT_EQ(detect_distribution(host_, script->get()).name, answer_);
}

TEST_F(CheckedHost, WhatOneCheckFindsInItsOrder) {
    answer(ps_step).out = "many\n";
    answer(df_step) = {1, "", "df: failed\n"};
    made_up_.put("mtab", "proc " + folder_ + " proc rw 0 0\nhost:/x " + folder_ +
                             "/gone fuse.sshfs rw 0 0\n");
    ASSERT_TRUE(made_up_.shell("touch detect && chmod 602 detect"));
    const HostCheck check = check_host(host_);
    EXPECT_TRUE(check.steps[13].forgiven) << "a run goes on without the script";
    EXPECT_EQ(
        "\n" + told(check.findings),
        R"(
NUMPROC: ps ax | wc -l: it prints "many
" where a number should be
  see what it prints by hand
DISKSPACE: the mount at )" +
            folder_ + R"(/gone (fuse.sshfs) makes df fail: No such file or directory
  unmount it (umount -l), or bring back what it waits for
the detection script is not run: )" +
            folder_ +
            R"(/detect may be written by everybody; tarnhwcalc itself runs it, whoever put it there
  remove it before anybody runs tarnhwcalc; the example with-detection gives a run a script of your own
)");
    answer(df_step) = {-1, "", "Fork returned: Resource temporarily unavailable\n"};
    EXPECT_EQ(told(check_host(host_).findings).find("the mount at"), std::string::npos)
        << "df was not run";
}

}  // namespace
