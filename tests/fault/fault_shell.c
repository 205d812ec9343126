/* The "sh" of the fault test's host: answers the commands that the program runs, each at once and
 * with a count of its own. SHELL_SILENT and SHELL_FAILS name commands, or beginnings of commands,
 * that print nothing or end with 1. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

struct answer {
    const char* command;
    const char* output;
};

static const struct answer answers[] = {
    {"ps ax", "500\n"},
    {"wc -l < /proc/net/tcp", "700\n"},
    {"cat /proc/net/unix", "800\n"},
    {"ls /proc", "30000\n"},
    {"/usr/bin/ipcs", "segments allocated 7\npages allocated 40000\n"},
    {"wc -l < /proc/locks", "300\n"},
    {"iptables", "200\n"},
    {"ip route", "100\n"},
    {"df -k",
     "Filesystem 1K-blocks Used Available Use% Mounted on\n/dev/sda1 9000000 7000000 2000000 78% "
     "/\n"},
    {"df -i",
     "Filesystem Inodes IUsed IFree IUse% Mounted on\n/dev/sda1 90000 70000 20000 78% /\n"},
    {"repquota -unv",
     "*** Report for user quotas on device /tmp/disk\n---\n#0 -- 1 0 0 1 0 0\n#500 -- 1 0 0 1 0 "
     "0\n"},
    {"VISUAL=cat EDITOR=cat edquota -utf", "Block grace period: 7days\n"},
    {"/tmp//usr/local", "testos\n"},
};

static int is_named(const char* variable, const char* command) {
    const char* name = getenv(variable);
    return name != NULL && strncmp(command, name, strlen(name)) == 0;
}

int main(int argc, char** argv) {
    const char* command = argv[argc - 1];
    for (size_t i = 0; i < sizeof(answers) / sizeof(answers[0]); ++i) {
        if (strncmp(command, answers[i].command, strlen(answers[i].command)) == 0) {
            if (!is_named("SHELL_SILENT", command)) {
                fputs(answers[i].output, stdout);
            }
            return is_named("SHELL_FAILS", command);
        }
    }
    fprintf(stderr, "an unexpected command: %s\n", command);
    return 64;
}
