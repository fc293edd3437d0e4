#!/usr/bin/env python3
"""Damaged MPEG-4, H.263 and H.261 streams: decoding goes on at the next marker, and reversible codes are read backwards.

usage: mpeg4_damage.py VEKDEC STREAMS
"""
import os
import re
import subprocess
import sys

WIDTH, HEIGHT = 176, 144
FRAME = WIDTH * HEIGHT * 3 // 2


def decode(vekdec, stream, kind):
    """Frames and what was said; the status must be 1 for damage, 0 without."""
    done = subprocess.run([vekdec, "-q", "--format", kind, "-", "-o", "-"], input=stream, capture_output=True, timeout=60,
                          check=False)
    frames = [done.stdout[i:i + FRAME] for i in range(0, len(done.stdout), FRAME)]
    said = done.stderr.decode()
    assert done.returncode == (1 if said else 0), (done.returncode, said)
    return frames, said


def differing(a, b):
    """Addresses of the macroblocks whose luma differs."""
    found = set()
    for y in range(HEIGHT):
        if a[y * WIDTH:(y + 1) * WIDTH] == b[y * WIDTH:(y + 1) * WIDTH]:
            continue
        for x in range(0, WIDTH, 16):
            at = y * WIDTH + x
            if a[at:at + 16] != b[at:at + 16]:
                found.add(y // 16 * (WIDTH // 16) + x // 16)
    return found


class Check:
    def __init__(self, vekdec, streams):
        self.vekdec, self.streams, self.failures = vekdec, streams, 0

    def expect(self, good, what):
        if not good:
            self.failures += 1
            print(f"FAILED: {what}")

    def good(self, name):
        kind = name.split("/")[0]
        with open(os.path.join(self.streams, name), "rb") as file:
            stream = file.read()
        frames, said = decode(self.vekdec, stream, kind)
        self.expect(said == "", f"{name} is good: {said}")
        return stream, frames, kind

    def resynchronisation(self, name, step):
        """Three bytes lost anywhere: the same number of frames, those before untouched, part of the picture whole."""
        stream, frames, kind = self.good(name)
        reported = saved = 0
        for at in range(len(stream) // 3, len(stream) - 40, step):
            damaged = stream[:at] + b"\x55\xaa\x55" + stream[at + 3:]
            found, said = decode(self.vekdec, damaged, kind)
            self.expect(abs(len(found) - len(frames)) <= 1, f"{name} damaged at {at}: {len(found)} frames")
            first = next((i for i, (a, b) in enumerate(zip(found, frames)) if a != b), None)
            if not said or first is None or len(found) != len(frames):
                continue
            reported += 1
            bad = differing(found[first], frames[first])
            saved += len(bad) < WIDTH * HEIGHT // 256 // 2
        self.expect(reported > 5, f"{name}: damage is reported, {reported} times")
        self.expect(saved > reported // 3, f"{name}: half of the picture outlives the damage {saved} of {reported} times")

    def backwards(self, name):
        """A broken texture partition of reversible codes loses less than one that is broken up to its end."""
        stream, frames, kind = self.good(name)
        starts = [m.start() for m in re.finditer(b"\0\0\1\xb6", stream)]
        found = 0
        for begin, end in zip(starts[1:5], starts[2:]):
            for at in range(begin + 60, end - 40, 149):
                damaged = bytearray(stream)
                damaged[at] ^= 0xff
                some, said = decode(self.vekdec, bytes(damaged), kind)
                if "are read backwards" not in said or said.count("\n") != 1 or len(some) != len(frames):
                    continue
                marker = stream.find(b"\0\0", at + 2)  # of the next packet or VOP
                damaged[at:marker - 1] = bytes(b ^ 0x5a for b in damaged[at:marker - 1])
                none, _ = decode(self.vekdec, bytes(damaged), kind)
                first = next((i for i, (a, b) in enumerate(zip(some, frames)) if a != b), None)
                if first is None or len(none) != len(frames):
                    continue
                less, more = differing(some[first], frames[first]), differing(none[first], frames[first])
                if min(more, default=0) < min(less, default=0):
                    continue  # it broke at another place
                found += len(less) < len(more)
                self.expect(len(less) <= len(more), f"{name} damaged at {at}: {len(less)} macroblocks instead of {len(more)}")
        self.expect(found >= 3, f"{name}: read backwards to some use {found} times")


def main(vekdec, streams):
    check = Check(vekdec, streams)
    check.resynchronisation("mpeg4/m4_packets.m4v", 1499)
    check.resynchronisation("mpeg4/m4_dp.m4v", 1499)
    check.resynchronisation("h263/base_gob.h263", 2999)
    check.resynchronisation("h263/p_slices.h263", 2999)
    check.resynchronisation("h261/rate.h261", 2999)
    check.backwards("mpeg4/m4_rvlc.m4v")
    if check.failures == 0:
        print("all as described")
    return 1 if check.failures else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
