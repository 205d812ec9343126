// The attributes of a netlink message.
#include "fuzz/library_support.h"
#include "rtnl.h"

using namespace tarnnet;

namespace {

constexpr int most_slots = 64;

void check_slot(const rtattr* attribute, const char* start, std::size_t size, int max) {
    if (attribute != nullptr) {
        const auto offset =
            static_cast<std::size_t>(reinterpret_cast<const char*>(attribute) - start);
        require(offset % 4 == 0 && attribute->rta_len >= 4, "an attribute has its header");
        require(offset + attribute->rta_len <= size, "and lies within the message whole");
        require(attribute->rta_type <= max, "no slot holds a larger type");
    }
}

}  // namespace

// Input: the highest type as one byte, the attributes.
void try_input(fuzz::Input input) {
    fuzz::start_library();
    const int max = input.next<std::uint8_t>() % most_slots;
    const std::string bytes = input.text();
    const auto copy = fuzz::exact_copy(bytes);
    auto* attributes = reinterpret_cast<rtattr*>(copy.get());
    const int length = static_cast<int>(bytes.size());

    rtattr* table[most_slots];
    parse_rtattr(table, max, attributes, length);
    for (int type = 0; type <= max; ++type) {
        check_slot(table[type], copy.get(), bytes.size(), max);
        require(table[type] == nullptr || table[type]->rta_type == type, "its own slot");
    }
    const int stored = parse_rtattr_byindex(table, max, attributes, length);
    require(stored >= 0 && stored <= max, "no more than the slots");
    for (int i = 0; i < max; ++i) {
        check_slot(table[i], copy.get(), bytes.size(), max);
        require((table[i] != nullptr) == (i < stored), "the stored ones come first");
    }
}
