// The distribution's interface files.
#include "fuzz/support.h"
#include "kiln/strings.h"
#include "sysconfig.h"

using namespace tarnnet;

// Input: an interface name, the lines of an interface file.
void try_input(fuzz::Input input) {
    const std::vector<std::string> parts = input.sections(2);
    const std::string name = parts[0].substr(0, parts[0].find('\n')).c_str();
    for (const std::string& line : Kiln::split("\n", parts[1], -1)) {
        const bool dhcp = ifcfg_line_asks_dhcp(line.c_str());
        require(!dhcp || std::strstr(line.c_str(), "dhcp") != nullptr, "DHCP is named");
        require(dhcp == ifcfg_line_asks_dhcp((" \t" + line).c_str()),
                "leading blanks do not count");
        ifcfg_line_names_device(line.c_str(), name.c_str());
    }
    require(ifcfg_line_names_device(("DEVICE=" + name + "\n").c_str(), name.c_str()),
            "a plain device line names its device");
}
