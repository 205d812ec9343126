// Errors and log lines of any text and length, on a console that is closed.
#include <cerrno>

#include "fuzz/support.h"
#include "kiln/error.h"
#include "kiln/log.h"

namespace {

constexpr std::size_t longest = 4095;

std::string cut(const std::string& text) {
    return text.substr(0, longest);
}

// The system's text needs room for its colon.
std::string with_reason(const std::string& text, int errnum) {
    const bool fits = errnum != 0 && text.size() < longest;
    return cut(fits ? text + ": " + std::strerror(errnum) : text);
}

void check_error(Kiln::Error::Code code, const std::string& detail) {
    const std::string start = code == Kiln::Error::CallerGenericError
                                  ? "[Caller] Generic error. "
                                  : "[Unknown error domain] Unknown or general internal error. ";
    const Kiln::Error error(code, "%s", detail.c_str());
    const Kiln::Error copy(error);
    fuzz::require(copy.what() == cut(start + cut(detail)), "an error is told as far as it fits");
}

// What the log file gets of it, behind the time.
template <class Logging>
std::string logged(const Logging& logging) {
    char* memory = nullptr;
    std::size_t size = 0;
    log_state().log_file.reset(open_memstream(&memory, &size));
    {
        const fuzz::ClosedConsole console;
        errno = ELOOP;
        logging();
        fuzz::require(errno == ELOOP, "logging keeps errno");
    }
    log_state().log_file.reset();
    const std::string text(memory, size);
    std::free(memory);
    return text.substr(std::min(text.find(' '), text.size()));
}

}  // namespace

// Input: settings, the length of the text, and what is repeated in it.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Bytes bytes(data, size);
    const std::size_t length = bytes.next<std::uint16_t>() % 8192;
    const int errnum = bytes.next<std::uint8_t>();
    const int level = bytes.next<std::int8_t>();
    log_set_level(bytes.next<std::int8_t>());
    const std::string piece = std::string("x").append(bytes.rest().c_str());
    std::string text;
    while (text.size() < length) {
        text += piece;
    }
    text.resize(length);
    check_error(static_cast<Kiln::Error::Code>(level < 0 ? 10000 : level), text);

    const std::string failure = with_reason(text, errnum);
    int status = 0;
    const std::string errors = logged([&] { status = err(level, errnum, "%s", text.c_str()); });
    fuzz::require(status == level, "the status comes back");
    fuzz::require(get_last_error() == failure, "an error is remembered as far as it fits");
    fuzz::require(errors == (log_get_level() < -1 ? "" : " Error: " + failure + "\n"), "and filed");

    const std::string line = (level < 0 ? " Error: " : " ") + cut(text) + "\n";
    const std::string lines = logged([&] { log(level, "%s", text.c_str()); });
    fuzz::require(lines == (level > log_get_level() ? "" : line), "a line is filed by its level");
    fuzz::require(get_last_error() == (level < 0 ? cut(text) : failure), "only errors are kept");
    return 0;
}
