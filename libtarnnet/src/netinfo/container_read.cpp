#include "netinfo/container_read.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tarnctl.h"
#include "text.h"

namespace {

const size_t conf_path_size = 512;

// A container's configuration, open and read.
struct open_conf {
    struct tarnctl_conf* conf;
    struct tarnctl_env_param* param;
};

// 0, or -1 with nothing left open.
int open_container_conf(uint32_t veid, struct open_conf* open) {
    char path[conf_path_size];
    if (tarnctl_get_env_conf_path(veid, path, sizeof(path)) < 0) {
        return -1;
    }
    open->conf = tarnctl_conf_open(path);
    if (open->conf == nullptr) {
        return -1;
    }
    open->param =
        tarnctl_conf_parse(open->conf) < 0 ? nullptr : tarnctl_conf_get_env_param(open->conf);
    if (open->param == nullptr) {
        tarnctl_conf_close(open->conf);
        return -1;
    }
    return 0;
}

void close_container_conf(const struct open_conf* open) {
    tarnctl_free_env_param(open->param);
    tarnctl_conf_close(open->conf);
}

// What the child inside the container is given.
struct inside_request {
    uint32_t flags;
    int pipe[2];
};

void write_link_lines(void* stream, const struct link_facts* facts) {
    fprintf(static_cast<FILE*>(stream), "%s\n%s\n%s\n%u\n", facts->name, facts->addresses,
            facts->hwaddr, facts->flags);
}

// Runs inside the container.
int read_inside(void* argument) {
    const auto* request = static_cast<const struct inside_request*>(argument);
    close(request->pipe[0]);
    FILE* stream = fdopen(request->pipe[1], "w");
    if (stream == nullptr) {
        close(request->pipe[1]);
        return 1;
    }
    read_ifconfioctl_insider(request->flags, write_link_lines, stream);
    return fclose(stream) == 0 ? 0 : 1;
}

// Reads the lines of one link; false at the end. The lines are the caller's to free, always.
bool read_group(FILE* stream, char* lines[LINK_LINES], size_t sizes[LINK_LINES]) {
    for (int i = 0; i < LINK_LINES; ++i) {
        const ssize_t length = getline(&lines[i], &sizes[i], stream);
        if (length <= 0) {
            return false;
        }
        if (lines[i][length - 1] == '\n') {
            lines[i][length - 1] = '\0';
        }
    }
    return true;
}

void take_links(FILE* stream, uint32_t veid) {
    char* lines[LINK_LINES] = {};
    size_t sizes[LINK_LINES] = {};
    while (read_group(stream, lines, sizes)) {
        struct link_facts facts;
        parse_link_lines(lines, &facts);
        apply_link_facts(veid, &facts);
    }
    for (char* line : lines) {
        free(line);
    }
}

// Takes what the child writes, to its end, and closes the descriptor.
void take_links_from(int fd, uint32_t veid) {
    FILE* stream = fdopen(fd, "r");
    if (stream == nullptr) {
        close(fd);
        return;
    }
    take_links(stream, veid);
    fclose(stream);
}

void wait_for(pid_t child) {
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

void read_links_below(const char* root, uint32_t flags, uint32_t veid) {
    struct inside_request request = {flags, {-1, -1}};
    if (pipe2(request.pipe, O_CLOEXEC) != 0) {
        return;
    }
    const pid_t child = tarnctl_env_exec_fn_async(veid, root, read_inside, &request);
    close(request.pipe[1]);
    if (child < 0) {
        close(request.pipe[0]);
        return;
    }
    take_links_from(request.pipe[0], veid);
    wait_for(child);
}

}  // namespace

void parse_link_lines(const char* const lines[LINK_LINES], struct link_facts* facts) {
    copy_cut(facts->name, sizeof(facts->name), lines[0]);
    copy_cut(facts->addresses, sizeof(facts->addresses), lines[1]);
    copy_cut(facts->hwaddr, sizeof(facts->hwaddr), lines[2]);
    facts->flags = static_cast<uint32_t>(strtoul(lines[3], nullptr, 10));
}

void read_container_links(uint32_t flags, uint32_t veid) {
    struct open_conf conf;
    if (!tarnctl_is_there() || open_container_conf(veid, &conf) != 0) {
        return;
    }
    read_links_below(conf.param->root, flags, veid);
    close_container_conf(&conf);
}

void read_running_containers(uint32_t flags) {
    if (!tarnctl_is_there() || tarnctl_open() < 0) {
        return;
    }
    struct tarnctl_env_ids* list = tarnctl_alloc_env_ids();
    if (list == nullptr) {
        return;
    }
    if (tarnctl_get_env_ids_by_state(list, TARNCTL_STATE_RUNNING) >= 0) {
        for (uint32_t i = list->count; i > 0; --i) {
            read_single_ifconfioctl(flags, list->ids[i - 1]);
        }
    }
    tarnctl_free_env_ids(list);
}

void read_container_conf(uint32_t veid) {
    struct open_conf conf;
    if (tarnctl_is_there() && open_container_conf(veid, &conf) == 0) {
        close_container_conf(&conf);
    }
}
