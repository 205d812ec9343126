# What commands and the detection script see of the run: no descriptor is open, the language is another, and every count
# arrives, through a storm of signals from outside and from a service manager that hands on nothing.
rows 700 /proc/net/tcp
put "$out/ipcs" 'pages allocated 40000'
stub ipcs "seq 500000 >&2 & cat $out/ipcs; seq 500000; wait"
put "$out/df-k" $'header\n/dev/sda1 9 777 9'
put /etc/mtab $'/tmp/gone /gone iso9660 usrquota 0 0\nbox:/x /x nfs4 rw'
descriptors="for fd in 0 1 2 3 4 5 6 7 8 9; do [ ! -e $stage/proc/\$\$/fd/\$fd ] || printf \$fd; done"
stub iptables "{ $descriptors; echo \" \$LC_ALL \$MARK\"; } >$stage/seen"
# The words of the script are glued. A process that it leaves behind is waited for while it holds the output, and no
# longer.
detect "read -r typed && heard=heard || heard=deaf; echo moans >&2; sleep 600 >/dev/null & (sleep 1; printf late) &
    $descriptors; printf \" \$MARK\t\$LC_ALL \$heard\r\n\""
extra_env=(LC_ALL=de_DE.UTF-8 LANG=fr_FR.UTF-8 MARK=mark)
command_file closed 'exec "$@" <&- >&- 2>&-'
wrapper=("$stage/bin/closed")
config NUMTCPSOCK=840:840 TCPSNDBUF=52899840:55050240 TCPRCVBUF=52899840:55050240 SHMPAGES=48000:48000 \
    DISKSPACE=1165:1281 SLMMEMORYLIMIT=549147392:549147392 DISTRIBUTION=1markCdeaflate
result=/tmp/vps.conf
SECONDS=0
launch -d /tmp/another -o $result -t 1s -p 1s >"$stage/got.out" 2>"$stage/got.err" &
child=$! storms=0 status=0
while kill -CHLD $child 2>/dev/null && kill -STOP $child 2>/dev/null && kill -CONT $child 2>/dev/null; do
    storms=$((storms + 1))
done
wait $child || status=$?
verdict "$status" 0
is "more than a few signals, but soon over" 1 $((storms > 1000 && SECONDS < 60))
is "what a command sees" "12 C mark" "$(cat "$stage/seen")"
