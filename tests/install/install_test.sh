#!/usr/bin/env bash
# The installed tree serves a user: through CMake's packages, through pkg-config, and as
# the platform that libframeutil alone is built on.
set -euo pipefail
source=$1
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
program=$source/tests/install/program

cmake --install "$build" --prefix "$prefix" >"$work/install.log"

run_program() { # title, binary
  output=$(LD_LIBRARY_PATH=$(dirname "$(find "$prefix" -name libkelp.so)") "$2")
  case "$output" in
    "eth0 1500 "[0-9]*) echo "$1: $output" ;;
    *) echo "$1: unexpected output: $output" >&2; exit 1 ;;
  esac
}

cmake -S "$program" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >"$work/cmake.log"
cmake --build "$work/cmake" >>"$work/cmake.log" || { cat "$work/cmake.log"; exit 1; }
run_program "find_package" "$work/cmake/program"

pkgconfig=$(dirname "$(find "$prefix" -name frameutil.pc)")
# shellcheck disable=SC2046
PKG_CONFIG_PATH=$pkgconfig g++ -std=c++20 "$program/program.cpp" -o "$work/pkgconfig_program" \
  $(PKG_CONFIG_PATH=$pkgconfig pkg-config --define-variable=prefix="$prefix" --cflags --libs frameutil kelp)
run_program "pkg-config" "$work/pkgconfig_program"

for library in $(find "$prefix" -name libframeutil.so -o -name libkelp.so); do
  readelf -d "$library" | grep -q 'SONAME.*\.so\.[0-9]' || { echo "$library has no SONAME" >&2; exit 1; }
done

# No third-party header is needed to use the platform's or the library's headers.
for header in $(cd "$prefix/include" && find . -name '*.h'); do
  echo "#include \"${header#./}\"" >"$work/one.cpp"
  g++ -std=c++20 -fsyntax-only -I"$prefix/include" "$work/one.cpp" ||
    { echo "$header does not compile alone" >&2; exit 1; }
done

cmake -S "$source" -B "$work/external" -G Ninja -DFRAMEUTIL_PLATFORM=external \
  -DCMAKE_PREFIX_PATH="$prefix" >"$work/external.log"
cmake --build "$work/external" >>"$work/external.log" || { cat "$work/external.log"; exit 1; }
echo "external platform: built"
