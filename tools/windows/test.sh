#!/usr/bin/env bash
# Cross-builds the Windows DLLs, programs and tests (preset "windows", in
# build-windows/) and runs the suite under Wine. The first configure
# cross-builds the dependencies and creates the Wine prefix (minutes); the
# Wine server, and with it every Windows process, is stopped at the end,
# whatever failed.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
cd "$root"

stop_wine() {
  WINEPREFIX="$root/build-windows/wine-prefix" /usr/lib/wine/wineserver64 -k 2>/dev/null || true
}
trap stop_wine EXIT

cmake --preset windows
cmake --build --preset windows
ctest --preset windows
