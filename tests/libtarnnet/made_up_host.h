// A host for the library's tests that needs no privilege: files in a directory of its own, and the
// kernel's answer as messages that the test puts together. Also a result as lines of text.
#pragma once

#include <gtest/gtest.h>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <net/if_arp.h>

#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "netinfo/link_tables.h"
#include "netinfo/records.h"
#include "state.h"
#include "tarnnet.h"

using namespace tarnnet;

using Lines = std::vector<std::string>;

struct Attribute {
    uint16_t type;
    std::string payload;
};

inline nlmsghdr* header_of(std::string& message) {
    return reinterpret_cast<nlmsghdr*>(message.data());
}

template <class Value>
std::string bytes_of(const Value& value) {
    return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

template <class Body>
std::string make_message(uint16_t type, const Body& body,
                         const std::vector<Attribute>& attributes) {
    std::string bytes = std::string(NLMSG_HDRLEN, '\0') + bytes_of(body);
    for (const Attribute& attribute : attributes) {
        const auto length = static_cast<uint16_t>(RTA_LENGTH(attribute.payload.size()));
        bytes += bytes_of(rtattr{length, attribute.type}) + attribute.payload;
        bytes.resize(NLMSG_ALIGN(bytes.size()));
    }
    header_of(bytes)->nlmsg_type = type;
    header_of(bytes)->nlmsg_len = static_cast<uint32_t>(bytes.size());
    return bytes;
}

// A link with a hardware address (six bytes) or none.
inline std::string link_message(int index, const std::string& name, const std::string& hwaddr,
                                unsigned flags = IFF_UP) {
    const uint16_t hardware = hwaddr.empty() ? ARPHRD_NONE : ARPHRD_ETHER;
    return make_message(RTM_NEWLINK, ifinfomsg{0, 0, hardware, index, flags, 0},
                        {{IFLA_IFNAME, name + '\0'}, {IFLA_ADDRESS, hwaddr}});
}

// The address 10.1.0.N/24, or fd00::N/64.
inline std::string address_message(unsigned char family, uint32_t link, char number) {
    std::string local =
        family == AF_INET ? std::string("\12\1\0", 3) : "\375" + std::string(14, '\0');
    local += number;
    const unsigned char prefix = family == AF_INET ? 24 : 64;
    return make_message(RTM_NEWADDR, ifaddrmsg{family, prefix, 0, 0, link}, {{IFA_ADDRESS, local}});
}

// What the made-up kernel answers.
inline std::vector<std::string> kernel_messages;

inline int give_messages(uint32_t flags, link_tables* tables) {
    for (std::string& message : kernel_messages) {
        const bool is_link = header_of(message)->nlmsg_type == RTM_NEWLINK;
        const bool is_ipv6 = message[NLMSG_HDRLEN] == AF_INET6;
        if (is_link ? collect_link(tables, header_of(message)) != 0
                    : (flags & (is_ipv6 ? TARNNET_READ_IPV6 : TARNNET_READ_IPV4)) != 0 &&
                          collect_address(tables, header_of(message)) != 0)
            return -1;
    }
    return 0;
}

// The library looks at an empty host until the test puts something there, and afterwards at the
// machine again.
class MadeUpHost : public testing::Test {
protected:
    MadeUpHost() {
        std::string name = testing::TempDir() + "tarnnet.XXXXXX";
        root_ = mkdtemp(name.data());
        host_source& host = state.host;
        for (const char** path :
             {&host.pair_devices, &host.more_pair_devices, &host.vlans, &host.interfaces,
              &host.configuration, &host.scripts_dir, &host.network_dir, &host.suse_release,
              &host.lock_file, &host.log_file}) {
            paths_.push_back(root_ + *path);
            *path = paths_.back().c_str();
            std::filesystem::create_directories(std::filesystem::path(*path).parent_path());
        }
        host.read_tables = give_messages;
        state.vlan_naming = VLAN_RAW_NO_PAD;
        state.suse = false;
    }
    ~MadeUpHost() override {
        purge_all_generations();
        EXPECT_EQ(netinfo.trash, nullptr) << "a result was not released";
        EXPECT_EQ(next_fd(), next_fd_) << "a descriptor was left open";
        kernel_messages.clear();
        state.host = host_source();
        std::filesystem::remove_all(root_);
    }

    static void write(const std::string& path, const std::string& text) {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << text;
    }

    // The messages of the library's log without their stamps, each followed by a newline.
    static std::string logged_messages() {
        std::ifstream log(state.host.log_file);
        std::string messages;
        for (std::string line; std::getline(log, line);)
            messages += line.substr(line.rfind('\t') + 1) + "\n";
        return messages;
    }

    // A host with everything that an inventory can find.
    static void fill() {
        kernel_messages = {link_message(1, "eth0", "\2abcde"), link_message(2, "vme1", "\2abcdf"),
                           address_message(AF_INET, 1, 1), address_message(AF_INET6, 1, 1)};
        write(state.host.configuration,
              "VNID_br0=\"net1\"\nIFLST_br0=\"eth0 eth1\"\nVLAN_eth0=\"10 20\"\n"
              "ADDR_far0=\"10.9.0.1 10.9.0.2\"\n");
        write(std::string(state.host.scripts_dir) + "/ifcfg-eth0",
              " \t\v\fBOOTPROTO=none # not dhcp\n");
        write(state.host.pair_devices,
              "  Version:   1.0\n"
              "00:18:51:0C:7A:01   veth101.0 00:18:51:0C:7A:02  eth0     101 allow\n"
              "too few fields\n"
              "m veth102.0 m eth1 102");
        write(state.host.more_pair_devices,
              "Version: 1.0\nvme1\n\nvme2" + std::string(300, ' ') + "more\n");
        write(state.host.vlans,
              "VLAN Dev name    | VLAN ID\n"
              " Name-Type : VLAN_NAME_TYPE_PLUS_VID rest\nName-Types: WORD\n"
              "eth0.10        | 10  | eth0\n"
              "eth0.20        | 20\n");
        const std::string interfaces = std::string(state.host.interfaces) + "/";
        for (const char* file : {"br0/bridge/x", "br0/brif/veth101.0", "br1/bridge/x", "no/bridge"})
            write(interfaces + file, "");
    }

    static int next_fd() { return owned_fd(dup(STDERR_FILENO)).get(); }

    const int next_fd_ = next_fd();
    std::string root_;
    std::deque<std::string> paths_;  // which stay where they are
};

inline std::string joined(char* const* list) {
    std::string text;
    for (; list != nullptr && *list != nullptr; ++list)
        text += (text.empty() ? "" : ",") + std::string(*list);
    return text;
}

inline std::string field(const char* name, const char* value) {
    return value == nullptr ? "" : std::string(" ") + name + "=" + value;
}

// "eth0 2 [10.0.0.1/24] [dhcp] bridge=br0 network=net1", with "101:" in front for a container.
inline std::string line_of(const tarnnetif_info& record) {
    std::string line = record.veid == 0 ? "" : std::to_string(record.veid) + ":";
    line += std::string(record.name) + " " + std::to_string(record.type) + " [" +
            joined(record.addresses) + "] [" + joined(record.conf_addresses) + "]" +
            field("bridge", record.bridge) + field("network", record.network_id);
    if (record.type == IFT_VETH && record.data.veth.peer_name != nullptr)
        line += " peer=" + std::to_string(record.data.veth.peer_veid) + ":" +
                record.data.veth.peer_name;
    if (record.type == IFT_VLAN)
        line += " vlan=" + std::to_string(record.data.vlan.vlan_id) +
                field("master", record.data.vlan.vlan_master);
    return line;
}

inline Lines lines_of(const tarnnet_info* result) {
    if (result == nullptr)
        return {"none"};
    Lines lines;
    for (tarnnetif_info** record = result->records; *record != nullptr; ++record)
        lines.push_back(line_of(**record));
    return lines;
}

// The inventory of a range of containers.
inline Lines inventory(uint32_t flags = TARNNET_EVERYTHING, uint32_t min = 0, uint32_t max = 0) {
    tarnnet_filter* filter =
        tarnnet_get_simple_filter(IFT_ALL, nullptr, nullptr, nullptr, min, max);
    tarnnet_info* result = tarnnet_get_info(flags, filter);
    tarnnet_release_filter(filter);
    Lines lines = lines_of(result);
    tarnnet_release_info(result);
    return lines;
}
