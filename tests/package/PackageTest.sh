#!/usr/bin/env bash
# Installs the build into a fresh prefix and builds hosts outside the tree
# against it, the ways a user would: C++ hosts through koru.pc (with
# -Werror), an Objective-C host through koru-objc.pc, a CMake project through
# find_package, and a plain GNUstep host that links only gnustep-base and
# loads the installed bundle.  Every host runs from another folder with
# LD_LIBRARY_PATH unset, so the installed run paths alone must find the
# libraries.  Each host checks the toolkit's answers itself.
set -euo pipefail
build=$1
source_dir=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
package=$source_dir/package
unset LD_LIBRARY_PATH

cmake --install "$build" --prefix "$prefix" > /dev/null
# A sanitizer build's libraries need the sanitizer runtimes at link time.
extra=${KORU_PACKAGE_TEST_FLAGS:-}

# Runs a host from a folder far from the build and the prefix.
run() { (cd / && env -u LD_LIBRARY_PATH "$@"); }

test -f "$prefix/include/KORU/KORU.h"
test -f "$prefix/include/CoreFoundation/CoreFoundation.h"
test -f "$prefix/lib/KORU.bundle/Resources/Info-gnustep.plist"
test "$(readlink -f "$prefix/lib/KORU.bundle/KORU")" = "$(readlink -f "$prefix/lib/libKORU.so")"
grep -q '@(#)KORU v1.0 (2006-03-31)' "$prefix/lib/KORU.bundle/Resources/Info-gnustep.plist"

# Installed files name no folder of the build or of the builder's home, and
# the libraries find their dependencies through their own run paths.
if grep -rlF -e "$build" -e "$source_dir" "$prefix/lib/pkgconfig" "$prefix/lib/cmake"; then
  echo "installed files name the build tree" >&2; exit 1
fi
if [ -n "${HOME:-}" ] && [ "$HOME" != / ] && grep -rlF "$HOME/" "$prefix/lib/pkgconfig" "$prefix/lib/cmake"; then
  echo "installed files name the builder's home" >&2; exit 1
fi
for library in libKORU.so libKORUPlatform.so; do
  readelf -d "$prefix/lib/$library" | grep -E 'RPATH|RUNPATH' | grep -qF '[$ORIGIN' ||
    { echo "$library has no \$ORIGIN run path" >&2; exit 1; }
done

