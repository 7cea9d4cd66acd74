#!/usr/bin/env bash
# Runs a Windows program under Wine: wine-run.sh PROGRAM [ARGS...]
# CMake and CTest call it for every cross-built program they run.
# wine-run.sh --init DIR only creates the prefix DIR/wine-prefix, so that no
# test pays for it (about 15 s, more on a busy machine).
#
# The Wine prefix is $WINEPREFIX when set, otherwise wine-prefix/ in the
# build tree that holds the program (see below). It is created on first use. The Wine server stays up for
# a while after the last program ends, so that a test suite starts each
# program warm; `wineserver -k` with the same WINEPREFIX stops it at once.
set -euo pipefail

if (($# < 1)) || { [ "$1" = --init ] && (($# != 2)); }; then
  echo "usage: $0 PROGRAM [ARGS...] | $0 --init BUILD_DIR" >&2
  exit 2
fi

wine=/usr/lib/wine/wine64
wineserver=/usr/lib/wine/wineserver64
if [ ! -x "$wine" ] || [ ! -x "$wineserver" ]; then
  echo "wine-run.sh: Wine missing: apt-get install wine64" >&2
  exit 127
fi

if [ "$1" = --init ]; then
  mkdir -p "$2"
  export WINEPREFIX="$(cd "$2" && pwd)/wine-prefix"
elif [ -z "${WINEPREFIX:-}" ]; then
  # The nearest prefix made already above the program (a build nested in
  # another, as a test's client build, shares it), else a new one in the
  # nearest build tree.
  start=$(cd "$(dirname "$1")" && pwd)
  build="" dir=$start
  while :; do
    if [ -f "$dir/wine-prefix/.zorsim-ready" ]; then
      build=$dir
      break
    fi
    if [ -z "$build" ] && [ -f "$dir/CMakeCache.txt" ]; then
      build=$dir
    fi
    [ "$dir" = / ] && break
    dir=$(dirname "$dir")
  done
  export WINEPREFIX="${build:-$start}/wine-prefix"
fi

# UTF-8 on the Unix side, no debug chatter, and no prompts to install
# Mono or Gecko, which no program here needs.
export LANG=C.UTF-8
export LC_ALL=C.UTF-8
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml=;winedbg.exe=d"
export WINELOADER=$wine
unset DISPLAY

mkdir -p "$(dirname "$WINEPREFIX")"
# One creator at a time when CTest starts several programs together. The
# server outlives this script: it must not inherit the lock.
exec 9>"$WINEPREFIX.lock"
flock 9
if [ ! -f "$WINEPREFIX/.zorsim-ready" ]; then
  "$wine" wineboot.exe -i >/dev/null 2>&1 9>&-
  # The registry is on disk once the server that made it has ended.
  "$wineserver" -w 9>&-
  touch "$WINEPREFIX/.zorsim-ready"
fi
# Kept up 60 s past the last program instead of Wine's 3; when a server is
# up already this says so and changes nothing. A new server starts Wine's
# services with the first program, and they inherit its standard streams:
# a pipe of CMake or CTest would stay open, and its reader wait, as long as
# the server lives. So the first program here is one with no streams.
if "$wineserver" -p60 </dev/null >/dev/null 2>&1 9>&-; then
  "$wine" cmd.exe /c exit 0 </dev/null >/dev/null 2>&1 9>&- || true
fi
flock -u 9
exec 9>&-

if [ "$1" = --init ]; then
  exit 0
fi
exec "$wine" "$@"
