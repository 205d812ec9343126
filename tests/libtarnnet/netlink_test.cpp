// The netlink layer, fed with datagrams through a socket pair, and what the live read takes from
// the messages.
#include "rtnl.h"

#include <sys/socket.h>
#include <unistd.h>

#include "made_up_host.h"
#include "netinfo/link_facts.h"
#include "netinfo/range_read.h"

namespace {

constexpr uint32_t our_port = 4711;
constexpr uint32_t our_dump_seq = 9;
constexpr uint16_t link_type = RTM_NEWLINK;

// A message of our dump unless told otherwise; `claims` is what its length field adds.
std::string message(uint16_t type, const std::string& body = "", uint32_t seq = our_dump_seq,
                    uint32_t port = our_port, uint32_t claims = 0) {
    const auto size = static_cast<uint32_t>(16 + body.size());
    return bytes_of(nlmsghdr{size + claims, type, 0, seq, port}) + body;
}

using Types = std::vector<uint32_t>;

// What the callbacks saw, and what they answer.
struct Seen {
    Types types;
    int answer = 0;
};

int see(const sockaddr_nl*, nlmsghdr* message, void* argument) {
    auto* seen = static_cast<Seen*>(argument);
    seen->types.push_back(message->nlmsg_type);
    return seen->answer;
}

class RtnlDump : public MadeUpHost {
protected:
    RtnlDump() {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, ends_), 0);
        sock_.fd = ends_[0];
        sock_.local_addr.nl_pid = our_port;
        sock_.dump_seq = our_dump_seq;
    }
    ~RtnlDump() override { rtnl_close(&sock_), close(ends_[1]); }
    int dump(const std::vector<std::string>& datagrams, rtnl_filter_fn junk = nullptr) {
        for (const std::string& datagram : datagrams)
            EXPECT_GE(::send(ends_[1], datagram.data(), datagram.size(), 0), 0);
        return rtnl_dump_filter(&sock_, see, &seen_, junk, &junk_);
    }

    const std::string done_ = message(NLMSG_DONE, "1234") + message(RTM_NEWNEIGH);
    rtnl_sock sock_ = {};
    int ends_[2] = {-1, -1};
    Seen seen_;
    Seen junk_;
};

TEST_F(RtnlDump, DeliversItsMessagesUntilDoneAndForeignOnesToJunk) {
    const std::vector<std::string> answer = {
        message(link_type, "1234") + message(RTM_NEWADDR),
        message(RTM_NEWADDR, "", our_dump_seq - 1) +
            message(NLMSG_DONE, "", our_dump_seq, our_port + 1) + message(RTM_NEWROUTE),
        done_};
    EXPECT_EQ(dump(answer), 0);
    EXPECT_EQ(seen_.types, (Types{link_type, RTM_NEWADDR, RTM_NEWROUTE}));
    EXPECT_EQ(dump(answer, see), 0);
    EXPECT_EQ(seen_.types.size(), 6u);
    EXPECT_EQ(junk_.types, (Types{RTM_NEWADDR, NLMSG_DONE}));
    sockaddr_nl stranger = {};
    stranger.nl_pid = 1;
    std::string done = done_;
    const rtnl_receivers nobody = {see, &seen_, nullptr, nullptr};
    const message_bytes bytes = {reinterpret_cast<unsigned char*>(done.data()), done.size()};
    EXPECT_FALSE(rtnl_walk_datagram(&sock_, &stranger, bytes, &nobody).finished);
    // A negative answer of a callback ends the dump at once.
    seen_.answer = -7;
    EXPECT_EQ(dump({message(link_type) + message(link_type)}), -7);
    junk_.answer = -5;
    EXPECT_EQ(dump({message(link_type, "", our_dump_seq + 1) + message(link_type)}, see), -5);
    EXPECT_EQ(seen_.types.size(), 7u);
}

