#!/usr/bin/env bash
# Fills a folder with Debian's arm64 packages of the C and C++ libraries and of liblog. The
# packages are only unpacked: this machine's package database stays as it is.
set -euo pipefail

sysroot=${1:?usage: arm64-sysroot.sh FOLDER}
packages=(libc6 libc6-dev linux-libc-dev libgcc-s1 libgcc-12-dev libstdc++6
    libc++1-14 libc++-14-dev libc++abi1-14 libc++abi-14-dev libunwind-14 libunwind-14-dev
    android-liblog android-liblog-dev nlohmann-json3-dev libcli11-dev)

stamp="$sysroot/.complete"
if [ "$(cat "$stamp" 2>/dev/null)" = "${packages[*]}" ]; then
    exit 0
fi
rm -rf "$sysroot"
mkdir -p "$sysroot"
sysroot=$(realpath "$sysroot")
apt="$sysroot/.apt"
mkdir -p "$apt/state/lists/partial" "$apt/cache/archives/partial" "$apt/packages"
: >"$apt/status"
# _apt could not write here; the downloads are checked against the signed lists all the same.
options=(-qq -o APT::Architecture=arm64 -o APT::Architectures::=arm64 -o APT::Sandbox::User=root
    -o "Dir::State=$apt/state" -o "Dir::State::status=$apt/status" -o "Dir::Cache=$apt/cache")

echo "== unpacking Debian's arm64 libraries into $sysroot" >&2
apt-get "${options[@]}" update
(cd "$apt/packages" && apt-get "${options[@]}" download "${packages[@]}")
for package in "$apt"/packages/*.deb; do
    dpkg -x "$package" "$sysroot"
done
rm -rf "$apt"
echo "${packages[*]}" >"$sysroot/.complete"
