#!/bin/sh
# What the playbooks do on a server: recorder.sh ACTION FOLDER UNIT [ARGUMENT...], where FOLDER is the run's.
#
#     ask                         how it stands, as the lines of tell below
#     prepare                     the same, and makes FOLDER unless it records already
#     check SUM COMMAND...        compares the program in FOLDER with its sum, and runs COMMAND
#     start COMMAND...            starts COMMAND, the recorder; the text of a service on standard input
#     stop                        ends the recorder and all that it has started
#     clean                       the same, and removes FOLDER and the service
#
# What fails is said in one sentence on standard error, with status 1.
set -u
umask 077
export LC_ALL=C
action=$1 folder=$2 unit=$3
shift 3
service=/etc/systemd/system/$unit

fail() {
    echo "$*" >&2
    exit 1
}

# The processes of the session that the recorder was started in.
session() {
    leader=$(cat "$folder/pid" 2>/dev/null) || return 0
    for process in /proc/[0-9]*; do
        { read -r line <"$process/stat"; } 2>/dev/null || continue
        # shellcheck disable=SC2086  # words that are to be split
        set -- ${line##*) } # state, parent, group, session
        [ "$1" = Z ] || [ "$4" != "$leader" ] || echo "${process#/proc/}"
    done
}

# Those of them that have the folder among their arguments: the recorder and what it is wrapped in. After a reboot the
# session's number may be that of another.
recorders() {
    for pid in $(session); do
        ! tr '\0' ' ' <"/proc/$pid/cmdline" 2>/dev/null | grep -qF "$folder/" || echo "$pid"
    done
}

state() {
    if systemctl is-active --quiet "$unit" 2>/dev/null || [ -n "$(recorders)" ]; then
        echo recording
    elif [ ! -e "$folder/recording" ]; then
        echo none
    else
        case $(tail -n 1 "$folder/recording") in
        *'"interrupted":false'*) echo over ;;
        *'"interrupted":true'*) echo stopped ;;
        *) echo killed ;;
        esac
    fi
}

last_words() {
    if [ -s "$folder/log" ]; then
        tail -n 2 "$folder/log"
    else
        journalctl -q -n 2 -o cat -u "$unit" 2>/dev/null
    fi
}

# Lines with a word in front: the state, the program's own judgement, the first and the newest spans, whether there is
# no room, what the recorder said.
tell() {
    echo "state $(state)"
    [ -e "$folder/recording" ] || return 0
    "$folder/tarnhwplan" report --csv "$folder/recording" 2>/dev/null | sed -n '2s/^/row /p'
    sed -n '1p; /^{"continued"/p' "$folder/recording" | sed -n 's/^/spans /; 1p; $p'
    df -Pk "$folder" | awk 'NR == 2 && $4 == 0 { print "room no room in " $6 }'
    last_words | sed 's/^/words /'
}

# A folder for programs that root runs: nobody else may exchange one on the way.
make_folder() {
    above=${folder%/*}
    if [ ! -d "$above" ]; then
        mkdir "$above" && : >"$above/.made" || exit 1
    fi
    [ -d "$folder" ] || mkdir "$folder" || exit 1
    at=$(cd "$folder" && pwd -P) || exit 1
    while [ -n "$at" ]; do
        others=$(find "$at" -prune \( ! -user 0 ! -user "$(id -u)" -o \( -perm -020 -o -perm -002 \) ! -perm -1000 \)) ||
            exit 1
        [ -z "$others" ] || fail "$at is not root's alone: name another recording_folder"
        at=${at%/*}
    done
}

check() {
    found=$(sha256sum <"$folder/tarnhwplan") && [ "${found%% *}" = "$1" ] || fail "what was copied is not the program"
    shift
    exec "$@"
}

start() {
    if [ -d /run/systemd/system ]; then
        (umask 022 && cat >"$service") && systemctl daemon-reload && systemctl enable --quiet --now "$unit" || exit 1
    else
        cd /
        setsid sh -c 'echo $$ >"$0/pid"; exec "$@"' "$folder" "$@" </dev/null >>"$folder/log" 2>&1 &
    fi
    tries=20
    while sleep 1 && [ "$(state)" = recording ] && [ $((tries -= 1)) -gt 0 ]; do
        ! grep -q '^{"pass":' "$folder/recording" 2>/dev/null || break
    done
    tell
    case $(state) in none | killed | stopped) fail "the recorder does not start: $(last_words)" ;; esac
}

# Asked to end, the recorder writes its last line; it has as long as the steps that are taken once may need.
stop() {
    if [ -e "$service" ]; then
        systemctl disable --quiet --now "$unit" || exit 1
    fi
    [ -n "$(recorders)" ] || return 0
    # shellcheck disable=SC2046  # a number for each
    kill -TERM $(recorders) 2>/dev/null
    tries=100
    while [ -n "$(recorders)" ] && [ $((tries -= 1)) -gt 0 ]; do sleep 1; done
    # shellcheck disable=SC2046  # as above
    kill -KILL $(session) 2>/dev/null
    sleep 1
    [ -z "$(recorders)" ] || fail "the recorder does not end: process $(recorders)"
}

clean() {
    if [ -e "$service" ]; then
        rm -f "$service" && systemctl daemon-reload || exit 1
    fi
    rm -rf "$folder" || exit 1
    above=${folder%/*}
    if [ -e "$above/.made" ] && [ "$(ls -A "$above")" = .made ]; then
        rm "$above/.made" && rmdir "$above"
    elif [ -e "$above/.made" ]; then
        # shellcheck disable=SC2012  # for a person
        echo "$above still has $(ls "$above" | tr '\n' ' ')"
    fi
}

case $action in
ask) tell ;;
prepare)
    tell
    [ "$(state)" = recording ] || make_folder
    ;;
check) check "$@" ;;
start) start "$@" ;;
stop) stop && tell ;;
clean) stop && clean ;;
esac
