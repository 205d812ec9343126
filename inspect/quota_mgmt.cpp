#include "inspect/quota_mgmt.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "inspect/host_file.h"
#include "inspect/shell_word.h"
#include "kiln/log.h"
#include "kiln/strings.h"

namespace {

enum MountField : std::size_t { device_field = 0, mount_point_field = 1, options_field = 3 };

bool is_same_file(const std::string& path, const struct stat& wanted) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && info.st_dev == wanted.st_dev &&
           info.st_ino == wanted.st_ino;
}

// The fields of the first line of the table whose device or mount point is the wanted file; at
// least four of them. Empty when there is none. The lines are taken as they are written, escapes
// included. A line reads: /dev/sda3 /home ext4 rw,relatime,usrquota,grpquota 0 0
std::vector<std::string> find_mount_line(const std::string& table, const struct stat& wanted) {
    for (const std::string& line : Kiln::split("\n", table, 0)) {
        std::vector<std::string> fields = Kiln::split(" ", line, 0);
        fields.resize(std::max<std::size_t>(fields.size(), options_field + 1));
        if (is_same_file(fields[device_field], wanted) ||
            is_same_file(fields[mount_point_field], wanted)) {
            return fields;
        }
    }
    return {};
}

// Appends what `command` prints to `output`. Returns 0, or -1 after logging the failure.
int append_output(const RunCommand& run, const std::string& command, std::string& output) {
    std::string printed;
    std::string complaint;
    if (run(command, printed, complaint) != 0) {
        return err(-1, 0, "Error running '%s':\n%s", command.c_str(), complaint.c_str());
    }
    output += printed;
    return 0;
}

}  // namespace

int QuotaMgmt::quota_is_enabled_phys(const char* name, bool& usr, bool& grp,
                                     std::string* mount_point) const {
    usr = false;
    grp = false;
    struct stat wanted {};
    if (stat(name, &wanted) != 0) {
        return err(-1, 0, "Partition or mount point '%s' does not exist", name);
    }
    const std::string& mtab = host_.paths.mtab;
    std::string table;
    if (const int error = read_host_file(mtab, table)) {
        return err(-1, 0, "Error reading '%s': %s", mtab.c_str(), std::strerror(error));
    }
    const std::vector<std::string> fields = find_mount_line(table, wanted);
    if (fields.empty()) {
        return err(-1, 0, "Partition or mount point '%s' is missing from %s", name, mtab.c_str());
    }
    for (const std::string& option : Kiln::split(",", fields[options_field], 0)) {
        usr = usr || option == "usrquota" || option == "quota";
        grp = grp || option == "grpquota";
    }
    *mount_point = fields[mount_point_field];
    return 0;
}

int QuotaMgmt::quota_get_phys(const char* device, std::string& limits, std::string& graces) const {
    bool usr = false;
    bool grp = false;
    std::string mount_point;
    if (const int failure = quota_is_enabled_phys(device, usr, grp, &mount_point)) {
        return failure;
    }
    limits.clear();
    graces.clear();
    const std::string kinds = std::string(usr ? "u" : "") + (grp ? "g" : "");
    // Whoever owns a directory above a mount point can rename it, and root's shell reads the name.
    if (!kinds.empty() && !is_plain_shell_word(mount_point)) {
        return err(-1, 0, "The shell would act on the mount point '%s' of '%s': not asked",
                   mount_point.c_str(), device);
    }
    for (const char kind : kinds) {
        // Numeric ids, all of them, with the header lines, which say whose quotas they are.
        if (append_output(host_.run, std::string("repquota -") + kind + "nv " + mount_point,
                          limits) != 0) {
            return -1;
        }
        // The editor of the grace periods, with a printer as its editor: it changes nothing. Nobody
        // reads the periods, but a device whose tools fail here does not count.
        const std::string editor = std::string("VISUAL=cat EDITOR=cat edquota -") + kind + "tf ";
        if (append_output(host_.run, editor + mount_point, graces) != 0) {
            return -1;
        }
    }
    return 0;
}
