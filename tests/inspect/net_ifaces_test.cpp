#include "inspect/net_ifaces.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tarnnet.h"

namespace {

NetIface make(std::vector<std::string> addresses, std::vector<std::string> configured) {
    const auto pointers = [](std::vector<std::string>& texts) {
        std::vector<char*> result;
        for (std::string& text : texts) {
            result.push_back(text.data());
        }
        result.push_back(nullptr);
        return result;
    };
    std::string name = "eth0";
    std::vector<char*> address_list = pointers(addresses);
    std::vector<char*> configured_list = pointers(configured);
    tarnnetif_info record = {};
    record.type = IFT_VNIC;
    record.name = name.data();
    record.addresses = addresses.empty() ? nullptr : address_list.data();
    record.conf_addresses = configured.empty() ? nullptr : configured_list.data();
    return make_net_iface(record);
}

TEST(NetIface, DropsPrefixLengthsAndOneLoopbackAddress) {
    const NetIface iface = make(
        {"10.1.2.3/24", "127.0.0.1/8", "127.0.0.2/8", "192.0.2.1", "127.0.0.1", "fe80::1/64"}, {});
    EXPECT_EQ(iface.if_type, 32U);
    EXPECT_EQ(iface.ifname, "eth0");
    EXPECT_EQ(iface.ip_addresses,
              (std::vector<std::string>{"10.1.2.3", "127.0.0.2", "192.0.2.1", "fe80::1"}));
}

TEST(NetIface, UsesDhcpWhenThatIsConfiguredFirst) {
    EXPECT_TRUE(make({}, {"dhcp", "10.0.0.1"}).dhcp);
    EXPECT_FALSE(make({}, {}).dhcp);
    EXPECT_FALSE(make({}, {"10.0.0.1", "dhcp"}).dhcp);
    EXPECT_FALSE(make({}, {"DHCP"}).dhcp);
}

}  // namespace
