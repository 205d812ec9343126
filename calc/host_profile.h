// The records of one run: what was measured on the host and what the inspection noted about it.
// Filled by the steps of TarnHWCalc, read by the computation of the configuration and by the entry.
// Plain values throughout: every record owns its strings and lists, copying is deep.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Something that the administrator must know about, raised by an inspection step.
struct TarnACalculateHWNodeWarning {
    std::int32_t code = 0;  // the kind of warning: 0 distribution, 4 reiserfs
    std::string message;    // the text that the entry prints
};

// A path that must not be copied into the container.
struct TarnAExcludePath {
    bool flag = false;  // false only for mounts of kernel file systems, see MntFlags
    std::string path;   // the text that the entry prints
};

struct TarnACalculateHWNodeNotes {
    std::vector<TarnACalculateHWNodeWarning> warnings;
    std::vector<TarnAExcludePath> excludes;
};

// The resolver's settings.
struct NSAttrs {
    std::vector<std::string> nameservers;
    std::vector<std::string> search_domains;
};

// One network interface as the calculator keeps it.
struct NetIface {
    std::uint32_t if_type = 0;  // one kind bit of libtarnnet (IFT_GENERIC and so on)
    std::string ifname;
    std::vector<std::string>
        ip_addresses;   // without prefix lengths; "127.0.0.1" is never among them
    bool dhcp = false;  // the first configured address is exactly "dhcp"
};

// The interfaces in the library's order.
class NetIfaceList : public std::vector<NetIface> {
public:
    // Every address of every interface, each followed by one blank; empty without addresses.
    std::string get_ip() const;

    // The ethernet interfaces as "ifname=NAME[,dhcp=yes]" with ";" before each one that is not the
    // first of the whole list.
    std::string get_netif() const;
};

// The host profile. The counters are signed and hold the largest value seen; they start at 0.
struct PhysParams {
    std::int32_t numproc = 0;
    float avnumproc = 0.0F;  // running average of numproc over the passes
    std::int32_t numtcpsock = 0;
    std::int32_t numothersock = 0;
    std::int32_t numfile = 0;
    std::int32_t numpty = 0;
    std::int32_t privvmpages = 0;  // 4-KiB pages
    std::int32_t lockedpages = 0;  // 4-KiB pages
    std::int32_t shmpages = 0;     // pages, as ipcs counts them
    std::int32_t numflock = 0;
    std::int32_t numiptent = 0;
    std::int32_t diskspace = 0;  // KiB
    std::int32_t diskinodes = 0;
    std::int32_t dcachesize = 0;  // stays 0 here; set in the computation's own copy
    std::int32_t quotaugidlimit = 0;
    std::string distribution;
    NetIfaceList ifaces;
    std::string hostname;
    std::vector<std::string> spare_strings;  // never filled
    TarnACalculateHWNodeNotes notes;
    NSAttrs ns_attrs;
    bool nfs_used = false;  // a file system of type "nfs" is mounted
};
