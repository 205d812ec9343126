// The netlink layer, fed with datagrams through a socket pair, and against the kernel itself.
#include "rtnl.h"

#include <fcntl.h>
#include <sys/time.h>

#include <cerrno>
#include <csignal>
#include <cstring>

#include "inventory_host.h"

namespace {

constexpr uint32_t kOurPort = 4711;
constexpr uint32_t kDump = 9;
constexpr uint16_t kLink = RTM_NEWLINK;

// The bytes of one datagram, message by message.
struct Datagram {
    std::string bytes;

    // A message of our dump unless told otherwise; `claims` is what its length field adds.
    Datagram& message(uint16_t type, const std::string& body = "", uint32_t seq = kDump,
                      uint32_t port = kOurPort, uint32_t claims = 0) {
        const nlmsghdr header = {static_cast<uint32_t>(16 + body.size()) + claims, type, 0, seq,
                                 port};
        bytes.append(reinterpret_cast<const char*>(&header), sizeof(header)) += body;
        return *this;
    }
    Datagram& claiming(uint32_t length) { return message(kLink, "", kDump, kOurPort, length - 16); }
};

std::string error_body(int code) {
    nlmsgerr error = {};
    error.error = -code;
    return {reinterpret_cast<const char*>(&error), sizeof(error)};
}

// What the callbacks saw, and what they answer.
struct Seen {
    std::vector<uint32_t> types;
    int answer = 0;
};

int see(const sockaddr_nl*, nlmsghdr* message, void* argument) {
    auto* seen = static_cast<Seen*>(argument);
    seen->types.push_back(message->nlmsg_type);
    return seen->answer;
}

class RtnlDump : public testing::Test {
protected:
    void SetUp() override {
        int ends[2];
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, ends), 0);
        sock_.fd = ends[0];
        kernel_ = ends[1];
        sock_.local_addr.nl_pid = kOurPort;
        sock_.dump_seq = kDump;
    }
    void TearDown() override {
        rtnl_close(&sock_);
        close(kernel_);
    }
    void send(const Datagram& datagram) {
        ASSERT_EQ(::send(kernel_, datagram.bytes.data(), datagram.bytes.size(), 0),
                  static_cast<ssize_t>(datagram.bytes.size()));
    }
    int dump() { return rtnl_dump_filter(&sock_, see, &seen_, nullptr, nullptr); }
    int dump_with_junk() { return rtnl_dump_filter(&sock_, see, &seen_, see, &junk_); }
    // The walk alone, for a datagram from `sender_port`.
    rtnl_walk walk(Datagram datagram, uint32_t sender_port = 0) {
        sockaddr_nl sender = {};
        sender.nl_pid = sender_port;
        const rtnl_receivers receivers = {see, &seen_, see, &junk_};
        return rtnl_walk_datagram(&sock_, &sender, datagram.bytes.data(), datagram.bytes.size(),
                                  &receivers);
    }

    rtnl_sock sock_ = {};
    int kernel_ = -1;
    Seen seen_;
    Seen junk_;
};

using Types = std::vector<uint32_t>;

TEST_F(RtnlDump, DeliversTheMessagesOfSeveralDatagramsUntilDone) {
    send(Datagram().message(kLink, "1234").message(RTM_NEWADDR));
    send(Datagram().message(RTM_NEWROUTE));
    send(Datagram().message(NLMSG_DONE, "1234").message(RTM_NEWNEIGH));
    EXPECT_EQ(dump(), 0);
    EXPECT_EQ(seen_.types, (Types{kLink, RTM_NEWADDR, RTM_NEWROUTE}));
}

TEST_F(RtnlDump, ForeignMessagesAreSkippedOrGoToJunk) {
    const Datagram done = Datagram().message(NLMSG_DONE);
    const Datagram foreign = Datagram()
                                 .message(RTM_NEWADDR, "", kDump - 1)
                                 .message(NLMSG_DONE, "", kDump, kOurPort + 1)
                                 .message(kLink);
    for (int turn = 0; turn < 2; ++turn) {
        send(foreign);
        send(done);
        EXPECT_EQ(turn == 0 ? dump() : dump_with_junk(), 0);
    }
    EXPECT_EQ(seen_.types, (Types{kLink, kLink}));
    EXPECT_EQ(junk_.types, (Types{RTM_NEWADDR, NLMSG_DONE}));
    EXPECT_FALSE(walk(done, 1).finished) << "whatever another sender says is junk";
    EXPECT_EQ(junk_.types.size(), 3U);
}

