# Lets every system call of a whole run fail, one at a time: strace answers in the kernel's place. A source that cannot
# be read must look exactly like one that is not there, and a command that cannot be run like one that failed.
# FAULT_SHARE: 0 to 3, which of four shares this is. FAULT_STRIDE: beyond the first calls of a kind only each such
# fails. FAULT_SPARED: calls that a sanitizer makes for itself.
command -v strace >/dev/null || skip "no strace to let calls fail with"

process 101 VmSize=400000 VmLck=2000
put /tmp/disk ''
put /etc/fstab '/dev/cd /cd iso9660 ro 0 0'
put /etc/mtab $'/tmp/disk / ext4 rw,usrquota 0 0\nproc /proc proc rw 0 0\nhost:/x /x nfs rw 0 0'
put /proc/filesystems $'nodev\tproc\n\text4'
truncate -s 1073741825 /var/log/lastlog
"$stage/ip" address add 10.0.0.1/24 dev eth0
link eth1 10.0.1.1/24
put /proc/net/vlan/config $'VLAN Dev name\nName-Type: any\neth1 | 10 | eth0'
put /etc/tarn/tarnnet.conf 'ADDR_eth7="10.0.0.7"'
put /etc/resolv.conf $'search a.example\nnameserver 10.0.0.53'

# The commands in the order in which they are run, and a shell that answers each at once: every source shows.
commands=(- ps tcp unix ls ipcs locks iptables ip df-k df-i repquota edquota detect)
command_file sh '
for command; do :; done
case $command in
/usr/bin/ipcs*) echo pages allocated 40000 ;;
"wc -l < /proc/locks") echo 300 ;;
iptables*) echo 200 ;;
"ip route"*) echo 100 ;;
"df -k"*) printf "header\n/dev/sda1 9 777 9\n" ;;
"df -i"*) printf "header\n/dev/sda1 9 88 9\n" ;;
repquota*) printf "user quotas\n---\n#0 -- 1 0 0 1 0 0\n" ;;
/tmp//usr/local*) echo testos ;;
*) echo 7 ;;
esac'

# What a run may come to, by the source that failed; "-" stands before one that ends early unnoticed. Worked out from
# what is left of the host: values that differ from those of the whole host, what is said, and the notes by letter.
host=(PRIVVMPAGES=120000:132000 VMGUARPAGES=120000:2147483647 OOMGUARPAGES=120000:2147483647 LOCKEDPAGES=600:600
    SHMPAGES=48000:48000 NUMFLOCK=360:396 NUMIPTENT=360:360 DISKSPACE=1165:1281 DISKINODES=132:145 QUOTAUGIDLIMIT=1024
    SLMMEMORYLIMIT=780889216:780889216 '#IP_ADDRESS=10.0.0.1 ' SEARCHDOMAIN=a.example NAMESERVER=10.0.0.53 FEATURES=nfs:on)
script=/tmp//usr/local/share/tarnp2v/distdetect-common.sh
declare -A told note=([c]='/cd/*' [p]='/proc/*' [x]='/x/*' [l]=/var/log/lastlog [u]='OS distribution was not detected. It must be manually set.'
    [s]="OS distribution detection script ($script) was not found. The DISTRIBUTION parameter of the CT config must be \
set manually.")
while IFS='|' read -r source values said notes; do
    IFS=';' read -ra values <<<"$values"
    config "${host[@]}" "${values[@]}"
    [[ $source != stdout ]] || prints ''
    told[$source]="0 $(cat "$stage/want.out")${said:+$'\n'$said}"
    for letter in ${notes:-c p x l}; do told[$source]+=${note[$letter]:+$'\n'${note[$letter]}}; done
