#!/bin/sh
# Makes root directories whose overlap library is odd in some way.
set -eu
service=$1
roots=$2

for root in empty foreign not-executable; do
    mkdir -p "$roots/$root/vendor/lib64"
    cp "$service" "$roots/$root/vendor/lib64/"
done
: >"$roots/empty/vendor/lib64/${service##*/}"
chmod 644 "$roots/not-executable/vendor/lib64/${service##*/}"
# The machine that the file is for: one that no test runs on.
printf '\377\377' | dd of="$roots/foreign/vendor/lib64/${service##*/}" bs=1 seek=18 conv=notrunc 2>/dev/null
