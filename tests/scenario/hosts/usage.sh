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
banner=$'Corvane hardware configuration calculator v. 1.0\n'
stub df 'exit 1' # were the run to begin, it would end with 2

for option in -h '-?' --help '-p 1m -h --no-such-option'; do
    complains "$usage"
    run 0 $option
done
complains "$program: unrecognized option '--no-such-option'" "$usage"
run 0 --no-such-option -v
complains "$program: invalid option -- 'M'" "$usage"
run 0 -M 2
complains "$program: option requires an argument -- 'o'" "$usage"
run 0 -o
prints "$banner"
run 0 -v --no-such-option
prints "$banner"
run 0 -t 1h --version extra

# refused MESSAGE ARGUMENT ...
refused() {
    complains "$1"
    run 1 "${@:2}"
}
refused "Bad time spec specified for --scan-time: 5m " -t '5m ' -p 90
refused "Bad time spec specified for --scan-period: 90" -t 1h --scan-period 90
# The number too large for a float is accepted; what it leaves behind fails the span after it.
refused 'Bad time spec specified for --scan-time: 1h' --mem-scale 1e50 -t 1h
for scale in --mem-scale --disk-scale; do
    refused "Not a numeric value for $scale: 1.5x" $scale 1.5x
    for value in 0 -1 -inf 1e-60 ''; do refused "$scale must be positive: $value" $scale "$value"; done
done
refused '--scan-period is 0 while --scan-time is not' -t 1h
refused '--scan-period is 0 while --scan-time is not' -t 50000d -p 1h-60m
refused $'No extra arguments allowed\n'"$usage" -t 1h extra
is "the commands" '' "$(cat "$stage/calls")"

# Spans that come to nothing are one pass, which here ends at the disks.
run 2 -t '1h -60m' -p ''
run 2 -t s -p 5s --mem-scale nan --disk-scale 0x1p3
