# The file named with -o: its mode, what was in it, and what becomes of a result that cannot be written.
put /etc/mtab '/dev/sr0 /cdrom iso9660 ro 0 0'
file=/tmp/vps.conf
# written MODE ARGUMENT ...: the result goes to the file, which then has this mode, and not to standard output.
written() {
    config
    mv "$stage/want.out" "$stage/want.file"
    prints ''
    complains '/cdrom/*'
    run 0 "${@:2}"
    same "the file" "$stage/want.file" $file
    is "its mode" "$1" "$(stat -c %a $file)"
}
umask 000
written 600 -o $file
rows 1000 $file
chmod 644 $file
written 644 -o /no/such/file --out=$file
rm $file
umask 277
written 400 -o $file

# Nothing is listed after a failure, and the status stays 0.
complains 'Error: unable to open /tmp/none/vps.conf: No such file or directory'
run 0 -o /tmp/none/vps.conf
complains "Error: unable to write $(wc -c <"$stage/want.file") bystes to the /dev/full: No space left on device"
run 0 -o /dev/full
