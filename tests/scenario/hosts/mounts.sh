# Which mounts are not copied: whole, or what is in them. What lies below a mount of a kernel file system goes with it,
# but for a whole mount exactly two levels down.
put /proc/filesystems $'nodev\tproc\nnodev\tnfs4\nnodev\tautofs\nnodev\tsmbfs\nnodev\ttarnfs\nnodev\tnfs\n\text4\njunk\nnodev
NODEV\tother\nnodev\tmore\textra'
tr + '\n' >/etc/mtab <<'END'
none /01 rootfs bind+none /02 devfs loop+none /03 tarnfs rw+none /04 smbfs rw+none /04/a nfs rw+none /05 usbfs rw
none /06 iso9660 ro+box:/x /07 nfs4 rw+none /07/a autofs+box:/x /08 cifs rw+/dev/fd0 /09 auto bind+none /10 autofs rw
none /10/a nfs rw+none /11 subfs rw+none /12 fuseblk loop+none /13 x.fuse.y rw+/dev/fd0 /14 ext4 rw+none /14/a nfs rw
/dev/loop0 /15 ext4 rw+d /16 ext4 noloop+d /17 ext4 rbind+d /18 ext4 removable_t+d /19 proc bind+none /19/a nfs rw
d /20 proc rw+none /20/a autofs+d /21 ext4 rw+none /22 tmpfs rw+d /23 other rw+d /24 more rw
box:/x /n nfs+proc /n/p proc+box:/x /n/p/x nfs+proc /p proc+auto /p/a autofs+auto /p/a/b autofs+auto /p/a/b/c autofs
proc /p-a proc+proc /pa proc+box:/x / nfs+proc // proc+box:/x none nfs+box:/x ///x nfs+box:/x a/b nfs+proc a proc
box:/x /m/ nfs+auto /m autofs+proc /m// proc+box:/x /m/z nfs+proc /o proc+auto /o//x autofs+box:/x /o/x/ nfs
box:/x /q/# nfs+proc /q// proc
END
config FEATURES=nfs:on
# What sorts before the mount that would cover it, such as /q/#, is taken before it and stays.
complains '///x/*' /04/{,a/}'*' /0{5,6,7}/'*' /09 /10 '/10/a/*' /1{1,2,3} /14/{,a/}'*' /1{5,6,7,8}/'*' /19/{,a/}'*' \
    /2{0,4}/'*' '/m/*' /n/{,p/}'*' '/o/*' /o//x '/p/*' '/p-a/*' /p/a/b '/pa/*' '/q/*' '/q/#/*' 'a/b/*'
run 0
