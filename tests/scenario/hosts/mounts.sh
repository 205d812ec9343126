# Every kind of mount: how it is classified, what hides what, how paths are written, and what else the tables tell.
for type in sysfs proc devtmpfs devpts tmpfs nfs nfs4 autofs fuse fusectl; do printf 'nodev\t%s\n' $type; done |
    put /proc/filesystems
printf '\t%s\n' ext4 reiserfs fuseblk iso9660 >>/proc/filesystems
put /etc/fstab <<'END'
# what the administrator wrote
/dev/sda1  /            reiserfs  defaults         0 1
/dev/loop7 none         swap      sw               0 0
server:/a  /live        nfs       defaults         0 0
/dev/sr0   /cdrom       iso9660   noauto,user      0 0
/dev/fd0   /media/fd    auto      noauto           0 0
server:/r  /            nfs       noauto           0 0
END
put /etc/mtab <<'END'
/dev/root / rootfs rw 0 0
/dev/sda1 / reiserfs rw 0 0
none /old devfs rw,bind 0 0
none /vz tarnfs rw,loop 0 0
//pc/share /pc smbfs rw 0 0
none /proc/bus/usb usbfs rw 0 0
server:/home /home nfs rw 0 0
server:/shared /home/shared nfs rw 0 0
server:/four /four nfs4 rw 0 0
proc /proc proc rw 0 0
sysfs /sys sysfs rw 0 0
udev /dev devtmpfs rw 0 0
devpts /dev/pts devpts rw 0 0
tmpfs /run tmpfs rw 0 0
/dev/sr1 /run/media/cd iso9660 ro 0 0
auto /run/user/disk autofs rw 0 0
fusectl /sys/fs/fuse/connections fusectl rw 0 0
helper /proc/a fuse.helper rw 0 0
helper /proc/a/b fuse.helper rw 0 0
helper /proc/a/b/c fuse.helper rw 0 0
/dev/sr2 /proc-copy iso9660 ro 0 0
auto /misc autofs rw 0 0
none /sub subfs rw 0 0
/dev/sdb1 /win fuseblk rw,loop 0 0
sshfs#box: /remote fuse.sshfs rw 0 0
auto(pid1) /live autofs rw 0 0
/dev/fd1 /floppy vfat rw 0 0
/dev/loop0 /image ext4 rw 0 0
/dev/sdc1 /odd ext4 rw,noloop 0 0
/dev/sdc2 /Zed ext4 rw,removable_t 0 0
/var /bound ext4 rw,bind 0 0
tmpfs /both tmpfs rw,bind 0 0
tmpfs /both/under tmpfs rw 0 0
auto /twice autofs rw 0 0
/dev/sr3 /twice/ iso9660 ro 0 0
/dev/sr4 /srv/tape// iso9660 ro 0 0
/dev/sr5 // iso9660 ro 0 0
/dev/sr6 /a\040blank\134and\011more iso9660 ro 0 0
/dev/sda5 /var ext4 rw 0 0
//pc/x /cifs cifs rw 0 0
END
truncate -s 1073741825 /var/log/lastlog
printf '%s\n' header '/dev/sda1 9 5 9' >"$out/df-i"

# Network, removable and automount entries hide nothing; kernel file systems hide all below but an automount area
# exactly two levels down. A root is never listed, yet makes the feature; reiserfs replaces the 5 inodes by 1000000.
config DISKINODES=1500000:1650000 FEATURES=nfs:on
complains "Some of partitions contain reiserfs, which makes impossible to calculate the DISKINODES parameter. \
It will be set to an enough high value." \
    '/Zed/*' $'/a blank\\and\tmore/*' '/both/*' '/both/under/*' '/bound/*' '/cdrom/*' '/dev/*' '/floppy/*' '/four/*' \
    '/home/*' '/home/shared/*' '/image/*' /live /media/fd /misc '/odd/*' '/pc/*' '/proc/*' '/proc-copy/*' /proc/a/b \
    /remote '/run/*' /run/user/disk '/srv/tape/*' /sub '/sys/*' '/twice/*' /win /var/log/lastlog
run 0

# 1 GiB of records is not too much. Without the kernel's list no type is known to be without a device, and the table of
# version 4 makes no feature.
truncate -s 1073741824 /var/log/lastlog
rm /proc/filesystems /etc/fstab
rows 0 "$out/df-i"
mkdir /etc/fstab
put /etc/mtab <<'END'
/dev/sda1 / ext4 rw 0 0
proc /proc proc rw 0 0
server:/four /four nfs4 rw 0 0
helper /proc/a fuse.helper rw 0 0
torn
END
config
complains /proc/a
run 0

# A live table that is a directory is one that cannot be read; the others may be what they like.
mkdir /proc/filesystems
config
complains /proc/a
run 0
rm /etc/mtab
mkdir /etc/mtab
run 4
