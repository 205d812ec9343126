// What the check of a host notices.
#include "plan/check/host_check.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "plan/check/host_warnings.h"
#include "plan/check/output_shapes.h"
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
        const std::string objection = shape_objection(sample_steps[test.step], test.out, test.err);
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

    static void expect(const CheckFindings& findings, const std::string& text) {
        for (const CheckFinding& finding : findings) {
            if (finding.text.find(text) != std::string::npos) {
                EXPECT_FALSE(finding.remedy.empty());
                return;
            }
        }
        ADD_FAILURE() << "not found: " << text;
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
    const HostCheck check = check_host(host_, 1);
    EXPECT_FALSE(check.run_succeeds()) << "a run would hang as well";
    EXPECT_EQ(check.steps[iptables_step].result, "no answer within 1 s; it was left");
    EXPECT_TRUE(check.steps[iptables_step + 1].succeeded);
}

TEST_F(CheckedHost, WhatIsMissingInAPipeline) {
    fs::remove(folder_ + "/bin/ps");
    fs::remove(folder_ + "/bin/ip");
    const HostCheck check = check_host(host_);
    EXPECT_TRUE(check.run_succeeds());
    expect(check.findings, "ps is missing: NUMPROC, AVNUMPROC, NUMFILE");
    expect(check.findings, "ip is missing: NUMIPTENT");
}

TEST_F(CheckedHost, SocketsThatNothingCounts) {
    put("net/tcp6", 301);
    EXPECT_TRUE(socket_warnings(host_).empty()) << "the floor is enough for them";
    put("net/tcp", 101);
    expect(socket_warnings(host_), "the 300 TCP sockets of IPv6; only 100");
    put("net/tcp", 9001);
    EXPECT_TRUE(socket_warnings(host_).empty()) << "too few to matter";
    put("net/raw6", 500);
    expect(socket_warnings(host_), "499 UDP and raw sockets");
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
    expect(descriptor_warnings({751, 10, 0, 0}, 1000), "take 751 bytes, a command gets 1000");
    EXPECT_TRUE(descriptor_warnings({1, 8000, 1, 1313}, 1000).empty()) << "below the floor of 9312";
    expect(descriptor_warnings({1, 8000, 1, 1314}, 1000), "1 descriptors are of directories");
    EXPECT_TRUE(descriptor_warnings({1, 100001, 1, 10000}, 1000).empty()) << "a tenth";
}

TEST_F(CheckedHost, FoldersThatOthersMayWrite) {
    const std::string open_folder = folder_ + "/open";
    fs::create_directories(open_folder);
    chmod(open_folder.c_str(), 0777);
    const std::string path = folder_ + "/bin:" + open_folder + ":/nonexistent:relative:";
    const std::string why = ": commands may come from the working directory\n";
    const std::string open_word = "PATH has " + open_folder + ", which may be written by others\n";
    // A folder that is not root's is blamed for that first.
    EXPECT_EQ(own(search_path_warnings(path)), (geteuid() == 0 ? open_word : "") +
                                                   "PATH has relative" + why +
                                                   "PATH has an empty word" + why);

    const std::string script = open_folder + "/a//script";
    put("open/a/script", 1);
    expect(script_warnings(script), open_folder + ", on the way");
    if (geteuid() == 0) {
        chmod(open_folder.c_str(), 01777);
        EXPECT_TRUE(script_warnings(script).empty()) << "sticky, and the rest is root's";
        const std::string link = folder_ + "/link";
        fs::create_symlink(open_folder, link);
        EXPECT_TRUE(script_warnings(link + "/a/script").empty());
        ASSERT_EQ(lchown(link.c_str(), 65534, 65534), 0);
        expect(script_warnings(link + "/a/script"), link + ", on the way");
        ASSERT_EQ(chown(script.c_str(), 65534, 65534), 0);
        expect(script_warnings(script), "belongs to user 65534");
    }
    EXPECT_TRUE(script_warnings(open_folder + "/a/none").empty());
}

TEST_F(CheckedHost, TheMountThatMakesDfFail) {
    made_up_.put("mtab", "proc " + folder_ + " proc rw 0 0\nhost:/x " + folder_ +
                             "/gone fuse.sshfs rw 0 0\n");
    made_up_.answers["df -i -l"] = {1, "", "df: failed\n"};
    EXPECT_EQ(own(check_host(host_).findings),
              "the mount at " + folder_ +
                  "/gone (fuse.sshfs) makes df fail: No such file or directory\n");
}

}  // namespace
