// Fails each allocation and each read of one inventory in turn: nothing crashes, nothing is half
// taken or stays held, and the next inventory is whole again. The linker leads the library's calls
// to the functions below.
#include <dirent.h>
#include <search.h>
#include <unistd.h>

#include <cerrno>

#include "made_up_host.h"
#include "text.h"

// There only in a build with the address sanitizer.
extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));

static int calls = 0;
static int failing_call = 0;  // counted from 1

static bool fails() {
    if (++calls != failing_call)
        return false;
    errno = ENOMEM;
    return true;
}

#define MAY_FAIL(type, name, failure, parameters, arguments)  \
    extern "C" type __real_##name parameters;                 \
    extern "C" type __wrap_##name parameters {                \
        return fails() ? (failure) : __real_##name arguments; \
    }

MAY_FAIL(void*, malloc, nullptr, (size_t size), (size))
MAY_FAIL(void*, calloc, nullptr, (size_t count, size_t size), (count, size))
MAY_FAIL(void*, realloc, nullptr, (void* block, size_t size), (block, size))
MAY_FAIL(char*, strdup, nullptr, (const char* text), (text))
MAY_FAIL(void*, tsearch, nullptr, (const void* key, void** root, __compar_fn_t order),
         (key, root, order))
MAY_FAIL(int, scandir, -1,
         (const char* path, dirent*** entries, int (*filter)(const dirent*),
          int (*order)(const dirent**, const dirent**)),
         (path, entries, filter, order))
// Some bytes at a time, so that a file takes many reads, and every other call is interrupted.
extern "C" ssize_t __real_read(int fd, void* buffer, size_t size);
extern "C" ssize_t __wrap_read(int fd, void* buffer, size_t size) {
    static bool interrupted = false;
    interrupted = !interrupted;
    if (!interrupted)
        return fails() ? -1 : __real_read(fd, buffer, size < 16 ? size : 16);
    errno = EINTR;
    return -1;
}

namespace {

Lines counted_inventory() {
    calls = 0;
    tarnnet_release_filter(tarnnet_get_simple_filter(IFT_ALL, "br0", "net1", "eth0", 0, 0));
    return inventory();
}

TEST_F(MadeUpHost, HasFilesThatAreReadWholeOrNotAtAll) {
    const std::string text(9000, 'x');
    write(state.host.vlans, text);
    const char* found = nullptr;
    for (failing_call = 1; found == nullptr && failing_call < 1000; ++failing_call) {
        calls = 0;
        text_file file(state.host.vlans);
        found = file.next_line();
        ASSERT_EQ(file.is_read(), calls < failing_call) << "call " << failing_call;
        EXPECT_EQ(found == nullptr ? text : found, text);
    }
    failing_call = 0;
}

TEST_F(MadeUpHost, LacksWhatThereWasNoMemoryForOrCouldNotBeRead) {
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
