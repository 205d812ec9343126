// Connectors: what stands at the parent's end of a child's standard descriptor. The command runner
// gives each one a poll entry and calls process() whenever that entry is ready. A connector belongs
// to the function that runs the command and must outlive the call; it never closes its pipe end.
#pragma once

#include <poll.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

namespace Kiln {

class Connector {
public:
    explicit Connector(pollfd* entry) : pfd(entry) {}

    // Moves bytes once. 1 or more: go on. 0 or less: the runner closes the pipe end; a negative
    // value is a negated system error number.
    virtual long process() = 0;
    virtual ~Connector() = default;

    pollfd* pfd;  // owned by the runner, null until it assigns one; invalid after the call

protected:
    Connector(const Connector&) = default;
    Connector& operator=(const Connector&) = default;
};

// Collects what the child writes.
class CtoDynaBuf : public Connector {
public:
    // `buffer` never grows beyond `limit` bytes. When it is full, `drain` true goes on reading and
    // drops the surplus; false stops. Each chunk read is copied to `tee` unless that is -1; the
    // descriptor is closed when the copying fails, and stays the caller's otherwise.
    CtoDynaBuf(unsigned long limit, bool drain, pollfd* entry, int tee)
        : Connector(entry), max_size(limit), keep_draining(drain), tee_fd(tee) {}

    // Keeps everything.
    CtoDynaBuf() : CtoDynaBuf(std::numeric_limits<unsigned long>::max(), true, nullptr, -1) {}

    // The bytes read (which may exceed what was kept), 0 at the end of the data or when reading
    // stops, 1 with nothing read after an interruption, or a negated error number.
    long process() override;

    std::string buffer;
    std::uint64_t max_size;
    bool keep_draining;
    int tee_fd;

private:
    bool store(const char* chunk, std::size_t size);
    void copy_to_tee(const char* chunk, std::size_t size);
};

// Feeds the child from a fixed area, which must outlive the call.
// Part of the interface; nothing in this project calls it.
class CfromStaticBuf : public Connector {
public:
    CfromStaticBuf(const char* bytes, std::size_t byte_count, pollfd* entry)
        : Connector(entry), data(bytes), size(byte_count) {}

    // Writes at most 4096 bytes, always from the start of the area. 1 while `written` is below
    // `size`.
    long process() override;

    const char* data;
    std::size_t size;
    std::uint32_t written = 0;
};

// Takes nothing: the pipe end is closed as soon as the child writes or ends.
// Part of the interface; nothing in this project calls it.
class CtoStaticBuf : public Connector {
public:
    using Connector::Connector;

    long process() override { return 0; }
};

}  // namespace Kiln