TEST_F(RtnlDump, ANegativeCallbackResultEndsTheDumpAtOnce) {
    seen_.answer = -7;
    send(Datagram().message(kLink).message(kLink));
    EXPECT_EQ(dump(), -7);
    junk_.answer = -5;
    send(Datagram().message(kLink, "", kDump + 1).message(kLink));
    EXPECT_EQ(dump_with_junk(), -5);
    EXPECT_EQ(seen_.types.size(), 1U);
}

TEST_F(RtnlDump, KernelErrorsArePrintedAndCarriedInErrno) {
    send(Datagram().message(kLink).message(NLMSG_ERROR, error_body(EPERM)));
    send(Datagram().message(NLMSG_ERROR, error_body(0)));
    testing::internal::CaptureStderr();
    EXPECT_EQ(dump(), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(dump(), -1) << "an acknowledgement ends a dump too";
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "RTNETLINK answers: Operation not permitted\nRTNETLINK answers: Success\n");
}

TEST_F(RtnlDump, OddAnswersAreLogged) {
    private_host::run([this] {
        send(Datagram().message(NLMSG_ERROR, std::string(16, '\0')));
        EXPECT_EQ(dump(), -1);
        send(Datagram());
        EXPECT_EQ(dump(), -1);
        // The second message is whole as sent and cut off as received; the dump goes on.
        send(Datagram()
                 .message(kLink, std::string(984, 'x'))
                 .message(RTM_NEWADDR, std::string(18984, 'x')));
        send(Datagram().message(NLMSG_DONE));
        EXPECT_EQ(dump(), 0);
        EXPECT_EQ(seen_.types, (Types{kLink}));
        Datagram remnant = Datagram().message(kLink);
        remnant.bytes += "1234567";
        EXPECT_EXIT((send(remnant), dump()), testing::ExitedWithCode(1), "");
        EXPECT_EQ(inventory_host::logged_messages(),
                  "ERROR truncated\nEOF on netlink\nMessage truncated\n"
                  "!!!Remnant of size 7\n");
    });
}

TEST_F(RtnlDump, TheWalkStopsAtAHeaderThatCannotBeTrue) {
    const struct {
        Datagram datagram;
        size_t remaining;
    } cases[] = {
        {Datagram().message(kLink).claiming(15), 16},  // shorter than a header
        {Datagram().message(kLink).claiming(17), 16},  // longer than what remains
        {Datagram().message(kLink).claiming(0xffffffff), 16},
        {Datagram().message(kLink, "1"), 0},  // the last message lacks its padding
    };
    for (const auto& c : cases) {
        seen_.types.clear();
        const rtnl_walk ended = walk(c.datagram);
        EXPECT_FALSE(ended.finished);
        EXPECT_EQ(ended.remaining, c.remaining);
        EXPECT_EQ(seen_.types, (Types{kLink}));
    }
}

int g_kernel_end = -1;

void send_done(int) {
    static const nlmsghdr done = {16, NLMSG_DONE, 0, kDump, kOurPort};
    ::send(g_kernel_end, &done, sizeof(done), 0);
}

TEST_F(RtnlDump, AnInterruptedReceiveIsRepeatedAndAFailedOnePrinted) {
    g_kernel_end = kernel_;
    struct sigaction action = {};
    struct sigaction saved = {};
    action.sa_handler = send_done;  // without SA_RESTART
    ASSERT_EQ(sigaction(SIGALRM, &action, &saved), 0);
    const itimerval soon = {{0, 0}, {0, 20000}};
    ASSERT_EQ(setitimer(ITIMER_REAL, &soon, nullptr), 0);
    EXPECT_EQ(dump(), 0);
    sigaction(SIGALRM, &saved, nullptr);

    rtnl_sock closed = sock_;
    closed.fd = -1;
    testing::internal::CaptureStderr();
    EXPECT_EQ(rtnl_dump_filter(&closed, see, &seen_, nullptr, nullptr), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "netlink receive error Bad file descriptor (9)\n");
}

// Attributes: length field, type, then a value of length - 4 bytes, padded.
struct Attributes {
    alignas(rtattr) char bytes[256] = {};
    int size = 0;

    Attributes& add(unsigned short length, unsigned short type, int present = -1) {
        const rtattr header = {length, type};
        memcpy(bytes + size, &header, sizeof(header));
        size += present >= 0 ? present : (length + 3) / 4 * 4;
        return *this;
    }
    rtattr* at(int offset) { return reinterpret_cast<rtattr*>(bytes + offset); }
};

