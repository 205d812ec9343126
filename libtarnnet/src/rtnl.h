// Raw access to routing netlink: open a socket, ask for a whole table, walk the answer message by
// message, index the attributes of a message. Used by the interface inventory; knows nothing of
// links, addresses or records.
#pragma once

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/socket.h>

namespace tarnnet {

// Some bytes of a message, aligned to four as the kernel's format is: the one typed view of them.
struct message_bytes {
    unsigned char* start;
    size_t size;

    // The structure that the bytes begin with, or null when they are too few for it.
    template <class Structure>
    Structure* begin_with() const {
        void* untyped = start;
        return size < sizeof(Structure) ? nullptr : static_cast<Structure*>(untyped);
    }

    // The bytes as a list of attributes, each of which parse_rtattr() checks.
    rtattr* attributes() const {
        void* untyped = start;
        return static_cast<rtattr*>(untyped);
    }

    // What follows `length` bytes and their padding to four; the last piece may come without its
    // padding.
    message_bytes after(size_t length) const {
        const size_t step = (length + 3) & ~size_t{3};
        return step < size ? message_bytes{start + step, size - step} : message_bytes{start, 0};
    }
};

// What follows the header of a whole message.
inline message_bytes body_of(nlmsghdr* message) {
    unsigned char* start = reinterpret_cast<unsigned char*>(message);
    return message_bytes{start, message->nlmsg_len}.after(sizeof(nlmsghdr));
}

// What a whole attribute holds.
inline message_bytes payload_of(rtattr* attribute) {
    unsigned char* start = reinterpret_cast<unsigned char*>(attribute);
    return message_bytes{start, attribute->rta_len}.after(sizeof(rtattr));
}

// One open socket. It serves one thread at a time.
struct rtnl_sock {
    int fd;
    sockaddr_nl local_addr;  // as the kernel reports it after the bind
    sockaddr_nl peer_addr;   // zero: the kernel
    uint32_t seq;            // last sequence number used; starts at the time in seconds
    uint32_t dump_seq;       // sequence number of the dump in progress
};

// Is given the sender's address, one message and the caller's argument. The message lies in the
// receive buffer and is gone after the call. A negative result ends the dump.
using rtnl_filter_fn = int (*)(const sockaddr_nl* sender, nlmsghdr* message, void* argument);

// Open and bind a close-on-exec netlink socket of `protocol` (rtnl_open: routing), joined to the
// multicast groups `subscriptions`. 0, or -1 with the system error printed to standard error or the
// odd address logged. After a failure nothing is closed and the record cannot be used.
int rtnl_open_byproto(rtnl_sock* sock, unsigned subscriptions, int protocol);
int rtnl_open(rtnl_sock* sock, unsigned subscriptions);

void rtnl_close(rtnl_sock* sock);

// Ask for a whole table: of one address family, or with a request body of `len` bytes. The answers
// to an earlier request become junk. Bytes sent, or -1 with errno set.
int rtnl_wilddump_request(rtnl_sock* sock, int family, int type);
// Part of the interface; nothing in this project calls it.
int rtnl_dump_request(rtnl_sock* sock, int type, void* req, int len);

// Sends a prepared message to the kernel as it is. Bytes sent, or -1 with errno set.
int rtnl_send(rtnl_sock* sock, const char* buf, int len);

// Receives the answer to the last dump request and hands each of its messages to `filter`; messages
// that belong to no or another request go to `junk`, or are skipped without one. 0 at the end of
// the dump; a callback's negative result; -1 when receiving fails (printed), the kernel answers
// with an error (printed, errno set) or the socket ends (logged). A datagram with bytes left over
// behind its last message ends the process with status 1: standard streams are flushed, destructors
// and exit handlers do not run.
int rtnl_dump_filter(rtnl_sock* sock, rtnl_filter_fn filter, void* arg1, rtnl_filter_fn junk,
                     void* arg2);

// Who receives the messages of a dump.
struct rtnl_receivers {
    rtnl_filter_fn filter;
    void* filter_arg;
    rtnl_filter_fn junk;  // may be null
    void* junk_arg;
};

// How the walk over one datagram ended.
struct rtnl_walk {
    bool finished;     // the dump is over and `result` is its result
    int result;        // 0 or negative
    size_t remaining;  // bytes left over when not finished
};

// The walk of rtnl_dump_filter over one datagram.
rtnl_walk rtnl_walk_datagram(const rtnl_sock* sock, const sockaddr_nl* sender,
                             message_bytes datagram, const rtnl_receivers* receivers);

// Index the `len` bytes of attributes at `rta` by type: the slots 0 to `max` of `tb` are cleared
// and filled, larger types are left out, the last one of a type wins. Always 0. Bytes that make no
// whole attribute end the walk and are logged.
int parse_rtattr(rtattr* tb[], int max, rtattr* rta, int len);

// The same walk, but the first `max` attributes with a type of at most `max` are stored in their
// order into `tb` (`max` slots, cleared first). The number stored.
// Part of the interface; nothing in this project calls it.
int parse_rtattr_byindex(rtattr* tb[], int max, rtattr* rta, int len);

}  // namespace tarnnet
