#include "rtnl.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

#include "log.h"

namespace {

constexpr int socket_buffer_bytes = 32768;
constexpr size_t receive_buffer_bytes = 16384;
constexpr uint16_t dump_flags = NLM_F_REQUEST | NLM_F_ROOT | NLM_F_MATCH;
constexpr size_t header_bytes = sizeof(struct nlmsghdr);
constexpr size_t error_message_bytes = header_bytes + sizeof(struct nlmsgerr);

static_assert(header_bytes == 16 && error_message_bytes == 36, "the kernel's message format");
static_assert(sizeof(struct sockaddr_nl) == 12, "the kernel's address format");

struct sockaddr_nl netlink_address(unsigned groups) {
    struct sockaddr_nl address;
    memset(&address, 0, sizeof(address));
    address.nl_family = AF_NETLINK;
    address.nl_groups = groups;
    return address;
}

struct sockaddr* generic(struct sockaddr_nl* address) {
    return reinterpret_cast<struct sockaddr*>(address);
}

int failed(const char* what) {
    const int saved_errno = errno;
    perror(what);
    errno = saved_errno;
    return -1;
}

int set_buffer_size(int fd, int option, const char* name) {
    const int size = socket_buffer_bytes;
    return setsockopt(fd, SOL_SOCKET, option, &size, sizeof(size)) < 0 ? failed(name) : 0;
}

int read_local_address(struct rtnl_sock* sock) {
    socklen_t length = sizeof(sock->local_addr);
    if (getsockname(sock->fd, generic(&sock->local_addr), &length) < 0) {
        return failed("Cannot getsockname");
    }
    if (length != sizeof(sock->local_addr)) {
        tarnnetlog("Wrong address length %d", static_cast<int>(length));
        return -1;
    }
    if (sock->local_addr.nl_family != AF_NETLINK) {
        tarnnetlog("Wrong address family %d", static_cast<int>(sock->local_addr.nl_family));
        return -1;
    }
    return 0;
}

uint32_t next_dump_seq(struct rtnl_sock* sock) {
    sock->dump_seq = ++sock->seq;
    return sock->dump_seq;
}

struct nlmsghdr dump_header(struct rtnl_sock* sock, int type, size_t body_bytes) {
    struct nlmsghdr header;
    memset(&header, 0, sizeof(header));
    header.nlmsg_len = static_cast<uint32_t>(header_bytes + body_bytes);
    header.nlmsg_type = static_cast<uint16_t>(type);
    header.nlmsg_flags = dump_flags;
    header.nlmsg_seq = next_dump_seq(sock);
    return header;
}

bool answers_dump(const struct rtnl_sock* sock, const struct sockaddr_nl* sender,
                  const struct nlmsghdr* message) {
    return sender->nl_pid == 0 && message->nlmsg_pid == sock->local_addr.nl_pid &&
           message->nlmsg_seq == sock->dump_seq;
}

// The result of a dump that the kernel answers with an error; an acknowledgement counts as one.
int kernel_error(const struct nlmsghdr* message) {
    if (message->nlmsg_len < error_message_bytes) {
        tarnnetlog("ERROR truncated");
        return -1;
    }
    struct nlmsgerr answer;
    memcpy(&answer, message + 1, sizeof(answer));
    errno = static_cast<int>(0U - static_cast<unsigned>(answer.error));
    return failed("RTNETLINK answers");
}

// One message of the dump itself.
void take_answer(const struct sockaddr_nl* sender, struct nlmsghdr* message,
                 const struct rtnl_receivers* receivers, struct rtnl_walk* walk) {
    if (message->nlmsg_type == NLMSG_DONE) {
        walk->finished = 1;
        walk->result = 0;
        return;
    }
    if (message->nlmsg_type == NLMSG_ERROR) {
        walk->finished = 1;
        walk->result = kernel_error(message);
        return;
    }
    walk->result = receivers->filter(sender, message, receivers->filter_arg);
    walk->finished = walk->result < 0;
}

// A message of another request or from another sender.
void take_junk(const struct sockaddr_nl* sender, struct nlmsghdr* message,
               const struct rtnl_receivers* receivers, struct rtnl_walk* walk) {
    if (receivers->junk != nullptr) {
        walk->result = receivers->junk(sender, message, receivers->junk_arg);
        walk->finished = walk->result < 0;
    }
}

// Receives one datagram, however often that is interrupted. Its length, 0 at the end of the socket,
// or -1.
ssize_t receive_datagram(int fd, struct msghdr* header) {
    for (;;) {
        const ssize_t received = recvmsg(fd, header, 0);
        if (received >= 0 || (errno != EINTR && errno != EAGAIN && errno != EWOULDBLOCK)) {
            return received;
        }
    }
}

// Receives one datagram and walks it; the same result as for the walk alone.
struct rtnl_walk dump_step(struct rtnl_sock* sock, const struct rtnl_receivers* receivers,
                           char* buffer) {
    const struct rtnl_walk broken = {1, -1, 0};
    struct sockaddr_nl sender = {};  // stays the kernel when the socket names nobody
    struct iovec piece = {buffer, receive_buffer_bytes};
    struct msghdr header = {};
    header.msg_name = &sender;
    header.msg_namelen = sizeof(sender);
    header.msg_iov = &piece;
    header.msg_iovlen = 1;

    const ssize_t received = receive_datagram(sock->fd, &header);
    if (received < 0) {
        fprintf(stderr, "netlink receive error %s (%d)\n", strerror(errno), errno);
        return broken;
    }
    if (received == 0) {
        tarnnetlog("EOF on netlink");
        return broken;
    }
    const struct rtnl_walk walk =
        rtnl_walk_datagram(sock, &sender, buffer, static_cast<size_t>(received), receivers);
    if (walk.finished) {
        return walk;
    }
    if ((header.msg_flags & MSG_TRUNC) != 0) {
        tarnnetlog("Message truncated");
    } else if (walk.remaining > 0) {
        // Fatal on purpose: a kernel that sends half messages cannot be listened to any further.
        tarnnetlog("!!!Remnant of size %d", static_cast<int>(walk.remaining));
        exit(1);
    }
    return walk;
}

}  // namespace

