#include "plan/text/say.h"

#include <unistd.h>

#include "kiln/files.h"
#include "kiln/strings.h"
#include "plan/text/printable.h"

void say(const std::string& text) {
    // One line and one write: a log shows it whole, and nobody's text comes between.
    const std::string words = Kiln::join(" ", Kiln::split("\n", text, 0));
    const std::string line = "tarnhwplan: " + printable(words) + "\n";
    static_cast<void>(Kiln::write_all(STDERR_FILENO, line.data(), line.size()));
}
