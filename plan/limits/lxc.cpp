// Lines for the configuration of a container.
#include "plan/limits/host_text.h"
#include "plan/limits/unit_limits.h"
#include "plan/limits/writers.h"

namespace {

std::string bytes_text(std::int64_t mib) {
    constexpr std::int64_t bytes = 1048576;
    return std::to_string(mib * bytes);
}

void add_group_limits(CommentedText& text) {
    text.limit(LimitKind::memory,
               [](std::int64_t mib) { return "lxc.cgroup2.memory.max = " + bytes_text(mib); });
    text.limit(LimitKind::swap,
               [](std::int64_t mib) { return "lxc.cgroup2.memory.swap.max = " + bytes_text(mib); });
    text.limit(LimitKind::tasks, [](std::int64_t tasks) {
        return "lxc.cgroup2.pids.max = " + std::to_string(tasks);
    });
    text.limit(
        LimitKind::cpu_share,
        [](std::int64_t hundredths) {
            return "lxc.cgroup2.cpu.weight = " + std::to_string(cpu_weight(hundredths));
        },
        ", 100 for each core");
    // Microseconds of processor time in each 100,000.
    text.limit(LimitKind::cpu, [](std::int64_t tenths) {
        return "lxc.cgroup2.cpu.max = " + std::to_string(tenths * 10000) + " 100000";
    });
}

void add_process_limits_of_lxc(CommentedText& text) {
    text.limit(LimitKind::descriptors, [](std::int64_t soft) {
        return "lxc.prlimit.nofile = " + std::to_string(soft) + ":" +
               std::to_string(hard_descriptor_limit(soft));
    });
    text.limit(LimitKind::locked, [](std::int64_t mib) {
        return "lxc.prlimit.memlock = " + bytes_text(mib) + ":" + bytes_text(mib);
    });
}

}  // namespace

LimitsText write_lxc(const LimitSheet& sheet) {
    CommentedText text(sheet);
    text.heading();
    text.blank();
    text.comment("For /var/lib/lxc/NAME/config, on a host with control groups of version 2.");
    if (is_host_name(sheet.host_name)) {
        text.setting("HOSTNAME", "lxc.uts.name = " + sheet.host_name);
    } else if (!sheet.host_name.empty()) {
        text.refuse("HOSTNAME", sheet.host_name, "it is no host name");
    }
    add_group_limits(text);
    add_process_limits_of_lxc(text);
    text.limit(LimitKind::shm, [](std::int64_t mib) {
        return "lxc.mount.entry = tmpfs dev/shm tmpfs rw,nosuid,nodev,mode=1777,size=" +
               std::to_string(mib) + "m,create=dir 0 0";
    });
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
