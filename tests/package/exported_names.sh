#!/usr/bin/env bash
# exported_names.sh LIBRARY: the dynamic symbol table defines the five functions and nothing else,
# and the library carries the name that hosts are linked to.
set -euo pipefail
library="$1"

expected="InitSqliteSDK
Pause
Scan
Stop
UninitSqliteSDK"
found="$(nm -D --defined-only --format=posix "$library" | awk '{ print $1 }' | LC_ALL=C sort)"
if [[ "$found" != "$expected" ]]; then
  echo "exported names differ (left: expected, right: found)"
  diff <(echo "$expected") <(echo "$found") || true
  exit 1
fi

kinds="$(nm -D --defined-only --format=posix "$library" | awk '{ print $2 }' | sort -u)"
[[ "$kinds" == T ]] || { echo "not all exported names are functions: $kinds"; exit 1; }

soname="$(objdump -p "$library" | awk '$1 == "SONAME" { print $2 }')"
[[ "$soname" == libVexaSqliteSDK.so.2 ]] || { echo "SONAME is $soname"; exit 1; }
[[ "$(basename "$(readlink -f "$library")")" == libVexaSqliteSDK.so.2.1.0 ]] ||
  { echo "the library file is $(readlink -f "$library")"; exit 1; }
