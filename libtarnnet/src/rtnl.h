// Raw access to routing netlink: open a socket, ask for a whole table, walk the answer message by
// message, index the attributes of a message. Used by the interface inventory; knows nothing of
// links, addresses or records.
#pragma once

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/socket.h>

// One open socket. It serves one thread at a time.
struct rtnl_sock {
    int fd;
    struct sockaddr_nl local_addr;  // as the kernel reports it after the bind
    struct sockaddr_nl peer_addr;   // zero: the kernel
    uint32_t seq;                   // last sequence number used; starts at the time in seconds
    uint32_t dump_seq;              // sequence number of the dump in progress
};

// Is given the sender's address, one message and the caller's argument. The message lies in the
// receive buffer and is gone after the call. A negative result ends the dump.
typedef int (*rtnl_filter_fn)(const struct sockaddr_nl* sender, struct nlmsghdr* message,
                              void* argument);

// Open and bind a close-on-exec netlink socket of `protocol` (rtnl_open: routing), joined to the
// multicast groups `subscriptions`. 0, or -1 with the system error printed to standard error or the
// odd address logged; the socket then stays open and the record is of no further use.
int rtnl_open_byproto(struct rtnl_sock* sock, unsigned subscriptions, int protocol);
int rtnl_open(struct rtnl_sock* sock, unsigned subscriptions);

void rtnl_close(struct rtnl_sock* sock);

// Ask for a whole table: of one address family, or with a request body of `len` bytes. The answers
// to an earlier request become junk. Bytes sent, or -1 with errno set.
int rtnl_wilddump_request(struct rtnl_sock* sock, int family, int type);
int rtnl_dump_request(struct rtnl_sock* sock, int type, void* req, int len);

// Sends a prepared message to the kernel as it is. Bytes sent, or -1 with errno set.
int rtnl_send(struct rtnl_sock* sock, const char* buf, int len);

// Receives the answer to the last dump request and hands each of its messages to `filter`; messages
// that belong to no or another request go to `junk`, or are skipped without one. 0 at the end of
// the dump; a callback's negative result; -1 when receiving fails (printed), the kernel answers
// with an error (printed, errno set) or the socket ends (logged). A datagram with bytes left over
// behind its last message ends the process with status 1.
int rtnl_dump_filter(struct rtnl_sock* sock, rtnl_filter_fn filter, void* arg1, rtnl_filter_fn junk,
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
    int finished;      // 1: the dump is over and `result` is its result
    int result;        // 0 or negative
    size_t remaining;  // bytes left over when not finished
};

// The walk of rtnl_dump_filter over one datagram of `len` bytes, aligned for a message header.
struct rtnl_walk rtnl_walk_datagram(const struct rtnl_sock* sock, const struct sockaddr_nl* sender,
                                    void* datagram, size_t len,
                                    const struct rtnl_receivers* receivers);

// Index the `len` bytes of attributes at `rta` by type: the slots 0 to `max` of `tb` are cleared
// and filled, larger types are left out, the last one of a type wins. Always 0. Bytes that make no
// whole attribute end the walk and are logged.
int parse_rtattr(struct rtattr* tb[], int max, struct rtattr* rta, int len);

// The same walk, but the first `max` attributes with a type of at most `max` are stored in their
// order into `tb` (`max` slots, cleared first). The number stored.
int parse_rtattr_byindex(struct rtattr* tb[], int max, struct rtattr* rta, int len);
