#!/bin/sh
# at_home.sh BASE TROUBLE PROGRAM COMPUTE...: on this machine, makes BASE.jsonl of what was fetched, and of it BASE.conf
# and BASE.notes. TROUBLE goes to BASE.failed, where the report reads it.
set -u
umask 077
base=$1 trouble=$2
shift 2

if [ -e "$base.fetched" ]; then
    chmod 600 "$base.fetched" && mv "$base.fetched" "$base.jsonl" || exit 1
elif [ -e "$base.jsonl" ] && [ -n "$trouble" ]; then
    trouble="$trouble; the recording is from an earlier collection"
fi
if [ -z "$trouble" ]; then
    rm -f "$base.failed"
elif [ "$trouble" != 'nothing is recorded there' ] || [ ! -s "$base.failed" ]; then # a failed start says why
    echo "$trouble" >"$base.failed"
fi
[ ! -e "$base.jsonl" ] || "$@" -o "$base.conf" "$base.jsonl" 2>"$base.notes" || :
