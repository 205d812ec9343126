// What the live read takes from the kernel's messages, handed to it as bytes.
#include "netinfo/link_facts.h"

#include "made_up_host.h"
#include "netinfo/live_read.h"
#include "rtnl.h"

namespace {

std::string message_of_type(int hardware, const std::vector<Attribute>& attributes) {
    return make_message(RTM_NEWLINK, ifinfomsg{0, 0, static_cast<uint16_t>(hardware), 7, 0x1003, 0},
                        attributes);
}

TEST(Link, ShowsTheHardwareAddressOfSomeTypesOnlyAndCutsItsTexts) {
    const std::string name(40, 'n');
    link_entry link = {};
    for (const int type : {0, 1, 2, 6, 512, 3, 32, 65534, 778}) {
        std::string message =
            message_of_type(type, {{IFLA_IFNAME, name}, {IFLA_ADDRESS, "ABCDEFGH"}});
        ASSERT_TRUE(parse_link(header_of(message), &link));
        const bool shown = type <= 2 || type == 6 || type == 512;
        EXPECT_STREQ(link.hwaddr, shown ? "41:42:43:44:45:46:4" : "") << type;
    }
    EXPECT_EQ(link.name, name.substr(0, 15));
    EXPECT_TRUE(link.flags == 0x1003 && link.index == 7);
    for (std::string message : {message_of_type(772, {{IFLA_IFNAME, "lo"}}), message_of_type(1, {}),
                                make_message(RTM_DELLINK, ifinfomsg{}, {{IFLA_IFNAME, name}})})
        EXPECT_FALSE(parse_link(header_of(message), &link));
}

TEST(Address, IsTheLocalOneWithItsPrefixUnlessPointToPoint) {
    const std::string near("\12\0\0\1", 4);
    const std::string far = "\300\250\377\144";
    const std::string near6("\375\0\0\0\0\0\0\0\0\0\0\0\0\0\0\1", 16);
    const std::string alike6("\375\0\0\0\0\0\0\0\0\0\0\0\0\0\0\2", 16);
    const std::string far6("\376\200\0\0\0\0\0\0\0\0\0\0\0\0\0\2", 16);
    const struct {
        unsigned char family;
        unsigned char prefix;
        std::vector<Attribute> attributes;
        const char* expected;  // nothing when the message is ignored
    } cases[] = {
        {AF_INET, 24, {{IFA_ADDRESS, near}, {IFA_LOCAL, near}}, "10.0.0.1/24"},
        {AF_INET, 8, {{IFA_LOCAL, far}}, "192.168.255.100/8"},
        {AF_INET, 32, {{IFA_ADDRESS, {"\12\0\0\2", 4}}, {IFA_LOCAL, near}}, "10.0.0.1"},
        {AF_INET6, 64, {{IFA_ADDRESS, near6}}, "fd00::1/64"},
        {AF_INET6, 128, {{IFA_ADDRESS, far6}, {IFA_LOCAL, near6}}, "fd00::1"},
        // Only four bytes are compared.
        {AF_INET6, 128, {{IFA_ADDRESS, alike6}, {IFA_LOCAL, near6}}, "fd00::1/128"},
        {AF_INET, 24, {}, ""},
        {AF_INET6, 64, {{IFA_ADDRESS, near}}, ""},  // shorter than an address
        {AF_UNSPEC, 24, {{IFA_LOCAL, near}}, ""},
    };
    for (const auto& c : cases) {
        address_entry entry = {};
        std::string message =
            make_message(RTM_NEWADDR, ifaddrmsg{c.family, c.prefix, 0, 0, 7}, c.attributes);
        EXPECT_EQ(parse_address(header_of(message), &entry), *c.expected != '\0');
        EXPECT_STREQ(entry.text, c.expected);
        header_of(message)->nlmsg_type = RTM_DELADDR;
        EXPECT_FALSE(parse_address(header_of(message), &entry));
    }
}

// What is shorter than its structure is not looked at.
TEST(Message, IsSeenAsAStructureWhenItIsLongEnoughOnly) {
    std::string message = message_of_type(1, {{IFLA_IFNAME, "eth0"}});
    const message_bytes body = body_of(header_of(message));
    EXPECT_NE(body.begin_with<ifinfomsg>(), nullptr);
    EXPECT_EQ((message_bytes{body.start, sizeof(ifinfomsg) - 1}.begin_with<ifinfomsg>()), nullptr);
    link_entry link = {};
    for (const uint32_t length : {0u, 16u, 31u, 32u, 35u}) {
        header_of(message)->nlmsg_len = length;
        EXPECT_FALSE(parse_link(header_of(message), &link)) << length;
    }
}

TEST_F(MadeUpHost, HasTheAddressesOfItsLinksInTheirOrderCutAt1023Characters) {
    kernel_messages = {link_message(1, "vnic0", "\2abcde"), link_message(2, "vnix0", "\2abcde"),
                       link_message(3, "br0", "\2abcde"), address_message(AF_INET, 1, 9)};
    std::string all;
    for (char number = 120; number >= 20; --number) {
        kernel_messages.push_back(address_message(AF_INET, 2, number));
        all += (all.empty() ? "10.1.0." : ",10.1.0.") + std::to_string(number) + "/24";
    }
    kernel_messages.push_back(address_message(AF_INET, 1, 8));
    update_tarnnetif_info("br0", 0, IFU_TYPE, number_value(IFT_BRIDGE));
    read_single_ifconfioctl(TARNNET_READ_IPV4, 0);
    EXPECT_EQ(line_of(*find_tarnnetif_info("vnix0", 0, IFT_ETHERNET)),
              "vnix0 2 [" + all.substr(0, 1023) + "] []");
    const tarnnetif_info* vnic0 = find_tarnnetif_info("vnic0", 0, IFT_VNIC);
    EXPECT_EQ(line_of(*vnic0), "vnic0 32 [10.1.0.9/24,10.1.0.8/24] []");
    EXPECT_STREQ(vnic0->hwaddr, "02:61:62:63:64:65");
    EXPECT_NE(find_tarnnetif_info("br0", 0, IFT_BRIDGE), nullptr) << "keeps its kind";
}

}  // namespace
