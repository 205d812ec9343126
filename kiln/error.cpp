#include "kiln/error.h"

#include <cstdarg>
#include <cstdio>

namespace Kiln {

namespace {

struct ErrorRow {
    Error::Code code;
    std::uint32_t domain;
    std::uint32_t category;
    const char* message;
};

struct DomainRow {
    std::uint32_t id;
    const char* name;
};

constexpr std::uint32_t caller_domain = 10;

// The last row of each table stands for everything that the table does not know.
constexpr ErrorRow errors_[] = {
    {Error::CallerGenericError, caller_domain, 100, "Generic error"},
    {Error::UnknownError, 0, 0, "Unknown or general internal error"},
};

constexpr DomainRow domains_[] = {
    {caller_domain, "Caller"},
    {0, "Unknown error domain"},
};

// Ends at the last row at the latest: its code is that of no other.
const ErrorRow& find_error(Error::Code code) {
    const ErrorRow* row = errors_;
    while (row->code != code && row->code != Error::UnknownError) {
        ++row;
    }
    return *row;
}

const char* find_domain(std::uint32_t id) {
    const DomainRow* row = domains_;
    while (row->id != id && row->id != 0) {
        ++row;
    }
    return row->name;
}

}  // namespace

Error::Error(Code error_code, const char* format, ...)
    : code(error_code),
      error_domain(find_error(error_code).domain),
      error_category(find_error(error_code).category),
      error_message(find_error(error_code).message),
      error_detail(),
      what_buffer() {
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(error_detail, sizeof error_detail, format, arguments);
    va_end(arguments);
}

const char* Error::what() const noexcept {
    // Longer than the buffer when the detail fills its own; cut then.
    const int length = std::snprintf(what_buffer, sizeof what_buffer, "[%s] %s. %s",
                                     find_domain(error_domain), error_message, error_detail);
    if (length < 0) {
        what_buffer[0] = '\0';
    }
    return what_buffer;
}

}  // namespace Kiln