# pkg-config found through a relative PKG_CONFIG_PATH still hands out
# absolute folders.
cd "$work"
export PKG_CONFIG_PATH=prefix/lib/pkgconfig
case "$(pkg-config --variable=libdir koru)" in
  /*) ;;
  *) echo "koru.pc gives a relative libdir" >&2; exit 1 ;;
esac
if pkg-config --cflags koru | grep -q -e '-fconstant-string-class' -e '-fobjc'; then
  echo "koru.pc gives Objective-C flags to C and C++ hosts" >&2; exit 1
fi
pkg-config --cflags koru-objc | grep -q -e '-fobjc-exceptions'

g++ -std=c++17 -Wall -Wextra -Werror $extra "$package/consumer.cpp" -o "$work/consumer" \
    $(pkg-config --cflags --libs koru)
run "$work/consumer" "$prefix/lib/KORU.bundle"
g++ -std=c++17 -Wall -Wextra -Werror $extra "$package/classhost.cpp" -o "$work/classhost" \
    $(pkg-config --cflags --libs koru)
run "$work/classhost"

gcc -x objective-c -Wall -Wextra -Werror $extra "$package/consumer.m" -o "$work/consumer-objc" \
    $(pkg-config --cflags --libs koru-objc)
run "$work/consumer-objc"

# AppKit through koru-objc alone; C hosts never need a display.
gcc -x objective-c -Wall -Wextra -Werror $extra "$package/appkithost.m" -o "$work/appkithost" \
    $(pkg-config --cflags --libs koru-objc)
run env -u DISPLAY "$work/appkithost"
run env -u DISPLAY "$work/consumer" "$prefix/lib/KORU.bundle"
# A plain C host (no Objective-C) of the installed library never opens a
# display: it runs without DISPLAY and finds no X back end in its mappings.
gcc -std=c11 -Wall -Wextra -Werror $extra "$package/nodisplay.c" -o "$work/nodisplay" \
    $(pkg-config --cflags --libs koru)
run env -u DISPLAY "$work/nodisplay"
# A host that uses only the toolkit's categories names none of its symbols;
# koru-objc must keep libKORU linked all the same.
gcc -x objective-c -Wall -Wextra -Werror $extra "$package/categoryhost.m" -o "$work/categoryhost" \
    $(pkg-config --cflags --libs koru-objc)
readelf -d "$work/categoryhost" | grep -q 'NEEDED.*\[libKORU\.so' ||
  { echo "koru-objc let the linker drop libKORU from a category-only host" >&2; exit 1; }
run "$work/categoryhost"

# The umbrella header compiles cleanly as C, C++ and Objective-C.
gcc -x c -Wall -Wextra -Werror $extra -c "$package/umbrella.c" -o "$work/umbrella-c.o" \
    $(pkg-config --cflags koru)
g++ -x c++ -std=c++17 -Wall -Wextra -Werror $extra -c "$package/umbrella.c" -o "$work/umbrella-cxx.o" \
    $(pkg-config --cflags koru)
gcc -x objective-c -Wall -Wextra -Werror $extra -c "$package/umbrella.c" -o "$work/umbrella-objc.o" \
    $(pkg-config --cflags koru-objc)

# The plain GNUstep host knows nothing of KORU but the bundle's path, and is
# built with GNUstep's own flags.
gcc -x objective-c $extra "$package/bundlehost.m" -o "$work/bundlehost" \
    $(gnustep-config --objc-flags) $(gnustep-config --base-libs)
run "$work/bundlehost" "$prefix/lib/KORU.bundle"

mkdir -p "$work/cmake-consumer"
cat > "$work/cmake-consumer/CMakeLists.txt" <<CMAKE
cmake_minimum_required(VERSION 3.25)
project(Consumer LANGUAGES C CXX OBJC)
find_package(KORU REQUIRED)
add_executable(consumer $package/consumer.cpp)
add_executable(classhost $package/classhost.cpp)
add_executable(consumer-objc $package/consumer.m)
add_executable(categoryhost $package/categoryhost.m)
add_executable(categoryhost-both $package/categoryhost.m)
foreach(host consumer classhost consumer-objc categoryhost categoryhost-both)
  target_compile_options(\${host} PRIVATE -Wall -Wextra $extra)
  target_link_options(\${host} PRIVATE $extra)
endforeach()
target_compile_options(consumer PRIVATE -Werror)
target_compile_options(classhost PRIVATE -Werror)
target_link_libraries(consumer PRIVATE KORU::KORU)
target_link_libraries(classhost PRIVATE KORU::KORU)
target_link_libraries(consumer-objc PRIVATE KORU::KORUObjC)
target_compile_options(categoryhost PRIVATE -Werror)
target_link_libraries(categoryhost PRIVATE KORU::KORUObjC)
# Named through both targets, libKORU must still be kept.
target_link_libraries(categoryhost-both PRIVATE KORU::KORU KORU::KORUObjC)
CMAKE
cmake -S "$work/cmake-consumer" -B "$work/cmake-build" -DCMAKE_PREFIX_PATH="$prefix" \
      -DCMAKE_OBJC_COMPILER="$(command -v gcc)" > /dev/null
cmake --build "$work/cmake-build" > /dev/null
run "$work/cmake-build/consumer"
run "$work/cmake-build/classhost"
run "$work/cmake-build/consumer-objc"
for host in categoryhost categoryhost-both; do
  readelf -d "$work/cmake-build/$host" | grep -q 'NEEDED.*\[libKORU\.so' ||
    { echo "KORU::KORUObjC let the linker drop libKORU from a category-only host ($host)" >&2; exit 1; }
  run "$work/cmake-build/$host"
done

# Mac-style C against CoreFoundation alone: dates, sets, errors, preferences,
# a run-loop timer and character sets.
gcc -std=c11 -Wall -Wextra -Werror $extra "$source_dir/package/mac_style.c" -o "$work/mac_style" \
    $(pkg-config --cflags --libs koru)
run "$work/mac_style"

run "$prefix/bin/koru" > "$work/tour.txt"
grep -q '@(#)KORU v1.0 (2006-03-31)' "$work/tour.txt"
echo "package: installed headers, libraries, bundle, pkg-config and CMake package all usable"
