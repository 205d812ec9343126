# Started by a service manager: no descriptor is open, the language is another, and every count still arrives.
rows 500 "$out/ps"
rows 700 /proc/net/tcp
rows 800 /proc/net/udp
rows 300 /proc/locks
rows 300 "$out/ip"
put "$out/ipcs" 'pages allocated 40000'
printf '%s\n' header '/dev/sda1 9 777 9' >"$out/df-k"
printf '%s\n' header '/dev/sda1 9 88 9' >"$out/df-i"
seen=$stage/seen
stub iptables "for fd in 0 1 2 3 4 5 6 7 8 9; do [ ! -e $stage/proc/\$\$/fd/\$fd ] || printf \$fd; done >>$seen
    echo \" \$LC_ALL \$MARK\" >>$seen"
put /etc/mtab '/tmp/gone /gone iso9660 usrquota 0 0'
extra_env=(LC_ALL=de_DE.UTF-8 LANG=fr_FR.UTF-8 MARK=mark)
counted=(NUMPROC=600:600 AVNUMPROC=600:600 NUMTCPSOCK=840:840 NUMOTHERSOCK=960:960 NUMFILE=19200:19200
    DCACHESIZE=8110080:8110080 KMEMSIZE=44974080:44974080 TCPSNDBUF=52899840:55050240 TCPRCVBUF=52899840:55050240
    OTHERSOCKBUF=60456960:62914560 SHMPAGES=48000:48000 NUMFLOCK=360:396 NUMIPTENT=360:360 DISKSPACE=1165:1281
    DISKINODES=132:145 SLMMEMORYLIMIT=617742336:617742336)

config "${counted[@]}"
complains "Error: Partition or mount point '/tmp/gone' does not exist" '/gone/*'
run 0
is "what a command sees" "12 C mark" "$(cat "$seen")"

rm "$seen"
wrapper=("$stage/bin/closed")
put "${wrapper[0]}" $'#!/bin/sh\nexec "$@" <&- >&- 2>&-'
chmod +x "${wrapper[0]}"
config "${counted[@]}"
mv "$stage/want.out" "$stage/want.file"
prints ''
run 0 -o /tmp/vps.conf
same "the file" "$stage/want.file" /tmp/vps.conf
is "what a command sees" "12 C mark" "$(cat "$seen")"
