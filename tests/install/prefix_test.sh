#!/usr/bin/env bash
# Installs a build into an empty prefix and uses it from there as a newcomer would: the tool, a client found by
# find_package, one found by pkg-config, the Python client, the manual page, the Debian package.
#   prefix_test.sh BUILD_FOLDER [COMPILER_FLAGS]
set -euo pipefail
build=$(realpath "$1") flags=${2:-}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
prefix=$folder/prefix
unset MOXEL_LIBRARY PYTHONPATH LD_LIBRARY_PATH
export MOXEL_REGISTRY=$folder/registry.db CXXFLAGS=$flags

fail() { echo "FAILED: $*" >&2; exit 1; }
expect() { # WHAT EXPECTED ACTUAL
  [ "$2" = "$3" ] || { diff <(echo "$2") <(echo "$3") >&2; fail "$1"; }
}

cmake --install "$build" --prefix "$prefix" > "$folder/log"
examples=$prefix/share/doc/moxel/examples
moxel=$prefix/bin/moxel
"$moxel" registry import "$examples/configuration.reg" > "$folder/log"
"$moxel" register
registered=$("$moxel" registry query 'HKCR\CLSID' -s | grep -o "$prefix/[^ ]*libmoxel[^ ]*" | sort -u)
[ -f "$registered" ] || fail "the registered library is not the installed one: $registered"
domains=$("$moxel" domain list --json | grep -o '"name": "[^"]*"' | cut -d'"' -f4)

mkdir "$folder/client"
cat > "$folder/client/CMakeLists.txt" << 'END'
cmake_minimum_required(VERSION 3.25)
project(client CXX)
find_package(moxel 1.4 REQUIRED)
add_executable(client client.cpp)
target_link_libraries(client PRIVATE moxel::moxel)
END
cp "$examples/first_program.cpp" "$folder/client/client.cpp"
cmake -S "$folder/client" -B "$folder/client/build" -DCMAKE_PREFIX_PATH="$prefix" > "$folder/log"
cmake --build "$folder/client/build" > "$folder/log" || { cat "$folder/log" >&2; fail "find_package"; }
expect "the client of find_package" "$domains" "$("$folder/client/build/client")"

libraries=$(dirname "$(find "$prefix" -name libmoxel.so)")
if command -v pkg-config > /dev/null; then
  export PKG_CONFIG_PATH=$libraries/pkgconfig
  # shellcheck disable=SC2046,SC2086
  g++ $flags "$examples/first_program.cpp" -o "$folder/first" $(pkg-config --cflags --libs moxel) \
    -Wl,-rpath,"$libraries"
  expect "the client of pkg-config" "$domains" "$("$folder/first")"
fi

if command -v python3 > /dev/null; then
  python=$(dirname "$(dirname "$(find "$prefix" -name py.typed)")")
  expect "the Python client" "$domains" "$(
    ASAN_OPTIONS=detect_leaks=0 LD_PRELOAD=${MOXEL_PRELOAD:-} LD_LIBRARY_PATH=$libraries PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=$python \
      python3 "$examples/first_program.py")"
fi

"$moxel" unregister
"$moxel" registry query 'HKCR\CLSID' -s | grep -q libmoxel && fail "unregister left the library"
[ -s "$prefix/share/man/man1/moxel.1" ] && [ -s "$prefix/share/bash-completion/completions/moxel" ] ||
  fail "manual page or completion missing"

if command -v dpkg-deb > /dev/null && command -v dpkg-shlibdeps > /dev/null; then
  (cd "$folder" && cpack --config "$build/CPackConfig.cmake" -B "$folder/packages" > "$folder/log")
  package=$(ls "$folder"/packages/*.deb)
  dpkg-deb --contents "$package" > "$folder/contents"
  for file in bin/moxel lib/libmoxel.so lib/libmoxel-platform.so.1 include/moxel/client.h man1/moxel.1 completions/moxel \
    dist-packages/moxel/__init__.py moxel-config.cmake moxel.pc examples/first_program.cpp; do
    grep -q "$file" "$folder/contents" || fail "the package lacks $file"
  done
  grep -q '/build\|__pycache__' "$folder/contents" && fail "the package holds what is not for it"
  dpkg-deb --control "$package" "$folder/control"
  for script in postinst prerm; do [ -x "$folder/control/$script" ] || fail "no $script"; done
fi
echo "installed, found and used"
