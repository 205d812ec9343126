// The paths to leave out, for --exclude-from.
#include "plan/limits/commented_text.h"
#include "plan/limits/host_text.h"

namespace {

std::string pattern_of(const std::string& path) {
    const std::optional<std::string> directory = directory_of_contents(path);
    return directory ? rsync_pattern(*directory, "/*") : rsync_pattern(path, "");
}

// A line ends at either of the two.
bool fits_line(const std::string& path) {
    return !path.empty() && path.front() == '/' && path.find_first_of("\r\n") == std::string::npos;
}

}  // namespace

LimitsText write_rsync(const LimitSheet& sheet) {
    LimitSheet files_only = sheet;
    files_only.notes.clear();  // they are about limits, and so are these
    files_only.complaints.clear();
    if (!sheet.excludes_known) {
        files_only.complaints.emplace_back(
            "the paths to leave out are not known: do not copy with this file");
    }
    CommentedText text(files_only);
    text.heading();
    text.blank();
    text.comment("The patterns begin at the root, so copy from there:");
    text.line("#   rsync -aHAXS --numeric-ids --exclude-from=THIS_FILE / TARGET/");
    for (const TarnAExcludePath& exclude : sheet.host.notes.excludes) {
        if (fits_line(exclude.path)) {
            text.setting(exclude.flag
                             ? "network, removable, loop, bind or automount, or a login record"
                             : "a file system of the kernel",
                         pattern_of(exclude.path));
        } else {
            text.refuse("the path", exclude.path, "a line cannot hold it");
        }
    }
    text.blank();
    text.lacking_comments(Engine::rsync);
    return text.finish();
}
