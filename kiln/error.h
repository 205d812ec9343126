// Kiln::Error: the one exception that the library's own classes throw. Thrown by the command
// runner, caught by runscript and by whoever drives a CallerExec itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>

namespace Kiln {

class Error : public std::exception {
public:
    enum Code : std::int32_t {
        UnknownError = 0,  // ends the table; every code that is not in the table reads like it
        CallerGenericError = 10000,
    };

    // The length of the composed text and of the detail, terminators included. Longer texts are
    // cut.
    static constexpr std::size_t text_size = 4096;

    // The detail is the format applied to the arguments, as printf does it.
    Error(Code error_code, const char* format, ...) __attribute__((format(printf, 3, 4)));

    // "[domain] message. detail". The text lives in this object and as long as it; never fails.
    const char* what() const noexcept override;

    Code code;
    std::uint32_t error_domain;
    std::uint32_t error_category;  // groups codes within a domain; nothing here reads it
    const char* error_message;     // the table's text for the code, not owned
    char error_detail[text_size];

private:
    mutable char what_buffer[text_size];
};

}  // namespace Kiln
