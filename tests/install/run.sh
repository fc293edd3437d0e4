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

cmake -S "$source/tests/install" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" > "$work/log"
cmake --build "$work/build" > "$work/log" || { cat "$work/log"; exit 1; }
for program in consumer_c consumer_cpp consumer_static; do
    if [ -x "$work/build/$program" ]; then expect "$work/build/$program" "CMake, $program"; fi
done

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
