#!/usr/bin/env bash
# Installs the build into a fresh prefix and builds programs outside the
# tree against it, the ways a user would: a C++ program and an Objective-C
# program through pkg-config, and a CMake project through find_package.
# Each program calls the toolkit and checks the answers itself.
set -euo pipefail
build=$1
source_dir=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" > /dev/null
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
# A sanitizer build's libraries need the sanitizer runtimes at link time.
extra=${KORU_PACKAGE_TEST_FLAGS:-}

test -f "$prefix/include/KORU/KORU.h"
test -f "$prefix/include/CoreFoundation/CoreFoundation.h"
test -f "$prefix/lib/KORU.bundle/Resources/Info-gnustep.plist"
test "$(readlink -f "$prefix/lib/KORU.bundle/KORU")" = "$(readlink -f "$prefix/lib/libKORU.so")"
grep -q '@(#)KORU v1.0 (2006-03-31)' "$prefix/lib/KORU.bundle/Resources/Info-gnustep.plist"

g++ -std=c++17 -Wall -Wextra $extra "$source_dir/package/consumer.cpp" -o "$work/consumer" \
    $(pkg-config --cflags --libs koru)
"$work/consumer" "$prefix/lib/KORU.bundle"

gcc -x objective-c -Wall -Wextra $extra "$source_dir/package/consumer.m" -o "$work/consumer-objc" \
    $(pkg-config --cflags --libs koru)
"$work/consumer-objc"

mkdir -p "$work/cmake-consumer"
cat > "$work/cmake-consumer/CMakeLists.txt" <<CMAKE
cmake_minimum_required(VERSION 3.25)
project(Consumer LANGUAGES C CXX)
find_package(KORU REQUIRED)
add_executable(consumer $source_dir/package/consumer.cpp)
target_compile_options(consumer PRIVATE $extra)
target_link_options(consumer PRIVATE $extra)
target_link_libraries(consumer PRIVATE KORU::KORU)
CMAKE
cmake -S "$work/cmake-consumer" -B "$work/cmake-build" -DCMAKE_PREFIX_PATH="$prefix" > /dev/null
cmake --build "$work/cmake-build" > /dev/null
"$work/cmake-build/consumer"

# Mac-style C against CoreFoundation alone: dates, sets, errors, preferences,
# a run-loop timer and character sets.
gcc -std=c11 -Wall -Wextra $extra "$source_dir/package/mac_style.c" -o "$work/mac_style" \
    $(pkg-config --cflags --libs koru)
"$work/mac_style"

"$prefix/bin/koru" > "$work/tour.txt"
grep -q '@(#)KORU v1.0 (2006-03-31)' "$work/tour.txt"
echo "package: installed headers, libraries, bundle, pkg-config and CMake package all usable"
