// The time spans of the command line.
#include <cerrno>

#include "calc/arguments.h"
#include "fuzz/support.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string span = fuzz::text_of(data, size);
    int seconds = -1;
    errno = 0;
    const int result = parse_time(span.c_str(), &seconds);
    fuzz::require(result == 0 || result == -1, "a span is accepted or refused");
    fuzz::require(seconds >= 0, "no span is negative");
    fuzz::require(result == 0 || seconds == 0, "a refused span stores 0");
    errno = ERANGE;
    const int with_errno = parse_time(span.c_str(), &seconds);
    fuzz::require(with_errno == (span.c_str()[0] == '\0' ? 0 : -1),
                  "a system error left by earlier code fails every span but the empty one");
    return 0;
}
