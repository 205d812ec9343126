# A busy host: every source has something to say, and every count is above its floor. Some are at both ends of what is
# clamped and wrapped.
rows 2000 "$out/ps"
rows 40000 /proc/net/tcp
rows 28000 /proc/net/unix
rows 1000 /proc/net/udp
rows 999 /proc/net/raw
rows 500 /proc/locks
rows 800 "$out/iptables"
rows 224 "$out/ip"
fds 1000 10
fds 1001 4
# Two threads of one program, and a kernel thread: (1000103 - 100) / 4 pages.
process 1000 PPid=1 VmRSS=500 VmSize=1000103 VmLck=4000000 VmLib=100
process 1001 PPid=1 VmRSS=500 VmSize=1000103 VmLck=4000000 VmLib=100
process 2 PPid=0
put "$out/ipcs" $'\n------ Shared Memory Status --------\nsegments allocated 24\npages allocated 3000000\npages resident  2800000'
disks() { printf 'Filesystem 1K-blocks Used Available Use%% Mounted on\n/dev/sda1 9 %s 9 79%% /\n/dev/sdb1 9 %s 9 56%% /srv\n' "$@"; }
disks 1500000000 500000000 >"$out/df-k"
disks 123456000 789 >"$out/df-i"

# Users and groups of /home: (602 + 2) x 2 ids. A device of every system stands in for a disk.
put "$out/users" $'*** Report for user quotas on device /dev/sda1\n------\n'"$(seq -f '#%.0f -- 20 0 0 1 0 0' 602)"
put "$out/groups" $'*** Report for group quotas on device /dev/sda1\n---\n#0 -- 20 0 0 2 0 0\n#100 +- 20 1 1 6days 2 0 0'
stub repquota "case \"\$*\" in -unv*) cat $out/users ;; '-gnv /home') cat $out/groups ;; esac"
stub edquota '[ "$VISUAL $EDITOR" = "cat cat" ]'

put /proc/filesystems $'nodev\tproc\nnodev\tdevpts\n\text4'
put /etc/fstab $'/dev/sr0 /cdrom iso9660 noauto,user 0 0\n/dev/sr1 /misc iso9660 ro 0 0' # the live mount counts
put /etc/mtab <<'END'
/dev/null /home ext4 rw,usrquota,grpquota 0 0
/dev/sdc1 / reiserfs rw 0 0
proc /proc proc rw 0 0
pts /proc/pts devpts rw 0 0
host:/x /a\040blank nfs rw 0 0
auto /misc autofs rw 0 0
END
truncate -s 1073741825 /var/log/all
ln -s all /var/log/lastlog

# The link that is configured by DHCP comes first, then the youngest. br0 is a bridge and eth0.5 a VLAN.
link eth1 127.0.0.1/8 127.0.0.2/32 10.1.0.1/24
link eth0.5 10.5.0.1/24
link br0 10.4.0.1/24
link eth2 '10.9.0.1 peer 10.9.0.2' '2001:db8::10/64 nodad'
mkdir -p /sys/class/net/{eth1,br0/{bridge,brif/eth1}}
put /proc/net/vlan/config $'VLAN Dev name | VLAN ID\nName-Type: any\neth0.5 | 5 | eth0'
put /etc/sysconfig/network-scripts/ifcfg-eth1 $'DEVICE=eth1\nBOOTPROTO=dhcp'
printf >/etc/resolv.conf '%b\n' 'search a.example\tb.example' 'nameserver 10.0.0.1' 'nameserver\t10.0.0.2\t# x\r' \
    '  nameserver   ::1  ' nameserver 'Nameserver 10.9.9.9' nameserver10.9.9.9 '; nameserver 10.9.9.9' 'domain d.example' \
    '' search 'search  c.example \r' 'nameserver 1 2\t3\c'
echo 'srv-1."lab".example' >"$stage/proc/sys/kernel/hostname"

# 40000 x 1.2 sockets shifted by 16 bits pass 2^31; the descriptors are those of 48000 + 35998 sockets and 255
# terminals; 2000000000 KiB x 1.5 is clamped; reiserfs replaces the 123456789 inodes by 1000000.
config NUMPROC=2400:2400 AVNUMPROC=2400:2400 NUMTCPSOCK=48000:48000 NUMOTHERSOCK=35998:35998 NUMFILE=84253:84253 \
    DCACHESIZE=35588468:35588468 KMEMSIZE=183044464:183044464 TCPSNDBUF=18446744072437432320:18446744072560312320 \
    TCPRCVBUF=18446744072437432320:18446744072560312320 OTHERSOCKBUF=18446744071681594368:18446744071773749248 \
    PRIVVMPAGES=300000:330000 VMGUARPAGES=300000:2147483647 OOMGUARPAGES=300000:2147483647 LOCKEDPAGES=1200000:1200000 \
    SHMPAGES=3600000:3600000 NUMFLOCK=600:660 NUMIPTENT=1228:1228 DISKSPACE=2147483647:2147483647 \
    DISKINODES=1500000:1650000 QUOTAUGIDLIMIT=1208 SLMMEMORYLIMIT=7813047296:7813047296 \
    'HOSTNAME=srv-1."lab".example' '#IP_ADDRESS=127.0.0.2 10.1.0.1 10.9.0.1 2001:db8::10 ' \
    'SEARCHDOMAIN=a.example b.example c.example' 'NAMESERVER=10.0.0.1 10.0.0.2#x ::1 123' FEATURES=nfs:on
complains "Some of partitions contain reiserfs, which makes impossible to calculate the DISKINODES parameter. \
It will be set to an enough high value." '/a blank/*' '/cdrom/*' /misc '/proc/*' /var/log/lastlog
run 0
