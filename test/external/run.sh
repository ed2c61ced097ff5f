#!/usr/bin/env bash
# Installs a build to a place of its own, and builds and runs a host against what was installed: once as a CMake
# project, once by pkg-config. Usage: run.sh BUILD_DIR CMAKE CXX FLAGS
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$1 cmake=$2 cxx=$3 flags=$4

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$cmake" --install "$build" --prefix "$work/root" >"$work/install.log"

# Nothing of the inside leaves the house.
private=$(find "$work/root" -name 'RKp_*')
[ -z "$private" ] || { echo "private files were installed: $private"; exit 1; }

echo "find_package:"
"$cmake" -S "$here/host" -B "$work/host" -DCMAKE_PREFIX_PATH="$work/root" -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_BUILD_TYPE=Release >"$work/configure.log" || { cat "$work/configure.log"; exit 1; }
"$cmake" --build "$work/host" >"$work/build.log" || { cat "$work/build.log"; exit 1; }
"$work/host/host"

echo "pkg-config:"
config=$(find "$work/root" -name rk.pc)
export PKG_CONFIG_PATH=$(dirname "$config")
library_dir=$(dirname "$(find "$work/root" -name 'libRK.so')")
read -ra from_pkg_config <<<"$(pkg-config --cflags --libs rk)"
read -ra extra <<<"$flags"
"$cxx" -std=c++17 "${extra[@]}" -o "$work/by_pkg_config" "$here/host/main.cpp" "${from_pkg_config[@]}" \
  -Wl,-rpath,"$library_dir"
"$work/by_pkg_config"
