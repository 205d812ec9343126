// The netlink layer, fed with datagrams through a socket pair, and against the kernel itself.
#include "rtnl.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "made_up_host.h"

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
    void SetUp() override {
        int ends[2];
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, ends), 0);
        sock_.fd = ends[0];
        kernel_ = ends[1];
        sock_.local_addr.nl_pid = our_port;
        sock_.dump_seq = our_dump_seq;
    }
    void TearDown() override {
        rtnl_close(&sock_);
        close(kernel_);
    }
    int dump(const std::vector<std::string>& datagrams, rtnl_filter_fn junk = nullptr) {
        for (const std::string& datagram : datagrams)
            EXPECT_GE(::send(kernel_, datagram.data(), datagram.size(), 0), 0);
        return rtnl_dump_filter(&sock_, see, &seen_, junk, &junk_);
    }

    const std::string done_ = message(NLMSG_DONE, "1234") + message(RTM_NEWNEIGH);
    rtnl_sock sock_ = {};
    int kernel_ = -1;
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
}

TEST_F(RtnlDump, ANegativeCallbackResultEndsTheDumpAtOnce) {
    seen_.answer = -7;
    EXPECT_EQ(dump({message(link_type) + message(link_type)}), -7);
    junk_.answer = -5;
    EXPECT_EQ(dump({message(link_type, "", our_dump_seq + 1) + message(link_type)}, see), -5);
    EXPECT_EQ(seen_.types, Types{link_type});
}

TEST_F(RtnlDump, KernelErrorsArePrintedAndOddAnswersLogged) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(dump({message(link_type) + message(NLMSG_ERROR, bytes_of(nlmsgerr{-EPERM, {}}))}),
              -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(dump({message(NLMSG_ERROR, bytes_of(nlmsgerr{}))}), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "RTNETLINK answers: Operation not permitted\nRTNETLINK answers: Success\n");
    EXPECT_EQ(dump({message(NLMSG_ERROR, std::string(16, '\0'))}), -1);
    EXPECT_EQ(dump({""}), -1);
    // The second message is whole as sent and cut off as received; the dump goes on.
    const std::string big(984, 'x'), bigger(18984, 'x');
    EXPECT_EQ(dump({message(link_type, big) + message(RTM_NEWADDR, bigger), done_}), 0);
    EXPECT_EQ(seen_.types, (Types{link_type, link_type}));
    const std::string shorter = message(link_type, "", our_dump_seq, our_port, ~0u);
    const std::string longer = message(link_type, "", our_dump_seq, our_port, 1);
    for (const std::string& rest : {"1234567" + std::string(), shorter, longer})
        EXPECT_EXIT(
            {
                std::setvbuf(stderr, nullptr, _IOFBF, 1024);
                std::fputs("flushed", stderr);
                std::atexit([] { std::fputs(", and the exit handlers ran", stderr); });
                dump({message(link_type) + rest});
            },
            testing::ExitedWithCode(1), "^flushed$");
    EXPECT_EQ(logged_messages(),
              "ERROR truncated\nEOF on netlink\nMessage truncated\n!!!Remnant of size 7\n"
              "!!!Remnant of size 16\n!!!Remnant of size 16\n");
}

// An attribute here is its length field and its type; another four bytes stand for a value.
TEST(RtnlAttributes, AreIndexedByTheirFullTypeOrInTheirOrder) {
    rtattr list[] = {{5, 1}, {}, {4, 2}, {4, 4}, {4, 0x8003}, {8, 1}, {}};
    rtattr* const end = list + 6;
    rtattr* table[5] = {end, end, end, end, end};
    EXPECT_EQ(parse_rtattr(table, 3, list, sizeof(list)), 0);
    EXPECT_EQ(table[1], list + 5) << "the later one of a type wins";
    EXPECT_EQ(table[2], list + 2);
    EXPECT_TRUE(table[0] == nullptr && table[3] == nullptr);
    EXPECT_EQ(table[4], end) << "exactly four slots are cleared";
    table[3] = end;
    EXPECT_EQ(parse_rtattr_byindex(table, 3, list, sizeof(list)), 3);
    EXPECT_TRUE(table[0] == list && table[1] == list + 2 && table[2] == list + 5);
    EXPECT_EQ(table[3], end);
}

TEST_F(MadeUpHost, LogsADeficitOfAttributesWhereTheWalkStops) {
    rtattr* table[4];
    rtattr longer[] = {{8, 1}, {}, {12, 2}, {}}, shorter[] = {{3, 1}, {}};
    rtattr stump[] = {{4, 1}, {7, 2}};
    parse_rtattr(table, 3, longer, sizeof(longer));
    EXPECT_TRUE(table[1] == longer && table[2] == nullptr);
    EXPECT_EQ(parse_rtattr_byindex(table, 3, shorter, sizeof(shorter)), 0);
    parse_rtattr(table, 3, stump, 6);
    EXPECT_EQ(logged_messages(),
              "!!!Deficit 8, rta_len=12\n!!!Deficit 8, rta_len=3\n!!!Deficit 2, rta_len=7\n");
}

TEST(RtnlSocket, AsksTheKernelWithABodyOfTheCallers) {
    rtnl_sock sock;
    ASSERT_EQ(rtnl_open(&sock, RTMGRP_NOTIFY), 0);
    EXPECT_EQ(sock.local_addr.nl_groups, unsigned{RTMGRP_NOTIFY});
    const uint32_t start = sock.seq;
    EXPECT_NEAR(start, static_cast<double>(time(nullptr)), 60);
    ifinfomsg body = {};
    Seen seen;
    EXPECT_EQ(rtnl_dump_request(&sock, RTM_GETLINK, &body, sizeof(body)), 32);
    EXPECT_EQ(rtnl_dump_filter(&sock, see, &seen, nullptr, nullptr), 0);
    EXPECT_GE(seen.types.size(), 1u);
    EXPECT_TRUE(sock.seq == start + 1 && sock.dump_seq == start + 1);
    rtnl_close(&sock);
}

}  // namespace
