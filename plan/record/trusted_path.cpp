#include "plan/record/trusted_path.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <deque>

#include "inspect/host_file.h"
#include "kiln/strings.h"

namespace {

constexpr int most_links = 40;  // as many as the kernel follows

// The link's target. What is cut off names no file, so such a link leads nowhere.
std::string target_of(int link) {
    char target[PATH_MAX];
    const ssize_t size = readlinkat(link, "", target, sizeof target);
    return size < 0 ? std::string() : std::string(target, static_cast<std::size_t>(size));
}

// "1000 (bob)", with the name that the table of users or groups has for the id, if any.
// bob:x:1000:1000:Bob,,,:/home/bob:/bin/sh
// users:x:100:alice,bob
std::string id_text(unsigned id, const std::string& table) {
    const std::string number = std::to_string(id);
    std::string text;
    read_host_file(table, text);
    for (const std::string& line : Kiln::split("\n", text, 0)) {
        const std::vector<std::string> words = Kiln::split(":", line, -1);
        if (words.size() > 2 && words[2] == number) {
            return number + " (" + words[0] + ")";
        }
    }
    return number;
}

class TrustedWalk {
public:
    explicit TrustedWalk(const HostPaths& tables) : tables_(tables) {}

    Kiln::Result<Kiln::Descriptor> walk(const std::string& path) {
        add_names(path);
        Kiln::Done done = begin_at_root();
        while (done && place_.file && !names_.empty()) {
            const std::string name = names_.front();
            names_.pop_front();
            if (name.empty() || name == ".") {
                continue;
            }
            Kiln::Result<Entry> entry = open_entry(name);
            if (!entry) {
                done = Kiln::Reason{entry.reason()};
            } else if (S_ISLNK(entry->info.st_mode)) {
                done = follow(*entry);
            } else {
                place_ = std::move(*entry);
            }
        }
        if (!done) {
            return Kiln::Reason{done.reason()};
        }
        return std::move(place_.file);
    }

private:
    struct Entry {
        Kiln::Descriptor file;
        struct stat info {};
        std::string path;
    };

    // Whether nobody else has it in his hands.
    Kiln::Done check_owner(const struct stat& info) const {
        if (info.st_uid != 0 && info.st_uid != geteuid()) {
            return Kiln::Reason{"belongs to user " + id_text(info.st_uid, tables_.users)};
        }
        if (!S_ISLNK(info.st_mode) && !S_ISDIR(info.st_mode) && !S_ISREG(info.st_mode)) {
            return Kiln::Reason{"is no file"};
        }
        // A link's own mode says nothing. In a sticky folder nobody else can put away what is ours.
        if (S_ISLNK(info.st_mode) || (S_ISDIR(info.st_mode) && (info.st_mode & S_ISVTX) != 0)) {
            return {};
        }
        if ((info.st_mode & S_IWOTH) != 0) {
            return Kiln::Reason{"may be written by everybody"};
        }
        if ((info.st_mode & S_IWGRP) != 0) {
            return Kiln::Reason{"may be written by group " + id_text(info.st_gid, tables_.groups)};
        }
        return {};
    }

    // Where everybody may make entries, what belongs to us need not have been put there by us:
    // anybody may give a file or a link of ours another name, or mount on a folder of his what says
    // it is ours.
    Kiln::Done check_place(const struct stat& info) const {
        const bool is_shared = (place_.info.st_mode & (S_IWGRP | S_IWOTH)) != 0;
        if (!is_shared || (S_ISLNK(info.st_mode) && info.st_nlink == 1)) {
            return {};
        }
        if (!S_ISDIR(info.st_mode)) {
            return Kiln::Reason{"may have been put there by anybody: others may write its folder"};
        }
        return info.st_dev == place_.info.st_dev
                   ? Kiln::Done()
                   : Kiln::Reason{"has another file system mounted on it"};
    }

    Kiln::Result<Entry> open_entry(const std::string& name) const {
        Entry entry;
        entry.path = (place_.path == "/" ? "" : place_.path) + "/" + name;
        entry.file.reset(openat(place_.file.get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
        if (!entry.file && (errno == ENOENT || errno == ENOTDIR || errno == EACCES)) {
            return entry;
        }
        if (!entry.file || fstat(entry.file.get(), &entry.info) != 0) {
            return Kiln::Reason{entry.path + " cannot be opened: " + std::strerror(errno)};
        }
        Kiln::Done good = check_owner(entry.info);
        if (good && name != "..") {
            good = check_place(entry.info);
        }
        if (!good) {
            return Kiln::Reason{entry.path + " " + good.reason()};
        }
        return entry;
    }

    Kiln::Done begin_at_root() {
        place_.path = "/";
        place_.file.reset(open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!place_.file || fstat(place_.file.get(), &place_.info) != 0) {
            return Kiln::Reason{std::string("/ cannot be opened: ") + std::strerror(errno)};
        }
        const Kiln::Done good = check_owner(place_.info);
        return good ? Kiln::Done() : Kiln::Reason{"/ " + good.reason()};
    }

    void add_names(const std::string& path) {
        const std::vector<std::string> names = Kiln::split("/", path, 0);
        names_.insert(names_.begin(), names.begin(), names.end());
    }

    Kiln::Done follow(const Entry& link) {
        const std::string target = target_of(link.file.get());
        if (target.empty() || ++links_ > most_links) {
            return Kiln::Reason{link.path + " is a link that leads nowhere"};
        }
        add_names(target);
        return target[0] == '/' ? begin_at_root() : Kiln::Done();
    }

    const HostPaths& tables_;
    Entry place_;  // as far as we have come
    std::deque<std::string> names_;
    int links_ = 0;
};

}  // namespace

Kiln::Result<Kiln::Descriptor> open_trusted(const std::string& path, const HostPaths& tables) {
    return TrustedWalk(tables).walk(path);
}
