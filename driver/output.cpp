#include "driver/output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "kiln/files.h"
#include "kiln/log.h"
#include "kiln/owners.h"

namespace {

constexpr unsigned config_file_mode = 0600;

// The descriptor is written to directly: a stream would lose text to an interrupted write.
void write_standard_output(const std::string& text) {
    std::fflush(stdout);  // what the log has said comes first
    if (Kiln::write_all(STDOUT_FILENO, text.data(), text.size()) != 0) {
        err(-1, errno, "unable to write to standard output");
    }
}

}  // namespace

int str2file(const char* path, const char* text, int flags, unsigned mode) {
    const Kiln::Descriptor file(
        static_cast<int>(TEMP_FAILURE_RETRY(open(path, flags | O_WRONLY | O_TRUNC, mode))));
    if (!file) {
        return err(-1, errno, "unable to open %s", path);
    }
    const std::size_t unwritten = Kiln::write_all(file.get(), text, std::strlen(text));
    if (unwritten != 0) {
        return err(-1, errno, "unable to write %d bystes to the %s", static_cast<int>(unwritten),
                   path);
    }
    return 0;
}

int write_configuration(const std::string& path, const std::string& text) {
    if (path.empty()) {
        write_standard_output(text);
        return 0;
    }
    return str2file(path.c_str(), text.c_str(), O_CREAT, config_file_mode);
}

// Nobody is left to be told of a failure.
void list_notes(const TarnACalculateHWNodeNotes& notes) {
    const std::string text = notes_text(notes);
    Kiln::write_all(STDERR_FILENO, text.data(), text.size());
}
