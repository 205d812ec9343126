#include "plan/record/bounded_task.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <optional>
#include <thread>
#include <vector>

#include "kiln/files.h"
#include "kiln/owners.h"

namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::int64_t longest_wait_ms = 1000;

// Of what is written to standard error. A task that complains for ever must not fill our memory.
constexpr std::size_t most_message_bytes = 65536;

struct Pipe {
    Kiln::Descriptor reader;
    Kiln::Descriptor writer;
};

bool open_pipe(Pipe& pipe) {
    int ends[2] = {-1, -1};
    const bool opened = pipe2(ends, O_CLOEXEC) == 0;
    pipe.reader.reset(ends[0]);
    pipe.writer.reset(ends[1]);
    return opened;
}

using Task = std::function<void(const TakePiece&)>;

void end_group(int /*signal_number*/) {
    kill(0, SIGKILL);
}

// Whoever waits for us may be killed: then we end, and the commands that we have started as well.
void end_with(pid_t parent) {
    const bool has_group = getpgrp() == getpid();
    signal(SIGTERM, has_group ? end_group : SIG_DFL);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) {
        _exit(1);  // it was killed before we asked to be told
    }
}

[[noreturn]] void be_child(const Task& task, const Pipe& result, const Pipe& messages,
                           pid_t parent) {
    setpgid(0, 0);
    for (const int number : {SIGINT, SIGHUP, SIGPIPE}) {
        signal(number, SIG_DFL);
    }
    end_with(parent);
    dup2(messages.writer.get(), STDERR_FILENO);
    // What is not ours leaves room for the task's own: there may be few.
    for (const int fd : {result.reader.get(), messages.reader.get(), messages.writer.get()}) {
        if (fd > STDERR_FILENO) {
            close(fd);
        }
    }
    int status = 1;
    try {
        bool written = true;
        task([&](std::string_view piece) {
            written =
                Kiln::write_all(result.writer.get(), piece.data(), piece.size()) == 0 && written;
        });
        status = written ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    _exit(status);
}

// Appends what can be read now. False at the end.
bool read_some(int fd, std::string& text) {
    char bytes[65536];
    const ssize_t got = read(fd, bytes, sizeof(bytes));
    if (got > 0) {
        text.append(bytes, static_cast<std::size_t>(got));
    }
    return got > 0 || (got < 0 && (errno == EINTR || errno == EAGAIN));
}

// The same; what is too much is read and left out.
bool read_some_messages(int fd, std::string& messages) {
    const bool more = read_some(fd, messages);
    messages.resize(std::min(messages.size(), most_message_bytes));
    return more;
}

// Somebody who goes on writing does not keep us here.
void read_rest(int fd, std::string& messages) {
    fcntl(fd, F_SETFL, O_NONBLOCK);
    pollfd entry = {fd, POLLIN, 0};
    while (messages.size() < most_message_bytes && poll(&entry, 1, 0) > 0 &&
           read_some_messages(fd, messages)) {
    }
}

// Collects what the child writes until it closes the result, is silent for too long or somebody
// wakes us.
BoundedTask::End collect(const Pipe& result, const Pipe& messages, std::chrono::seconds limit,
                         int wake_fd, BoundedTask& outcome) {
    SteadyClock::time_point end = SteadyClock::now() + limit;
    pollfd entries[3] = {
        {result.reader.get(), POLLIN, 0}, {wake_fd, POLLIN, 0}, {messages.reader.get(), POLLIN, 0}};
    for (;;) {
        const auto left = std::chrono::ceil<milliseconds>(end - SteadyClock::now()).count();
        if (left <= 0) {
            return BoundedTask::End::too_long;
        }
        const auto slice = static_cast<int>(std::min<std::int64_t>(left, longest_wait_ms));
        if (poll(entries, 3, slice) <= 0) {
            continue;
        }
        if (entries[1].revents != 0) {
            return BoundedTask::End::stopped;
        }
        if (entries[2].revents != 0 && !read_some_messages(entries[2].fd, outcome.messages)) {
            entries[2].fd = -1;
        }
        if (entries[0].revents != 0) {
            if (!read_some(entries[0].fd, outcome.text)) {
                return BoundedTask::End::finished;
            }
            end = SteadyClock::now() + limit;
        }
    }
}

// Whether the child has ended well; nothing when it does not go away in a second. It is asked often
// at first: most are gone as soon as they have closed their result.
std::optional<bool> reap(pid_t child) {
    const auto end = SteadyClock::now() + milliseconds(longest_wait_ms);
    for (std::chrono::microseconds pause(20); SteadyClock::now() < end; pause += pause / 2) {
        int status = 0;
        const pid_t reaped = waitpid(child, &status, WNOHANG);
        if (reaped == child) {
            return WIFEXITED(status) && WEXITSTATUS(status) == 0;
        }
        if (reaped < 0 && errno != EINTR) {
            return false;
        }
        std::this_thread::sleep_for(pause);
    }
    return {};
}

// Children that did not go away in time.
std::vector<pid_t> left_children;

void reap_left_children() {
    const auto is_gone = [](pid_t child) { return waitpid(child, nullptr, WNOHANG) != 0; };
    left_children.erase(std::remove_if(left_children.begin(), left_children.end(), is_gone),
                        left_children.end());
}

}  // namespace

std::string why_not_finished(const BoundedTask& task, int limit_seconds) {
    switch (task.end) {
        case BoundedTask::End::too_long:
            return "no answer within " + std::to_string(limit_seconds) + " s; it was left";
        case BoundedTask::End::stopped:
            return "it was not waited for";
        default:
            return "it ended before its time";
    }
}

BoundedTask run_bounded(const std::function<std::string()>& task, int limit_seconds, int wake_fd) {
    return run_bounded([&](const TakePiece& take_piece) { take_piece(task()); }, limit_seconds,
                       wake_fd);
}

BoundedTask run_bounded(const Task& task, int limit_seconds, int wake_fd) {
    BoundedTask outcome;
    Pipe result;
    Pipe messages;
    reap_left_children();
    std::fflush(nullptr);
    const auto start = SteadyClock::now();
    const pid_t parent = getpid();
    const bool has_pipes = open_pipe(result) && open_pipe(messages);
    const pid_t child = has_pipes ? fork() : -1;
    if (child < 0) {
        outcome.messages = std::string(has_pipes ? "fork: " : "pipe: ") + std::strerror(errno);
        return outcome;
    }
    if (child == 0) {
        be_child(task, result, messages, parent);
    }
    setpgid(child, child);  // whoever comes first
    result.writer.reset();
    messages.writer.reset();

    outcome.end = collect(result, messages, std::chrono::seconds(limit_seconds), wake_fd, outcome);
    outcome.took_ms = std::chrono::duration_cast<milliseconds>(SteadyClock::now() - start).count();
    const bool finished = outcome.end == BoundedTask::End::finished;
    if (!finished) {
        kill(-child, SIGKILL);
    }
    read_rest(messages.reader.get(), outcome.messages);
    const std::optional<bool> ended_well = reap(child);
    if (!ended_well) {
        kill(-child, SIGKILL);
        left_children.push_back(child);
    }
    if (finished && !ended_well.value_or(false)) {
        outcome.end = BoundedTask::End::died;
    }
    return outcome;
}
