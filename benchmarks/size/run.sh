#!/usr/bin/env bash
# Prints what the library takes: benchmarks/size/run.sh BUILD-FOLDER [EMULATOR...]
# The reference of the load figures is the stand-in for the task-profile library, a shared
# library of one function. LLVM_SUFFIX names the tools' version, -19 if there are such.
set -euo pipefail
build=$1
shift
library=$build/libcaminfosync.so
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

tool() {
    command -v "llvm-$1${LLVM_SUFFIX--19}" || command -v "llvm-$1" ||
        { echo "size: there is no llvm-$1" >&2; return 1; }
}

"$(tool strip)" -o "$work/stripped.so" "$library"
echo "stripped size: $(stat -c %s "$work/stripped.so") bytes"
"$(tool size)" "$library" | awk 'NR == 2 { print "text, data, bss: " $1 ", " $2 ", " $3 " bytes" }'
echo "dynamic relocations: $("$(tool readelf)" -rW "$library" | grep -c R_)"
# A copy, since the stand-in itself is loaded already.
cp "$build/platform/host/libprocessgroup.so" "$work/reference.so"
INFOSYNC_HOST_ROOT=$work "$@" "$build/benchmarks/size/infosync-load-probe" \
    "$library" "$work/reference.so" 51
