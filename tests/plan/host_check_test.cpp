// What the check of a host notices.
#include "plan/check/host_check.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "inspect/distribution.h"
#include "kiln/strings.h"
#include "plan/check/host_warnings.h"
#include "plan/check/output_shapes.h"
#include "plan/record/one_shot_steps.h"
#include "plan/record/trusted_path.h"
#include "plan/text/wrapped.h"
#include "tests/plan/recordings.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t ps_step = 0;
constexpr std::size_t ls_step = 3;
constexpr std::size_t ipcs_step = 5;
constexpr std::size_t iptables_step = 7;
constexpr std::size_t df_step = 9;

TEST(OutputShapes, WhatTheParsersCannotRead) {
    struct Case {
        std::size_t step;
        std::string out, err, objection;
    };
    const Case cases[] = {
        {ps_step, "143\n", "", ""},
        {ps_step, "  143\n", "ps: not found\n", "it says \"ps: not found\""},
        {ps_step, "0\n", "", "it counts none"},
        {ps_step, "143 lines\n", "", "where a number should be"},
        {ls_step, "512\n", "ls: cannot access '/proc/9/fd/3'\n", ""},
        {ls_step, "0\n", "sh: ls: Argument list too long\n", "Argument list too long"},
        {ipcs_step, "pages allocated 12\n", "", ""},
        {ipcs_step, "pages allocated\n", "", "how many pages"},
        {ipcs_step, "------ Shared Memory\n", "", "how many pages"},
        {df_step, df_header + "/dev/a 100 20 80 20% /\ntmpfs 9 0 9 0% /run\n", "", ""},
        {df_step, df_header + "/dev/mapper/long\n 100 20 80 20% /\n", "", "\"/dev/mapper/long\""},
        {df_step, df_header + "/dev/a 100 - 80 20% /\n", "", "is not the third word"},
        {df_step, "Filesystem Type 1K-blocks Used Available Use% Mounted on\n", "", "third column"},
        {df_step, "", "", "prints nothing"},
    };
    for (const Case& test : cases) {
        const std::string objection =
            check_shape(sample_steps[test.step], test.out, test.err).reason();
        EXPECT_EQ(objection.empty(), test.objection.empty()) << test.out << objection;
        EXPECT_NE(objection.find(test.objection), std::string::npos) << objection;
    }
}

TEST(Wrapped, LinesFitAndLongWordsStayWhole) {
    struct Case {
        const char* text;
        const char* lines;
    };
    const Case cases[] = {
        {"", "* \n"},
        {"six to", "* six to\n"},
        {"seven to", "* seven\n  to\n"},
        {"\u00e9\u00e9\u00e9\u00e9 b", "* \u00e9\u00e9\u00e9\u00e9 b\n"},
        {"a  b  ccccccccccc d", "* a  b\n  ccccccccccc\n  d\n"},
        {"a   ", "* a\n"},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(wrapped(test.text, "* ", "  ", 8), test.lines);
    }
}

class CheckedHost : public testing::Test {
protected:
    CheckedHost() {
        let_commands_answer(made_up_);
        put("mtab", 0);
        made_up_.host.paths.program_folders.clear();
        for (const char* program : {"ps", "wc", "cat", "ls", "iptables", "ip", "df"}) {
            const std::string name = std::string("bin/") + program;
            put(name, 0);
            chmod(made_up_.path(name).c_str(), 0755);
        }
        setenv("PATH", made_up_.path("bin").c_str(), 1);
    }
    ~CheckedHost() override { setenv("PATH", path_.c_str(), 1); }

    void put(const std::string& name, std::size_t lines) const {
        made_up_.put(name, std::string(lines, '\n'));
    }

    // A line for each finding but those that come from who runs the test, and where.
    static std::string own(const CheckFindings& findings) {
        std::string lines;
        for (const CheckFinding& finding : findings) {
            const bool is_own = finding.text.find("you are not root") == std::string::npos &&
                                finding.text.find("belongs to user") == std::string::npos;
            lines += is_own ? finding.text + "\n" : "";
        }
        return lines;
    }

