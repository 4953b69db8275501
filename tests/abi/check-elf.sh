#!/usr/bin/env bash
# Holds what a vendor partition asks of the library's file. Each tool's output is read whole: a
# reader that stops early, such as grep -q at a pipe's end, ends the writer by SIGPIPE now and then.
set -euo pipefail
library=$1 processor=$2 objdump=${3:-}
failures=0

fail() { echo "$library: $*" >&2; failures=1; }
dynamic=$(readelf -dW "$library")
segments=$(readelf -lW "$library")

[[ $dynamic == *"soname: [libcaminfosync.so]"* ]] || fail "no soname"
[[ $dynamic == *BIND_NOW* ]] || fail "not bound immediately"
[[ $segments == *GNU_RELRO* ]] || fail "no RELRO"
[[ $dynamic != *TEXTREL* ]] || fail "text relocations"
awk '$1 == "GNU_STACK" && /RWE/ { found = 1 } END { exit found }' <<<"$segments" ||
    fail "an executable stack"
awk '$1 == "LOAD" && /RWE/ { found = 1 } END { exit found }' <<<"$segments" ||
    fail "a segment to write to and to execute"
[[ $(readelf -nW "$library") =~ 'Build ID: '[0-9a-f] ]] || fail "no build-id"

# The device's libraries, and of the others only C and C++ runtimes.
needed=$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic")
device=$(grep -vE '^(libc|libm|libgcc_s|libstdc\+\+|libc\+\+|libc\+\+_shared|libc\+\+abi|libunwind|ld-linux-.*)\.so(\.[0-9]+)?$' \
    <<<"$needed" | sed 's/^liblog\.so\.0$/liblog.so/' | sort | tr '\n' ' ')
[ "$device" = "libcom.veltro.debug.so libcutils.so liblog.so libprocessgroup.so " ] ||
    fail "needs $device"

if [ "$processor" = aarch64 ]; then
    alignments=$(awk '$1 == "LOAD" { print $NF }' <<<"$segments" | sort -u)
    [ "$alignments" = 0x4000 ] || fail "segments aligned to $alignments"
    [[ $(readelf --dyn-syms -W "$library") == *' __stack_chk_fail'* ]] || fail "no stack protector"
    # Each segment has pages of its own, also in the file.
    awk '$1 == "LOAD" && $2 !~ /[048c]000$/ { found = 1 } END { exit found }' <<<"$segments" ||
        fail "segments share pages in the file"
    # A protected entry signs its return address, or at least is a branch target.
    entry=$("$objdump" -d --mattr=+v8.5a --disassemble-symbols=GetInstance "$library" |
        grep -A1 '<GetInstance>:') || fail "no GetInstance"
    [[ $entry =~ paciasp|bti ]] || fail "no branch protection"
fi
exit $failures
