#!/usr/bin/env bash
# Installs into a temporary prefix, moves it, then builds and runs programs against it: C99 and C++, through the CMake
# package and through pkg-config, and against the static archive where the build has one.
#   run.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build=$1 source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/first" > "$work/log"
mv "$work/first" "$work/prefix"
export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$(find "$work/prefix" -name vekvc.pc)")
lib=$(dirname "$PKG_CONFIG_PATH")

expect() { # program name: runs it and checks that it says a variant's name
    local said
    said=$(LD_LIBRARY_PATH=$lib "$1")
    case $said in libvekvc-??.so.6.1) echo "$2: $said" ;; *) echo "$2 said: $said"; exit 1 ;; esac
}

for languages in "C and C++" "C alone"; do
    with_cxx=ON
    [ "$languages" = "C and C++" ] || with_cxx=OFF
    cmake -S "$source/tests/install" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" -DWITH_CXX=$with_cxx > "$work/log"
    cmake --build "$work/build" > "$work/log" || { cat "$work/log"; exit 1; }
    for program in consumer_c consumer_cpp consumer_static consumer_all_static; do
        if [ -x "$work/build/$program" ]; then expect "$work/build/$program" "CMake, $languages, $program"; fi
    done
    rm -r "$work/build"
done

# Folders given as absolute paths, as distributions do.
cmake -S "$source" -B "$work/absolute" -DVEKVC_BUILD_TESTS=OFF -DVEKVC_BUILD_APPS=OFF \
    -DCMAKE_INSTALL_LIBDIR="$work/root/lib" -DCMAKE_INSTALL_INCLUDEDIR="$work/root/include" > "$work/log"
grep -qx "libdir=$work/root/lib" "$work/absolute/vekvc.pc" && grep -qx "includedir=$work/root/include" "$work/absolute/vekvc.pc" ||
    { echo "absolute folders: vekvc.pc is wrong"; exit 1; }
grep -q "set(_lib \"$work/root/lib\")" "$work/absolute/vekvc-config.cmake" || { echo "absolute folders: vekvc-config.cmake is wrong"; exit 1; }
echo "absolute folders: as given"

# The loader finds the better variants where it looks for them.
for found in v3:av v4:az; do
    link=$(readlink "$lib/glibc-hwcaps/x86-64-${found%:*}/libvekvc.so.6")
    [ "$link" = "../../libvekvc-${found#*:}.so.6.1" ] || { echo "x86-64-${found%:*} leads to $link"; exit 1; }
done

# Nothing that is installed looks for libraries beside itself, and debuggers find their way.
for file in "$lib"/libvekvc-*.so.6.1 "$lib"/libvekcore.so.6; do
    ! readelf -d "$file" | grep -qE 'RUNPATH|RPATH' || { echo "$file has a run path"; exit 1; }
    readelf -SW "$file" | grep -q '\.eh_frame ' || { echo "$file has no unwind tables"; exit 1; }
done
echo "no run paths, unwind tables"

# shellcheck disable=SC2046
${CC:-cc} -std=c99 -Wall -Wextra -pedantic -Werror "$source/tests/install/consumer.c" -o "$work/pc_c" $(pkg-config --cflags --libs vekvc)
cp "$source/tests/install/consumer.c" "$work/consumer.cpp"
# shellcheck disable=SC2046
${CXX:-c++} -std=c++17 -Wall -Wextra "$work/consumer.cpp" -o "$work/pc_cpp" $(pkg-config --cflags --libs vekvc vekcore)
expect "$work/pc_c" "pkg-config, C99"
expect "$work/pc_cpp" "pkg-config, C++"

# Every public header compiles by itself as C99.
for header in $(cd "$work/prefix/include" && find . -name '*.h'); do
    echo "#include \"$header\"" | ${CC:-cc} -std=c99 -Wall -Wextra -pedantic -Werror -fsyntax-only -x c -I"$work/prefix/include" -
done
echo "all headers compile alone"
