# The detection script: its words are glued, and whatever it does otherwise costs one warning at most.
detect 'printf "Cent OS\t7\r\n\n"; exit 0'
config DISTRIBUTION=CentOS7
run 0 -d /tmp/another --dist-detect=

for body in 'echo half; exit 1' 'printf " \t\n"' 'echo half; kill -9 $$'; do
    detect "$body"
    config DISTRIBUTION=
    complains "$undetected"
    run 0
done
rm /tmp/usr/local/share/tarnp2v/distdetect-common.sh
mkdir /tmp/usr/local/share/tarnp2v/distdetect-common.sh
config DISTRIBUTION=
complains "$undetected"
run 0
rmdir /tmp/usr/local/share/tarnp2v/distdetect-common.sh

# It sees the whole environment, no input, no standard error and no descriptor of the run's own; a process that it
# leaves behind is waited for as long as it holds the output, and no longer.
detect "read -r typed && heard=heard || heard=deaf; sleep 600 >/dev/null & (sleep 1; printf late) &
    for fd in 0 1 2 3 4 5 6 7 8 9; do [ ! -e $stage/proc/\$\$/fd/\$fd ] || printf \$fd; done
    printf \" \$MARK \$LC_ALL \$heard \"; exit 0"
extra_env=(MARK=mark LC_ALL=de_DE.UTF-8)
config DISTRIBUTION=1markCdeaflate
SECONDS=0
run 0
is "ended soon" 1 $((SECONDS < 60))

# A name of megabytes is taken as it is.
detect 'yes abcd | head -c 2000000'
config DISTRIBUTION="$(yes abcd | head -c 2000000 | tr -d '\n')"
run 0
