# A host where nothing happens: every count stays at its floor and no text line appears but the marked ones. The mount
# table is empty because somebody wants it so, and the record of logins is not yet worth leaving out.
ln -sf /dev/null /etc/mtab
truncate -s 1073741824 /var/log/lastlog
config
run 0
is "the library's log" "init_libtarnnet_state||" "$(cut -f 4 /var/log/tarnnetcfg.log | tr '\n' '|')"

# Without a name there is no such line. A directory, a FIFO whose other end nobody opens and a device without an end are
# no files. More open descriptors than the arguments of one command hold in the usual stack:
# the run raises its limit first.
echo >"$stage/proc/sys/kernel/hostname"
mkdir /proc/filesystems
mkfifo /etc/fstab
ln -s /dev/zero /etc/resolv.conf
ulimit -Ss 8192
ulimit -Hs unlimited
fds 100001 100000
fds 100002 50000
fds 100003 3
# 150003 x 1.2, above all that is derived from sockets and processes.
config NUMFILE=180003:180003 DCACHESIZE=76033264:76033264 KMEMSIZE=93727984:93727984 \
    SLMMEMORYLIMIT=570550592:570550592 HOSTNAME=
run 0
