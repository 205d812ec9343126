# Makes each call that can fail do so, one at a time, through whole runs of the program. A source that cannot be read
# must look exactly like a source that is not there, and a command that cannot be run like one that failed: nothing may
# be half taken over, and nothing else may be said. Run by run_scenario, with the words of its host.sh, the preloaded
# library as descriptor 6, and the name of one of the parts below as FAULT_PART.
cat <&6 >"$stage/fault.so" && exec 6<&-

# The host: every source that the program knows says something.
process 101 PPid=1101 VmSize=400000 VmLck=2000
process 102 PPid=1102 VmSize=300000 VmLck=1000
put /tmp/disk ''
put /etc/fstab '/dev/cd /cd iso9660 ro 0 0'
put /etc/mtab $'/tmp/disk / ext4 rw,usrquota 0 0\nproc /proc proc rw 0 0\nhost:/x /x nfs rw 0 0'
put /proc/filesystems $'nodev\tproc\n\text4'
truncate -s 1073741825 /var/log/lastlog
"$stage/ip" address add 10.0.0.1/24 dev eth0
"$stage/ip" address add fd00::1/64 dev eth0 nodad
link eth1 10.0.1.1/24
put /etc/tarn/tarnnet.conf <<'END'
VNID_br0="net1"
IFLST_br0="eth0 eth1"
VLAN_eth0="10 20"
ADDR_eth0="10.0.0.1 10.0.0.2"
ADDR_eth7="10.0.0.7"
END
put /proc/net/vlan/config $'VLAN Dev name\nName-Type: VLAN_NAME_TYPE_RAW_PLUS_VID\neth0.10 | 10 | eth0'
put /proc/tarn/veth $'Version: 1.0\nm veth101.0 m eth0 101'
put /proc/tarn/vmth $'Version: 1.0\nvme101.0'
mkdir -p /sys/class/net/br0/{bridge,brif/veth101.0}
put /etc/sysconfig/network-scripts/ifcfg-eth0 $'DEVICE=eth0\nBOOTPROTO=dhcp'
put /etc/resolv.conf $'search a.example b.example\nnameserver 10.0.0.53'

# What the program reads (each may be missing without harm), and what it runs, by how the commands begin.
sources=(
    /proc/10{1,2}/status /etc/tarn/tarnnet.conf /proc/net/vlan/config /proc/tarn/v{e,m}th /etc/resolv.conf
    /etc/sysconfig/network-scripts/ifcfg-eth0 /tmp//usr/local/share/tarnp2v/distdetect-common.sh /proc/filesystems
    /etc/fstab /var/log/lastlog /tmp/disk
)
commands=(
    'ps ax' 'wc -l < /proc/net/tcp' 'cat /proc/net/unix' 'ls /proc' /usr/bin/ipcs 'wc -l < /proc/locks' iptables
    'ip route' 'df -k' 'df -i' repquota 'VISUAL=cat EDITOR=cat edquota' /tmp//usr
)

# A shell that answers each at once, with a count of its own. SILENT and FAILS name one that prints nothing or fails.
put "$stage/bin/sh" <<'END'
#!/bin/sh
for command; do :; done
case $command in
"${SILENT:--}"*) exit 0 ;;
'ps ax'*) echo 500 ;;
'wc -l < /proc/net/tcp') echo 700 ;;
'cat /proc/net/unix'*) echo 800 ;;
'ls /proc'*) echo 30000 ;;
/usr/bin/ipcs*) printf 'segments allocated 7\npages allocated 40000\n' ;;
'wc -l < /proc/locks') echo 300 ;;
iptables*) echo 200 ;;
'ip route'*) echo 100 ;;
'df '*) printf 'Filesystem Total Used Available Use%% Mounted on\n/dev/sda1 9000000 700000 2000000 78%% /\n' ;;
'repquota -unv'*) printf '*** Report for user quotas\n---\n#0 -- 1 0 0 1 0 0\n#500 -- 1 0 0 1 0 0\n' ;;
'VISUAL=cat EDITOR=cat edquota -utf'*) echo 'Block grace period: 7days' ;;
/tmp//usr/local*) echo testos ;;
*) echo "an unexpected command: $command" >&2 && exit 64 ;;
esac
case $command in "${FAILS:--}"*) exit 1 ;; esac
END
chmod +x "$stage/bin/sh"

