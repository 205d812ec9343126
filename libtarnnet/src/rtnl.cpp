#include "rtnl.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

#include "log.h"
#include "owners.h"

namespace tarnnet {

namespace {

constexpr int socket_buffer_bytes = 32768;
constexpr size_t receive_buffer_bytes = 16384;
constexpr uint16_t dump_flags = NLM_F_REQUEST | NLM_F_ROOT | NLM_F_MATCH;
constexpr size_t header_bytes = sizeof(nlmsghdr);

sockaddr_nl netlink_address(unsigned groups) {
    sockaddr_nl address = {};
    address.nl_family = AF_NETLINK;
    address.nl_groups = groups;
    return address;
}

sockaddr* generic(sockaddr_nl* address) {
    return reinterpret_cast<sockaddr*>(address);
}

int failed(const char* what) {
    const int saved_errno = errno;
    perror(what);
    errno = saved_errno;
    return -1;
}

int receive_error() {
    fprintf(stderr, "netlink receive error %s (%d)\n", strerror(errno), errno);
    return -1;
}

int set_buffer_size(int fd, int option, const char* name) {
    const int size = socket_buffer_bytes;
    return setsockopt(fd, SOL_SOCKET, option, &size, sizeof(size)) < 0 ? failed(name) : 0;
}

int read_local_address(rtnl_sock* sock) {
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

uint32_t next_dump_seq(rtnl_sock* sock) {
    sock->dump_seq = ++sock->seq;
    return sock->dump_seq;
}

nlmsghdr dump_header(rtnl_sock* sock, int type, size_t body_bytes) {
    nlmsghdr header = {};
    header.nlmsg_len = static_cast<uint32_t>(header_bytes + body_bytes);
    header.nlmsg_type = static_cast<uint16_t>(type);
    header.nlmsg_flags = dump_flags;
    header.nlmsg_seq = next_dump_seq(sock);
    return header;
}

// Two sockets opened within a second count from the same number, so the port is compared too.
bool answers_dump(const rtnl_sock* sock, const sockaddr_nl* sender, const nlmsghdr* message) {
    return sender->nl_pid == 0 && message->nlmsg_pid == sock->local_addr.nl_pid &&
           message->nlmsg_seq == sock->dump_seq;
}

// The result of a dump that the kernel answers with an error; an acknowledgement counts as one.
int kernel_error(nlmsghdr* message) {
    const auto* answer = body_of(message).begin_with<nlmsgerr>();
    if (answer == nullptr) {
        tarnnetlog("ERROR truncated");
        return -1;
    }
    // The code comes negated; the lowest one has no positive counterpart.
    errno = static_cast<int>(0U - static_cast<unsigned>(answer->error));
    return failed("RTNETLINK answers");
}

// One message of the dump itself. An answer goes over several datagrams, each full of whole
// messages, and its last message is NLMSG_DONE.
void take_answer(const sockaddr_nl* sender, nlmsghdr* message, const rtnl_receivers* receivers,
                 rtnl_walk* walk) {
    if (message->nlmsg_type == NLMSG_DONE) {
        walk->finished = true;
        walk->result = 0;
        return;
    }
    if (message->nlmsg_type == NLMSG_ERROR) {
        walk->finished = true;
        walk->result = kernel_error(message);
        return;
    }
    walk->result = receivers->filter(sender, message, receivers->filter_arg);
    walk->finished = walk->result < 0;
}

// A message of another request or from another sender.
void take_junk(const sockaddr_nl* sender, nlmsghdr* message, const rtnl_receivers* receivers,
               rtnl_walk* walk) {
    if (receivers->junk != nullptr) {
        walk->result = receivers->junk(sender, message, receivers->junk_arg);
        walk->finished = walk->result < 0;
    }
}

// Receives one datagram, however often that is interrupted. Its length, 0 at the end of the socket,
// or -1.
ssize_t receive_datagram(int fd, msghdr* header) {
    for (;;) {
        const ssize_t received = recvmsg(fd, header, 0);
        if (received >= 0 || (errno != EINTR && errno != EAGAIN && errno != EWOULDBLOCK)) {
            return received;
        }
    }
}

// The kernel's answer ends in half a message: nothing that follows could be told apart, so that the
// process has to end. Without its destructors, which would wait for the lock that is held here.
[[noreturn]] void end_process(size_t remaining) {
    tarnnetlog("!!!Remnant of size %d", static_cast<int>(remaining));
    fflush(nullptr);
    _exit(1);
}

// Receives one datagram into the buffer and walks it; the same result as for the walk alone.
rtnl_walk dump_step(rtnl_sock* sock, const rtnl_receivers* receivers, message_bytes buffer) {
    constexpr rtnl_walk broken = {true, -1, 0};
    sockaddr_nl sender = {};  // stays the kernel when the socket names nobody
    iovec piece = {buffer.start, buffer.size};
    msghdr header = {};
    header.msg_name = &sender;
    header.msg_namelen = sizeof(sender);
    header.msg_iov = &piece;
    header.msg_iovlen = 1;

    const ssize_t received = receive_datagram(sock->fd, &header);
    if (received < 0) {
        receive_error();
        return broken;
    }
    if (received == 0) {
        tarnnetlog("EOF on netlink");
        return broken;
    }
    const message_bytes datagram = {buffer.start, static_cast<size_t>(received)};
    const rtnl_walk walk = rtnl_walk_datagram(sock, &sender, datagram, receivers);
    if (walk.finished) {
        return walk;
    }
    // What was cut off leaves bytes over as well, and is not the kernel's mistake.
    if ((header.msg_flags & MSG_TRUNC) != 0) {
        tarnnetlog("Message truncated");
    } else if (walk.remaining > 0) {
        end_process(walk.remaining);
    }
    return walk;
}

}  // namespace

int rtnl_open_byproto(rtnl_sock* sock, unsigned subscriptions, int protocol) {
    memset(sock, 0, sizeof(*sock));  // also the address of the kernel, which is all zeros
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

int rtnl_open(rtnl_sock* sock, unsigned subscriptions) {
    return rtnl_open_byproto(sock, subscriptions, NETLINK_ROUTE);
}

void rtnl_close(rtnl_sock* sock) {
    close(sock->fd);
}

int rtnl_wilddump_request(rtnl_sock* sock, int family, int type) {
    struct {
        nlmsghdr header;
        rtgenmsg body;
        unsigned char padding[3];  // to four bytes
    } request = {};
    request.header = dump_header(sock, type, sizeof(request) - header_bytes);
    request.body.rtgen_family = static_cast<unsigned char>(family);
    return rtnl_send(sock, reinterpret_cast<const char*>(&request), sizeof(request));
}

int rtnl_dump_request(rtnl_sock* sock, int type, void* req, int len) {
    if (len < 0) {
        errno = EINVAL;
        return -1;
    }
    sockaddr_nl kernel = netlink_address(0);
    nlmsghdr header = dump_header(sock, type, static_cast<size_t>(len));
    iovec pieces[] = {{&header, sizeof(header)}, {req, static_cast<size_t>(len)}};
    msghdr message = {};
    message.msg_name = &kernel;
    message.msg_namelen = sizeof(kernel);
    message.msg_iov = pieces;
    message.msg_iovlen = 2;
    return static_cast<int>(sendmsg(sock->fd, &message, 0));
}

int rtnl_send(rtnl_sock* sock, const char* buf, int len) {
    if (len < 0) {
        errno = EINVAL;
        return -1;
    }
    sockaddr_nl kernel = netlink_address(0);
    return static_cast<int>(
        sendto(sock->fd, buf, static_cast<size_t>(len), 0, generic(&kernel), sizeof(kernel)));
}

rtnl_walk rtnl_walk_datagram(const rtnl_sock* sock, const sockaddr_nl* sender,
                             message_bytes datagram, const rtnl_receivers* receivers) {
    rtnl_walk walk = {false, 0, 0};
    while (auto* message = datagram.begin_with<nlmsghdr>()) {
        if (message->nlmsg_len < header_bytes || message->nlmsg_len > datagram.size) {
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
        datagram = datagram.after(message->nlmsg_len);
    }
    walk.remaining = datagram.size;
    return walk;
}

int rtnl_dump_filter(rtnl_sock* sock, rtnl_filter_fn filter, void* arg1, rtnl_filter_fn junk,
                     void* arg2) {
    const rtnl_receivers receivers = {filter, arg1, junk, arg2};
    // Not on the stack, which may be a small one.
    const owned_bytes buffer(static_cast<unsigned char*>(malloc(receive_buffer_bytes)));
    if (!buffer) {
        return receive_error();
    }
    for (;;) {
        const rtnl_walk walk = dump_step(sock, &receivers, {buffer.get(), receive_buffer_bytes});
        if (walk.finished) {
            return walk.result;
        }
    }
}

}  // namespace tarnnet