TEST_F(RtnlDump, KernelErrorsArePrintedAndOddAnswersLogged) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(dump({message(link_type) + message(NLMSG_ERROR, bytes_of(nlmsgerr{-EPERM, {}}))}),
              -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "RTNETLINK answers: Operation not permitted\n");
    EXPECT_EQ(dump({message(NLMSG_ERROR, std::string(16, '\0'))}), -1);
    EXPECT_EQ(dump({""}), -1);
    // The second message is whole as sent and cut off as received; the dump goes on.
    const std::string big(984, 'x'), bigger(18984, 'x');
    EXPECT_EQ(dump({message(link_type, big) + message(RTM_NEWADDR, bigger), done_}), 0);
    EXPECT_EQ(seen_.types, (Types{link_type, link_type}));
    const std::string longer = message(link_type, "", our_dump_seq, our_port, 1);
    EXPECT_EXIT(dump({message(link_type) + longer}), testing::ExitedWithCode(1), "");
    EXPECT_EQ(logged_messages(),
              "ERROR truncated\nEOF on netlink\nMessage truncated\n!!!Remnant of size 16\n");
}

// An attribute here is its length field and its type; another four bytes stand for a value.
TEST_F(MadeUpHost, HasAttributesIndexedByTheirFullTypeAsFarAsTheyAreWhole) {
    rtattr list[] = {{5, 1}, {}, {4, 2}, {4, 4}, {4, 0x8003}, {8, 1}, {}, {12, 2}, {}};
    rtattr* table[5] = {list, list, list, list, list};
    EXPECT_EQ(parse_rtattr(table, 3, list, sizeof(list)), 0);
    EXPECT_EQ(table[1], list + 5) << "the later one of a type wins";
    EXPECT_EQ(table[2], list + 2);
    EXPECT_TRUE(table[0] == nullptr && table[3] == nullptr);
    EXPECT_EQ(table[4], list) << "exactly four slots are cleared";
    EXPECT_EQ(parse_rtattr_byindex(table, 3, list, sizeof(list)), 3);
    EXPECT_TRUE(table[0] == list && table[1] == list + 2 && table[2] == list + 5);
    const std::string logged = "!!!Deficit 8, rta_len=12\n";
    EXPECT_EQ(logged_messages(), logged + logged);
}

std::string link_of_type(uint16_t hardware, const std::vector<Attribute>& attributes) {
    return make_message(RTM_NEWLINK, ifinfomsg{0, 0, hardware, 7, 0x1003, 0}, attributes);
}

TEST(Link, ShowsTheHardwareAddressOfSomeTypesOnlyAndCutsItsTexts) {
    const std::string name(40, 'n');
    link_entry link = {};
    for (const uint16_t type : std::vector<uint16_t>{0, 1, 2, 6, 512, 3, 32, 65534, 778}) {
        std::string of = link_of_type(type, {{IFLA_IFNAME, name}, {IFLA_ADDRESS, "ABCDEFGH"}});
        ASSERT_TRUE(parse_link(header_of(of), &link));
        const bool shown = type <= 2 || type == 6 || type == 512;
        EXPECT_STREQ(link.hwaddr, shown ? "41:42:43:44:45:46:4" : "") << type;
    }
    EXPECT_EQ(link.name, name.substr(0, 15));
    EXPECT_TRUE(link.flags == 0x1003 && link.index == 7);
    for (std::string none : {link_of_type(772, {{IFLA_IFNAME, "lo"}}), link_of_type(1, {}),
                             make_message(RTM_DELLINK, ifinfomsg{}, {{IFLA_IFNAME, name}})})
        EXPECT_FALSE(parse_link(header_of(none), &link));
    // What is shorter than its structure is not looked at.
    std::string bytes = link_of_type(1, {{IFLA_IFNAME, "eth0"}});
    for (const uint32_t length : {0u, 16u, 31u, 32u, 35u}) {
        header_of(bytes)->nlmsg_len = length;
        EXPECT_FALSE(parse_link(header_of(bytes), &link)) << length;
    }
}

