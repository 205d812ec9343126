#include "netinfo/container_read.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include "owners.h"
#include "state.h"
#include "text.h"

namespace tarnnet {

namespace {

// The configuration of a container, opened and read as far as that is possible.
class container_conf {
public:
    explicit container_conf(uint32_t veid) {
        char path[path_size];
        if (tarnctl_get_env_conf_path(veid, path, sizeof(path)) >= 0) {
            conf_ = tarnctl_conf_open(path);
        }
        if (conf_ != nullptr && tarnctl_conf_parse(conf_) >= 0) {
            param_ = tarnctl_conf_get_env_param(conf_);
        }
    }
    container_conf(container_conf&&) = delete;
    ~container_conf() {
        if (param_ != nullptr) {
            tarnctl_free_env_param(param_);
        }
        if (conf_ != nullptr) {
            tarnctl_conf_close(conf_);
        }
    }

    // The container's root directory, or null when the configuration could not be read.
    const char* root() const { return param_ == nullptr ? nullptr : param_->root; }

private:
    tarnctl_conf* conf_ = nullptr;
    tarnctl_env_param* param_ = nullptr;
};

// What the child inside the container is given.
struct inside_request {
    uint32_t flags;
    int read_end;  // the parent's, which the child has too
    int write_end;
};

void write_link_lines(void* stream, const link_facts* facts) {
    fprintf(static_cast<FILE*>(stream), "%s\n%s\n%s\n%u\n", facts->name, facts->addresses,
            facts->hwaddr, facts->flags);
}

// Runs inside the container.
int read_inside(void* argument) {
    const auto* request = static_cast<const inside_request*>(argument);
    close(request->read_end);  // a parent that is gone ends the writing
    FILE* stream = fdopen(request->write_end, "w");
    if (stream == nullptr) {
        close(request->write_end);
        return 1;
    }
    read_ifconfioctl_insider(request->flags, write_link_lines, stream);
    return fclose(stream) == 0 ? 0 : 1;
}

// A line of any length without its line end; false at the end.
bool read_line(FILE* stream, owned_text* line) {
    char* text = nullptr;
    size_t room = 0;
    const ssize_t length = getline(&text, &room, stream);
    line->reset(text);
    if (length > 0 && text[length - 1] == '\n') {
        text[length - 1] = '\0';
    }
    return length > 0;
}

// Reads the lines of one link; false at the end.
bool read_group(FILE* stream, owned_text lines[link_lines]) {
    for (int i = 0; i < link_lines; ++i) {
        if (!read_line(stream, &lines[i])) {
            return false;
        }
    }
    return true;
}

void wait_for(pid_t child) {
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

void read_links_below(const char* root, uint32_t flags, uint32_t veid) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return;
    }
    owned_fd read_end(ends[0]);
    owned_fd write_end(ends[1]);
    inside_request request = {flags, ends[0], ends[1]};
    const pid_t child = tarnctl_env_exec_fn_async(veid, root, read_inside, &request);
    write_end.reset();  // the child's is the last one: the pipe ends with it
    if (child >= 0) {
        take_container_links(read_end.release(), veid);
        wait_for(child);
    }
}

}  // namespace

void parse_link_lines(const owned_text lines[link_lines], link_facts* facts) {
    copy_cut(facts->name, sizeof(facts->name), lines[0].get());
    copy_cut(facts->addresses, sizeof(facts->addresses), lines[1].get());
    copy_cut(facts->hwaddr, sizeof(facts->hwaddr), lines[2].get());
    facts->flags = decimal(lines[3].get());
}

void take_container_links(int fd, uint32_t veid) {
    const owned_file stream(fdopen(fd, "r"));
    if (!stream) {
        close(fd);
        return;
    }
    owned_text lines[link_lines];
    while (read_group(stream.get(), lines)) {
        link_facts facts;
        parse_link_lines(lines, &facts);
        apply_link_facts(veid, &facts);
    }
}

void read_container_links(uint32_t flags, uint32_t veid) {
    if (!tarnctl_is_there()) {
        return;
    }
    const container_conf conf(veid);
    // A container that is not there, or has no configuration, has no links.
    if (conf.root() != nullptr) {
        read_links_below(conf.root(), flags, veid);
    }
}

running_containers::running_containers() {
    if (!tarnctl_is_there() || tarnctl_open() < 0) {
        return;
    }
    list_ = tarnctl_alloc_env_ids();
    if (list_ != nullptr && tarnctl_get_env_ids_by_state(list_, TARNCTL_STATE_RUNNING) >= 0) {
        count_ = list_->count;
    }
}

running_containers::~running_containers() {
    if (list_ != nullptr) {
        tarnctl_free_env_ids(list_);
    }
}

uint32_t running_containers::veid(uint32_t i) const {
    return list_->ids[i];
}

void read_container_conf(uint32_t veid) {
    if (tarnctl_is_there()) {
        const container_conf opened_and_closed(veid);
    }
}

}  // namespace tarnnet
