#!/usr/bin/env bash
# Builds and runs the demo ("demo") or the whole test suite ("test"),
# installing first whatever Debian packages the build needs and lacks.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

packages=(g++ cmake ninja-build pkg-config libexpat1-dev libdw-dev googletest libgtest-dev libgmock-dev
          libbenchmark-dev clang libclang-rt-14-dev python3)
if [ "${1:-}" = test ]; then
  # The Windows build: MinGW-w64's posix-threads runtime under clang and lld,
  # Debian's expat sources, and Wine to run it.
  packages+=(g++-mingw-w64-x86-64-posix lld llvm dpkg-dev wine64 wine)
fi
bash tools/install-packages.sh "${packages[@]}"

case "${1:-}" in
  demo)
    cmake --preset default
    cmake --build --preset default --target zorsim_demo simexc
    # Reports go to standard error; one stream keeps them in step with the
    # demo's own lines, and a copy lets simexc explain one of them.
    ./build/bin/zorsim_demo 2>&1 | tee build/zorsim_demo.log
    line=$(grep -m1 -A1 '^!!! EXCEPTION:$' build/zorsim_demo.log | tail -n1)
    echo
    echo "=== simexc --match '$line'"
    ./build/bin/simexc --match "$line"
    ;;
  test)
    # Warnings are errors here, as in CI; then the same suite under ASan+UBSan
    # and under ThreadSanitizer; then each fuzz target for a bounded time;
    # then the Windows DLLs and the suite again, under Wine.
    for preset in ci asan tsan fuzz; do
      cmake --preset "$preset"
      cmake --build --preset "$preset"
      ctest --preset "$preset"
    done
    bash tools/windows/test.sh
    ;;
  *)
    echo "usage: $0 demo|test" >&2
    exit 2
    ;;
esac
