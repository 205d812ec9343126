// The records of what was found on the host: warnings, paths not to copy, interfaces, resolver
// settings. The inspections return them, the profile keeps them. Plain values throughout: every
// record owns its strings and lists, copying is deep.
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

// What the entry prints of them: the warnings, then the paths, one per line.
std::string notes_text(const TarnACalculateHWNodeNotes& notes);

// The resolver's settings.
struct NSAttrs {
    std::vector<std::string> nameservers;
    std::vector<std::string> search_domains;
};

// One network interface as the calculator keeps it.
struct NetIface {
    std::uint32_t if_type = 0;  // one kind bit of libtarnnet (IFT_GENERIC and so on)
    std::string ifname;
    // Without prefix lengths; "127.0.0.1" is never among them.
    std::vector<std::string> ip_addresses;
    bool dhcp = false;  // the first configured address is exactly "dhcp"
};

// The interfaces in the library's order.
class NetIfaceList : public std::vector<NetIface> {
public:
    // Every address of every interface, each followed by one blank; empty without addresses.
    std::string get_ip() const;

    // The ethernet interfaces as "ifname=NAME[,dhcp=yes]" with ";" before each one that is not the
    // first of the whole list. Part of the interface; nothing in this project calls it.
    std::string get_netif() const;
};
