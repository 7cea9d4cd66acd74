#!/usr/bin/env bash
# Cross-builds the libraries the Windows build needs into one prefix:
#   deps.sh PREFIX [WORKDIR]
# expat from Debian's own source package, GoogleTest from
# /usr/src/googletest (package googletest), each with the project's
# MinGW clang toolchain. Sources and build trees go to WORKDIR (default: the
# folder that holds PREFIX). A library already built with the same
# toolchain file and this script is not built again.
#
# The source packages come through apt with a source list of its own under
# WORKDIR; the machine's apt configuration is left as it is.
set -euo pipefail

if (($# < 1)); then
  echo "usage: $0 PREFIX [WORKDIR]" >&2
  exit 2
fi
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
toolchain=$root/cmake/toolchains/x86_64-w64-mingw32-clang.cmake
mkdir -p "$1"
prefix=$(cd "$1" && pwd)
work=${2:-$(dirname "$prefix")}
mkdir -p "$work"
work=$(cd "$work" && pwd)

# Debian packages of the toolchain and of Wine, installed when missing.
packages=(clang lld llvm g++-mingw-w64-x86-64-posix googletest dpkg-dev cmake ninja-build wine64 wine)
bash "$(dirname "${BASH_SOURCE[0]}")/../install-packages.sh" "${packages[@]}"

# A change to the toolchain or to this script rebuilds everything.
stamp=$(cat "$toolchain" "${BASH_SOURCE[0]}" | sha256sum | cut -c1-16)

# ---- source packages through a private apt state --------------------------
apt_dir=$work/apt
apt_opts=(-o "Dir::Etc::sourcelist=$apt_dir/sources.list" -o "Dir::Etc::sourceparts=-"
          -o "Dir::State::Lists=$apt_dir/lists" -o "Dir::Cache=$apt_dir/cache"
          -o "APT::Sandbox::User=root")
# Once per run of this script ($$ is the same in its subshells).
apt_sources() {
  [ -f "$apt_dir/updated.$$" ] && return
  rm -f "$apt_dir"/updated.*
  mkdir -p "$apt_dir/lists/partial" "$apt_dir/cache/archives/partial"
  local keyring=/usr/share/keyrings/debian-archive-keyring.gpg
  local mirror=http://deb.debian.org
  cat >"$apt_dir/sources.list" <<EOF
deb-src [signed-by=$keyring] $mirror/debian bookworm main
deb-src [signed-by=$keyring] $mirror/debian bookworm-updates main
deb-src [signed-by=$keyring] $mirror/debian-security bookworm-security main
EOF
  apt-get "${apt_opts[@]}" -qq update
  touch "$apt_dir/updated.$$"
}

# fetch_source NAME -> prints the unpacked source folder
fetch_source() {
  local name=$1 dir=$work/src/$1
  if [ ! -f "$dir/.unpacked" ]; then
    apt_sources >&2
    rm -rf "$dir"
    mkdir -p "$dir"
    # The newest version first (security updates); when the mirror does not
    # serve that one, the one of the release.
    if ! (cd "$dir" && apt-get "${apt_opts[@]}" -qq source --download-only "$name") >"$dir.log" 2>&1; then
      echo "=== $name: the newest source is not served, taking the release's" >&2
      (cd "$dir" && apt-get "${apt_opts[@]}" -qq source --download-only "$name/bookworm") >>"$dir.log" 2>&1 ||
        { cat "$dir.log" >&2; exit 1; }
    fi
    local dsc
    dsc=$(cd "$dir" && ls -1 "${name}"_*.dsc | sort -V | tail -n1)
    echo "=== $name: $dsc" >&2
    (cd "$dir" && dpkg-source --no-check -x "$dsc" unpacked) >>"$dir.log" 2>&1 || { cat "$dir.log" >&2; exit 1; }
    touch "$dir/.unpacked"
  fi
  echo "$dir/unpacked"
}

# build NAME SOURCE_DIR [CMAKE_ARGS...]
build() {
  local name=$1 src=$2
  shift 2
  if [ "$(cat "$prefix/.$name.stamp" 2>/dev/null)" = "$stamp" ]; then
    return
  fi
  echo "=== cross-building $name"
  local dir=$work/build/$name log=$work/build/$name.log
  rm -rf "$dir"
  mkdir -p "$dir"
  if ! {
    cmake -S "$src" -B "$dir" -G Ninja -Wno-dev \
      -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
      -DCMAKE_INSTALL_PREFIX="$prefix" -DZORSIM_WINDOWS_DEPS_PREFIX="$prefix" \
      -DBUILD_SHARED_LIBS=OFF "$@" &&
      cmake --build "$dir" -j2 &&
      cmake --install "$dir"
  } >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    echo "deps.sh: building $name failed; the whole log is $log" >&2
    exit 1
  fi
  echo "$stamp" >"$prefix/.$name.stamp"
}

# Static libraries throughout: every binary carries its own copy, as it does
# the C++ runtime, and nothing extra has to sit beside the DLLs.
build googletest /usr/src/googletest -DINSTALL_GTEST=ON -DBUILD_GMOCK=ON
if [ "$(cat "$prefix/.expat.stamp" 2>/dev/null)" != "$stamp" ]; then
  expat_src=$(fetch_source expat)/expat
  # Debian builds expat with autotools, which defines XML_DTD as 1, and its
  # security patches test "XML_DTD == 1"; CMake's header defines it empty.
  sed -i 's/^#cmakedefine XML_DTD$/#cmakedefine XML_DTD 1/' "$expat_src/expat_config.h.cmake"
  build expat "$expat_src" -DEXPAT_SHARED_LIBS=OFF -DEXPAT_BUILD_TOOLS=OFF \
    -DEXPAT_BUILD_EXAMPLES=OFF -DEXPAT_BUILD_TESTS=OFF -DEXPAT_BUILD_DOCS=OFF
fi
echo "=== Windows dependencies in $prefix"
