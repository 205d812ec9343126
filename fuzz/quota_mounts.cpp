// The search for a mount in the live table, and what the shell is asked about it.
#include <sys/mman.h>
#include <sys/stat.h>

#include <sstream>

#include "fuzz/support.h"
#include "inspect/quota_mgmt.h"
#include "inspect/shell_word.h"

namespace {

bool same_file(const std::string& a, const std::string& b) {
    struct stat first {};
    struct stat second {};
    return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

std::string table_with(const std::string& text) {
    static const int fd = memfd_create("table", MFD_CLOEXEC);
    fuzz::require(ftruncate(fd, 0) == 0 &&
                      pwrite(fd, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
                  "a file for the table");
    return "/proc/self/fd/" + std::to_string(fd);
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
        std::string device;
        std::string point;
        std::string type;
        std::string options;
        std::istringstream fields(line);
        std::getline(fields, device, ' ') && std::getline(fields, point, ' ') &&
            std::getline(fields, type, ' ') && std::getline(fields, options, ' ');
        if (same_file(device, name) || same_file(point, name)) {
            options = "," + options + ",";
            const auto has = [&](const char* one) { return options.find(one) != options.npos; };
            return {true, point, has(",usrquota,") || has(",quota,"), has(",grpquota,")};
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
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> parts = fuzz::sections(data, size, 2);
    const std::string name = parts[0].substr(0, parts[0].find('\n'));
    std::string commands;
    Host host;
    host.paths.mtab = table_with(parts[1]);
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
    fuzz::require(found.listed == mount.listed && found.point == mount.point &&
                      found.usr == mount.usr && found.grp == mount.grp,
                  "the first line that names the file");

    std::string limits;
    std::string graces;
    const int result = quotas.quota_get_phys(name.c_str(), limits, graces);
    fuzz::require(commands == expected_commands(mount), "users, then groups, of that mount alone");
    const bool asked = mount.listed && (!commands.empty() || !(mount.usr || mount.grp));
    fuzz::require((result == 0) == asked, "a mount that is not asked about fails");
    return 0;
}
