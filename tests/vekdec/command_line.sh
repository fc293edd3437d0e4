#!/usr/bin/env bash
# vekdec as its users meet it: outputs, exit statuses, sentences.
#   command_line.sh VEKDEC STREAMS
set -euo pipefail
vekdec=$1 streams=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
stream=$streams/base_ip.264
bad() { echo "FAILED: $*"; exit 1; }
expect() { # status command...: runs it, output in $said
    local wanted=$1 status=0
    shift
    said=$("$@" 2>&1) || status=$?
    [ "$status" = "$wanted" ] || bad "status $status instead of $wanted from: $* : $said"
}

# The outputs agree with one another and with the checksums.
expect 0 "$vekdec" "$stream" --check "$streams/base_ip.md5"
[ "$said" = "bit-exact: 20 frames" ] || bad "--check said: $said"
expect 0 "$vekdec" "$stream" --md5
[ "$said" = "$(cat "$streams/base_ip.md5")" ] || bad "--md5 differs from the list"
expect 0 "$vekdec" -q "$stream" -o "$work/out.yuv"
[ "$(stat -c %s "$work/out.yuv")" = $((20 * 176 * 144 * 3 / 2)) ] || bad "raw video has the wrong size"
"$vekdec" "$stream" -o - | cmp - "$work/out.yuv" || bad "the pipe differs from the file"
expect 0 "$vekdec" -q "$stream" -o "$work/out.y4m"
[ "$(head -n 1 "$work/out.y4m" | tr -d '\0')" = "YUV4MPEG2 W176 H144 F25:1 Ip A1:1 C420jpeg" ] || bad "y4m header"
expect 0 "$vekdec" -q "$stream" --skip 5 --frames 3 --md5
[ "$said" = "$(sed -n 6,8p "$streams/base_ip.md5")" ] || bad "--skip and --frames"
for overlay in mb mv qp; do
    expect 0 "$vekdec" -q "$stream" --sheet "$work/$overlay.png" --overlay $overlay --png "$work/frames"
    [ "$(head -c 4 "$work/$overlay.png" | tail -c 3)" = PNG ] || bad "the sheet is no PNG"
done
[ "$(find "$work/frames" -name 'frame-*.png' | wc -l)" = 20 ] || bad "not one PNG per frame"
cmp -s "$work/mb.png" "$work/qp.png" && bad "overlays draw the same"
expect 0 "$vekdec" "$stream" --bench 1
case $said in *"20 frames in "*"best: "*) ;; *) bad "--bench said: $said" ;; esac
expect 0 "$vekdec" -q "$stream" --stats
case $said in "20 frames, 20 pictures"*"macroblocks: "*) ;; *) bad "--stats said: $said" ;; esac
expect 0 "$vekdec" --version
case $said in "vekdec on libvekvc-"*) ;; *) bad "--version said: $said" ;; esac
expect 0 "$vekdec" --help

# Differences and damage: status 1.
expect 1 "$vekdec" "$stream" --check "$streams/base_p4x4.md5"
case $said in "frame 0 differs"*) ;; *) bad "--check of other sums said: $said" ;; esac
{ head -c 9000 "$stream"; head -c 300 /dev/zero | tr '\0' '\252'; tail -c +9301 "$stream"; } > "$work/damaged.264"
expect 1 "$vekdec" -q "$work/damaged.264" -o "$work/damaged.yuv"
case $said in *"picture "*) ;; *) bad "damage was not reported: $said" ;; esac
[ "$(stat -c %s "$work/damaged.yuv")" = $((20 * 176 * 144 * 3 / 2)) ] || bad "a damaged stream lost frames"

# Nothing to decode: one sentence and status 2.
: > "$work/empty"
head -c 5000 /dev/zero > "$work/zeros"
for input in "$work/nowhere" "$work/empty" "$work/zeros"; do
    expect 2 "$vekdec" "$input"
    [ "$(echo "$said" | wc -l)" = 1 ] || bad "more than a sentence for $input: $said"
done
expect 2 "$vekdec"
expect 2 "$vekdec" "$stream" --overlay nonsense
echo "all as described"
