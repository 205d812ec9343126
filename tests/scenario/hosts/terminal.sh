# A scan whose standard error is a terminal: one line shows how far it is, and is wiped before anything else is
# printed. Without a scan time there is no such line. Both streams end on the same terminal here, which turns a newline
# into a carriage return and a newline. No leak check: it would want the task list of a process one further down.
put "$stage/bin/on_terminal" '#!/bin/sh
ASAN_OPTIONS=detect_leaks=0 exec script -qec "$*" /dev/null'
chmod +x "$stage/bin/on_terminal"
wrapper=("$stage/bin/on_terminal")
detect 'exit 1'

shown=$'\r\\[[#.]*\\] 0:0[0-9]/0:02 passes [0-9]* [^\r]*'
adjust=$':a;N;$!ba;s|^\\('"$shown"$'\\)\\{1,\\}\r  *\r|(wiped)|;s|\r\\n|\\n|g;s|\r$||'
config DISTRIBUTION=
{
    printf '(wiped)'
    cat "$stage/want.out"
    echo "$undetected"
} >"$stage/want.both"
mv "$stage/want.both" "$stage/want.out"
run 0 -t 2s -p 1s

config DISTRIBUTION=
echo "$undetected" >>"$stage/want.out"
run 0
