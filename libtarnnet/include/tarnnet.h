/*
 * libtarnnet: the network interfaces of the host and of its containers.
 *
 * A caller makes a filter, takes an inventory with tarnnet_get_info(), reads the records and hands
 * everything back:
 *
 *     struct tarnnet_filter* filter = tarnnet_get_simple_filter(IFT_ALL, NULL, NULL, NULL, 0, 0);
 *     struct tarnnet_info* result =
 *         filter == NULL ? NULL : tarnnet_get_info(TARNNET_EVERYTHING, filter);
 *     tarnnet_release_filter(filter);
 *     if (result == NULL) return 1;
 *     for (struct tarnnetif_info** r = result->records; *r != NULL; r++) {
 *         if (strcmp((*r)->name, ".") == 0 || strcmp((*r)->name, "..") == 0) continue;
 *         puts((*r)->name);  // addresses, hwaddr and others may be NULL
 *     }
 *     tarnnet_release_info(result);
 *
 * Taking an inventory and changing the host's network are not the same thing: nothing here changes
 * an interface. Usable from C11 and from C++17; no function throws.
 */
#ifndef TARNNET_H
#define TARNNET_H

#include <stdint.h>

#if defined(__GNUC__)
#define TARNNET_API __attribute__((visibility("default")))
#else
#define TARNNET_API
#endif

/* The version of this header; pkg-config and the CMake package give the same. A larger minor number
 * only adds, and a larger major number is another shared library. */
#define TARNNET_VERSION_MAJOR 1
#define TARNNET_VERSION_MINOR 0
#define TARNNET_VERSION "1.0"

