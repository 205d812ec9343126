# Failing steps: the status is that of the first step that failed, and nothing is printed but what was logged before.
rm -r /tmp/usr # a warning is pending, and must not show
for name in ps iptables ip; do stub $name 'echo 1; echo 2; exit 3'; done # these may fail
stub df "echo moans >&2; [ \"\$*\" = '-k -l' ] || { exec >&- 2>&-; sleep 0.2; kill -9 \$\$; }"
run 2
is "the last command" "df -i -l" "$(tail -n 1 "$stage/calls")"
stub df true

# After the quotas comes the inventory, which knows no link but the loopback then; an interface that is only configured
# is one.
put /etc/mtab '/tmp/gone /gone ext4 usrquota 0 0'
gone="Error: Partition or mount point '/tmp/gone' does not exist"
"$stage/ip" link delete eth0
complains "$gone"
run 1
put /etc/tarn/tarnnet.conf 'ADDR_eth7="10.0.0.1"'
detect 'echo testos'
config
complains "$gone"
run 0

rm /etc/mtab
mkfifo /etc/mtab
run 4

# A command that does not stop printing, where memory has an end (not with a sanitizer, whose runtime takes more).
stub df 'exec cat /dev/zero'
wrapper=(prlimit --as=300000000)
if "${wrapper[@]}" "$program" -v >/dev/null 2>&1; then
    complains 'Error: std::bad_alloc'
    run 1
fi
