// A host for the library's tests: a network namespace with links of the test's own, a result as
// lines of text, and the messages that the library logged.
#pragma once

#include <gtest/gtest.h>
#include <sys/mount.h>

#include <string>
#include <vector>

#include "tarnnet.h"
#include "tests/support/private_host.h"

namespace inventory_host {

using Lines = std::vector<std::string>;

// Runs commands of "ip", one a line. Links stay down, so that the kernel adds no addresses.
inline void run_ip(const std::string& commands) {
    FILE* ip = popen("ip -batch -", "w");
    ASSERT_NE(ip, nullptr);
    std::fputs(commands.c_str(), ip);
    ASSERT_EQ(pclose(ip), 0) << commands;
}

// A "tmpfs" hides what a directory holds; a "sysfs" shows the links of the test's own.
inline void mount_over(const char* type, const char* path) {
    ASSERT_EQ(mount("none", path, type, 0, nullptr), 0) << path;
}

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
    Lines lines;
    if (result == nullptr)
        return {"none"};
    for (tarnnetif_info** record = result->records; *record != nullptr; ++record)
        lines.push_back(line_of(**record));
    return lines;
}

// The inventory of all kinds of a range of containers.
inline Lines inventory(uint32_t flags = TARNNET_EVERYTHING, uint32_t min = 0, uint32_t max = 0) {
    tarnnet_filter* filter =
        tarnnet_get_simple_filter(IFT_ALL, nullptr, nullptr, nullptr, min, max);
    tarnnet_info* result = tarnnet_get_info(flags, filter);
    tarnnet_release_filter(filter);
    Lines lines = lines_of(result);
    tarnnet_release_info(result);
    return lines;
}

// A host whose kinds, pairs and bridges come from files alone: everything that an inventory can
// find.
inline void make_host_of_files() {
    using private_host::write_file;
    run_ip(
        "link add eth0 type veth peer name vme1\n"
        "addr add 10.1.0.1/24 dev eth0\naddr add fd00::1/64 dev eth0 nodad\n");
    mount_over("tmpfs", "/proc");
    mount_over("tmpfs", "/sys");
    write_file("/etc/tarn/tarnnet.conf",
               "VNID_br0=\"net1\"\nIFLST_br0=\"eth0 eth1\"\nVLAN_eth0=\"10 20\"\n"
               "ADDR_far0=\"10.9.0.1 10.9.0.2\"\n");
    write_file("/etc/sysconfig/network-scripts/ifcfg-eth0", "BOOTPROTO=dhcp\n");
    write_file("/proc/tarn/veth",
               "Version: 1.0\n"
               "00:18:51:0C:7A:01   veth101.0 00:18:51:0C:7A:02  eth0     101 allow\n"
               "too few fields\n"
               "m veth102.0 m eth1 102");
    write_file("/proc/tarn/vmth", "Version: 1.0\nvme1\n\nvme2 more\n");
    write_file("/proc/net/vlan/config",
               "VLAN Dev name    | VLAN ID\n"
               "Name-Type: VLAN_NAME_TYPE_RAW_PLUS_VID_NO_PAD\n"
               "eth0.10        | 10  | eth0\n"
               "eth0.20        | 20\n");
    for (const char* file : {"br0/bridge/x", "br0/brif/veth101.0", "br1/bridge/x", "notbr/bridge"})
        write_file(std::string("/sys/class/net/") + file, "");
}

// The messages of the library's log without their stamps, each followed by a newline.
inline std::string logged_messages() {
    std::ifstream log("/var/log/tarnnetcfg.log");
    std::string messages;
    for (std::string line; std::getline(log, line);)
        messages += line.substr(line.rfind('\t') + 1) + "\n";
    return messages;
}

}  // namespace inventory_host
