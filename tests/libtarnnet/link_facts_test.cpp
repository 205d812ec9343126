// What the live read takes from the kernel's messages, handed to it as bytes.
#include "netinfo/link_facts.h"

#include <gtest/gtest.h>
#include <linux/if_addr.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <cstring>
#include <string>

#include "netinfo/link_tables.h"

namespace {

// One netlink message, put together piece by piece.
class Message {
public:
    explicit Message(uint16_t type) { header()->nlmsg_type = type; }

    template <class Body>
    Message& body(const Body& body) {
        return append(&body, sizeof body);
    }
    Message& attribute(uint16_t type, const std::string& payload) {
        rtattr head = {};
        head.rta_type = type;
        head.rta_len = static_cast<uint16_t>(RTA_LENGTH(payload.size()));
        append(&head, sizeof head);
        return append(payload.data(), payload.size());
    }
    Message& length(uint32_t length) {
        header()->nlmsg_len = length;
        return *this;
    }
    nlmsghdr* header() { return &space_.header; }

private:
    Message& append(const void* bytes, size_t size) {
        std::memcpy(space_.bytes + used_, bytes, size);
        used_ += size;
        header()->nlmsg_len = static_cast<uint32_t>(used_);
        used_ = NLMSG_ALIGN(used_);
        return *this;
    }

