# Failing steps: nothing is printed but what was logged before, and the status is that of the first step that failed.
rm -r /tmp/usr # a warning is pending, and must not show
sane=$(cat "$stage/bin/df")
for failing in "-k -l" "-i -l"; do
    for how in 'exit 1' 'kill -9 $$'; do
        stub df "cat $out/df-k; echo moans >&2; [ \"\$*\" != '$failing' ] || $how"
        run 2
        is "the last command" "df $failing" "$(tail -n 1 "$stage/calls")"
    done
done
rm /etc/mtab
run 2
put "$stage/bin/df" "$sane"
run 4
ln -s /nowhere /etc/mtab
run 4
rm /etc/mtab
put /etc/mtab '/tmp/gone /gone ext4 usrquota 0 0'

# After the quotas comes the inventory: no link but the loopback, or a bridge alone, is none. The directory entries of
# a bridge, and an interface that is only configured, are interfaces as well.
"$stage/ip" link delete eth0
gone="Error: Partition or mount point '/tmp/gone' does not exist"
complains "$gone"
run 1
put /etc/tarn/tarnnet.conf 'ADDR_eth7="10.0.0.1"'
detect 'echo testos'
config
complains "$gone"
run 0
rm /etc/tarn/tarnnet.conf
"$stage/ip" link add br0 type veth peer name br1
mkdir -p /sys/class/net/{br0,br1}/bridge
complains "$gone"
run 1
mkdir /sys/class/net/br1/brif
config
complains "$gone"
run 0

# The rules and the list of processes may fail; a table or command that is counted alone may not.
for name in ps iptables ip; do stub $name 'echo 1; echo 2; exit 3'; done
config
complains "$gone"
run 0
rm /proc/locks
run 2
rm /proc/net/tcp
run 2
rows 0 /proc/net/tcp
stub ipcs 'exit 1'
run 2
is "the last command" "ipcs -m -u" "$(tail -n 1 "$stage/calls")"

# A process list that may be searched but not read stops the memory scan; without a search path there is no shell.
chmod 711 /proc
chmod 666 "$stage/calls"
wrapper=(setpriv --reuid 65534 --regid 65534 --clear-groups)
run 3
wrapper=(env -u PATH)
run 2
