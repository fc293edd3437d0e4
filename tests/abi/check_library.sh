#!/usr/bin/env bash
# What every variant's file promises: exactly the exports that the headers declare, nothing needed but the core library,
# the OpenMP runtime and the C library, nothing to run at load time, no writable data, and its own instruction set marked.
#   check_library.sh LIBRARY SOURCE_DIR [ISA]
set -euo pipefail
library=$1 source=$2 isa=${3:-}
bad() { echo "$(basename "$library"): $*"; exit 1; }

declared=$(cat "$source"/include/vekvc/*.h | tr '\n' ' ' |
    grep -oE 'VEKVC_API [A-Za-z0-9_* ]*\b(veki[A-Za-z0-9_]+|vekvcGetLibVersion) ?\(' | grep -oE '(veki[A-Za-z0-9_]+|vekvcGetLibVersion)' | sort -u)
versioned=$(nm -D --defined-only --with-symbol-versions "$library" | awk '$2 != "A" {print $3}' | sort -u)
strange=$(echo "$versioned" | grep -v '@@VEKVC_6\.1$') && bad "exports of no or another version: $strange"
exported=$(echo "$versioned" | sed 's/@@.*//')
difference=$(diff <(echo "$declared") <(echo "$exported")) || bad "headers (<) and exports (>) differ: $difference"

soname=$(readelf -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[ "$soname" = libvekvc.so.6 ] || bad "SONAME is $soname"
for needed in $(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'); do
    case $needed in
        libvekcore.so.6 | libgomp.so.1 | libomp.so.5 | libc.so.6 | ld-linux*) ;;
        *) bad "needs $needed" ;;
    esac
done
start=$(readelf -d "$library" | grep -E '\((INIT|FINI|INIT_ARRAY|FINI_ARRAY)\)') && bad "has start-up code: $start"
for section in .data .bss .tdata .tbss .init_array .ctors; do
    size=$(size -A "$library" | awk -v s="$section" '$1 == s {print $2}')
    [ "${size:-0}" = 0 ] || bad "section $section holds $size bytes"
done
if [ -n "$isa" ]; then
    readelf -n "$library" | grep -q "x86 ISA needed:.*$isa" || bad "does not carry the marker of $isa"
else
    # The plain library runs everywhere: no register wider than 128 bits, no VEX coding.
    if objdump -d --no-show-raw-insn "$library" | grep -qE '%[yz]mm|\sv(mov|p|add|sub|mul)[a-z0-9]+\s'; then bad "has AVX instructions"; fi
fi
echo "$(basename "$library"): $(echo "$exported" | wc -l) exports"
