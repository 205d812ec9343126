// The inventory as callers take it.
#include <stddef.h>

#include "netinfo/kind_sources.h"
#include "netinfo/range_read.h"
#include "netinfo/records.h"
#include "netinfo/single_conf.h"
#include "tarnnet.h"

namespace {

constexpr uint32_t highest_veid = 0x7fffffff;  // of a call without filter

}  // namespace

tarnnet_info* tarnnet_get_info_SL(uint32_t flags, const tarnnet_filter* filter) {
    const uint32_t min_veid = filter == nullptr ? 0 : filter->min_veid;
    const uint32_t max_veid = filter == nullptr ? highest_veid : filter->max_veid;
    // The order decides the result. The configuration comes first, as the bridges take their
    // networks from it; then the links, so that files can say of what kind they are. DHCP is last:
    // it looks at every record, and its mark, of a later generation, takes the place of configured
    // addresses.
    tarnnet::purge_all_generations();
    if ((flags & TARNNET_READ_CONF) != 0) {
        tarnnet::read_single_conf(flags, 0);
    }
    tarnnet::read_ifconfioctl(flags, min_veid, max_veid);
    // These files are the host's.
    if (min_veid == 0) {
        tarnnet::read_iface_types();
        tarnnet::check_sysconf();  // without memory nothing is marked
    }
    return tarnnet::get_cached_info(filter);
}

tarnnet_info* tarnnet_get_info(uint32_t flags, const tarnnet_filter* filter) {
    if (grab_shared_tarnnetlock(1) != 0) {
        return nullptr;
    }
    tarnnet_info* result = tarnnet_get_info_SL(flags, filter);
    release_tarnnetlock();
    return result;
}

void tarnnet_release_info(tarnnet_info* result) {
    // The lock of this process alone, which is all that the records need.
    if (result == nullptr || grab_shared_tarnnetlock(1) != 0) {
        return;
    }
    tarnnet_release_info_SL(result);
    release_tarnnetlock();
}
