#include "inspect/net_ifaces.h"

#include <cstdint>
#include <memory>
#include <string>

#include "tarnnet.h"

namespace {

// Bridges and VLAN devices are left out: the container does not get them.
constexpr std::uint32_t wanted_kinds = IFT_GENERIC | IFT_ETHERNET | IFT_VETH | IFT_VNIC;
constexpr std::uint32_t host_id = 0;

struct ResultReleaser {
    void operator()(tarnnet_info* result) const { tarnnet_release_info(result); }
};

}  // namespace

// An address reads 10.1.2.3/24, that of a point-to-point link 10.1.2.3.
NetIface make_net_iface(const tarnnetif_info& record) {
    NetIface iface;
    iface.if_type = record.type;
    iface.ifname = record.name;
    for (char** entry = record.addresses; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const std::string address = text.substr(0, text.find('/'));
        if (address != "127.0.0.1") {  // this one only; other loopback addresses stay
            iface.ip_addresses.push_back(address);
        }
    }
    const char* const* configured = record.conf_addresses;
    iface.dhcp =
        configured != nullptr && *configured != nullptr && *configured == std::string("dhcp");
    return iface;
}

Kiln::Result<NetIfaceList> list_net_ifaces() {
    tarnnet_filter* filter =
        tarnnet_get_simple_filter(wanted_kinds, nullptr, nullptr, nullptr, host_id, host_id);
    if (filter == nullptr) {
        return Kiln::Reason{"Error: Could not alloc memory!"};
    }
    const std::unique_ptr<tarnnet_info, ResultReleaser> result(
        tarnnet_get_info(TARNNET_EVERYTHING, filter));
    tarnnet_release_filter(filter);  // the result does not need it
    if (!result || *result->records == nullptr) {
        return Kiln::Reason{"Error: Could not get network configuration!"};
    }
    NetIfaceList ifaces;
    for (tarnnetif_info** record = result->records; *record != nullptr; ++record) {
        ifaces.push_back(make_net_iface(**record));
    }
    return ifaces;
}