    static bool has(const CheckFindings& findings, const std::string& text) {
        return find(findings, text) != nullptr;
    }

    static CheckFinding expect(const CheckFindings& findings, const std::string& text) {
        const CheckFinding* finding = find(findings, text);
        if (finding == nullptr) {
            ADD_FAILURE() << "not found: " << text;
            return {"", "", {""}};
        }
        EXPECT_FALSE(finding->remedy.empty());
        return *finding;
    }

    static const CheckFinding* find(const CheckFindings& findings, const std::string& text) {
        for (const CheckFinding& finding : findings) {
            if (finding.text.find(text) != std::string::npos) {
                return &finding;
            }
        }
        return nullptr;
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
    EXPECT_EQ(own(check.findings), "");
    ASSERT_EQ(check.steps.size(), 17U);
    EXPECT_EQ(check.steps[0].result, "numproc 7");
    EXPECT_EQ(check.steps[4].lines.front(), "PRIVVMPAGES");
    EXPECT_EQ(check.steps[9].lines, std::vector<std::string>{"DISKSPACE"});
}

TEST_F(CheckedHost, EveryStepThatFailsIsNamedWithItsReason) {
    const std::map<std::string, MadeUpHost::Answer> usual = made_up_.answers;
    for (std::size_t step = 0; step < sample_step_number; ++step) {
        if (sample_steps[step].command == nullptr) {
            continue;
        }
        made_up_.answers = usual;
        made_up_.answers[sample_steps[step].command] = {1, "", "it does not want to\n"};
        const HostCheck check = check_host(host_);
        EXPECT_EQ(check.run_succeeds(), sample_steps[step].forgiven) << step;
        EXPECT_EQ(check.steps[step].result, "Error running '" +
                                                std::string(sample_steps[step].command) +
                                                "':\nit does not want to\n");
        EXPECT_EQ(own(check.findings).empty(), !sample_steps[step].forgiven);
        made_up_.answers[sample_steps[step].command].status = -1;
        EXPECT_FALSE(check_host(host_).run_succeeds()) << "the command was not even run";
    }
    made_up_.answers = usual;
    fs::remove_all(folder_);
    const HostCheck check = check_host(host_);
    EXPECT_EQ(check.steps[4].result,
              "Error opening " + host_.paths.proc + ": No such file or directory");
    EXPECT_EQ(check.steps[11].result,
              "Error opening '" + host_.paths.mtab + "': No such file or directory");
}

TEST_F(CheckedHost, AStepThatHangsIsLeft) {
    made_up_.host.run = [](const std::string& command, std::string& out, std::string& /*err*/) {
        out = "7\n";
        return command == sample_steps[iptables_step].command ? pause() : 0;
    };
    made_up_.host.host_name = [] {
        usleep(20000);
        return std::optional<std::string>("box");
    };
    const HostCheck check = check_host(host_, 1);
    EXPECT_FALSE(check.run_succeeds()) << "a run would hang as well";
    EXPECT_GE(check.steps[iptables_step].took_ms, 1000);
    EXPECT_LT(check.steps[iptables_step].took_ms, 9000);
    EXPECT_GE(check.steps.at(14).took_ms, 20) << check.steps[14].what;
    EXPECT_EQ(check.steps[iptables_step].result, "no answer within 1 s; it was left");
    EXPECT_TRUE(check.steps[iptables_step + 1].succeeded);
    EXPECT_FALSE(has(check.findings, "left out"));
    made_up_.put("mtab", "proc / proc rw 0 0\nproc / proc rw 0 0\n");

    const HostCheck short_check = check_host(host_, 10, -1, 1);
    EXPECT_EQ(short_check.steps[iptables_step].result, "no answer within 1 s; it was left");
    EXPECT_EQ(short_check.steps[iptables_step + 1].result,
              "left out: the check has taken too long");
    EXPECT_EQ(short_check.steps[12].result, "left out: the check has taken too long");
    expect(short_check.findings, "after 1 s, and left out: routes, disk space, inodes, quotas");
    expect(short_check.findings, "mounts, what the open descriptors are of");
}

#ifndef __SANITIZE_ADDRESS__  // a sanitizer needs descriptors of its own
TEST_F(CheckedHost, WhatCannotHaveAProcessHasFailed) {
    rlimit usual = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    rlimit none = usual;
    none.rlim_cur = 0;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    made_up_.put("mtab", "none " + folder_ + "/gone none rw 0 0\n");
    const HostCheck check = check_host(host_);
    setrlimit(RLIMIT_NOFILE, &usual);
    ASSERT_EQ(check.steps.size(), 17U);
    for (const CheckedStep& step : check.steps) {
        EXPECT_FALSE(step.succeeded || step.forgiven) << step.what;
        EXPECT_NE(step.result.find("Too many open files"), std::string::npos) << step.result;
    }
    EXPECT_EQ(own(check.findings),
              "too few files may be open at once to look at everything: Too many open files\n");
}
#endif

TEST_F(CheckedHost, WhatIsMissingInAPipeline) {
    fs::remove(folder_ + "/bin/ps");
    fs::remove(folder_ + "/bin/ip");
    const HostCheck check = check_host(host_);
    EXPECT_TRUE(check.run_succeeds());
    const CheckFinding& missing = expect(check.findings, "ps is missing: NUMPROC, AVNUMPROC");
    EXPECT_EQ(missing.remedy, "install ps (Debian: procps)");
    EXPECT_EQ(missing.lines.front(), "NUMPROC");
    EXPECT_EQ(expect(check.findings, "ip is missing: NUMIPTENT").lines,
              std::vector<std::string>{"NUMIPTENT"});
}

TEST_F(CheckedHost, AFolderThatPathLacksComesFirst) {
    put("sbin/iptables", 0);
    chmod(made_up_.path("sbin/iptables").c_str(), 0755);
    fs::create_symlink("sbin", folder_ + "/other");
    fs::create_symlink("bin", folder_ + "/again");
    made_up_.host.paths.program_folders = {folder_ + "/again", folder_ + "/sbin",
                                           folder_ + "/other", folder_ + "/none"};
    EXPECT_EQ(check_host(host_).findings.at(0).text, "PATH lacks " + folder_ + "/sbin");
    fs::remove(folder_ + "/bin/iptables");
    fs::remove(folder_ + "/bin/ps");
    const HostCheck check = check_host(host_);
    const CheckFinding& first = check.findings.at(0);
    EXPECT_EQ(first.text,
              "PATH lacks " + folder_ + "/sbin, and with it iptables: NUMIPTENT will be too low");
    EXPECT_EQ(first.remedy, "export PATH=\"$PATH:" + folder_ + "/sbin\"");
    EXPECT_EQ(first.lines, std::vector<std::string>{"NUMIPTENT"});
    EXPECT_FALSE(has(check.findings, "iptables is missing"));
    expect(check.findings, "ps is missing");
}

TEST_F(CheckedHost, LinesThatAFindingMakesWrong) {
    made_up_.answers[sample_steps[ps_step].command] = {0, "many\n", ""};
    made_up_.answers[sample_steps[iptables_step].command] = {1, "", "no\n"};
    const CheckFindings findings = check_host(host_).findings;
    EXPECT_EQ(expect(findings, "a number should be").lines.front(), "NUMPROC");
    EXPECT_EQ(expect(findings, "Error running 'iptables").lines.front(), "NUMIPTENT");
    const std::vector<std::string> unseen = user_warnings(false).at(0).lines;
    EXPECT_EQ(Kiln::join(" ", unseen),
              "NUMFILE DCACHESIZE KMEMSIZE NUMIPTENT SLMMEMORYLIMIT QUOTAUGIDLIMIT");
    EXPECT_TRUE(user_warnings(true).empty());
}

TEST_F(CheckedHost, SocketsThatNothingCounts) {
    put("net/tcp6", 301);
    EXPECT_TRUE(socket_warnings(host_).empty()) << "the floor is enough for them";
    put("net/tcp", 101);
    expect(socket_warnings(host_), "the 300 TCP sockets of IPv6; only 100");
    put("net/tcp", 9001);
    EXPECT_TRUE(socket_warnings(host_).empty()) << "too few to matter";
    put("net/raw6", 500);
    EXPECT_EQ(expect(socket_warnings(host_), "499 UDP and raw sockets").lines.front(),
              "NUMOTHERSOCK");
    fs::remove(folder_ + "/net/raw6");
    ASSERT_EQ(mkfifo((folder_ + "/net/raw6").c_str(), 0600), 0);
    EXPECT_TRUE(socket_warnings(host_).empty()) << "a FIFO is not waited for";
}

TEST_F(CheckedHost, DescriptorsAsArguments) {
    put("1/fd/0", 0);
    for (int i = 0; i < 5; ++i) {
        put("1/fd/1/" + std::to_string(i), 0);
    }
    const DescriptorArguments listed = list_descriptors(host_);
    EXPECT_EQ(listed.count, 2U);
    EXPECT_EQ(listed.bytes, 2 * (folder_.size() + sizeof("/1/fd/0") + sizeof(char*)));
    EXPECT_EQ(listed.directories, 1U);
    EXPECT_EQ(listed.listed_lines, 7U);

    EXPECT_TRUE(descriptor_warnings({750, 10, 0, 0}, 1000).empty());
    expect(descriptor_warnings({751, 10, 0, 0}, 1000), "take 751 bytes, a command gets 1,000");
    EXPECT_TRUE(descriptor_warnings({1, 8000, 1, 1313}, 1000).empty()) << "below the floor of 9312";
    expect(descriptor_warnings({1, 8000, 1, 1314}, 1000), "1 descriptors are of directories");
    EXPECT_TRUE(descriptor_warnings({1, 100001, 1, 10000}, 1000).empty()) << "a tenth";
}

TEST_F(CheckedHost, FoldersThatOthersMayWrite) {
    const std::string open_folder = folder_ + "/open";
    fs::create_directories(open_folder + "/within");
    chmod(open_folder.c_str(), 0777);
    const std::string path = folder_ + "/bin:" + open_folder + "/within:/nonexistent:relative::";
    const std::string why = ": commands may come from the working directory\n";
    const CheckFindings findings = search_path_warnings(path, host_.paths);
    EXPECT_EQ(own(findings), "PATH has " + open_folder + "/within: " + open_folder +
                                 " may be written by everybody\nPATH has relative" + why +
                                 "PATH has an empty word" + why);
    for (const CheckFinding& finding : findings) {
        EXPECT_EQ(finding.remedy.find(folder_), std::string::npos) << "no command to paste";
        EXPECT_TRUE(finding.lines.empty());
    }
}

TEST_F(CheckedHost, WarningsWordByWord) {
    put("net/tcp", 11);
    put("net/tcp6", 501);
    const auto of = [](CountField field) { return TakenCounts().set(place_of(field)); };
    const std::vector<MissingProgram> missing = {{"df", of(&PhysParams::diskspace)},
                                                 {"ip", of(&PhysParams::numiptent)},
                                                 {"/usr/bin/ipcs", of(&PhysParams::shmpages)}};
    std::string words;
    for (const CheckFindings& findings :
         {user_warnings(false), missing_warnings(missing, "", {}), socket_warnings(host_),
          descriptor_warnings({751, 10, 0, 0}, 1000), descriptor_warnings({1, 8000, 1, 1314}, 1000),
          CheckFindings{script_warning("why")}}) {
        for (const CheckFinding& finding : findings) {
            std::string text = finding.text + "\n  " + finding.remedy + "\n";
            const std::string lines = Kiln::join(", ", finding.lines);
            const std::size_t at = text.find(lines);
            const bool is_named = finding.lines.size() > 1 && at != std::string::npos;
            words += is_named ? text.replace(at, lines.size(), "LINES") : text;
        }
    }
    EXPECT_EQ("\n" + words, R"(
you are not root: descriptors, rules and quotas of others are not seen, and their lines will be floors
  run it as root
df is missing: DISKSPACE will be too low
  install df (Debian: coreutils)
ip is missing: NUMIPTENT will be too low
  install ip (Debian: iproute2)
/usr/bin/ipcs is missing: SHMPAGES will be too low
  install /usr/bin/ipcs (Debian: util-linux)
nothing counts the 500 TCP sockets of IPv6; only 10 are counted
  raise LINES by hand, or use a larger --mem-scale
the names of 10 open descriptors take 751 bytes, a command gets 1,000: beyond that LINES will be floors
  raise the limit: ulimit -Hs unlimited; ulimit -Ss 24576
1 descriptors are of directories: ls lists what is in them, 1,314 lines, and LINES will be too high
  end what holds them open (ls -l /proc/*/fd), or correct by hand
why; tarnhwcalc itself runs it, whoever put it there
  remove it before anybody runs tarnhwcalc; the example with-detection gives a run a script of your own
)");
}

// What root would run: judged before it is, and what was judged is run.
class DetectionScript : public CheckedHost {
protected:
    static constexpr uid_t stranger = 65534;

    DetectionScript() {
        setenv("PATH", path_.c_str(), 1);
        put_users();
        made_up_.host.paths.detect_script = share_ + "/script";
        plant();
    }

    void put_users() {
        made_up_.put("users", "root:x:0:0::/:/bin/sh\nmallory:x:65534:4::/:/bin/sh\n");
        made_up_.put("groups", "mallory:x:4:\nstaff:x:50:\n");
        made_up_.host.paths.users = made_up_.path("users");
        made_up_.host.paths.groups = made_up_.path("groups");
    }

    // Root's own, in a sticky folder.
    void plant() {
        fs::remove_all(temporary_);
        fs::create_directories(share_);
        chmod(temporary_.c_str(), 01777);
        std::ofstream(share_ + "/script") << ": >" << mark_ << "; echo \"debian-12 $0 $#\"\n";
    }

    void give(const std::string& path) const {
        ASSERT_EQ(lchown(path.c_str(), stranger, stranger), 0);
    }

    // The reason why it is not run, without the folder in front; what it says when it is.
    std::string outcome() const {
        fs::remove(mark_);
        const Findings findings =
            take_one_shot_step(host_, OneShotStep::distribution, 10, -1).findings;
        const bool was_run = fs::exists(mark_);
        EXPECT_EQ(was_run, findings.failures.empty());
        if (was_run) {
            return findings.distribution;
        }
        const std::string begin = "the detection script is not run: " + temporary_ + "/";
        const std::string& text = findings.failures.at(0).text;
        return text.rfind(begin, 0) == 0 ? text.substr(begin.size()) : "? " + text;
    }

    const std::string temporary_ = folder_ + "/tmp";
    const std::string share_ = temporary_ + "/usr/share";
    const std::string mark_ = folder_ + "/mark";
    const std::string answer_ = "debian-12" + share_ + "/script0";
};

TEST_F(DetectionScript, IsRunAsItWasUnlessOthersHaveItInTheirHands) {
    EXPECT_EQ(outcome(), answer_) << "it sees its own name, and no argument";
    chmod((share_ + "/script").c_str(), 0602);
    EXPECT_EQ(outcome(), "usr/share/script may be written by everybody");
    plant();
    chmod(share_.c_str(), 0720);
    EXPECT_NE(outcome().find("usr/share may be written by group "), std::string::npos);
    plant();
    fs::rename(temporary_ + "/usr", folder_ + "/usr");
    fs::create_symlink("../usr", temporary_ + "/usr");
    EXPECT_EQ(outcome(), answer_) << "a link of ours, to what is ours";
    chmod((folder_ + "/usr").c_str(), 0777);
    EXPECT_EQ(outcome(), "../usr may be written by everybody");
    plant();
    chmod(share_.c_str(), 01777);
    EXPECT_EQ(outcome(),
              "usr/share/script may have been put there by anybody: others may write its folder");
    plant();
    fs::remove(share_ + "/script");
    ASSERT_EQ(mkfifo((share_ + "/script").c_str(), 0600), 0);
    EXPECT_EQ(outcome(), "usr/share/script is no file");
}

TEST_F(DetectionScript, OfAStrangerIsNotRunAndHeIsNamed) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    const std::string his = " belongs to user 65534 (mallory)";
    give(share_ + "/script");
    EXPECT_EQ(outcome(), "usr/share/script" + his);
    const HostCheck check = check_host(host_);
    EXPECT_TRUE(check.steps[13].forgiven) << "a run goes on without it";
    const CheckFinding finding = expect(check.findings, "/tmp/usr/share/script" + his);
    EXPECT_EQ(finding.remedy.rfind("remove it ", 0), 0U);
    EXPECT_TRUE(finding.lines.empty());
    plant();
    give(share_);
    EXPECT_EQ(outcome(), "usr/share" + his);
    plant();
    ASSERT_EQ(chown(share_.c_str(), 0, 50), 0);
    chmod(share_.c_str(), 0775);
    EXPECT_EQ(outcome(), "usr/share may be written by group 50 (staff)");
    plant();
    fs::rename(temporary_ + "/usr", temporary_ + "/real");
    fs::create_symlink("real", temporary_ + "/usr");
    EXPECT_EQ(outcome(), answer_);
    fs::create_hard_link(temporary_ + "/usr", folder_ + "/second");
    EXPECT_EQ(outcome(), "usr may have been put there by anybody: others may write its folder");
    fs::remove(folder_ + "/second");
    give(temporary_ + "/usr");
    EXPECT_EQ(outcome(), "usr" + his);
    plant();
    give(temporary_ + "/usr");
    fs::remove(share_ + "/script");
    EXPECT_TRUE(
        take_one_shot_step(host_, OneShotStep::distribution, 10, -1).findings.failures.empty())
        << "there is none";
}

TEST_F(DetectionScript, WhatWasOpenedIsRunWhateverTakesItsPlace) {
    const auto script = open_trusted(share_ + "/script", host_.paths);
    ASSERT_TRUE(script);
    fs::rename(share_, temporary_ + "/away");
    fs::create_directories(share_);
    std::ofstream(share_ + "/script") << "echo evil\n";
    EXPECT_EQ(detect_distribution(host_, script->get()).name, answer_);
}

TEST_F(CheckedHost, TheMountThatMakesDfFail) {
    made_up_.put("mtab", "proc " + folder_ + " proc rw 0 0\nhost:/x " + folder_ +
                             "/gone fuse.sshfs rw 0 0\n");
    made_up_.answers["df -i -l"] = {1, "", "df: failed\n"};
    EXPECT_EQ(own(check_host(host_).findings),
              "the mount at " + folder_ +
                  "/gone (fuse.sshfs) makes df fail: No such file or directory\n");
    made_up_.answers["df -i -l"] = {-1, "", "Fork returned: Resource temporarily unavailable\n"};
    EXPECT_EQ(own(check_host(host_).findings), "") << "df was not run";
}

}  // namespace
