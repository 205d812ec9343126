# Whose quotas count, and how the quota tools are asked. Devices of every system stand in for disks; each digit in the
# name of a mount point is a thousand ids, and twice as many are written.
mkdir '/tmp/a b'
tool() { stub "$1" "case \"\$*\" in *x040y | '-utf /opt') echo moans >&2; exit 3 ;; esac; $2"; }
tool edquota '[ "$VISUAL $EDITOR" = "cat cat" ]'
tool repquota 'case $1 in -u*) echo "user quotas" ;; *) echo "group quotas" ;; esac
echo ---
for digit in $(echo "$2" | grep -o "[0-9]"); do seq -f "#$digit%03.0f" 0 999; done'

# The lines of the mount table, what is written, and what the tools were asked: r is repquota, e is edquota.
while IFS='|' read -r table ids asked said; do
    tr + '\n' <<<"$table" | put /etc/mtab
    config "QUOTAUGIDLIMIT=$ids"
    [[ -z $said ]] || complains "$said"
    run 0
    is "what was asked about $table" "$asked" \
        "$(sed -n 's/^repquota -\(.\)nv /r\1 /p;s/^edquota -\(.\)tf /e\1 /p' "$stage/calls" | paste -sd,)"
done <<'END'
/dev/null /012 ext4 rw,noquota,usrquota=x,grpquotas|0|
/dev/null /012 ext4 usrquota,grpquota+/dev/zero /23 ext4 rw,usrquota|14000|ru /012,eu /012,rg /012,eg /012,ru /23,eu /23
/dev/null /012 ext4 grpquota,rw|6000|rg /012,eg /012
/dev/null /012 ext4 usrquota,quota+/dev/zero /23 ext4 usrquota|8000|ru /012,eu /012,ru /23,eu /23
/dev/null /012 ext4 quota,grpquota+/dev/zero /23 ext4 usrquota|16000|ru /012,eu /012,rg /012,eg /012,ru /23,eu /23
/dev/null /012 ext4 usrquota+/dev/null /34 ext4 grpquota|6000|ru /012,eu /012,ru /012,eu /012
/dev/null /012 ext4 rw+/dev/null /34 ext4 usrquota|0|
none /dev/tty ext4 rw+/dev/tty /1 ext4 usrquota|0|
/dev/full /m\040x+/dev/full /1 ext4 usrquota|0|
++none+/dev/gone  /dev/zero ext4 rw+/sys /s ext4 rw+/dev/../proc/. /1 ext4 usrquota+/dev/zero /2 ext4 usrquota|4000|ru /1,eu /1,ru /2,eu /2
/tmp/a\040b /1 ext4 usrquota|0||Error: Partition or mount point '/tmp/a b' is missing from /etc/mtab
/dev/full /m;id>f ext4 usrquota+/dev/tty /n;id ext4 rw+/dev/tty /1 ext4 usrquota|0||Error: The shell would act on the mount point '/m;id>f' of '/dev/full': not asked
END

# What fails costs its own device.
put /etc/mtab $'/dev/gone /gone ext4 usrquota\n/dev/zero /x\\040y ext4 usrquota\n/dev/tty /opt ext4 usrquota,grpquota
/dev/null /0 ext4 grpquota'
config QUOTAUGIDLIMIT=2000
complains "Error: Partition or mount point '/dev/gone' does not exist" \
    "Error: Error running 'repquota -unv /x\\040y':"$'\nmoans\n' \
    "Error: Error running 'VISUAL=cat EDITOR=cat edquota -utf /opt':"$'\nmoans\n'
run 0
