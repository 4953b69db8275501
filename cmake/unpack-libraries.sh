#!/usr/bin/env bash
# Fills a folder with Debian's packages of the libraries that a preset builds against:
#
#   unpack-libraries.sh arm64 FOLDER   64-bit Arm: C and C++ libraries, liblog, the tools' headers
#   unpack-libraries.sh amd64 FOLDER   the desk: LLVM 19's C++ library, which Debian does not
#                                      install beside LLVM 14's
#
# The packages are only unpacked: this machine's package database stays as it is.
set -euo pipefail

usage() { echo "usage: unpack-libraries.sh arm64|amd64 FOLDER" >&2; exit 2; }
[ $# -eq 2 ] || usage
architecture=$1 folder=$2
packages=(libc++1-19 libc++-19-dev libc++abi1-19 libc++abi-19-dev libunwind-19 libunwind-19-dev)
case $architecture in
arm64)
    packages+=(libc6 libc6-dev linux-libc-dev libgcc-s1 libgcc-12-dev libstdc++6
        android-liblog android-liblog-dev nlohmann-json3-dev rapidjson-dev libcli11-dev)
    ;;
amd64) ;;
*) usage ;;
esac

stamp=$folder/.complete
if [ "$(cat "$stamp" 2>/dev/null)" = "${packages[*]}" ]; then
    exit 0
fi
rm -rf "$folder"
mkdir -p "$folder"
folder=$(realpath "$folder")
apt=$folder/.apt
mkdir -p "$apt/state/lists/partial" "$apt/cache/archives/partial" "$apt/packages"
: >"$apt/status"
# _apt could not write here; the downloads are checked against the signed lists all the same.
options=(-qq -o "APT::Architecture=$architecture" -o "APT::Architectures::=$architecture"
    -o APT::Sandbox::User=root -o "Dir::State=$apt/state" -o "Dir::State::status=$apt/status"
    -o "Dir::Cache=$apt/cache")

echo "== unpacking Debian's $architecture libraries into $folder" >&2
apt-get "${options[@]}" update
(cd "$apt/packages" && apt-get "${options[@]}" download "${packages[@]}")
for package in "$apt"/packages/*.deb; do
    dpkg -x "$package" "$folder"
done
rm -rf "$apt"
echo "${packages[*]}" >"$folder/.complete"
