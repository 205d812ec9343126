// Errors and log lines of any text and length, on a console that is closed.
#include "fuzz/support.h"
#include "kiln/error.h"
#include "kiln/log.h"

namespace {

constexpr std::size_t longest = 4095;

std::string cut(const std::string& text) {
    return text.substr(0, longest);
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
        require(errno == ELOOP, "logging keeps errno");
    }
    log_state().log_file.reset();
    const std::string text(memory, size);
    std::free(memory);
    return text.substr(std::min(text.find(' '), text.size()));
}

}  // namespace

// Input: settings, the length of the text, and what is repeated in it.
void try_input(fuzz::Input input) {
    const std::size_t length = input.next<std::uint16_t>() % 8192;
    const int errnum = input.next<std::uint8_t>();
    const int level = input.next<std::int8_t>();
    log_set_level(input.next<std::int8_t>());
    const std::string piece = std::string("x").append(input.text().c_str());
    std::string text;
    while (text.size() < length) {
        text += piece;
    }
    text.resize(length);
    const auto code = static_cast<Kiln::Error::Code>(level < 0 ? 10000 : level);
    const std::string start = code == Kiln::Error::CallerGenericError
                                  ? "[Caller] Generic error. "
                                  : "[Unknown error domain] Unknown or general internal error. ";
    const Kiln::Error error(code, "%s", text.c_str());
    const Kiln::Error copy(error);
    require(copy.what() == cut(start + cut(text)), "an error is told as far as it fits");

    // The system's text needs room for its colon.
    const bool has_reason = errnum != 0 && length < longest;
    const std::string failure = cut(has_reason ? text + ": " + std::strerror(errnum) : text);
    int status = 0;
    const std::string errors = logged([&] { status = err(level, errnum, "%s", text.c_str()); });
    require(status == level, "the status comes back");
    require(get_last_error() == failure, "an error is remembered as far as it fits");
    require(errors == (log_get_level() < -1 ? "" : " Error: " + failure + "\n"), "and filed");

    const std::string line = (level < 0 ? " Error: " : " ") + cut(text) + "\n";
    const std::string lines = logged([&] { log(level, "%s", text.c_str()); });
    require(lines == (level > log_get_level() ? "" : line), "a line is filed by its level");
    require(get_last_error() == (level < 0 ? cut(text) : failure), "only errors are kept");
}
