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
        std::string out;
        std::string err;
    };

    MadeUpHost() {
        std::string name = testing::TempDir() + "hostXXXXXX";
        root = mkdtemp(name.data());
        host.paths = {root,          root + "/types",  root + "/fstab", root + "/mtab",
                      root + "/dns", root + "/record", root + "/detect"};
        host.run = [this](const std::string& command, std::string& out, std::string& err) {
            ++asked;
            out = answers[command].out;
            err = answers[command].err;
            return answers[command].status;
        };
        host.physical_pages = [] { return -1; };
    }
    ~MadeUpHost() { std::filesystem::remove_all(root); }
    MadeUpHost(const MadeUpHost&) = delete;
    MadeUpHost& operator=(const MadeUpHost&) = delete;

    void process(const std::string& name, const std::string& status) const {
        std::filesystem::create_directories(root + "/" + name);
        std::ofstream(root + "/" + name + "/status") << status;
    }

    std::string root;                       // of /proc, and of the few files
    std::map<std::string, Answer> answers;  // a command that is not here prints nothing
    int asked = 0;
    Host host;
};