    union {
        nlmsghdr header;
        char bytes[2048];
    } space_ = {};
    size_t used_ = NLMSG_HDRLEN;
};

Message link_message(uint16_t hardware, const std::string& name, const std::string& hwaddr) {
    ifinfomsg body = {};
    body.ifi_type = hardware;
    body.ifi_index = 7;
    body.ifi_flags = 0x1003;
    Message message(RTM_NEWLINK);
    message.body(body).attribute(IFLA_IFNAME, name + '\0');
    return message.attribute(IFLA_ADDRESS, hwaddr);
}

Message address_message(unsigned char family, unsigned char prefix, const std::string& local,
                        const std::string& address, uint32_t link = 7) {
    ifaddrmsg body = {};
    body.ifa_family = family;
    body.ifa_prefixlen = prefix;
    body.ifa_index = link;
    Message message(RTM_NEWADDR);
    message.body(body);
    if (!address.empty())
        message.attribute(IFA_ADDRESS, address);
    if (!local.empty())
        message.attribute(IFA_LOCAL, local);
    return message;
}

std::string bytes(std::initializer_list<int> values) {
    std::string result;
    for (const int value : values)
        result += static_cast<char>(value);
    return result;
}

TEST(Link, ShowsTheHardwareAddressOfSomeTypesOnly) {
    for (const uint16_t type :
         std::initializer_list<uint16_t>{0, 1, 2, 6, 512, 3, 32, 65534, 778}) {
        link_entry link = {};
        ASSERT_TRUE(parse_link(link_message(type, "x0", "ABCD").header(), &link));
        const bool shown = type <= 2 || type == 6 || type == 512;
        EXPECT_STREQ(link.hwaddr, shown ? "41:42:43:44" : "") << type;
    }
    link_entry link = {};
    ASSERT_TRUE(parse_link(link_message(1, "x0", "").header(), &link));
    EXPECT_STREQ(link.hwaddr, "");
    EXPECT_EQ(link.flags, 0x1003u);
    EXPECT_EQ(link.index, 7u);
}

TEST(Link, IsIgnoredWithoutNameAsLoopbackAndCutShort) {
    link_entry link = {};
    EXPECT_FALSE(parse_link(link_message(772, "lo", "").header(), &link));
    Message nameless(RTM_NEWLINK);
    EXPECT_FALSE(parse_link(nameless.body(ifinfomsg{}).header(), &link));
    Message gone = link_message(1, "eth0", "");
    gone.header()->nlmsg_type = RTM_DELLINK;
    EXPECT_FALSE(parse_link(gone.header(), &link));
    for (uint32_t length = NLMSG_HDRLEN; length < NLMSG_LENGTH(sizeof(ifinfomsg)); ++length)
        EXPECT_FALSE(parse_link(link_message(1, "eth0", "").length(length).header(), &link));
}

TEST(Link, HasTextsThatAreCutAndNeverOverrun) {
    link_entry link = {};
    const std::string name(40, 'n');
    ASSERT_TRUE(parse_link(link_message(1, name, bytes({1, 2, 3, 4, 5, 6, 7, 8})).header(), &link));
    EXPECT_EQ(link.name, std::string(15, 'n'));
    EXPECT_STREQ(link.hwaddr, "01:02:03:04:05:06:0");
}

TEST(Address, IsTheLocalOneWithItsPrefixUnlessPointToPoint) {
    const std::string near = bytes({10, 0, 0, 1});
    const std::string far = bytes({192, 168, 255, 100});
    const std::string near6 = bytes({0xfd, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1});
    const std::string alike6 = bytes({0xfd, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2});
    const std::string far6 = bytes({0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2});
    const struct {
        unsigned char family;
        unsigned char prefix;
        std::string local;
        std::string address;
        const char* expected;
    } cases[] = {
        {AF_INET, 24, near, near, "10.0.0.1/24"},
        {AF_INET, 8, far, "", "192.168.255.100/8"},
        {AF_INET, 32, "", far, "192.168.255.100/32"},
        {AF_INET, 32, near, far, "10.0.0.1"},
        {AF_INET, 32, near, bytes({10, 0, 0, 2}), "10.0.0.1"},
        {AF_INET6, 64, "", near6, "fd00::1/64"},
        {AF_INET6, 128, near6, far6, "fd00::1"},
        {AF_INET6, 128, near6, alike6, "fd00::1/128"},  // only four bytes are compared
        {AF_INET, 24, "", "", nullptr},
        {AF_INET, 24, "\n", "", nullptr},  // shorter than an address
        {AF_INET6, 64, near, near, nullptr},
        {AF_UNSPEC, 24, near, near, nullptr},
    };
    for (const auto& c : cases) {
        address_entry entry = {};
        Message message = address_message(c.family, c.prefix, c.local, c.address);
        ASSERT_EQ(parse_address(message.header(), &entry), c.expected != nullptr) << &c - cases;
        if (c.expected != nullptr) {
            EXPECT_STREQ(entry.text, c.expected);
            EXPECT_EQ(entry.link, 7u);
        }
    }
    address_entry entry = {};
    Message cut = address_message(AF_INET, 24, near, near);
    EXPECT_FALSE(parse_address(cut.length(NLMSG_LENGTH(4)).header(), &entry));
}

// The addresses of three links, whose messages come mixed; one has more than fit.
TEST(Tables, KeepTheOrderOfALinksAddressesAndCutThemAt1023Characters) {
    link_tables tables = {};
    std::string whole;
    for (int i = 100; i < 200; ++i) {
        const uint32_t links[] = {9, 2, 9};
        for (size_t turn = 0; turn < (i < 102 ? 3 : 1); ++turn) {
            const std::string local = bytes({10, 0, static_cast<int>(turn), 255 - i});
            Message message = address_message(AF_INET, 24, local, local, links[turn]);
            ASSERT_EQ(collect_address(&tables, message.header()), 0);
        }
        whole += "10.0.0." + std::to_string(255 - i) + "/24 ";
        if (i < 102)
            whole += "10.0.2." + std::to_string(255 - i) + "/24 ";
    }
    sort_addresses(&tables);
    char text[ADDRESSES_SIZE];
    print_selected_addrinfo(&tables, 9, text);
    EXPECT_EQ(text, whole.substr(0, 1023));
    print_selected_addrinfo(&tables, 2, text);
    EXPECT_STREQ(text, "10.0.1.155/24 10.0.1.154/24");
    print_selected_addrinfo(&tables, 5, text);
    EXPECT_STREQ(text, "");
    free_link_tables(&tables);
}

}  // namespace
