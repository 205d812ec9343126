#include "inspect/records.h"

#include "tarnnet.h"

std::string notes_text(const TarnACalculateHWNodeNotes& notes) {
    std::string text;
    for (const TarnACalculateHWNodeWarning& warning : notes.warnings) {
        text.append(warning.message).append("\n");
    }
    for (const TarnAExcludePath& exclude : notes.excludes) {
        text.append(exclude.path).append("\n");
    }
    return text;
}

std::string NetIfaceList::get_ip() const {
    std::string text;
    for (const NetIface& iface : *this) {
        for (const std::string& address : iface.ip_addresses) {
            text.append(address).append(" ");
        }
    }
    return text;
}

std::string NetIfaceList::get_netif() const {
    std::string text;
    for (std::size_t i = 0; i < size(); ++i) {
        const NetIface& iface = (*this)[i];
        if (iface.if_type != IFT_ETHERNET) {
            continue;
        }
        // The separator goes by the place in the whole list, as callers expect: the text begins
        // with ";" when the first interface is of another kind.
        if (i != 0) {
            text.append(";");
        }
        text.append("ifname=").append(iface.ifname);
        if (iface.dhcp) {
            text.append(",dhcp=yes");
        }
    }
    return text;
}