#ifdef __cplusplus
extern "C" {
#endif

/* Interface kinds, one bit each. A record has exactly one of them; a filter may ask for several. */
enum {
    IFT_GENERIC = 1,  /* not classified further; the "." and ".." of a bridge's port list too */
    IFT_ETHERNET = 2, /* has a hardware address and is none of the kinds below */
    IFT_BRIDGE = 4,
    IFT_VLAN = 8,
    IFT_VETH = 16, /* one end of a pair device between host and container */
    IFT_VNIC = 32, /* as IFT_ETHERNET, with a name that begins with "vnic" */
    IFT_ALL = 63
};

/* States of an interface; 0 where no source tells it, as for one that only the configuration names.
 * "Up" is what an administrator set ("ip link set eth0 up", IFF_UP). It does not say that there is
 * a cable or a peer: IFF_RUNNING in link_flags does. */
enum { TARNNET_STATE_UP = 1, TARNNET_STATE_DOWN = 2 };

/* Request flags of tarnnet_get_info(). */
#define TARNNET_READ_CONF 0x40u       /* first read the library's configuration file */
#define TARNNET_READ_IPV4 0x80u       /* take IPv4 addresses */
#define TARNNET_READ_IPV6 0x80000000u /* take IPv6 addresses */
#define TARNNET_EVERYTHING 0xffffffffu

/* Result codes of the lock functions. */
enum {
    TARNNET_ERR_STATE = 6, /* the library state or the lock file could not be set up */
    TARNNET_ERR_LOCK = 8   /* the file lock was refused */
};

/* The read that made a record. */
struct tarnnet_origin {
    uint32_t veid;   /* container that was read, 0 for the host */
    uint32_t source; /* 0: live interfaces, 1: configuration */
};

/* What only one kind of interface has. tarnnetif_info.type says which member is the valid one; for
 * the other kinds neither is. */
union tarnnetif_kind_data {
    struct {
        uint32_t peer_veid; /* container at the other end, 0 for the host */
        char* peer_name;    /* interface at the other end, or NULL */
    } veth;                 /* IFT_VETH */
    struct {
        char* vlan_master; /* underlying device, or NULL */
        uint32_t vlan_id;
    } vlan; /* IFT_VLAN */
};

/*
 * One interface. The library owns the record and every string in it; a caller reads them as long as
 * it holds the result that it found them in, and changes nothing. Every pointer but `name` and
 * `origin_name` may be NULL.
 */
struct tarnnetif_info {
    uint32_t set_mask;     /* which fields were ever set; of use to the library only */
    uint32_t type;         /* IFT_ kind */
    uint32_t veid;         /* container id, 0 for the host */
    char* name;            /* interface name */
    char* origin_name;     /* name as known at its origin; usually the very string of `name` */
    char* bridge;          /* bridge that this interface is a port of */
    char* network_id;      /* configured network that it belongs to */
    char** addresses;      /* NULL-terminated: "10.0.0.1/24"; no "/24" for point-to-point ones */
    char** conf_addresses; /* NULL-terminated: configured addresses, "dhcp" for a DHCP client */
    char* hwaddr;          /* hardware address: "00:1a:2b:3c:4d:5e" */
    uint32_t state;        /* TARNNET_STATE_, 0 when not known */
    uint32_t link_flags;   /* IFF_ bits as the kernel gave them */
    union tarnnetif_kind_data data;

    /* The library's own book-keeping from here on. */
    int32_t refcount;             /* results that hold the record */
    int32_t generation;           /* of the last update; -1: replaced while it was held */
    int32_t addr_generation;      /* in which `addresses` was last emptied */
    int32_t conf_addr_generation; /* in which `conf_addresses` was last emptied */
    struct tarnnet_origin origin;
    struct tarnnetif_info* prev;
    struct tarnnetif_info* next;
};

/*
 * Which records to return: the kind is in type_mask, the container id lies within
 * min_veid..max_veid (both included), and each given string equals the record's. A string that is
 * NULL matches every record; a record without the field matches only NULL.
 */
struct tarnnet_filter {
    uint32_t type_mask;
    char* bridge;
    char* network_id;
    char* name;
    uint32_t min_veid;
    uint32_t max_veid;
};

/* A result: NULL-terminated, interfaces with DHCP first, then the most recently found first. */
struct tarnnet_info {
    struct tarnnetif_info** records;
};

/*
 * Makes a filter. The strings are copied and may be NULL. Returns NULL when memory is short or the
 * library cannot be set up. The caller gives it back with tarnnet_release_filter().
 */
TARNNET_API struct tarnnet_filter* tarnnet_get_simple_filter(uint32_t type_mask, const char* bridge,
                                                             const char* network_id,
                                                             const char* name, uint32_t min_veid,
                                                             uint32_t max_veid);

/* Frees a filter; NULL is allowed. */
TARNNET_API void tarnnet_release_filter(struct tarnnet_filter* filter);

/*
 * Takes a fresh inventory and returns the records that match the filter (all of them for NULL).
 *
 * The filter's range of ids also decides what is read. Up to twelve ids: each of them. More: the
 * containers that run, and not the live interfaces of the host. NULL stands for 0..0x7fffffff, so
 * it is not the way to list a host: of that, its result has what configuration, pair devices, VLANs
 * and bridges tell, without live addresses and states. Ask for 0..0.
 *
 * Loopback devices (lo) are left out with all their addresses. One has a record only where the
 * configuration names it, and then no live address and no state.
 *
 * flags: TARNNET_READ_ bits. A source that cannot be read is left out; the result may be empty.
 * Returns NULL when the lock cannot be had or memory for the result is short. A result stays valid,
 * whatever inventories follow, until the caller gives it back with tarnnet_release_info().
 *
 * Waits for other callers in this process. Must not be called with the lock held. An answer of the
 * kernel that ends in half a message ends the process with status 1, its standard streams flushed
 * and its destructors and exit handlers not run.
 */
TARNNET_API struct tarnnet_info* tarnnet_get_info(uint32_t flags,
                                                  const struct tarnnet_filter* filter);

/* The same for a caller that holds the lock (either of the grab functions). */
TARNNET_API struct tarnnet_info* tarnnet_get_info_SL(uint32_t flags,
                                                     const struct tarnnet_filter* filter);

/* Gives a result back, after which its records may be gone; NULL is allowed. Waits for other
 * callers in this process; must not be called with the lock held. */
TARNNET_API void tarnnet_release_info(struct tarnnet_info* result);

/* The same for a caller that holds the lock. */
TARNNET_API void tarnnet_release_info_SL(struct tarnnet_info* result);

/*
 * The library lock, not recursive: it keeps other callers of this process out and, unless
 * in_process_only is non-zero, the writers of other processes too (a shared lock on
 * /tmp/tarnnetcfg.lck). Waits as long as it takes, whatever signals come.
 *
 * Returns 0 with the lock held, or
 * TARNNET_ERR_STATE when the library cannot be set up (nothing is held), or when the lock file
 *                   cannot be opened (or is a link, which is not followed): then the lock IS held
 *                   within this process and is to be released all the same,
 * TARNNET_ERR_LOCK  when the file lock is refused (nothing is held).
 */
TARNNET_API int grab_shared_tarnnetlock(int in_process_only);

/* The lock of a writer: keeps every other process out. Results as above.
 * Part of the interface; nothing in this project calls it. */
TARNNET_API int grab_excl_tarnnetlock(void);

/* Releases what either of the grab functions took. Only for a caller that holds the lock. */
TARNNET_API void release_tarnnetlock(void);

/*
 * Turns the library's log file, /var/log/tarnnetcfg.log, off (0) or on again (anything else). It is
 * on when the process starts. Counts for the whole process, from the next message on: a program
 * that wants no file made calls this before every other function. May be called at any time, from
 * any thread, with or without the lock. What goes to standard error is another matter and stays.
 */
TARNNET_API void tarnnet_set_log(int on);

#ifdef __cplusplus
}
#endif

#endif