done <<END
plain
-ipcs|SHMPAGES=25804:25804
-locks|NUMFLOCK=225:247
iptables|NUMIPTENT=153:153
ip|NUMIPTENT=240:240
-df-k|DISKSPACE=0:0
-df-i|DISKINODES=0:0
-repquota|QUOTAUGIDLIMIT=0
repquota|QUOTAUGIDLIMIT=0|Error: Error running 'repquota -unv /': ...
edquota|QUOTAUGIDLIMIT=0|Error: Error running 'VISUAL=cat EDITOR=cat edquota -utf /': ...
detect|DISTRIBUTION=||u c p x l
$script|DISTRIBUTION=||s c p x l
/proc/101/status|PRIVVMPAGES=65536:72089;VMGUARPAGES=65536:2147483647;OOMGUARPAGES=65536:2147483647;LOCKEDPAGES=307:307;\
SLMMEMORYLIMIT=484974560:484974560
-/etc/mtab 1|QUOTAUGIDLIMIT=0
/etc/mtab 2|QUOTAUGIDLIMIT=0|Error: Error reading '/etc/mtab': Input/output error
/etc/mtab 3|FEATURES=||c l
/tmp/disk 1|QUOTAUGIDLIMIT=0|Error: Partition or mount point '/tmp/disk' does not exist
/tmp/disk 2|QUOTAUGIDLIMIT=0|Error: Partition or mount point '/tmp/disk' is missing from /etc/mtab
/proc/filesystems|||c x l
/etc/fstab|||p x l
/var/log/lastlog|||c p x
/etc/resolv.conf|SEARCHDOMAIN=;NAMESERVER=
/proc/net/vlan/config 2|#IP_ADDRESS=10.0.1.1 10.0.0.1 
uname|HOSTNAME=
socket|#IP_ADDRESS=|Cannot open netlink socket: Input/output error
setsockopt 1|#IP_ADDRESS=|SO_SNDBUF: Input/output error
setsockopt 2|#IP_ADDRESS=|SO_RCVBUF: Input/output error
bind|#IP_ADDRESS=|Cannot bind netlink socket: Input/output error
getsockname|#IP_ADDRESS=|Cannot getsockname: Input/output error
sendto|#IP_ADDRESS=|Cannot send dump request: Input/output error
recvmsg|#IP_ADDRESS=|netlink receive error Input/output error (5) Dump terminated
stdout||Error: unable to write to standard output: Input/output error
stderr|||nothing
END
for source in ps tcp unix ls ipcs locks df-k df-i; do told[$source]='2 '; done
told[/proc]='3 ' told['/etc/mtab 1']='4 '

