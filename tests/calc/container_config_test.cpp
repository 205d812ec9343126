// The computation of the configuration, against numbers worked out with exact rational arithmetic.
// The scenarios of the idle and the busy host show whole results.
#include "calc/container_config.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include "calc/sample.h"
#include "kiln/strings.h"

namespace {

// A profile with the counts in the order of sampled_counts.
PhysParams counted(const std::vector<std::int32_t>& counts, float average = 0.0F) {
    PhysParams profile;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        profile.*sampled_counts[i].field = counts[i];
    }
    profile.avnumproc = average;
    return profile;
}

// 18446744071562067968 is -2^31, extended.
TEST(ContainerConfig, LineByLineAndAtTheEndsOfTheNumbers) {
    const ConfigScales nan = {std::nanf(""), std::nanf("")};
    // 32768 shifted by 16 bits is -2^31; -3 x 1.5 towards zero, and a tenth more is -4.4.
    PhysParams ends = counted({0, 32768, 0, 0, 2147483647, 0, -1, 0, 0, -3});
    ends.quotaugidlimit = 1 << 30;  // doubled: -2^31, and then the floor
    const std::tuple<PhysParams, ConfigScales, std::int32_t, const char*> cases[] = {
        {counted({}, 100.0F), nan, 4096,
         "NUMPROC=18446744071562067968:18446744071562067968 NUMFILE=255:255 "
         "AVNUMPROC=18446744071562067968:18446744071562067968 DCACHESIZE=107712:107712 "
         "TCPSNDBUF=2147483647:0 OTHERSOCKBUF=2147483647:0 PRIVVMPAGES=65536:72089 "
         "SHMPAGES=1024:1024 DISKSPACE=18446744071562067968:18446744071562067968 "
         "SLMMEMORYLIMIT=18446744073709547520:18446744073709547520"},
        // The cap where the product of page size and page number does not wrap.
        {{}, nan, 1, "SLMMEMORYLIMIT=1073741823:1073741823"},
        {ends,
         {1.0F, 1.5F},
         4096,
         "PRIVVMPAGES=2147483647:2147483647 VMGUARPAGES=2147483647:2147483647 "
         "NUMTCPSOCK=32768:32768 TCPSNDBUF=18446744071562067968:18446744071562067968 "
         "SHMPAGES=21504:21504 QUOTAUGIDLIMIT=1024 "
         "DISKSPACE=18446744073709551612:18446744073709551612"},
        // 1.2 x (22414616 + 3 x 28311552 + 262144 + 65536 x (72089 + 307)), floats at every step.
        {{}, {}, 65536, "SLMMEMORYLIMIT=5822587392:5822587392"},
        // The sum wraps as well.
        {counted({0, 0, 29999}),
         {},
         4096,
         "SLMMEMORYLIMIT=18446744071850520320:18446744071850520320"},
        // The margin of PRIVVMPAGES is a float: a double's would give 824724992.
        {counted({2000, 40000, 29999, 0, 250000, 1000000, 0, 500, 0, 2000000000}, 2000.0F),
         {2999.0F, 1.0F},
         4096,
         "NUMFILE=209927248:209927248 DCACHESIZE=18446744072618004736:18446744072618004736 "
         "KMEMSIZE=18446744071767937280:18446744071767937280 "
         "TCPSNDBUF=18446744071562067968:1908408320 "
         "OTHERSOCKBUF=18446744071562067968:18446744072796766208 "
         "PRIVVMPAGES=749750016:824725056 LOCKEDPAGES=2147483647:2147483647 "
         "NUMFLOCK=1499500:1649450 DISKSPACE=2000000000:2147483647 "
         "SLMMEMORYLIMIT=36500332888457216:36500332888457216"},
    };
    for (const auto& [profile, scales, page_size, lines] : cases) {
        EnvConfig config;
        write_config(compute_config(profile, scales, page_size), config);
        std::string text = "\n" + config.text();
        text.erase(std::remove(text.begin(), text.end(), '"'), text.end());
        for (const std::string& line : Kiln::split(" ", lines, 0)) {
            EXPECT_NE(text.find("\n" + line + "\n"), std::string::npos)
                << line << " not in" << text;
        }
    }
}

}  // namespace
