#!/bin/sh
# Runs a command, and empties a file once the command has logged a registration. The command
# cannot get far ahead: what it logs goes through a pipe.
#
#   cut-log.sh FILE COMMAND...
set -u
file=$1
shift

mkfifo log
"$@" 2>log &
while read -r line; do
    echo "$line" >&2
    case $line in
        *registerSnapshotRequestRecord*)
            : >"$file"
            cat >&2
            ;;
    esac
done <log
wait $!
