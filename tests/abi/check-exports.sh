#!/usr/bin/env bash
# Compares the names that a library exports with a list, as a person reads them. The inline
# namespaces of the C++ libraries are left out, so that one list serves all of them.
set -euo pipefail
nm=$1 library=$2 list=$3

# Reads the lines of nm; prints the names.
readable() {
    sed -E '
        s/^[0-9a-f]* *[A-Za-z] //
        s/std::(__1|__cxx11):://g
        s/std:://g
        :brackets
        s/> >/>>/
        t brackets
        s/basic_string<char, char_traits<char>, allocator<char>>/string/g
        s/, less<[^<>]*>, allocator<pair<[^<>]*>>//g
        s/, allocator<[^<>]*>//g' | LC_ALL=C sort -u
}
exported=$("$nm" -DC --defined-only "$library" | readable)
taken=$("$nm" -DC --undefined-only "$library" | readable)

# Whether the library itself describes the exception of an empty function. With libstdc++, and
# with libc++ since LLVM 16, the C++ library does so for all binaries.
describes_exception() {
    [[ $(readelf -dW "$library") == *NEEDED*libc++.so* ]] &&
        ! grep -qxF 'typeinfo for bad_function_call' <<<"$taken"
}

# The lines marked "libc++:" are that description. Who makes it must export it.
expected() {
    if describes_exception; then
        sed 's/^libc++: //' "$list"
    else
        grep -v '^libc++: ' "$list"
    fi | LC_ALL=C sort
}

if ! diff -u <(expected) - <<<"$exported"; then
    echo "$library does not export what $list says" >&2
    exit 1
fi
