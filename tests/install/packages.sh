#!/usr/bin/env bash
# Makes the Debian packages, has lintian read them, unpacks them into a scratch root, and serves a C program from there.
#   packages.sh BUILD_DIR
set -euo pipefail
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cd "$build" && fakeroot cpack -B "$work/packages") > "$work/log" 2>&1 || { cat "$work/log"; exit 1; }
lintian --no-cfg --fail-on error "$work"/packages/*.deb 2> /dev/null
for package in libvekcore6 libvekvc6 libvekvc-dev vekvc-tools; do
    dpkg-deb -x "$work/packages/$package"_*.deb "$work/root"
done
lib=$work/root/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)

# The name that programs link stays the variant for all processors, whatever ldconfig finds beside it.
mkdir -p "$work/root/etc"
touch "$work/root/etc/ld.so.conf"
/sbin/ldconfig -r "$work/root" -C /cache
/sbin/ldconfig -r "$work/root" -n "/usr/lib/$(basename "$lib")"
link=$(readlink "$lib/libvekvc.so.6")
[ "$link" = libvekvc-sf.so.6.1 ] || { echo "libvekvc.so.6 leads to $link"; exit 1; }

export PKG_CONFIG_SYSROOT_DIR=$work/root PKG_CONFIG_LIBDIR=$lib/pkgconfig
# shellcheck disable=SC2046
${CC:-cc} -std=c99 -Wall -Wextra -pedantic -Werror "$work/root/usr/share/doc/libvekvc-dev/examples/sad_search.c" \
    -o "$work/program" $(pkg-config --cflags --libs vekvc vekcore)
export LD_LIBRARY_PATH=$lib
"$work/program"
"$work/root/usr/bin/vekdec" --version
"$work/root/usr/bin/vekproc" --version
for page in vekdec vekproc; do
    zcat "$work/root/usr/share/man/man1/$page.1.gz" | grep -q "[Oo]utput" || { echo "no page of $page"; exit 1; }
done
echo "the packages serve"
