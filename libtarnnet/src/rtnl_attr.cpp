// The attributes of one netlink message.
#include "log.h"
#include "rtnl.h"

namespace tarnnet {

namespace {

message_bytes attribute_bytes(rtattr* rta, int len) {
    return {reinterpret_cast<unsigned char*>(rta), len > 0 ? static_cast<size_t>(len) : 0};
}

// The next whole attribute, or null where the walk stops.
rtattr* take_attr(message_bytes* rest) {
    auto* attr = rest->begin_with<rtattr>();
    if (attr == nullptr || attr->rta_len < sizeof(rtattr) || attr->rta_len > rest->size) {
        return nullptr;
    }
    *rest = rest->after(attr->rta_len);
    return attr;
}

void end_walk(message_bytes rest) {
    if (rest.size == 0) {
        return;
    }
    // A stump shorter than the length field itself has the length 0.
    const auto* length = rest.begin_with<unsigned short>();
    tarnnetlog("!!!Deficit %d, rta_len=%d", static_cast<int>(rest.size),
               length == nullptr ? 0 : *length);
}

// What an earlier message left in the table would look like this one's.
void clear_slots(rtattr* tb[], int slots) {
    for (int i = 0; i < slots; ++i) {
        tb[i] = nullptr;
    }
}

}  // namespace

int parse_rtattr(rtattr* tb[], int max, rtattr* rta, int len) {
    clear_slots(tb, max + 1);
    message_bytes rest = attribute_bytes(rta, len);
    while (rtattr* attr = take_attr(&rest)) {
        if (attr->rta_type <= max) {
            tb[attr->rta_type] = attr;
        }
    }
    end_walk(rest);
    return 0;
}

int parse_rtattr_byindex(rtattr* tb[], int max, rtattr* rta, int len) {
    clear_slots(tb, max);
    message_bytes rest = attribute_bytes(rta, len);
    int stored = 0;
    while (rtattr* attr = take_attr(&rest)) {
        if (attr->rta_type <= max && stored < max) {
            tb[stored++] = attr;
        }
    }
    end_walk(rest);
    return stored;
}

}  // namespace tarnnet