int rtnl_open_byproto(struct rtnl_sock* sock, unsigned subscriptions, int protocol) {
    memset(sock, 0, sizeof(*sock));
    sock->fd = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, protocol);
    if (sock->fd < 0) {
        return failed("Cannot open netlink socket");
    }
    if (set_buffer_size(sock->fd, SO_SNDBUF, "SO_SNDBUF") < 0 ||
        set_buffer_size(sock->fd, SO_RCVBUF, "SO_RCVBUF") < 0) {
        return -1;
    }
    sock->local_addr = netlink_address(subscriptions);
    if (bind(sock->fd, generic(&sock->local_addr), sizeof(sock->local_addr)) < 0) {
        return failed("Cannot bind netlink socket");
    }
    if (read_local_address(sock) < 0) {
        return -1;
    }
    sock->seq = static_cast<uint32_t>(time(nullptr));
    return 0;
}

int rtnl_open(struct rtnl_sock* sock, unsigned subscriptions) {
    return rtnl_open_byproto(sock, subscriptions, NETLINK_ROUTE);
}

void rtnl_close(struct rtnl_sock* sock) {
    close(sock->fd);
}

int rtnl_wilddump_request(struct rtnl_sock* sock, int family, int type) {
    struct {
        struct nlmsghdr header;
        struct rtgenmsg body;
        unsigned char padding[3];
    } request;
    static_assert(sizeof(request) == 20, "the body is padded to four bytes");
    memset(&request, 0, sizeof(request));
    request.header = dump_header(sock, type, sizeof(request) - header_bytes);
    request.body.rtgen_family = static_cast<unsigned char>(family);
    return rtnl_send(sock, reinterpret_cast<const char*>(&request), sizeof(request));
}

int rtnl_dump_request(struct rtnl_sock* sock, int type, void* req, int len) {
    if (len < 0) {
        errno = EINVAL;
        return -1;
    }
    struct sockaddr_nl kernel = netlink_address(0);
    struct nlmsghdr header = dump_header(sock, type, static_cast<size_t>(len));
    struct iovec pieces[] = {{&header, sizeof(header)}, {req, static_cast<size_t>(len)}};
    struct msghdr message = {};
    message.msg_name = &kernel;
    message.msg_namelen = sizeof(kernel);
    message.msg_iov = pieces;
    message.msg_iovlen = 2;
    return static_cast<int>(sendmsg(sock->fd, &message, 0));
}

int rtnl_send(struct rtnl_sock* sock, const char* buf, int len) {
    if (len < 0) {
        errno = EINVAL;
        return -1;
    }
    struct sockaddr_nl kernel = netlink_address(0);
    return static_cast<int>(
        sendto(sock->fd, buf, static_cast<size_t>(len), 0, generic(&kernel), sizeof(kernel)));
}

struct rtnl_walk rtnl_walk_datagram(const struct rtnl_sock* sock, const struct sockaddr_nl* sender,
                                    void* datagram, size_t len,
                                    const struct rtnl_receivers* receivers) {
    struct rtnl_walk walk = {0, 0, len};
    auto* at = static_cast<char*>(datagram);
    while (walk.remaining >= header_bytes) {
        auto* message = static_cast<struct nlmsghdr*>(static_cast<void*>(at));
        if (message->nlmsg_len < header_bytes || message->nlmsg_len > walk.remaining) {
            break;
        }
        if (answers_dump(sock, sender, message)) {
            take_answer(sender, message, receivers, &walk);
        } else {
            take_junk(sender, message, receivers, &walk);
        }
        if (walk.finished) {
            break;
        }
        // The last message may come without its padding.
        const size_t step = (static_cast<size_t>(message->nlmsg_len) + 3) & ~size_t{3};
        if (step >= walk.remaining) {
            walk.remaining = 0;
            break;
        }
        at += step;
        walk.remaining -= step;
    }
    return walk;
}

int rtnl_dump_filter(struct rtnl_sock* sock, rtnl_filter_fn filter, void* arg1, rtnl_filter_fn junk,
                     void* arg2) {
    const struct rtnl_receivers receivers = {filter, arg1, junk, arg2};
    alignas(struct nlmsghdr) char buffer[receive_buffer_bytes];
    for (;;) {
        const struct rtnl_walk walk = dump_step(sock, &receivers, buffer);
        if (walk.finished) {
            return walk.result;
        }
    }
}
