// What a run writes: the configuration, to a file or to standard output, and then the notes.
#pragma once

#include <string>

#include "calc/host_profile.h"

// Writes the text to the path, which is opened with `flags`, O_WRONLY and O_TRUNC and, where it is
// created, with `mode`. Returns 0, or -1 after reporting through err; the file may then hold a part
// of the text, or nothing.
int str2file(const char* path, const char* text, int flags, unsigned mode);

// Writes the configuration to the path (mode 0600 where it is created), or to standard output when
// the path is empty. Returns 0, or -1 when the file could not be written, after reporting.
int write_configuration(const std::string& path, const std::string& text);

// Lists the warnings, then the exclude paths, on standard error, one per line.
void list_notes(const TarnACalculateHWNodeNotes& notes);
