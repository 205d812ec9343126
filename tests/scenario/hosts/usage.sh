# The command line: texts and statuses. No command is run, whatever is asked for.
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
# refused STATUS MESSAGE ARGUMENT ...
refused() {
    complains "$2"
    run "$1" "${@:3}"
}
for option in -h '-?' '-p 1m --help --no-such-option'; do refused 0 "$usage" $option; done
refused 0 "$program: unrecognized option '--no-such-option'"$'\n'"$usage" --no-such-option -v
refused 0 "$program: invalid option -- 'M'"$'\n'"$usage" -M 2
refused 0 "$program: option requires an argument -- 'o'"$'\n'"$usage" -o
prints $'Corvane hardware configuration calculator v. 1.0\n'
run 0 -v --no-such-option

refused 1 "Bad time spec specified for --scan-time: 90" -t 90 -p 90
refused 1 "Bad time spec specified for --scan-period: 1 h" -t 1h --scan-period '1 h'
# The number too large for a float is accepted; what it leaves behind fails the span after it.
refused 1 'Bad time spec specified for --scan-time: 1h' --mem-scale 1e50 -t 1h
for scale in --mem-scale --disk-scale; do
    refused 1 "Not a numeric value for $scale: 1.5x" $scale 1.5x
    for value in 0 -inf 1e-60 ''; do refused 1 "$scale must be positive: $value" $scale "$value"; done
done
refused 1 '--scan-period is 0 while --scan-time is not' -t 1h
refused 1 $'No extra arguments allowed\n'"$usage" -t 1h extra
is "the commands" '' "$(cat "$stage/calls")"
