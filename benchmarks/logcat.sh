#!/usr/bin/env bash
# How fast a log is read that is not the library's, beside `wc -l` on the same file.
#
#   logcat.sh TOOL FILE MEGABYTES ROUNDS
#
# Writes FILE: lines as a phone's, of which one in 500 is the library's. Fails if the tool does not
# find the captures in it.
set -euo pipefail
[ $# -eq 4 ] || { echo "usage: logcat.sh TOOL FILE MEGABYTES ROUNDS" >&2; exit 2; }
tool=$1 file=$2 megabytes=$3 rounds=$4

awk -v size=$((megabytes * 1000000)) 'BEGIN {
    other[0] = "  1500  1620 D WindowManager: relayoutVisibleWindow: Window{84ab2 com.example} result="
    other[1] = "   900   911 I SurfaceFlinger: the refresh period has changed to "
    other[2] = "  2044  2050 W System.err: \tat android.os.Handler.dispatchMessage(Handler.java:"
    ours = "  1047  1234 I kelo-InfoSynchronizer: INFOSYNC InfoSynchronizerManager.cpp:110 "
    while (written < size) {
        number++
        time = sprintf("11-21 10:%02d:%02d.%03d", number / 60000 % 60, number / 1000 % 60, number % 1000)
        if (number % 1000 == 0)
            line = time ours "r()register image IMG_" ++captures ", queue size: 1"
        else if (number % 1000 == 500 && captures > 0)
            line = time ours "u()unregister image IMG_" captures ", queue size: 0"
        else
            line = time other[number % 3] number
        print line
        written += length(line) + 1
    }
    if (number % 1000 < 500)
        print time ours "u()unregister image IMG_" captures ", queue size: 0"
    print captures > "/dev/stderr"
}' >"$file" 2>"$file.captures"

"$tool" --summary "$file" >"$file.summary"
found=$(sed -n 's/^\([0-9]*\) captures, .*/\1/p' "$file.summary")
[ "$found" = "$(cat "$file.captures")" ] ||
    { echo "logcat.sh: $found of $(cat "$file.captures") captures found" >&2; exit 1; }

# Microseconds that a command takes.
elapsed() {
    local begin=${EPOCHREALTIME/./}
    "$@" >/dev/null
    echo $((${EPOCHREALTIME/./} - begin))
}
median() { sort -n | awk '{ all[NR] = $1 } END { print all[int((NR + 1) / 2)] }'; }

for ((round = 0; round < rounds; ++round)); do
    elapsed wc -l "$file" >>"$file.wc"
    elapsed "$tool" --quiet "$file" >>"$file.tool"
done
wc=$(median <"$file.wc") own=$(median <"$file.tool")
bytes=$(stat -c %s "$file")
rm -f "$file" "$file".*
printf 'infosync-logcat %d MB/s, wc -l %d MB/s: %d.%d times as long; %d MB, medians of %d\n' \
    $((bytes / own)) $((bytes / wc)) $((own / wc)) $((own * 10 / wc % 10)) \
    $((bytes / 1000000)) "$rounds"
