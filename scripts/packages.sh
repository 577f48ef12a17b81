# Installs the Debian packages that the build needs, where any is missing. Sourced by the other scripts, which name more
# packages in more_packages.
packages=(g++ cmake ninja-build libsqlite3-dev libcli11-dev nlohmann-json3-dev libgtest-dev libbenchmark-dev)
# What only tests use: the Python client and its types, the compiler of interface definitions, the manual page.
packages+=(python3 mypy mingw-w64-tools mandoc pkg-config dpkg-dev)
packages+=(${more_packages-})
missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
  as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
