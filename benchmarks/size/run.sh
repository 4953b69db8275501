#!/usr/bin/env bash
# Prints what the library takes: benchmarks/size/run.sh BUILD-FOLDER [EMULATOR...]
# The reference of the load figures is the stand-in for the task-profile library, a shared
# library of one function.
set -euo pipefail
build=$1
shift
library=$build/libcaminfosync.so
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

llvm-strip -o "$work/stripped.so" "$library"
echo "stripped size: $(stat -c %s "$work/stripped.so") bytes"
llvm-size "$library" | awk 'NR == 2 { print "text, data, bss: " $1 ", " $2 ", " $3 " bytes" }'
echo "dynamic relocations: $(llvm-readelf -rW "$library" | grep -c R_)"
# A copy, since the stand-in itself is loaded already.
cp "$build/platform/host/libprocessgroup.so" "$work/reference.so"
INFOSYNC_HOST_ROOT=$work "$@" "$build/benchmarks/size/infosync-load-probe" \
    "$library" "$work/reference.so" 51
