# The command line: texts and statuses; and the file named with -o: its mode, what was in it, and what becomes of a
# result that cannot be written.
usage="
Usage: $program [options]

    -h | -?, --help     print this text
    -v, --version       print version
    -o, --out           resulting VPS config file path
                        'vps.conf' by default
    -t, --scan-time     how long to scan for parameters
                        ([DDd][HHh][MMm][SSs], e.g. 1h30m)
    -p, --scan-period   time interval between scans
                        ([DDd] [HHh] [MMm] [SSs])
    --mem-scale         memory consumption enlagement factor
    --disk-scale        disk consumption enlagement factor
    -d, --dist-detect   path to distribution detection script"
# ends STATUS MESSAGE ARGUMENT ...: and no command is run before that.
ends() {
    complains "$2"
    run "$1" "${@:3}"
    is "the commands" '' "$(cat "$stage/calls")"
}
for option in -h '-?' '-p 1m --help --no-such-option'; do
    # shellcheck disable=SC2086 # several words
    ends 0 "$usage" $option
done
ends 0 "$program: unrecognized option '--no-such-option'"$'\n'"$usage" --no-such-option -v
prints $'Corvane hardware configuration calculator v. 1.0\n'
run 0 -v --no-such-option
ends 1 "Bad time spec specified for --scan-period: 1 h" -t 1h --scan-period '1 h'
# The number too large for a float is accepted; what it leaves behind fails the span after it.
ends 1 'Bad time spec specified for --scan-time: 1h' --mem-scale 1e50 -t 1h
for scale in --mem-scale --disk-scale; do
    ends 1 "Not a numeric value for $scale: 1.5x" $scale 1.5x
    for value in 0 -inf 1e-60 ''; do ends 1 "$scale must be positive: $value" $scale "$value"; done
done
ends 1 '--scan-period is 0 while --scan-time is not' -t 1h
ends 1 $'No extra arguments allowed\n'"$usage" -t 1h extra

put /etc/mtab '/dev/sr0 /cdrom iso9660 ro 0 0'
result=/tmp/vps.conf
rows 1000 $result # longer than what is to be in it, and open to others
chmod 644 $result
for masked in 000:644 000:600 277:400; do
    umask ${masked%:*}
    config
    complains '/cdrom/*'
    run 0 -o /no/such/file --out=$result
    is "its mode" ${masked#*:} "$(stat -c %a $result)"
    size=$(wc -c <$result)
    rm $result
done

# Nothing is listed after a failure, and the status stays 0.
result=$stage/got.out
complains 'Error: unable to open /tmp/none/vps.conf: No such file or directory'
run 0 -o /tmp/none/vps.conf
complains "Error: unable to write $size bystes to the /dev/full: No space left on device"
run 0 -o /dev/full
wrapper=(prlimit --fsize=500)
complains "Error: unable to write $((size - 500)) bystes to the /tmp/vps.conf: File too large"
run 0 -o /tmp/vps.conf
