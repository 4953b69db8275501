#!/usr/bin/env bash
# Compares the names that a library exports with a list, as a person reads them. The inline
# namespaces of the C++ libraries are left out, so that one list serves all of them.
set -euo pipefail
nm=$1 library=$2 list=$3

exported() {
    "$nm" -DC --defined-only "$library" | cut -d' ' -f3- | sed -E '
        s/std::(__1|__cxx11|__ndk1):://g
        s/std:://g
        :brackets
        s/> >/>>/
        t brackets
        s/basic_string<char, char_traits<char>, allocator<char>>/string/g
        s/, less<[^<>]*>, allocator<pair<[^<>]*>>//g
        s/, allocator<[^<>]*>//g' | LC_ALL=C sort -u
}

# Lines marked "libc++:" hold for that library only: others describe the exception themselves.
expected() {
    if readelf -dW "$library" | grep -q 'NEEDED.*libc++'; then
        sed 's/^libc++: //' "$list"
    else
        grep -v '^libc++: ' "$list"
    fi | LC_ALL=C sort
}

if ! diff -u <(expected) <(exported); then
    echo "$library does not export what $list says" >&2
    exit 1
fi
