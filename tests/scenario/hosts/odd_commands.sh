# Commands that print what no count can be taken from: rubbish, megabytes, nothing, half a line; or end by a signal.
stub ps 'head -c 300000 /dev/zero'
stub iptables 'kill -9 $$'
stub ip 'printf "one\ntwo without an end"; echo moans >&2'
printf torn >/proc/net/tcp
stub ipcs 'yes "pages resident 7" | head -c 4000000; yes moans | head -c 2000000 >&2
    echo "pages allocated by all: 44444kB 9"'
# Taken from a df table: the first digit behind the second run of characters. The first line is the header, whatever
# it holds; a name that wraps leaves its numbers to the next line; numbers beyond 32 bits keep their low 32:
# 500 + 9 + 7000000 + 5000000000 - 2^32 + 11 = 712033224.
printf '%s\n' '/dev/header 1 99999' /dev/mapper/a-name-that-wraps '                     1000 500 400 56% /a' \
    'none - - - - /x9' $'/dev/b\t100\t7000000\t93' '' one 'one two' '/dev/d 1 x y z' '/dev/c 9 5000000000 9 9% /c' \
    >"$out/df-k"
printf '/dev/e 8 11' >>"$out/df-k"
# 4000000000 is negative in 32 bits and raises nothing.
printf '%s\n' header '/dev/a 9 2000000000 9' '/dev/b 9 2000000000 9' >"$out/df-i"
config SHMPAGES=53332:53332 DISKSPACE=1068049792:1174854784
run 0

stub ipcs 'echo "pages resident 70000"'
stub df 'echo "df: /gone: Stale file handle" >&2'
config
run 0