TEST(Address, IsTheLocalOneWithItsPrefixUnlessPointToPoint) {
    const std::string near("\12\0\0\1", 4);
    const std::string near6("\375\0\0\0\0\0\0\0\0\0\0\0\0\0\0\1", 16);
    const std::string alike6("\375\0\0\0\0\0\0\0\0\0\0\0\0\0\0\2", 16);
    const std::string far6("\376\200\0\0\0\0\0\0\0\0\0\0\0\0\0\2", 16);
    // The last one is empty when the message is ignored.
    const std::tuple<unsigned char, unsigned char, std::vector<Attribute>, const char*> cases[] = {
        {AF_INET, 24, {{IFA_ADDRESS, near}, {IFA_LOCAL, near}}, "10.0.0.1/24"},
        {AF_INET, 32, {{IFA_ADDRESS, {"\12\0\0\2", 4}}, {IFA_LOCAL, near}}, "10.0.0.1"},
        {AF_INET6, 64, {{IFA_ADDRESS, near6}}, "fd00::1/64"},
        {AF_INET6, 128, {{IFA_ADDRESS, far6}, {IFA_LOCAL, near6}}, "fd00::1"},
        // Only four bytes are compared.
        {AF_INET6, 128, {{IFA_ADDRESS, alike6}, {IFA_LOCAL, near6}}, "fd00::1/128"},
        {AF_INET, 24, {}, ""},
        {AF_INET6, 64, {{IFA_ADDRESS, near}}, ""},  // shorter than an address
    };
    for (const auto& [family, prefix, attributes, expected] : cases) {
        address_entry entry = {};
        const ifaddrmsg address = {family, prefix, 0, 0, 7};
        std::string bytes = make_message(RTM_NEWADDR, address, attributes);
        EXPECT_EQ(parse_address(header_of(bytes), &entry), *expected != '\0');
        EXPECT_STREQ(entry.text, expected);
        header_of(bytes)->nlmsg_type = RTM_DELADDR;
        EXPECT_FALSE(parse_address(header_of(bytes), &entry));
    }
}

TEST_F(MadeUpHost, HasTheAddressesOfItsLinksInTheirOrderCutAt1023Characters) {
    kernel_messages = {link_message(1, "vnic0", "\2abcde"), link_message(2, "vnix0", "\2abcde", 0),
                       link_message(3, "br0", "\2abcde"), address_message(AF_INET, 1, 9)};
    std::string all;
    for (char number = 120; number >= 20; --number) {
        kernel_messages.push_back(address_message(AF_INET, 2, number));
        all += (all.empty() ? "10.1.0." : ",10.1.0.") + std::to_string(number) + "/24";
    }
    kernel_messages.push_back(address_message(AF_INET, 1, 8));
    update_tarnnetif_info("br0", 0, IFU_TYPE, number_value(IFT_BRIDGE));
    read_single_ifconfioctl(TARNNET_READ_IPV4, 0);
    EXPECT_NE(find_tarnnetif_info("br0", 0, IFT_BRIDGE), nullptr) << "keeps its kind";
    const tarnnetif_info* vnix0 = find_tarnnetif_info("vnix0", 0, IFT_ETHERNET);
    const tarnnetif_info* vnic0 = find_tarnnetif_info("vnic0", 0, IFT_VNIC);
    EXPECT_EQ(line_of(*vnix0), "vnix0 2 [" + all.substr(0, 1023) + "] []");
    EXPECT_EQ(line_of(*vnic0), "vnic0 32 [10.1.0.9/24,10.1.0.8/24] []");
    EXPECT_STREQ(vnic0->hwaddr, "02:61:62:63:64:65");
    EXPECT_TRUE(vnic0->state == 1 && vnic0->link_flags == IFF_UP);
    EXPECT_TRUE(vnix0->state == 2 && vnix0->link_flags == 0);
}

}  // namespace
