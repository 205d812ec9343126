# A storm of signals from outside, stops and continuations among them, changes nothing.
put "$out/ipcs" 'pages allocated 40000'
seq -f 'rubbish %.0f' 100000 >>"$out/ipcs"
printf '%s\n' header '/dev/sda1 9 777 9' >"$out/df-k"
detect 'sleep 0.2; echo testos'

config SHMPAGES=48000:48000 DISKSPACE=1165:1281
launch -t 1s -p 1s >"$stage/got.out" 2>"$stage/got.err" &
child=$! storms=0 status=0
while kill -CHLD $child 2>/dev/null && kill -STOP $child 2>/dev/null && kill -CONT $child 2>/dev/null; do
    storms=$((storms + 1))
done
wait $child || status=$?
is "more than a few signals" 1 $((storms > 1000))
verdict "$status" 0
