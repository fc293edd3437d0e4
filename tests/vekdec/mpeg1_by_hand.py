#!/usr/bin/env python3
"""MPEG-1 streams written bit by bit for what no stream at hand has: D pictures, vectors in whole samples.

usage: mpeg1_by_hand.py VEKDEC
"""
import subprocess
import sys

WIDTH, HEIGHT = 32, 16  # two macroblocks
LUMA_SIZE = ["100", "00", "01", "101", "110", "1110", "11110", "111110", "1111110"]  # Table B.12
CHROMA_SIZE = ["00", "01", "10", "110"]                                             # Table B.13


def number(value, bits):
    return format(value, f"0{bits}b")


def unit(code, bits):
    bits += "0" * (-len(bits) % 8)
    return b"\0\0\1" + bytes([code]) + bytes(int(bits[i:i + 8], 2) for i in range(0, len(bits), 8))


def dc(difference, table=LUMA_SIZE):
    size = abs(difference).bit_length()
    return table[size] + (number(difference if difference > 0 else difference + (1 << size) - 1, size) if size else "")


def sequence():
    return unit(0xb3, number(WIDTH, 12) + number(HEIGHT, 12) + number(1, 4) + number(3, 4) + "1" * 18 + "1" + number(0, 10) + "000")


def picture(kind, *forward):  # full_pel_forward_vector, forward_f_code
    return unit(0x00, number(0, 10) + number(kind, 3) + "1" * 16 + (number(forward[0], 1) + number(forward[1], 3) if forward else "")
                + "0")


def intra(kind, luma):
    """The slice of an I (1) or D (4) picture whose macroblocks have these luma samples, and grey chroma."""
    bits, before = number(8, 5) + "0", 128
    for value in luma:
        end = "10" if kind == 1 else ""  # end of block: D pictures have none
        bits += "1" + "1" + dc(value - before) + end + (dc(0) + end) * 3 + (dc(0, CHROMA_SIZE) + end) * 2
        bits += "1" if kind == 4 else ""  # end_of_macroblock
        before = value
    return unit(0x01, bits)


def decode(vekdec, stream):
    done = subprocess.run([vekdec, "-q", "--format", "mpeg2", "-", "-o", "-"], input=stream, capture_output=True, check=False)
    return done.returncode, done.stdout, done.stderr.decode()


def frame(left, right):
    row = bytes([left] * 16 + [right] * 16)
    return row * HEIGHT + bytes([128]) * (WIDTH * HEIGHT // 2)


def main(vekdec):
    failures = 0

    def expect(what, stream, frames):
        nonlocal failures
        status, video, said = decode(vekdec, stream)
        if status != 0 or video != b"".join(frames):
            failures += 1
            print(f"FAILED: {what}: status {status}, {len(video)} bytes, said {said.strip()}")

    expect("D pictures", sequence() + picture(4) + intra(4, [100, 200]) + picture(4) + intra(4, [7, 130]),
           [frame(100, 200), frame(7, 130)])
    # Both macroblocks come from the right one: vectors of 16 and 0 whole samples, f_code 2 (motion_code 8, residual 1).
    vectors = number(8, 5) + "0" + "1" + "001" + "0000010110" + "1" + "1" + "1" + "001" + "0000010111" + "1" + "1"
    expect("vectors in whole samples", sequence() + picture(1) + intra(1, [100, 200]) + picture(2, 1, 2) + unit(0x01, vectors),
           [frame(100, 200), frame(200, 200)])
    # The same vectors in half samples reach to the middle of the two.
    status, video, _ = decode(vekdec, sequence() + picture(1) + intra(1, [100, 200]) + picture(2, 0, 2) + unit(0x01, vectors))
    if status != 0 or video[len(frame(0, 0)):][:WIDTH] != bytes([100] * 8 + [200] * 24):
        failures += 1
        print("FAILED: vectors in half samples")
    if failures == 0:
        print("all as written")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
