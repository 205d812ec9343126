# Disk quotas: which mounts have them, which commands are asked, what a report counts. Plain files stand in for devices.
mkdir /tmp/disk
touch /tmp/disk/{a,b,c} "/tmp/disk/d e"
ln -s c /tmp/disk/link

# The reports. Users: 600 numbered from 0, and what the damaged lines give: a bare "#" is id 0, "#601" needs no columns,
# "#602" has endless numbers. Lines above the dashes, or after one without "#", are no records. So 602 users.
put "$out/users" <<'END'
*** Report for user quotas on device /dev/sda1
Block grace time: 7days; Inode grace time: 7days
#900      --       1       0       0              1     0     0
----------------------------------------------------------------------
END
for id in $(seq 0 599); do echo "#$id  +-  120  100  200  6days  5  0  0"; done >>"$out/users"
printf '%s\n' '#' '#601' "#602 -- $(printf '9%.0s' $(seq 5000)) 1 2" '' '#901 -- 1 0 0 1 0 0' >>"$out/users"
cat >"$out/groups-home" <<'END'
*** Report for group quotas on device /dev/sda1
----------------------------------------------------------------------
#0        --      20       0       0              2     0     0
#100      -+      20       0       0              2     1     1  23:59
END
sed s/#0/#200/ "$out/groups-home" >"$out/groups-var"
stub repquota "case \"\$*\" in
'-unv /home' | '-unv /opt') cat $out/users ;;
'-gnv /home' | '-gnv /opt') cat $out/groups-home ;;
'-gnv /var') cat $out/groups-var ;;
*) exit 7 ;;
esac"
stub edquota '[ "$VISUAL $EDITOR" = "cat cat" ] || exit 9
case "$*" in "-gtf /opt") echo "edquota: no grace" >&2; exit 3 ;; esac'
asked() { is "the commands" "$1" "$(grep quota "$stage/calls" | cut -d ' ' -f 1-2 --complement | tr '\n' ' ')"; }

# Users and groups of /home, groups of /var: 602 + 3 ids, doubled. The device mounted twice is asked for twice, under
# the mount point that comes first; the link is found under /opt, whose options have no quota, and nothing is asked.
put /etc/mtab <<'END'
/tmp/disk/a /home ext4 rw,usrquota,grpquota 0 0
/tmp/disk/b /var ext4 rw,grpquota 0 0
/tmp/disk/a /home2 ext4 rw,usrquota 0 0
/tmp/disk/c /opt ext4 rw 0 0
/tmp/disk/link /opt2 ext4 rw,usrquota 0 0
END
config QUOTAUGIDLIMIT=1210
run 0
asked '/home /home /home /home /var /var /home /home /home /home '
is "the first ask" "repquota -unv /home" "$(grep -m 1 quota "$stage/calls")"

# Two ids are raised to the smallest limit.
put /etc/mtab '/tmp/disk/b /var ext4 rw,grpquota 0 0'
config QUOTAUGIDLIMIT=1024
run 0

# The first matching option of a mount tells the old style: then the users count twice, and groups not at all.
put /etc/mtab '/tmp/disk/a /home ext4 rw,usrquota,quota 0 0'
config QUOTAUGIDLIMIT=1204
run 0
put /etc/mtab $'/tmp/disk/a /home ext4 rw,quota,usrquota,grpquota 0 0\n/tmp/disk/b /var ext4 grpquota 0 0'
config QUOTAUGIDLIMIT=2408
run 0

# What fails costs its own device alone, and says so: a device that is not there, one that the raw table spells
# otherwise, a report (asked for under the mount point as the table spells it), a grace listing.
put /etc/mtab <<'END'
/tmp/disk/gone /gone ext4 usrquota 0 0
/tmp/disk/d\040e /nowhere ext4 usrquota 0 0
/tmp/disk/a /x\040y ext4 usrquota 0 0
/tmp/disk/c /opt ext4 usrquota,grpquota 0 0
/tmp/disk/b /var ext4 grpquota 0 0
END
config QUOTAUGIDLIMIT=1024
complains "Error: Partition or mount point '/tmp/disk/gone' does not exist" \
    "Error: Partition or mount point '/tmp/disk/d e' is missing from /etc/mtab" \
    "Error: Error running 'repquota -unv /x\\040y':" '' \
    "Error: Error running 'VISUAL=cat EDITOR=cat edquota -gtf /opt':" 'edquota: no grace' ''
run 0
