#include "kiln/runscript.h"

#include <unistd.h>

#include <limits>
#include <list>
#include <utility>
#include <vector>

#include "kiln/caller_exec.h"
#include "kiln/connector.h"
#include "kiln/error.h"

namespace {

std::list<std::string> whole_environment() {
    std::list<std::string> entries;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        entries.emplace_back(*entry);
    }
    return entries;
}

Kiln::CtoDynaBuf unlimited_buffer() {
    return Kiln::CtoDynaBuf(std::numeric_limits<unsigned long>::max(), true, nullptr, -1);
}

}  // namespace

int runscript(std::string command, std::string& out, std::string& err) {
    const std::list<std::string> arguments = {"-c", std::move(command)};
    Kiln::CtoDynaBuf out_buffer = unlimited_buffer();
    Kiln::CtoDynaBuf err_buffer = unlimited_buffer();
    std::vector<Kiln::Connector*> connectors = {nullptr, &out_buffer, &err_buffer};
    try {
        Kiln::CallerExec shell("sh", arguments, whole_environment(), {});
        shell.call(connectors);
        out = std::move(out_buffer.buffer);
        err = std::move(err_buffer.buffer);
        return shell.getStatus();
    } catch (const Kiln::Error& error) {
        out.clear();
        err = error.what();
        return -1;
    }
}
