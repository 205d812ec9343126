# Two passes: every count keeps its largest value, the rules are summed within a pass, and the average follows the
# largest process count from below. Standard error is a terminal: one line shows how far the scan is, and is wiped
# before anything else is printed; without a scan time there is no such line. Both streams end on the same terminal
# here. No leak check: it would want the task list of a process one further down.
shown=$'\r\\[[#.]*\\] 0:0[0-9]/0:03 passes [0-9]* [^\r]*'
wiped=$':a;N;$!ba;s|^\\('"$shown"$'\\)\\{1,\\}\r  *\r|(wiped)|;s|\r\\n|\\n|g;s|\r$||'
command_file on_terminal "ASAN_OPTIONS=detect_leaks=0 script -qec \"\$*\" /dev/null | sed '$wiped'"
wrapper=("$stage/bin/on_terminal")
config
run 0

# The list of processes is the first command of a pass, so its stub sets the scene.
process 1000 PPid=1
stub ps "
scene() { # PROCESSES TCP VMSIZE
    seq \$2 >/proc/net/tcp
    printf 'PPid:\t1\nVmSize:\t%s kB\n' \$3 >/proc/1000/status
    seq \$1
}
case \$(grep -c ps $stage/calls) in
1) scene 300 500 400000 ;;
*) scene 600 400 200000 ;;
esac"

# A period longer than the scan is the scan: passes at 0 and 3 seconds. The average: 300, then (600 - 300) / 2 + 300.
config NUMPROC=720:720 AVNUMPROC=540:540 NUMTCPSOCK=600:600 NUMFILE=17280:17280 DCACHESIZE=7299072:7299072 \
    KMEMSIZE=51535872:51535872 TCPSNDBUF=37785600:39321600 TCPRCVBUF=37785600:39321600 PRIVVMPAGES=120000:132000 \
    VMGUARPAGES=120000:2147483647 OOMGUARPAGES=120000:2147483647 SLMMEMORYLIMIT=840818752:840818752
sed -i '1s/^/(wiped)/' "$stage/want.out"
run 0 -t 3s -p 1h
one_pass='ps ax|ipcs -m -u|iptables -n -L -t filter|ip route list|df -k -l|df -i -l|'
is "the commands" "$one_pass$one_pass" "$(tr '\n' '|' <"$stage/calls")"
