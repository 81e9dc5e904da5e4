#!/usr/bin/env bash
# build_host.sh find_package|pkg_config CMAKE BUILD_DIR HOST_SOURCES C_COMPILER VERSION
# Installs the project into a fresh folder, moves it (nothing installed may hold the place it was
# made for), builds a C host in another folder in the given way, and runs it.
set -euo pipefail
way="$1" cmake="$2" build_dir="$3" host_sources="$4" compiler="$5" version="$6"

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
"$cmake" --install "$build_dir" --prefix "$work/staged" >"$work/install.log" ||
  { cat "$work/install.log"; exit 1; }
mv "$work/staged" "$work/prefix"
cp -r "$host_sources" "$work/host"
mkdir "$work/logs"

for pattern in 'libVexaSqliteSDK.so' 'vexasqlitesdk.h' 'vexasqlitesdk.pc'; do
  [[ -n "$(find "$work/prefix" -name "$pattern")" ]] ||
    { echo "$pattern is not installed"; exit 1; }
done
library_dir="$(dirname "$(find "$work/prefix" -name libVexaSqliteSDK.so)")"

case "$way" in
  find_package)
    "$cmake" -S "$work/host" -B "$work/out" -DCMAKE_PREFIX_PATH="$work/prefix" \
      -DCMAKE_C_COMPILER="$compiler"
    "$cmake" --build "$work/out"
    ;;
  pkg_config)
    export PKG_CONFIG_PATH="$library_dir/pkgconfig"
    [[ "$(pkg-config --modversion vexasqlitesdk)" == "$version" ]]
    mkdir "$work/out"
    # shellcheck disable=SC2046 # the flags are words
    "$compiler" -std=c99 -Wall -Wextra -Werror "$work/host/host.c" -o "$work/out/host" \
      $(pkg-config --cflags --libs vexasqlitesdk) -Wl,-rpath,"$library_dir"
    ;;
  *)
    echo "unknown way: $way"
    exit 1
    ;;
esac

"$work/out/host" "$work/logs" "$work/prefix"
grep -q 'VexaSqliteSDK version: 2, 1, 0, ' "$work/logs/vexa_sqlite_sdk.log"

# The installed tool finds the library beside it.
if [[ -x "$work/prefix/bin/vexascan" ]]; then
  "$work/prefix/bin/vexascan" --help >/dev/null
fi
