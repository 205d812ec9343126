// The computation of the configuration, against numbers worked out with exact rational arithmetic.
// The scenarios of the idle and the busy host show the floors and more of the wraps.
#include "calc/container_config.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <vector>

namespace {

std::string configuration(const PhysParams& profile, ConfigScales scales = {},
                          std::int32_t page_size = 4096) {
    EnvConfig config;
    write_config(compute_config(profile, scales, page_size), config);
    return config.text();
}

// The values by name.
std::map<std::string, std::string> values(const std::string& text) {
    std::map<std::string, std::string> result;
    std::size_t start = 0;
    for (std::size_t end = 0; (end = text.find('\n', start)) != std::string::npos;
         start = end + 1) {
        const std::string line = text.substr(start, end - start);
        const std::size_t equals = line.find("=\"");
        result[line.substr(0, equals)] = line.substr(equals + 2, line.size() - equals - 3);
    }
    return result;
}

void expect_values(const std::string& text, const std::map<std::string, std::string>& expected) {
    auto found = values(text);
    for (const auto& [name, value] : expected) {
        EXPECT_EQ(found[name], value) << name;
    }
}

PhysParams measured_host() {
    PhysParams p;
    p.numproc = 120;
    p.avnumproc = 110.5F;
    p.numtcpsock = 40;
    p.numothersock = 300;
    p.numfile = 2500;
    p.numpty = 255;
    p.privvmpages = 150000;
    p.shmpages = 500;
    p.numflock = 20;
    p.numiptent = 30;
    p.diskspace = 5000000;
    p.diskinodes = 200000;
    return p;
}

TEST(ContainerConfig, AMeasuredHostLineForLine) {
    PhysParams profile = measured_host();
    profile.distribution = "debian";
    profile.hostname = "db1";
    profile.ifaces.push_back({2, "eth0", {"10.0.0.5", "10.0.0.6"}, false});
    profile.ns_attrs.search_domains = {"a.example", "b.example"};
    profile.ns_attrs.nameservers = {"10.0.0.1", "10.0.0.2"};
    profile.nfs_used = true;
    EXPECT_EQ(configuration(profile),
              "NUMPROC=\"288:288\"\n"
              "AVNUMPROC=\"180:180\"\n"
              "NUMTCPSOCK=\"432:432\"\n"
              "NUMOTHERSOCK=\"432:432\"\n"
              "NUMPTY=\"255:255\"\n"
              "NUMFILE=\"11174:11174\"\n"
              "DCACHESIZE=\"4719897:4719897\"\n"
              "KMEMSIZE=\"22414616:22414616\"\n"
              "TCPSNDBUF=\"27205632:28311552\"\n"
              "TCPRCVBUF=\"27205632:28311552\"\n"
              "OTHERSOCKBUF=\"27205632:28311552\"\n"
              "DGRAMRCVBUF=\"262144:262144\"\n"
              "PRIVVMPAGES=\"180000:198000\"\n"
              "VMGUARPAGES=\"180000:2147483647\"\n"
              "OOMGUARPAGES=\"180000:2147483647\"\n"
              "LOCKEDPAGES=\"307:307\"\n"
              "SHMPAGES=\"25804:25804\"\n"
              "PHYSPAGES=\"0:9223372036854775807\"\n"
              "NUMFLOCK=\"225:247\"\n"
              "NUMSIGINFO=\"256:256\"\n"
              "NUMIPTENT=\"153:153\"\n"
              "DISKSPACE=\"7500000:8250000\"\n"
              "DISKINODES=\"300000:330000\"\n"
              "CPUUNITS=\"1000\"\n"
              "QUOTATIME=\"0\"\n"
              "QUOTAUGIDLIMIT=\"0\"\n"
              "SLMMEMORYLIMIT=\"1103852288:1103852288\"\n"
              "SLMMODE=\"all\"\n"
              "DISTRIBUTION=\"debian\"\n"
              "HOSTNAME=\"db1\"\n"
              "#IP_ADDRESS=\"10.0.0.5 10.0.0.6 \"\n"
              "SEARCHDOMAIN=\"a.example b.example\"\n"
              "NAMESERVER=\"10.0.0.1 10.0.0.2\"\n"
              "FEATURES=\"nfs:on\"\n");
    EXPECT_EQ(profile.dcachesize, 0) << "the caller's profile keeps what was measured";
    EXPECT_EQ(profile.numproc, 120);
}

TEST(ContainerConfig, ANanScaleGivesTheLowestNumbersAndTheMemoryCap) {
    PhysParams profile;
    profile.avnumproc = 100.0F;
    const ConfigScales none = {std::nanf(""), std::nanf("")};
    expect_values(configuration(profile, none),
                  {{"NUMPROC", "18446744071562067968:18446744071562067968"},
                   {"AVNUMPROC", "18446744071562067968:18446744071562067968"},
                   {"NUMFILE", "255:255"},
                   {"DCACHESIZE", "107712:107712"},
                   {"TCPSNDBUF", "2147483647:0"},
                   {"OTHERSOCKBUF", "2147483647:0"},
                   {"PRIVVMPAGES", "65536:72089"},
                   {"SHMPAGES", "1024:1024"},
                   {"DISKSPACE", "18446744071562067968:18446744071562067968"},
                   {"SLMMEMORYLIMIT", "18446744073709547520:18446744073709547520"}});
    // The cap where the product of page size and page number does not wrap.
    expect_values(configuration(profile, none, 1), {{"SLMMEMORYLIMIT", "1073741823:1073741823"}});
}

TEST(ContainerConfig, TheEndsOfTheCounts) {
    PhysParams profile;
    profile.privvmpages = 2147483647;
    profile.numtcpsock = 32768;        // shifted by 16 bits: -2^31
    profile.quotaugidlimit = 1 << 30;  // doubled: -2^31, and then the floor
    profile.shmpages = -1;
    profile.diskspace = -3;  // -4.5 towards zero; a tenth more is -4.4
    profile.ns_attrs.nameservers = {""};
    expect_values(configuration(profile, {1.0F, 1.5F}),
                  {{"PRIVVMPAGES", "2147483647:2147483647"},
                   {"VMGUARPAGES", "2147483647:2147483647"},
                   {"NUMTCPSOCK", "32768:32768"},
                   {"TCPSNDBUF", "18446744071562067968:18446744071562067968"},
                   {"SHMPAGES", "21504:21504"},
                   {"QUOTAUGIDLIMIT", "1024"},
                   {"DISKSPACE", "18446744073709551612:18446744073709551612"},
                   {"NAMESERVER", ""}});
    profile.quotaugidlimit = 600;
    profile.privvmpages = 60000;  // 72000 is above the floor that 60000 is below
    expect_values(configuration(profile),
                  {{"QUOTAUGIDLIMIT", "1200"}, {"PRIVVMPAGES", "72000:79200"}});
    // 1.2 x (22414616 + 3 x 28311552 + 262144 + 65536 x (72089 + 307)), a float at every step.
    expect_values(configuration({}, {}, 65536), {{"SLMMEMORYLIMIT", "5822587392:5822587392"}});
}

TEST(ContainerConfig, LinesKnowWhatTheyAreMadeFrom) {
    const std::vector<ConfigLine> lines = compute_config({}, {}, 4096);
    EXPECT_EQ(lines.size(), 34U);
    std::map<std::string, std::string> made_from;
    for (const ConfigLine& line : lines) {
        std::string& text = made_from[line.name];
        for (const CountRule* rule : line.sources) {
            text.append(rule->count).append(" ");
        }
        text.append(line.margin > 1.0 ? "+" : "");
    }
    EXPECT_EQ(made_from["NUMFILE"], "numfile numtcpsock numothersock numpty avnumproc ");
    EXPECT_EQ(made_from["DCACHESIZE"], "numfile +");
    EXPECT_EQ(made_from["OTHERSOCKBUF"], "numothersock ");
    EXPECT_EQ(made_from["NUMFLOCK"], "numflock +");
    EXPECT_EQ(made_from["NUMSIGINFO"], "");
}

}  // namespace
