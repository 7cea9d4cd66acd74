#!/usr/bin/env bash
# Cross-builds the Windows DLLs, programs and tests (preset "windows", in
# build-windows/) and runs the suite under Wine. The first configure
# cross-builds the dependencies and creates the Wine prefix (minutes); the
# Wine server is stopped at the end.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
cd "$root"

cmake --preset windows
cmake --build --preset windows
status=0
ctest --preset windows || status=$?
WINEPREFIX="$root/build-windows/wine-prefix" /usr/lib/wine/wineserver64 -k 2>/dev/null || true
exit "$status"