# The last run: what it printed and ended with, whether its call failed, and what that call was asked for.
sep=$'\1' # of status, output and notes in one text
out='' err='' seen='' status=0 hit=0 subject='' alarms=0 tried=0 answers=ALL= arguments=()
ASAN_OPTIONS=verify_asan_link_order=0

wrong() {
    printf '%s\n' "$1" "status, standard output and standard error:" "${seen//$sep/$'\n---\n'}"
    exit 1
}

# The reason that follows a failed command differs by the fault: a documented one, which may end with a line end of its
# own, becomes "...". A child that cannot be connected to its standard error says so on the program's own.
cut_reasons() {
    local line after='' text=''
    while IFS= read -r line; do
        [[ -z $after || ! $line =~ ^($|\[Caller\] Generic error\. |tarnhwcalc: Can\'t ) ]] || line=...
        after=
        [[ $line != "Error: Error running '"* ]] || after=1
        [[ -z $line || $line == "tarnhwcalc: Can't make dup2("* ]] || text+=$line$'\n'
    done <<<"$err"
    err=$text
}

# try FAULT [KEPT]: one run, FAULT as the preloaded library takes it, without its file. Every run must
# end in time by its own exit, give every descriptor back but KEPT, and leave no process.
try() {
    local kept=${2:-0} descriptors=0 children='' rang=0
    : >"$stage/noted"
    extra_env=(PATH="$stage/bin" LD_PRELOAD="$stage/fault.so" FAULT="$stage/noted $1 $alarms" "$answers")
    launch "${arguments[@]}" >"$stage/got.out" 2>"$stage/got.err" &
    wait $! && status=0 || status=$?
    rm -r "/proc/$!"
    IFS= read -rd '' out <"$stage/got.out" || true
    IFS= read -rd '' err <"$stage/got.err" || true
    cut_reasons
    seen=$status$sep$out$sep$err
    read -r hit descriptors children rang subject <"$stage/noted" || wrong "$1: did not end by its own exit"
    ((descriptors == (hit ? kept : 0))) || wrong "$1: $descriptors descriptors more than at the start"
    ((children == 0)) || wrong "$1: a child was not waited for"
    local processes=("$stage"/proc/[0-9]*)
    ((${#processes[@]} == 1)) || wrong "$1: a process is left"
    ((alarms == 0 || rang > 100)) || wrong "only $rang alarms"
}

# What a run may come to: allow STATUS OUT ERR adds to the list, which forbid empties; is_allowed asks for the last run.
declare -A allowed
allow() { allowed[$1$sep$2$sep$3]=1; }
forbid() { allowed=(); }
is_allowed() { [[ -n ${allowed[$seen]:-} ]]; }

# each CALL ERROR CHECK [KEPT [IN_CHILD [MOST]]]: lets the first such call fail, then the second, and so on until a run
# has fewer of them. CHECK must accept each outcome.
each() {
    local at
    for ((at = 1; at <= ${6:-10000}; at += at < 12 ? 1 : FAULT_STRIDE)); do
        try "$1 $at $2 ${5:-0}" "${4:-0}"
        ((hit)) || break
        tried=$((tried + 1))
        "$3" || wrong "$1 number $at of \"$subject\", failing with $2:"
    done
    ((at > 1)) || wrong "no $1 in a whole run"
}

# drop NAME TEXT: leaves the text without that line in $rest.
drop() { rest=${2%%$'\n'"$1="*}$'\n'${2#*$'\n'"$1="*$'\n'}; }

# lose_table REASON: what a run comes to without the mount table, which is read for the list of quotas, for each quota
# and for the mounts.
declare -A without_table
lose_table() {
    without /tmp/disk
    drop FEATURES "$plain_out"
    without_table=(["4$sep$sep"]=1 ["0$sep$rest$sep"$'/cd/*\n/var/log/lastlog\n']=1)
    without_table["0$sep${out_without[/tmp/disk]}${sep}Error: Error reading '/etc/mtab': $1"$'\n'"$plain_err"]=1
}

# The run on the host without a file: nothing but the plain run for a file that does not matter.
declare -A as_without out_without
without() {
    local path
    for path in "${sources[@]}"; do
        [[ $path == "$1" && -z ${as_without[$path]:-} ]] || continue
        mv "$path" "$path.away"
        try "none 0 none 0"
        mv "$path.away" "$path"
        as_without[$path]=$seen out_without[$path]=$out
    done
}
looks_missing() {
    local was=$seen path=$subject
    if [[ $path == /etc/mtab ]]; then
        [[ -n ${without_table[$seen]:-} ]]
    else
        without "$path"
        seen=$was
        [[ $seen == "${as_without[$path]-$plain}" ]]
    fi
}

try "none 0 none 0"
plain_out=$out plain_err=$err plain=$seen
[[ $status == 0 && $err == $'/cd/*\n/proc/*\n/x/*\n/var/log/lastlog\n' &&
    $out == *$'\n#IP_ADDRESS="10.0.0.1 fd00::1 10.0.1.1 "\n'* ]] || wrong "the host is not as it should be"
is_plain() { [[ $seen == "$plain" ]]; }
drop '#IP_ADDRESS' "$plain_out"
no_addresses=$rest

files() {
    lose_table "Permission denied"
    each open EACCES looks_missing
    each fdopen ENOMEM looks_missing
    each access EACCES looks_missing
    # The bridges and the interface files are still found by name where they matter here.
    each scandir ENOMEM is_plain
    forbid
    allow 3 '' ''
    each opendir EACCES is_allowed
}

# allow_commands VARIABLE: some one of the commands is named by the variable.
allow_commands() {
    local command
    for command in "${commands[@]}"; do
        answers=$1=$command
        try "none 0 none 0"
        allowed[$seen]=1
    done
    answers=ALL=
}

# What is read from no path is a command's output, or its end. Each of the commands falls silent for one of the faults.
reads() {
    local -A met=(["$plain"]=1)
    allow_commands SILENT
    allow 0 "$plain_out" "$plain_err"
    lose_table "Input/output error"
    looks_missing_or_silent() {
        if [[ -n $subject ]]; then looks_missing; else is_allowed && met[$seen]=1; fi
    }
    each read EIO looks_missing_or_silent
    ((FAULT_STRIDE > 1 || ${#met[@]} == ${#allowed[@]})) || wrong "some commands never fell silent"
}

# What is merely asked for is left out.
states() {
    without /tmp/disk
    local missing="Error: Partition or mount point '/tmp/disk' is missing from /etc/mtab"
    allow 0 "${out_without[/tmp/disk]}" "$missing"$'\n'"$plain_err"
    unlisted_or_missing() { is_allowed || looks_missing; }
    each stat EIO unlisted_or_missing
    forbid
    drop HOSTNAME "$plain_out"
    allow 0 "$rest" "$plain_err"
    each gethostname EFAULT is_allowed
    each sysconf EINVAL is_plain
    each close EIO is_plain
}

runs() {
    allow_commands FAILS
    ((${#allowed[@]} == 6)) || wrong "most commands end the run with one status"
    each pipe2 EMFILE is_allowed
    each fork EAGAIN is_allowed
    each fcntl EBADF is_allowed
    each ppoll ENOMEM is_allowed
    each waitpid EINVAL is_allowed
    # Once may be a mistake of the kernel's; it is asked again a second later.
    each waitpid ECHILD is_plain 0 0 2
    each dup2 EBUSY is_allowed 0 1
    each execve ENOMEM is_allowed 0 1
    each access EACCES is_allowed 0 1
    each close EIO is_plain 0 1
}

# Without the kernel's answer the other sources are read. A socket that cannot be set up stays open.
netlink() {
    local call error kept text
    while read -r call error kept text; do
        forbid
        allow 0 "$no_addresses" "$text"$'\n'"$plain_err"
        allow 0 "$no_addresses" "${text/SND/RCV}"$'\n'"$plain_err"
        each "$call" "$error" is_allowed "$kept"
    done <<'END'
socket EMFILE 0 Cannot open netlink socket: Too many open files
setsockopt ENOMEM 1 SO_SNDBUF: Cannot allocate memory
bind ENOMEM 1 Cannot bind netlink socket: Cannot allocate memory
getsockname ENOBUFS 1 Cannot getsockname: No buffer space available
sendto ENOBUFS 0 Cannot send dump request: No buffer space available
END
    forbid
    allow 0 "$no_addresses" $'netlink receive error No buffer space available (105)\nDump terminated\n'"$plain_err"
    each recvmsg ENOBUFS is_allowed
    each recvmsg EAGAIN is_plain
    allow 1 '' ''
    each sem_init ENOSYS is_allowed
}

# Without memory an interface or an address is left out, or the run ends. What is listed is whole, and listed once.
memory() {
    allow 1 '' ''
    allow 0 "$no_addresses" "$plain_err"
    left_out() {
        local line='' address seen=' '
        err=${err#$'Dump terminated\n'}
        if [[ $out =~ $'\n#IP_ADDRESS="'([^\"]*)\" ]]; then
            line=${BASH_REMATCH[1]}
            drop '#IP_ADDRESS' "$out"
            out=$rest
        fi
        for address in $line; do
            [[ " 10.0.0.1 fd00::1 10.0.1.1 " == *" $address "* && $seen != *" $address "* ]] || return
            seen+="$address "
        done
        seen=$status$sep$out$sep$err
        is_allowed
    }
    for call in malloc calloc realloc strdup; do each $call ENOMEM left_out; done
}

# The result, the notes or the library's log are lost; a loss of the result is reported.
outputs() {
    local full="No space left on device" path=/tmp/vps.conf call file
    allow 0 '' "Error: unable to write to standard output: $full"$'\n'"$plain_err"
    allow 0 "$plain_out" ''
    allow 0 "$plain_out" "$plain_err"
    each write ENOSPC is_allowed
    written_or_reported() {
        file=
        [[ ! -e $path ]] || IFS= read -rd '' file <"$path" || true
        rm -f "$path"
        case $out$err in
        "Error: unable to open $path: $full"$'\n' | \
            "Error: unable to write ${#plain_out} bystes to the $path: $full"$'\n') [[ -z $file ]] ;;
        *) [[ -z $out && ($file == "$plain_out" || ($call == open && $subject != "$path")) ]] ;;
        esac
    }
    arguments=(-o "$path")
    for call in open write close; do each $call ENOSPC written_or_reported; done
}

# A short transfer changes nothing, but half a netlink message ends the process as it stands.
short_transfers() {
    each read short is_plain
    each write short is_plain
    allow 1 '' ''
    each recvmsg short is_allowed 1
}

interruptions() {
    local call
    for call in open read write close ppoll waitpid recvmsg; do each $call EINTR is_plain; done
    each dup2 EINTR is_plain 0 1
}

# The sleep between two passes is interrupted as well, and lasts as long as ever.
storm() {
    alarms=200 arguments=(-t 2s -p 1s)
    local start=${EPOCHREALTIME/./}
    try "none 0 none 0"
    is_plain || wrong "a storm of alarms:"
    ((${EPOCHREALTIME/./} - start >= 1000000)) || wrong "the sleep was cut short"
}

"$FAULT_PART"
echo "$tried faults tried"
