// A host that is a directory and a table of what its commands answer. Needs no privilege.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "inspect/host.h"

struct MadeUpHost {
    struct Answer {
        int status = 0;
        std::string out, err;
    };

    MadeUpHost() {
        std::string name = testing::TempDir() + "hostXXXXXX";
        root = mkdtemp(name.data());
        host.paths = {root,        path("types"),  path("fstab"), path("mtab"),
                      path("dns"), path("record"), path("detect")};
        host.run = [this](const std::string& command, std::string& out, std::string& err) {
            const Answer& answer = answers[command];
            out = answer.out;
            err = answer.err;
            return answer.status;
        };
        host.physical_pages = [] { return -1; };
    }
    ~MadeUpHost() { std::filesystem::remove_all(root); }
    MadeUpHost(const MadeUpHost&) = delete;
    MadeUpHost& operator=(const MadeUpHost&) = delete;

    std::string path(const std::string& name) const { return root + "/" + name; }
    void put(const std::string& name, const std::string& text) const {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        std::ofstream(path(name), std::ios::binary) << text;
    }
    // Whether the command of the shell, run in the root, succeeded.
    bool shell(const std::string& command) const {
        const std::string begin = "exec 2>/dev/null; PATH=/usr/bin:/bin; cd '" + root + "' && ";
        return std::system((begin + command).c_str()) == 0;
    }

    std::string root;                       // of /proc, and of the few files
    std::map<std::string, Answer> answers;  // a command that is not here prints nothing
    Host host;
};
