// Lines for the configuration of a container.
#include "plan/limits/commented_text.h"
#include "plan/limits/host_text.h"

namespace {

// Microseconds of processor time in each 100,000.
std::string quota_text(std::int64_t tenths) {
    return decimal_text(tenths * 10000) + " 100000";
}

}  // namespace

LimitsText write_lxc(const LimitSheet& sheet) {
    CommentedText text(sheet);
    text.heading();
    text.blank();
    text.comment("For /var/lib/lxc/NAME/config, on a host with control groups of version 2.");
    text.host_name("lxc.uts.name = ");
    text.limit(LimitKind::memory, "lxc.cgroup2.memory.max = @", bytes_of_mib);
    text.limit(LimitKind::swap, "lxc.cgroup2.memory.swap.max = @", bytes_of_mib);
    text.limit(LimitKind::tasks, "lxc.cgroup2.pids.max = @");
    text.limit(LimitKind::cpu_share, "lxc.cgroup2.cpu.weight = @", cpu_weight,
               ", 100 for each core");
    text.limit(LimitKind::cpu, "lxc.cgroup2.cpu.max = @", quota_text);
    text.limit(LimitKind::descriptors, "lxc.prlimit.nofile = @", descriptor_range);
    text.limit(LimitKind::locked, "lxc.prlimit.memlock = @:@", bytes_of_mib);
    text.limit(LimitKind::shm,
               "lxc.mount.entry = tmpfs dev/shm tmpfs rw,nosuid,nodev,mode=1777,size=@m,"
               "create=dir 0 0");
    text.blank();
    text.disk_comments();
    text.resolver_comments();
    text.address_comments();
    text.bind_comments([](const std::string& path) {
        const std::string target = fstab_escaped(path);
        return "lxc.mount.entry = " + target + " " + target.substr(1) + " none bind,create=dir 0 0";
    });
    text.blank();
    text.lacking_comments(Engine::lxc);
    return text.finish();
}
