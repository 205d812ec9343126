// The attributes of one netlink message.
#include <string.h>

#include "log.h"
#include "rtnl.h"

namespace {

constexpr size_t attr_header_bytes = sizeof(struct rtattr);
static_assert(attr_header_bytes == 4, "the kernel's attribute format");

struct attr_walk {
    struct rtattr* next;
    size_t remaining;
};

struct attr_walk begin_walk(struct rtattr* rta, int len) {
    return {rta, len > 0 ? static_cast<size_t>(len) : 0};
}

// The next whole attribute, or null where the walk stops.
struct rtattr* take_attr(struct attr_walk* walk) {
    struct rtattr* attr = walk->next;
    if (walk->remaining < attr_header_bytes || attr->rta_len < attr_header_bytes ||
        attr->rta_len > walk->remaining) {
        return nullptr;
    }
    // The last attribute may come without its padding.
    const size_t step = (static_cast<size_t>(attr->rta_len) + 3) & ~size_t{3};
    if (step >= walk->remaining) {
        walk->remaining = 0;
    } else {
        walk->remaining -= step;
        walk->next =
            static_cast<struct rtattr*>(static_cast<void*>(reinterpret_cast<char*>(attr) + step));
    }
    return attr;
}

void end_walk(const struct attr_walk* walk) {
    if (walk->remaining == 0) {
        return;
    }
    // A stump shorter than the length field itself has the length 0.
    unsigned short length = 0;
    if (walk->remaining >= sizeof(length)) {
        memcpy(&length, walk->next, sizeof(length));
    }
    tarnnetlog("!!!Deficit %d, rta_len=%d", static_cast<int>(walk->remaining), length);
}

void clear_slots(struct rtattr* tb[], int slots) {
    for (int i = 0; i < slots; ++i) {
        tb[i] = nullptr;
    }
}

}  // namespace

int parse_rtattr(struct rtattr* tb[], int max, struct rtattr* rta, int len) {
    clear_slots(tb, max + 1);
    struct attr_walk walk = begin_walk(rta, len);
    while (struct rtattr* attr = take_attr(&walk)) {
        if (attr->rta_type <= max) {
            tb[attr->rta_type] = attr;
        }
    }
    end_walk(&walk);
    return 0;
}

int parse_rtattr_byindex(struct rtattr* tb[], int max, struct rtattr* rta, int len) {
    clear_slots(tb, max);
    struct attr_walk walk = begin_walk(rta, len);
    int stored = 0;
    while (struct rtattr* attr = take_attr(&walk)) {
        if (attr->rta_type <= max && stored < max) {
            tb[stored++] = attr;
        }
    }
    end_walk(&walk);
    return stored;
}
