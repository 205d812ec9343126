// The computation of the configuration, against numbers worked out with exact rational arithmetic.
// The scenarios of the idle and the busy host show whole results.
#include "calc/container_config.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

// The lines without quotes, each between two blanks.
std::string configuration(const PhysParams& profile, ConfigScales scales = {},
                          std::int32_t page_size = 4096) {
    EnvConfig config;
    write_config(compute_config(profile, scales, page_size), config);
    std::string text = " " + config.text();
    std::replace(text.begin(), text.end(), '\n', ' ');
    text.erase(std::remove(text.begin(), text.end(), '"'), text.end());
    return text;
}

void expect_lines(const std::string& text, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) {
        EXPECT_NE(text.find(" " + line + " "), std::string::npos) << line << " is not in" << text;
    }
}

constexpr const char* lowest = "18446744071562067968:18446744071562067968";  // -2^31, extended

TEST(ContainerConfig, AMeasuredHost) {
    PhysParams p;
    p.numproc = 120;
    p.avnumproc = 110.5F;
    p.numtcpsock = 40;
    p.numothersock = 300;
    p.numfile = 2500;
    p.privvmpages = 150000;
    p.shmpages = 500;
    p.numflock = 20;
    p.numiptent = 30;
    p.diskspace = 5000000;
    p.diskinodes = 200000;
    p.hostname = "db1";
    p.ifaces.push_back({2, "eth0", {"10.0.0.5", "10.0.0.6"}, false});
    p.ns_attrs.search_domains = {"a.example", "b.example"};
    p.ns_attrs.nameservers = {""};
    p.nfs_used = true;
    EXPECT_EQ(
        configuration(p),
        " NUMPROC=288:288 AVNUMPROC=180:180 NUMTCPSOCK=432:432 NUMOTHERSOCK=432:432 "
        "NUMPTY=255:255 NUMFILE=11174:11174 DCACHESIZE=4719897:4719897 KMEMSIZE=22414616:22414616 "
        "TCPSNDBUF=27205632:28311552 TCPRCVBUF=27205632:28311552 OTHERSOCKBUF=27205632:28311552 "
        "DGRAMRCVBUF=262144:262144 PRIVVMPAGES=180000:198000 VMGUARPAGES=180000:2147483647 "
        "OOMGUARPAGES=180000:2147483647 LOCKEDPAGES=307:307 SHMPAGES=25804:25804 "
        "PHYSPAGES=0:9223372036854775807 NUMFLOCK=225:247 NUMSIGINFO=256:256 NUMIPTENT=153:153 "
        "DISKSPACE=7500000:8250000 DISKINODES=300000:330000 CPUUNITS=1000 QUOTATIME=0 "
        "QUOTAUGIDLIMIT=0 SLMMEMORYLIMIT=1103852288:1103852288 SLMMODE=all HOSTNAME=db1 "
        "#IP_ADDRESS=10.0.0.5 10.0.0.6  SEARCHDOMAIN=a.example b.example FEATURES=nfs:on ");
}

TEST(ContainerConfig, ANanScaleGivesTheLowestNumbersAndTheMemoryCap) {
    PhysParams p;
    p.avnumproc = 100.0F;
    const ConfigScales none = {std::nanf(""), std::nanf("")};
    expect_lines(
        configuration(p, none),
        {std::string("NUMPROC=") + lowest, std::string("AVNUMPROC=") + lowest, "NUMFILE=255:255",
         "DCACHESIZE=107712:107712", "TCPSNDBUF=2147483647:0", "OTHERSOCKBUF=2147483647:0",
         "PRIVVMPAGES=65536:72089", "SHMPAGES=1024:1024", std::string("DISKSPACE=") + lowest,
         "SLMMEMORYLIMIT=18446744073709547520:18446744073709547520"});
    // The cap where the product of page size and page number does not wrap.
    expect_lines(configuration(p, none, 1), {"SLMMEMORYLIMIT=1073741823:1073741823"});
}

TEST(ContainerConfig, TheEndsOfTheCounts) {
    PhysParams p;
    p.privvmpages = 2147483647;
    p.numtcpsock = 32768;        // shifted by 16 bits: -2^31
    p.quotaugidlimit = 1 << 30;  // doubled: -2^31, and then the floor
    p.shmpages = -1;
    p.diskspace = -3;  // -4.5 towards zero; a tenth more is -4.4
    expect_lines(
        configuration(p, {1.0F, 1.5F}),
        {"PRIVVMPAGES=2147483647:2147483647", "VMGUARPAGES=2147483647:2147483647",
         "NUMTCPSOCK=32768:32768", std::string("TCPSNDBUF=") + lowest, "SHMPAGES=21504:21504",
         "QUOTAUGIDLIMIT=1024", "DISKSPACE=18446744073709551612:18446744073709551612"});
    p.quotaugidlimit = 600;
    p.privvmpages = 60000;  // 72000 is above the floor that 60000 is below
    expect_lines(configuration(p), {"QUOTAUGIDLIMIT=1200", "PRIVVMPAGES=72000:79200"});
    PhysParams crowd;
    crowd.numproc = 500;
    crowd.avnumproc = 400.0F;  // 32 files each, of the average
    expect_lines(configuration(crowd), {"NUMFILE=15360:15360"});
    // 1.2 x (22414616 + 3 x 28311552 + 262144 + 65536 x (72089 + 307)), a float at every step.
    expect_lines(configuration({}, {}, 65536), {"SLMMEMORYLIMIT=5822587392:5822587392"});
}

// Products, sums and shifts wrap at 32 bits, some to positive numbers.
TEST(ContainerConfig, AHostThatIsTooBusy) {
    PhysParams p;
    p.numothersock = 29999;
    expect_lines(configuration(p),
                 {"NUMFILE=36685:36685", "OTHERSOCKBUF=18446744071681594368:18446744071773749248",
                  "SLMMEMORYLIMIT=18446744071850520320:18446744071850520320"});  // below zero
    p.numproc = 2000;
    p.avnumproc = 2000.0F;
    p.numtcpsock = 40000;
    p.privvmpages = 250000;
    p.lockedpages = 1000000;
    p.numflock = 500;
    p.diskspace = 2000000000;
    // The margin of PRIVVMPAGES is a float: a double's would give 824724992.
    expect_lines(
        configuration(p, {2999.0F, 1.0F}),
        {"NUMFILE=209927248:209927248", "DCACHESIZE=18446744072618004736:18446744072618004736",
         "KMEMSIZE=18446744071767937280:18446744071767937280",
         "TCPSNDBUF=18446744071562067968:1908408320",
         "OTHERSOCKBUF=18446744071562067968:18446744072796766208",
         "PRIVVMPAGES=749750016:824725056", "LOCKEDPAGES=2147483647:2147483647",
         "NUMFLOCK=1499500:1649450", "DISKSPACE=2000000000:2147483647",
         "SLMMEMORYLIMIT=36500332888457216:36500332888457216"});
}

}  // namespace
