// What CallerExec does in the child, between the fork and the program that it becomes.
#include <err.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <exception>
#include <utility>

#include "kiln/caller_exec.h"
#include "kiln/close_descriptors.h"
#include "kiln/file_size_signal.h"
#include "kiln/search_path.h"

namespace Kiln {

namespace {

// Ends the child with a message that carries the system's error text. Not with the C library's
// err(): its exit() would run the parent's exit handlers and write the parent's unflushed output
// once more.
[[noreturn]] void fail_kid(const char* format, ...) __attribute__((format(printf, 1, 2)));

void fail_kid(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    vwarn(format, arguments);
    va_end(arguments);
    _exit(1);
}

// The pipe's end becomes `wanted_fd`, which the program will find open.
void put_in_place(Descriptor end, int wanted_fd) {
    if (end.get() == wanted_fd) {
        fcntl(end.release(), F_SETFD, 0);  // the copy made below has no close-on-exec flag
        return;
    }
    while (dup2(end.get(), wanted_fd) < 0) {
        if (errno != EINTR) {
            fail_kid("Can't make dup2(%d, %d): %s", end.get(), wanted_fd, std::strerror(errno));
        }
    }
}

std::vector<char*> pointers_to(std::list<std::string>& strings) {
    std::vector<char*> pointers;
    for (std::string& s : strings) {
        pointers.push_back(s.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

void CallerExec::doKid_() noexcept {
    try {
        connectKid_();  // first, so that a failure behind it is told to whoever reads the output
        restoreDispositions_();
        restore_file_size_signal();
        if (!intrinsics.work_dir.empty() && chdir(intrinsics.work_dir.c_str()) != 0) {
            fail_kid("Can't chdir to %s: %s", intrinsics.work_dir.c_str(), std::strerror(errno));
        }
        execKid_();
    } catch (const std::exception& exception) {
        warnx("Can't execute %s: %s", program.c_str(), exception.what());
    }
    _exit(1);
}

// The parent may have been started without some of the descriptors 0 to 2, so the pipes may have
// taken these numbers. Rising order keeps the ends apart: a pipe never holds a number that an
// earlier one needs.
void CallerExec::connectKid_() {
    for (unsigned i = 0; i < fd_count; ++i) {
        if (connectors[i] != nullptr) {
            pipes[i][parent_end].reset();
            put_in_place(std::move(pipes[i][child_end]), static_cast<int>(i));
        }
    }
    for (unsigned i = 0; i < fd_count; ++i) {
        if (connectors[i] == nullptr) {
            close(static_cast<int>(i));
        }
    }
    close_descriptors_from(fd_count, intrinsics.paths.own_descriptors);
}

void CallerExec::execKid_() {
    const std::string path = get_full_name(program.c_str(), env);
    std::vector<char*> argv = pointers_to(args);
    argv.insert(argv.begin(), program.data());  // its bare name: a shell shows it in messages
    const std::vector<char*> envp = pointers_to(env);
    execve(path.c_str(), argv.data(), envp.data());
    fail_kid("Can't execute %s", program.c_str());
}

}  // namespace Kiln
