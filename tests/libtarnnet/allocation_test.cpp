// Fails each allocation of one inventory in turn: nothing crashes, nothing stays held, and the next
// inventory is whole again. The linker leads the library's calls to the functions below.
#include "made_up_host.h"

// There only in a build with the address sanitizer.
extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));

static int calls = 0;
static int failing_call = 0;  // counted from 1

#define MAY_FAIL(type, name, parameters, arguments)                         \
    extern "C" type __real_##name parameters;                               \
    extern "C" type __wrap_##name parameters {                              \
        return ++calls == failing_call ? nullptr : __real_##name arguments; \
    }

MAY_FAIL(void*, malloc, (size_t size), (size))
MAY_FAIL(void*, calloc, (size_t count, size_t size), (count, size))
MAY_FAIL(void*, realloc, (void* block, size_t size), (block, size))
MAY_FAIL(char*, strdup, (const char* text), (text))

namespace {

Lines counted_inventory() {
    calls = 0;
    tarnnet_release_filter(tarnnet_get_simple_filter(IFT_ALL, "br0", "net1", "eth0", 0, 0));
    return inventory();
}

TEST_F(MadeUpHost, LacksWhatThereWasNoMemoryFor) {
    fill();
    const Lines whole = counted_inventory();
    ASSERT_EQ(whole.size(), 11u);
    const int all_calls = calls;
    int incomplete = 0;
    for (failing_call = 1; failing_call <= all_calls; ++failing_call) {
        incomplete += counted_inventory() == whole ? 0 : 1;
        ASSERT_EQ(netinfo.trash, nullptr) << "after allocation " << failing_call;
    }
    failing_call = 0;
    EXPECT_GT(incomplete, 50) << "of " << all_calls;
    EXPECT_EQ(counted_inventory(), whole);
    if (__lsan_do_recoverable_leak_check != nullptr) {
        EXPECT_EQ(__lsan_do_recoverable_leak_check(), 0);
    }
}

}  // namespace
