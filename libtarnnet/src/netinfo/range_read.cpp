#include "netinfo/range_read.h"

#include "netinfo/container_read.h"
#include "netinfo/live_read.h"
#include "netinfo/records.h"

namespace tarnnet {

namespace {

// A wider range than this many ids apart asks for the running containers instead.
constexpr uint32_t widest_range = 11;

void apply_host_link(void* /*argument*/, const link_facts* facts) {
    apply_link_facts(0, facts);
}

// The one listed last first.
void read_running_containers(uint32_t flags) {
    const running_containers running;
    for (uint32_t i = running.count(); i > 0; --i) {
        read_single_ifconfioctl(flags, running.veid(i - 1));
    }
}

}  // namespace

void read_single_ifconfioctl(uint32_t flags, uint32_t veid) {
    use_origin(veid, origin_live);
    if (veid == 0) {
        read_ifconfioctl_insider(flags, apply_host_link, nullptr);
    } else {
        read_container_links(flags, veid);
    }
    purge_old_generations();
}

void read_ifconfioctl(uint32_t flags, uint32_t min_veid, uint32_t max_veid) {
    if (max_veid < min_veid) {
        return;
    }
    const uint32_t distance = max_veid - min_veid;
    if (distance > widest_range) {
        read_running_containers(flags);
        return;
    }
    // Counted, not compared with max_veid, which may be the highest number there is.
    for (uint32_t i = 0; i <= distance; ++i) {
        read_single_ifconfioctl(flags, min_veid + i);
    }
}

}  // namespace tarnnet
