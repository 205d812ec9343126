# The words in which a scenario describes its host and what the program must print there. Sourced by run_scenario.
# The host to begin with: one link without an address, the name "box", a detection script that says "testos", an empty
# mount table, no process, no name server, and commands that count nothing.
failures=0 runs=0
out=$stage/out # what the stubs print, one file a command

# put FILE [TEXT]: writes TEXT and a newline, or standard input, to FILE. rows N FILE: N lines.
put() { mkdir -p "${1%/*}" && if (($# > 1)); then printf '%s\n' "$2"; else cat; fi >"$1"; }
rows() { seq "$1" | put "$2"; }

# stub NAME BODY: a command of the host. It notes how it was called, then runs BODY.
stub() { command_file "$1" "echo \"$1 \$*\" >>$stage/calls
$2"; }
command_file() { put "$stage/bin/$1" "#!/bin/sh"$'\n'"$2" && chmod +x "$stage/bin/$1"; }
detect() { put /tmp/usr/local/share/tarnp2v/distdetect-common.sh "$1"; }

# process PID [KEY=VALUE ...]: a status file as the kernel writes it. fds PID N: N open descriptors.
process() { printf '%s kB\n' "${@:2}" | sed "1iName:\\tp$1
        s/=/:\\t/" | put "/proc/$1/status"; }
fds() { mkdir -p "/proc/$1/fd" && (cd "/proc/$1/fd" && seq "$2" | xargs touch); }

# link NAME [ADDRESS ...]: an ethernet link (the near end of a pair) that is up; addresses as "ip address add" takes
# them. Links are listed in the order in which they were made.
next_index=10
link() {
    local name=$1 address
    "$stage/ip" link add "$name" index $next_index type veth peer name "p$next_index" index $((next_index + 100)) \
        2>/dev/null || skip "the kernel has no pair links"
    "$stage/ip" link set "p$((next_index++))" addrgenmode none
    "$stage/ip" link set "$name" addrgenmode none up
    # shellcheck disable=SC2086 # it may be "ADDRESS peer ADDRESS"
    for address in "${@:2}"; do "$stage/ip" address add $address dev "$name"; done
}

# The whole result of the host above. Beyond a factor times a floor:
#   NUMFILE      trunc(9312 x 1.2) = 11174, above the 432 + 432 + 255 sockets and terminals and above 32 x 180
#   DCACHESIZE   trunc(11174 x 384 x 1.1)
#   KMEMSIZE     288 x 61440 + 4719897 = 22414617, to even among the floats
#   *BUF         432 x 65536, and 432 x 2560 less
#   PRIVVMPAGES  trunc(65536 x 1.1)
#   SLMMEMORYLIMIT  1.2 x (22414616 + 2 x 28311552 + 28311552 + 262144 + 4096 x 72089 + 4096 x 307) in floats
floors=(
    NUMPROC=288:288 AVNUMPROC=180:180 NUMTCPSOCK=432:432 NUMOTHERSOCK=432:432 NUMPTY=255:255 NUMFILE=11174:11174
    DCACHESIZE=4719897:4719897 KMEMSIZE=22414616:22414616 TCPSNDBUF=27205632:28311552 TCPRCVBUF=27205632:28311552
    OTHERSOCKBUF=27205632:28311552 DGRAMRCVBUF=262144:262144 PRIVVMPAGES=65536:72089 VMGUARPAGES=65536:2147483647
    OOMGUARPAGES=65536:2147483647 LOCKEDPAGES=307:307 SHMPAGES=25804:25804 PHYSPAGES=0:9223372036854775807
    NUMFLOCK=225:247 NUMSIGINFO=256:256 NUMIPTENT=153:153 DISKSPACE=0:0 DISKINODES=0:0 CPUUNITS=1000 QUOTATIME=0
    QUOTAUGIDLIMIT=0 SLMMEMORYLIMIT=484974560:484974560 SLMMODE=all DISTRIBUTION=testos HOSTNAME=box '#IP_ADDRESS='
    SEARCHDOMAIN= NAMESERVER= FEATURES=
)

# config [NAME=VALUE ...]: the next run prints the result of the host above with these values instead; a text line
# without a value is left out. prints TEXT: the next run prints that instead. complains LINE ...: and its standard error.
config() {
    local -A value
    local pair name
    for pair in "${floors[@]}" "$@"; do value[${pair%%=*}]=${pair#*=}; done
    for pair in "${floors[@]}"; do
        name=${pair%%=*}
        [[ -z ${value[$name]} ]] || printf '%s="%s"\n' "$name" "${value[$name]}"
    done >"$stage/want.out"
}
prints() { printf '%s' "$1" >"$stage/want.out"; }
complains() { printf '%s\n' "$@" >"$stage/want.err"; }

# launch ARGUMENT ...: turns the shell it is called in into the program. extra_env adds to its environment, wrapper is a
# command that starts it. The leak check of a sanitizer wants the task list of the process, by number.
program=$stage/bin/tarnhwcalc
extra_env=() wrapper=()
launch() {
    mkdir -p "/proc/$BASHPID"
    ln -sfn "$stage/proc/$BASHPID/task" "/proc/$BASHPID/task"
    exec env -i PATH="$stage/bin:/usr/sbin:/usr/bin:/sbin:/bin" HOME=/ ${ASAN_OPTIONS:+"ASAN_OPTIONS=$ASAN_OPTIONS"} \
        "${extra_env[@]}" "${wrapper[@]}" "$program" "$@"
}

# same WHAT WANTED GOT: two files, is WHAT WANTED GOT: two texts that must not differ.
same() { diff -u --label "run $runs: $1 foretold" --label seen "$2" "$3" || failures=1; }
is() { [[ $2 == "$3" ]] || { echo "run $runs: $1 is \"$3\", not \"$2\"" && failures=1; }; }

# run STATUS ARGUMENT ...: the program must end with STATUS and print what was foretold, which is forgotten then. With
# another result it must be in that file, and nothing on standard output.
result=$stage/got.out
run() {
    local status=0
    : >"$stage/calls"
    (launch "${@:2}") >"$stage/got.out" 2>"$stage/got.err" || status=$?
    verdict "$status" "$1"
}
verdict() {
    runs=$((runs + 1))
    is "exit status" "$2" "$1"
    same "the result" "$stage/want.out" "$result"
    [[ $result == "$stage/got.out" ]] || is "standard output" '' "$(cat "$stage/got.out")"
    same "standard error" "$stage/want.err" "$stage/got.err"
    truncate -s 0 "$stage"/want.{out,err}
}

truncate -s 0 "$stage"/want.{out,err} "$stage/calls"
echo box >"$stage/proc/sys/kernel/hostname"
detect 'echo testos'
link eth0
for table in /proc/net/{tcp,unix,udp,raw} /proc/locks /etc/mtab "$out"/{ps,iptables,ip,ipcs,df-k,df-i}; do rows 0 "$table"; done
# The counting commands print their file, and only when called with the arguments that the run gives them.
while read -r command arguments; do
    stub "$command" "[ \"\$*\" = '$arguments' ] || exit 64; cat $out/$command"
done <<'END'
ps ax
iptables -n -L -t filter
ip route list
ipcs -m -u
END
stub df "case \"\$*\" in '-k -l' | '-i -l') cat $out/df\$1 ;; *) exit 64 ;; esac"
