#include "kiln/runscript.h"

#include <utility>
#include <vector>

#include "kiln/caller_exec.h"
#include "kiln/connector.h"
#include "kiln/environment.h"
#include "kiln/error.h"
#include "kiln/limited_caller.h"

namespace {

// Calls the shell and takes over what it wrote. Returns false with the reason in `err` when the
// machinery fails.
bool call_shell(Kiln::CallerBase& shell, std::string& out, std::string& err) {
    Kiln::CtoDynaBuf out_buffer;
    Kiln::CtoDynaBuf err_buffer;
    std::vector<Kiln::Connector*> connectors = {nullptr, &out_buffer, &err_buffer};
    try {
        shell.call(connectors);
    } catch (const Kiln::Error& error) {
        out.clear();
        err = error.what();
        return false;
    }
    out = std::move(out_buffer.buffer);
    err = std::move(err_buffer.buffer);
    return true;
}

}  // namespace

int runscript(std::string command, std::string& out, std::string& err) {
    Kiln::CallerExec shell("sh", {"-c", std::move(command)}, Kiln::current_environment(), {});
    return call_shell(shell, out, err) ? shell.getStatus() : -1;
}

namespace Kiln {

CommandEnd run_command(std::string command, std::string& out, std::string& err,
                       const RunLimits& limits) {
    LimitedCaller shell("sh", {"-c", std::move(command)}, current_environment(), limits);
    if (!call_shell(shell, out, err)) {
        return {CommandEnd::failed, -1, false};
    }
    return shell.end();
}

}  // namespace Kiln
