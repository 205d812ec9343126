// The search for a mount in the live table, and what the shell is asked about it.
#include <sys/stat.h>

#include <sstream>
#include <tuple>

#include "fuzz/support.h"
#include "inspect/quota_mgmt.h"
#include "inspect/shell_word.h"
#include "kiln/owners.h"

namespace {

bool same_file(const std::string& a, const std::string& b) {
    struct stat first {};
    struct stat second {};
    return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

struct Mount {
    bool listed = false;
    std::string point;
    bool usr = false;
    bool grp = false;
};

Mount expected_mount(const std::string& name, const std::string& table) {
    std::istringstream lines(table);
    for (std::string line; std::getline(lines, line);) {
        std::string fields[4];  // device, mount point, type, options
        std::istringstream rest(line);
        for (std::string& field : fields) {
            std::getline(rest, field, ' ');
        }
        if (same_file(fields[0], name) || same_file(fields[1], name)) {
            const std::string options = "," + fields[3] + ",";
            const auto has = [&](const char* one) { return options.find(one) != options.npos; };
            return {true, fields[1], has(",usrquota,") || has(",quota,"), has(",grpquota,")};
        }
    }
    return {};
}

// What is asked about a mount that may be asked about.
std::string expected_commands(const Mount& mount) {
    std::string commands;
    for (const std::string kind : {mount.usr ? "u" : "", mount.grp ? "g" : ""}) {
        if (!kind.empty() && is_plain_shell_word(mount.point)) {
            commands += "repquota -" + kind + "nv " + mount.point + "\n";
            commands += "VISUAL=cat EDITOR=cat edquota -" + kind + "tf " + mount.point + "\n";
        }
    }
    return commands;
}

}  // namespace

// Input: the device or mount point, the table.
void try_input(fuzz::Input input) {
    const std::vector<std::string> parts = input.sections(2);
    const std::string name = parts[0].substr(0, parts[0].find('\n'));
    const Kiln::Descriptor table(fuzz::file_of(parts[1]));
    std::string commands;
    Host host;
    host.paths.mtab = "/proc/self/fd/" + std::to_string(table.get());
    host.run = [&commands](const std::string& command, std::string& out, std::string&) {
        commands += command + "\n";
        out = "report\n";
        return 0;
    };
    const fuzz::ClosedConsole console;
    const QuotaMgmt quotas(host);
    const Mount mount = expected_mount(name, parts[1]);
    Mount found;
    found.listed =
        quotas.quota_is_enabled_phys(name.c_str(), found.usr, found.grp, &found.point) == 0;
    require(std::tie(found.listed, found.point, found.usr, found.grp) ==
                std::tie(mount.listed, mount.point, mount.usr, mount.grp),
            "the first line that names the file");

    std::string limits;
    std::string graces;
    const int result = quotas.quota_get_phys(name.c_str(), limits, graces);
    require(commands == expected_commands(mount), "users, then groups, of that mount alone");
    const bool asked = mount.listed && (!commands.empty() || !(mount.usr || mount.grp));
    require((result == 0) == asked, "a mount that is not asked about fails");
}
