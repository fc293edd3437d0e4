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
[ "$(head -n 1 "$work/out.y4m" | tr -d '\0')" = "YUV4MPEG2 W176 H144 F25:1 Ip A1:1 C420mpeg2" ] || bad "y4m header"
expect 0 "$vekdec" -q "$stream" --skip 5 --frames 3 --md5
[ "$said" = "$(sed -n 6,8p "$streams/base_ip.md5")" ] || bad "--skip and --frames"
for overlay in mb mv qp; do
    expect 0 "$vekdec" -q "$stream" --sheet "$work/$overlay.png" --overlay $overlay --png "$work/frames"
    [ "$(head -c 4 "$work/$overlay.png" | tail -c 3)" = PNG ] || bad "the sheet is no PNG"
done
[ "$(find "$work/frames" -name 'frame-*.png' | wc -l)" = 20 ] || bad "not one PNG per frame"
cmp -s "$work/mb.png" "$work/qp.png" && bad "overlays draw the same"
cat "$stream" "$stream" > "$work/long.264"
expect 0 "$vekdec" -q "$work/long.264" --sheet "$work/long.png" # more frames than the sheet keeps at once
[ "$(head -c 4 "$work/long.png" | tail -c 3)" = PNG ] || bad "the sheet of many frames is no PNG"
expect 0 "$vekdec" "$stream" --bench 1
case $said in *"20 frames in "*"best: "*) ;; *) bad "--bench said: $said" ;; esac
expect 0 "$vekdec" -q "$stream" --stats
case $said in "20 frames, 20 pictures"*"macroblocks: "*) ;; *) bad "--stats said: $said" ;; esac
expect 0 "$vekdec" --version
case $said in "vekdec on libvekvc-"*) ;; *) bad "--version said: $said" ;; esac
expect 0 "$vekdec" --help
expect 0 "$vekdec" --formats
case $said in "h264 "*) ;; *) bad "--formats said: $said" ;; esac
expect 0 "$vekdec" -q "$stream" --format h264 --check "$streams/base_ip.md5"
expect 2 "$vekdec" "$stream" --format mpeg2
expect 2 "$vekdec" "$stream" --format nonsense

# Differences and damage: status 1.
expect 1 "$vekdec" "$stream" --check "$streams/base_p4x4.md5"
case $said in "frame 0 differs"*) ;; *) bad "--check of other sums said: $said" ;; esac
{ head -c 9000 "$stream"; head -c 300 /dev/zero | tr '\0' '\252'; tail -c +9301 "$stream"; } > "$work/damaged.264"
expect 1 "$vekdec" -q "$work/damaged.264" -o "$work/damaged.yuv"
case $said in *"picture "*) ;; *) bad "damage was not reported: $said" ;; esac
[ "$(stat -c %s "$work/damaged.yuv")" = $((20 * 176 * 144 * 3 / 2)) ] || bad "a damaged stream lost frames"

# A file holds frames of one size and depth; the next format begins the next file, or is left out where there is none.
cat "$stream" "$streams/base_tiny_50x34.264" "$streams/hi10_ip.264" > "$work/mixed.264"
expect 0 "$vekdec" -q "$work/mixed.264" -o "$work/mixed.y4m"
case $said in *"changes at frame 20"*mixed-2.y4m*"changes at frame 40"*mixed-3.y4m*) ;; *) bad "new formats: $said" ;; esac
cmp "$work/mixed.y4m" "$work/out.y4m" || bad "the first format's file"
for other in 2:base_tiny_50x34 3:hi10_ip; do
    expect 0 "$vekdec" -q "$streams/${other#*:}.264" -o "$work/other.y4m"
    cmp "$work/mixed-${other%:*}.y4m" "$work/other.y4m" || bad "the file of format $other"
done
expect 1 bash -c "'$vekdec' '$work/mixed.264' -o - | cmp - '$work/out.yuv'; exit \${PIPESTATUS[0]}"
case $said in *"30 frames of another format"*) ;; *) bad "other formats in a pipe: $said" ;; esac

# What cannot be written is said: a full disk, a closed pipe, a closed standard output.
for option in --md5 "--bench 1" --version --help "--check $streams/base_ip.md5" "-o -"; do
    # shellcheck disable=SC2086
    expect 2 bash -c "'$vekdec' '$stream' $option > /dev/full"
    case $said in "vekdec: cannot write "*) ;; *) bad "a full disk and $option: $said" ;; esac
done
expect 2 "$vekdec" -q "$stream" -o /dev/full
expect 2 bash -c "trap '' PIPE; { sleep 0.3; '$vekdec' '$stream' --md5; } | true; exit \${PIPESTATUS[0]}"
expect 2 bash -c "'$vekdec' -q '$stream' -o '$work/closed.yuv' --md5 >&-"
cmp "$work/closed.yuv" "$work/out.yuv" || bad "with standard output closed, something else went into the file"
ln -s /dev/full "$work/full.png"
expect 2 "$vekdec" -q "$stream" --sheet "$work/full.png"
[ -L "$work/full.png" ] || bad "a picture that could not be written took its name along"

# Many bad units: the first are told, the others counted.
cp "$stream" "$work/bad.264"
for _ in {1..50}; do printf '\0\0\1\x65\xff\xff'; done >> "$work/bad.264"
expect 1 "$vekdec" -q "$work/bad.264"
[ "$(echo "$said" | wc -l)" = 11 ] || bad "reports without limit: $said"
case $said in *"and 40 more such reports") ;; *) bad "the reports left out: $said" ;; esac

# Nothing to decode: one sentence, status 2 and no file.
: > "$work/empty"
head -c 5000 /dev/zero > "$work/zeros"
head -c 36 "$stream" > "$work/parameters" # before the first slice
for input in "$work/nowhere" "$work/empty" "$work/zeros" "$work/parameters" /dev/zero; do
    expect 2 timeout 20 "$vekdec" "$input" -o "$work/nothing.yuv"
    [ "$(echo "$said" | wc -l)" = 1 ] || bad "more than a sentence for $input: $said"
    [ ! -e "$work/nothing.yuv" ] || bad "$input leaves an output file"
done
expect 1 "$vekdec" -q "$stream" --skip 20 -o "$work/nothing.yuv"
case $said in *"no frame is left"*) ;; *) bad "--skip of all: $said" ;; esac
expect 0 "$vekdec" -q "$stream" --skip 18 --frames 9223372036854775807 --md5
[ "$said" = "$(sed -n 19,20p "$streams/base_ip.md5")" ] || bad "--skip and --frames at their limits"

# Options that ask for nothing, or for two things at once.
for options in "-o ''" "--png ''" "--overlay mb" "--frames -1" "--skip x" "--bench 0" "--bench 1 --md5" "-o - --md5" \
    "-o - --check $streams/base_ip.md5"; do
    expect 2 bash -c "'$vekdec' '$stream' $options"
    [ ${#said} -lt 200 ] || bad "many words about $options: $said"
done
expect 2 "$vekdec"
expect 2 "$vekdec" "$stream" --overlay nonsense
echo "all as described"