# try ERROR CALL AT [OPTION]: one run in which the AT-th such call fails. The reason after a failed command differs.
extra_env=(PATH="$stage/bin" ASAN_OPTIONS=detect_leaks=0)
arguments=()
try() {
    local status=0 said left
    wrapper=(/usr/bin/timeout -s KILL 60 /usr/bin/strace -o "$stage/trace" -e "inject=$2:error=$1:when=$3" "${@:4}")
    (launch "${arguments[@]}") >"$stage/got.out" 2>"$stage/got.err" || status=$?
    said=$(sed '/^Error: Error running/{N;s/\n.*/ .../};/^netlink/{N;s/\n/ /};/make dup2/d;/^$/d' "$stage/got.err")
    seen="$status $(cat "$stage/got.out")${said:+$'\n'$said}"
    left=("$stage"/proc/[0-9]*)
    ((${#left[@]} == 1)) || wrong "a process is left"
}
wrong() { printf '%s\n' "$*" "--- seen:" "$seen" "--- foretold:" "${told[$source]:-${told[plain]}}" && exit 1; }
must_be() {
    for source; do [[ ${told[$source]:-} != "$seen" ]] || return 0; done
    wrong "failing with: $(grep INJECTED "$stage/trace") (of ${about:-nothing})"
}

# From the trace: the failed call, what it was about (a path, a standard stream, a call of its own, or nothing, which
# is a command), how often that was asked for, the number of the last command, whether the call has no other effect
# than to open or to ask, and how many descriptors stayed open.
tell_hit() {
    awk 'BEGIN { of[1] = "stdout"; of[2] = "stderr"; between = 1 }
        { call = $0; sub(/\(.*/, "", call); first = substr($0, length(call) + 2); about = first ~ /^[0-9]/ ? of[first + 0] : ""
          result = $0; sub(/.* = /, "", result); result += 0; split($0, quoted, "\""); split($0, pair, /[][,]/)
          asks = call ~ /^(write|uname|socket|setsockopt|bind|getsockname|sendto|recvmsg|pipe2|clone|clone3|vfork|fork)$/ }
        first ~ /^(AT_FDCWD, )?"/ { about = quoted[2]; times[about]++; asks = 1 }
        call == "openat" && first ~ /^[0-9]/ { about = about "/" quoted[2]; times[about]++; asks = 1 }
        call == "uname" || call == "socket" || about == "netlink" { about = call; times[call]++ }
        result >= 0 && call ~ /^open/ { of[result] = about; held[result] }
        result >= 0 && call == "socket" { of[result] = "netlink"; held[result] }
        call == "pipe2" && between { command++; between = 0 }
        call == "pipe2" && result == 0 { of[pair[2] + 0] = of[pair[3] + 0] = ""; held[pair[2] + 0]; held[pair[3] + 0] }
        call ~ /^wait/ && result > 0 { between = 1 }
        call == "close" { delete held[first + 0] }
        /INJECTED/ { hit = call "|" about "|" times[about] "|" command "|" asks }
        END { for (fd in held) left++; if (hit) print hit "|" left + 0 }' "$stage/trace"
}

# A source that cannot be opened or asked is missing; one that fails later has told all or nothing. What is interrupted
# is done again, but for the system's own way to open a directory.
judge() {
    local call about times command asks left source
    IFS='|' read -r call about times command asks left <<<"$(tell_hit)"
    [[ $call ]] || return 0
    tried=$((tried + 1))
    about=${about:-${commands[${command:-0}]}}
    [[ ! ${told["$about $times"]:-} ]] || about+=" $times"
    if [[ ! ${told[$about]:-} || ($error == EINTR && $about != /proc) ]]; then must_be plain
    elif ((asks)) && [[ $error == EIO ]]; then must_be "$about"
    else must_be plain "$about" "-$about"; fi
    [[ $left == 0 || $call =~ ^(fcntl|setsockopt|bind|getsockname)$ ]] || wrong "$call leaves descriptors open"
}

tried=0 number=0
try EIO exit 1
must_be plain
awk '{ sub(/\(.*/, "") } $0 == "fcntl" { run = 1 } !run { before[$0]++ } /^[a-z0-9_]+$/ { count[$0]++ }
    END { for (call in count) if (count[call] > before[call]) print call, before[call] + 1, count[call] }' "$stage/trace" |
    grep -vE "^(${FAULT_SPARED:+$FAULT_SPARED|}close|brk|m(map|unmap|remap|protect|advise)|rt_sig.*|exit_group|getpid|getppid|getrandom|futex|sysinfo) " >"$stage/list"
# Left out: what cannot fail, what the C library does not check, and close(), which strace would leave undone.
while read -r call first last; do
    for error in EIO EINTR; do
        [[ $error == EIO || $call =~ ^(open|openat|read|write|ppoll|wait4|recvmsg)$ ]] || continue
        for ((at = first; at <= last; at += at < first + 12 ? 1 : FAULT_STRIDE)); do
            ((number++ % 4 == FAULT_SHARE)) || continue
            try "$error" "$call" "$at"
            judge
        done
    done
done <"$stage/list"
echo "$tried calls failed"
((tried > 20)) || exit 1
((FAULT_SHARE == 0)) || exit 0

# What the child does before it is a command; a late answer of the kernel's; a sleep that is cut short goes on.
try EBUSY dup2 1 -f
must_be ps
try EAGAIN recvmsg 1
must_be plain
arguments=(-t 1s -p 1s)
try EINTR clock_nanosleep 1+2
must_be plain
(($(grep -cE '^(clone3?|v?fork)\(' "$stage/trace") <= 2 * 10 + 3)) || wrong "more than two passes"
