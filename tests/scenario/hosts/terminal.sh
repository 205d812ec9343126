# A scan whose standard error is a terminal: one line shows how far it is, and is wiped before anything else is
# printed. Without a scan time there is no such line. Both streams end on the same terminal here, which turns a newline
# into a carriage return and a newline. No leak check: it would want the task list of a process one further down.
shown=$'\r\\[[#.]*\\] 0:0[0-9]/0:02 passes [0-9]* [^\r]*'
wiped=$':a;N;$!ba;s|^\\('"$shown"$'\\)\\{1,\\}\r  *\r|(wiped)|;s|\r\\n|\\n|g;s|\r$||'
put "$stage/bin/on_terminal" "#!/bin/sh
ASAN_OPTIONS=detect_leaks=0 script -qec \"\$*\" /dev/null | sed '$wiped'"
chmod +x "$stage/bin/on_terminal"
wrapper=("$stage/bin/on_terminal")

for arguments in '-t 2s -p 1s' ''; do
    config
    [[ -z $arguments ]] || sed -i '1s/^/(wiped)/' "$stage/want.out"
    run 0 $arguments
done
