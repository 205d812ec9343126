#include "plan/record/process_usage.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "kiln/files.h"
#include "kiln/owners.h"
#include "plan/record/usage_parsers.h"

namespace {

// A process that has ended meanwhile has nothing open.
Figure none_if_gone(int error) {
    return error == ENOENT || error == ESRCH ? Figure(0) : Figure();
}

Figure count_entries(DIR* folder) {
    std::int64_t count = 0;
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(folder);
        if (entry == nullptr) {
            return errno == 0 ? Figure(count) : none_if_gone(errno);
        }
        count += entry->d_name[0] == '.' ? 0 : 1;
    }
}

Figure count_descriptors(int proc_fd, const std::string& path) {
    Kiln::Descriptor file = Kiln::open_at_once(proc_fd, path, O_RDONLY | O_DIRECTORY);
    if (!file) {
        return none_if_gone(errno);
    }
    const Kiln::Directory folder(fdopendir(file.get()));
    if (!folder) {
        return {};
    }
    file.release();
    return count_entries(folder.get());
}

Figure size_of_folder(int proc_fd, const std::string& path) {
    struct stat status = {};
    if (fstatat(proc_fd, path.c_str(), &status, 0) != 0) {
        return none_if_gone(errno);
    }
    return status.st_size;
}

// Kernels from 6.2 on. Whoever counts has one more open than whoever only asks.
bool kernel_counts_descriptors(int proc_fd) {
    const std::string own = "self/fd";
    const Figure size = size_of_folder(proc_fd, own);
    return size > 0 && plus(size, 1) == count_descriptors(proc_fd, own);
}

}  // namespace

void LargestFigure::add(Figure figure, std::string_view name) {
    is_known_ = is_known_ && figure;
    if (!largest_) {
        largest_.emplace();
    }
    if (figure > largest_->value) {
        largest_ = {*figure, std::string(name)};
    }
}

std::optional<ProcessFigure> LargestFigure::largest() const {
    return is_known_ ? largest_ : std::nullopt;
}

Figure ProcessUsage::descriptors_of(int proc_fd, std::int32_t pid) {
    if (!kernel_counts_) {
        kernel_counts_ = kernel_counts_descriptors(proc_fd);
    }
    const std::string path = std::to_string(static_cast<std::uint32_t>(pid)) + "/fd";
    return *kernel_counts_ ? size_of_folder(proc_fd, path) : count_descriptors(proc_fd, path);
}

void ProcessUsage::saw_process(int proc_fd, std::int32_t pid, const std::string& status_text) {
    const ProcessStatus status = parse_process_usage(status_text);
    // The first thread of a program may have ended, and shows no memory then, while others go on.
    if (status.has_memory || status.threads > 1) {
        is_empty_ = false;
        tasks_ = plus(tasks_, status.threads);
    }
    if (status.has_memory) {
        locked_kib_.add(status.locked_kib, status.name);
        descriptors_.add(descriptors_of(proc_fd, pid), status.name);
    }
}
