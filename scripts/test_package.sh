#!/usr/bin/env bash
# The full form of the installation test: builds the Debian package of the release, installs it on a clean Debian 12
# (made by debootstrap in a temporary folder, which needs root and the package mirror), uses it there as members and
# others of the group moxel, builds a client against it, and removes it again.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

cmake --preset release > /dev/null
cmake --build --preset release --target moxel moxel-command moxel-share
folder=$(mktemp -d)
root=$folder/root
trap 'rm -rf "$folder"' EXIT
cpack --config build/release/CPackConfig.cmake -B "$folder/packages" > "$folder/log"

mirror=$(sed -n "s,^\(URIs: *\|deb .*\)\(http[^ ]*\).*,\2,p" /etc/apt/sources.list /etc/apt/sources.list.d/* 2> /dev/null || true)
debootstrap --variant=minbase --include=g++,make,cmake,pkg-config,python3,libsqlite3-0 bookworm "$root" "${mirror%%$'\n'*}" > "$folder/log" ||
  { tail -5 "$folder/log"; exit 1; }
cp "$folder"/packages/*.deb "$root/moxel.deb"

cat > "$root/try.sh" << 'END'
set -euo pipefail
fail() { echo "FAILED: $*" >&2; exit 1; }
as() { user=$1; shift; setpriv --reuid "$user" --regid "$user" --init-groups "$@"; }
dpkg -i /moxel.deb > /dev/null
[ "$(stat -c '%U:%G %a' /var/lib/moxel)" = 'root:moxel 2775' ] || fail "the folder of the registry file"
[ "$(stat -c '%U:%G %a' /var/lib/moxel/registry.db)" = 'root:moxel 664' ] || fail "the registry file"
useradd --groups moxel member
useradd other
examples=/usr/share/doc/moxel/examples
as member moxel registry import $examples/configuration.reg > /dev/null || fail "a member changes"
[ "$(as other moxel domain list)" = "$(as member moxel domain list)" ] || fail "others read"
as other moxel domain create Mine 2> /dev/null && fail "others change"
as member python3 $examples/first_program.py > /tmp/python.txt || fail "the Python client"
g++ $examples/first_program.cpp -o /tmp/first $(pkg-config --cflags --libs moxel) || fail "pkg-config"
as member /tmp/first > /tmp/cpp.txt || fail "the C++ client"
cmp /tmp/python.txt /tmp/cpp.txt || fail "the clients differ"
mkdir /tmp/client
printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' 'project(client CXX)' 'find_package(moxel 1.4 REQUIRED)' \
  "add_executable(client $examples/fetch_variables.cpp)" 'target_link_libraries(client moxel::platform)' > /tmp/client/CMakeLists.txt
(cmake -S /tmp/client -B /tmp/client && cmake --build /tmp/client) > /tmp/log || fail "find_package"
as other /tmp/client/client domain Sales Region || fail "a client found by its program id"
dpkg -r moxel > /dev/null
[ -s /var/lib/moxel/registry.db ] || fail "removal took the data"
find /usr -name '*moxel*' ! -path '*/doc/*' | grep . && fail "removal left files"
dpkg -i /moxel.deb > /dev/null
as other moxel domain show Sales > /dev/null || fail "the data after a new installation"
echo "installed, used, removed and installed again"
END
chroot "$root" bash /try.sh