TEST(RtnlAttributes, AreIndexedByTheirFullTypeUpToTheMaximum) {
    Attributes list;
    list.add(5, 1).add(4, 3).add(4, 4).add(4, 0x8003).add(8, 1);  // at 0, 8, 12, 16, 20
    rtattr sentinel = {};
    rtattr* table[5] = {&sentinel, &sentinel, &sentinel, &sentinel, &sentinel};
    EXPECT_EQ(parse_rtattr(table, 3, list.at(0), list.size), 0);
    EXPECT_EQ(table[0], nullptr);
    EXPECT_EQ(table[1], list.at(20)) << "the later one of a type wins";
    EXPECT_EQ(table[2], nullptr);
    EXPECT_EQ(table[3], list.at(8));
    EXPECT_EQ(table[4], &sentinel) << "exactly four slots are cleared";
}

TEST(RtnlAttributes, AreCollectedInTheirOrderAsLongAsThereAreSlots) {
    Attributes list;
    list.add(4, 2).add(4, 9).add(4, 2).add(4, 0).add(4, 1);
    rtattr sentinel = {};
    rtattr* table[4] = {nullptr, nullptr, nullptr, &sentinel};
    EXPECT_EQ(parse_rtattr_byindex(table, 3, list.at(0), list.size), 3);
    EXPECT_EQ(table[1], list.at(8)) << "a type above the maximum takes no slot";
    EXPECT_EQ(table[2], list.at(12));
    EXPECT_EQ(table[3], &sentinel);
    EXPECT_EQ(parse_rtattr_byindex(table, 3, list.at(0), 4), 1);
    EXPECT_EQ(table[1], nullptr);
}

TEST(RtnlAttributes, ADeficitStopsTheWalkAndIsLogged) {
    private_host::run([] {
        rtattr* table[4];
        Attributes longer, shorter, stump, unpadded;
        longer.add(8, 1).add(12, 2, 8);
        shorter.add(3, 1, 8);
        stump.add(4, 1).add(7, 2, 2);
        unpadded.add(5, 1, 5);
        parse_rtattr(table, 3, longer.at(0), longer.size);
        EXPECT_EQ(table[1], longer.at(0));
        EXPECT_EQ(table[2], nullptr);
        EXPECT_EQ(parse_rtattr_byindex(table, 3, shorter.at(0), shorter.size), 0);
        parse_rtattr(table, 3, stump.at(0), stump.size);
        parse_rtattr(table, 3, unpadded.at(0), unpadded.size);
        EXPECT_EQ(table[1], unpadded.at(0)) << "the last one may lack its padding";
        EXPECT_EQ(inventory_host::logged_messages(),
                  "!!!Deficit 8, rta_len=12\n!!!Deficit 8, rta_len=3\n!!!Deficit 2, rta_len=7\n");
    });
}

TEST(RtnlSocket, DumpsTheLinksOfTheKernel) {
    rtnl_sock sock;
    ASSERT_EQ(rtnl_open(&sock, 0), 0);
    EXPECT_NE(sock.local_addr.nl_pid, 0U);
    EXPECT_EQ(fcntl(sock.fd, F_GETFD), FD_CLOEXEC);
    const uint32_t first = sock.seq;
    Seen seen;
    EXPECT_EQ(rtnl_wilddump_request(&sock, AF_UNSPEC, RTM_GETLINK), 20);
    EXPECT_EQ(sock.dump_seq, first + 1);
    EXPECT_EQ(rtnl_dump_filter(&sock, see, &seen, nullptr, nullptr), 0);
    ASSERT_FALSE(seen.types.empty());
    EXPECT_EQ(seen.types, Types(seen.types.size(), RTM_NEWLINK));

    ifinfomsg body = {};
    Seen again;
    EXPECT_EQ(rtnl_dump_request(&sock, RTM_GETLINK, &body, sizeof(body)), 32);
    EXPECT_EQ(sock.seq, first + 2);
    EXPECT_EQ(rtnl_dump_filter(&sock, see, &again, nullptr, nullptr), 0);
    EXPECT_EQ(again.types, seen.types);
    rtnl_close(&sock);
}

TEST(RtnlSocket, SaysWhyItCannotBeOpened) {
    rtnl_sock sock;
    testing::internal::CaptureStderr();
    EXPECT_EQ(rtnl_open_byproto(&sock, 0, 300), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Cannot open netlink socket: Protocol not supported\n");
}

}  // namespace
