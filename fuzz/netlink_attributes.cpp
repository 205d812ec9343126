// The attributes of a netlink message.
#include <cstring>
#include <memory>

#include "fuzz/library_support.h"
#include "rtnl.h"

using namespace tarnnet;

namespace {

constexpr int most_slots = 64;

void check_slot(const rtattr* attribute, const rtattr* start, std::size_t size, int max) {
    if (attribute == nullptr) {
        return;
    }
    const auto offset = static_cast<std::size_t>(reinterpret_cast<const char*>(attribute) -
                                                 reinterpret_cast<const char*>(start));
    fuzz::require(offset % 4 == 0 && attribute->rta_len >= 4, "an attribute has its header");
    fuzz::require(offset + attribute->rta_len <= size, "and lies within the message whole");
    fuzz::require(attribute->rta_type <= max, "no slot holds a larger type");
}

}  // namespace

// Input: the highest type as one byte, the attributes.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    fuzz::start_library();
    const int max = data[0] % most_slots;
    --size;
    // A copy of exactly that size, aligned as a message is: a read behind it is noticed.
    const std::unique_ptr<char[]> copy(new char[size]);
    std::memcpy(copy.get(), data + 1, size);
    auto* attributes = reinterpret_cast<rtattr*>(copy.get());

    rtattr* table[most_slots];
    parse_rtattr(table, max, attributes, static_cast<int>(size));
    for (int type = 0; type <= max; ++type) {
        check_slot(table[type], attributes, size, max);
        fuzz::require(table[type] == nullptr || table[type]->rta_type == type, "its own slot");
    }
    const int stored = parse_rtattr_byindex(table, max, attributes, static_cast<int>(size));
    fuzz::require(stored >= 0 && stored <= max, "no more than the slots");
    for (int i = 0; i < max; ++i) {
        check_slot(table[i], attributes, size, max);
        fuzz::require((table[i] != nullptr) == (i < stored), "the stored ones come first");
    }
    return 0;
}
