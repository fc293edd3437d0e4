#!/usr/bin/env python3
"""VC-1 streams written bit by bit, whose samples are worked out here, and damaged ones: what no stream at hand shows.

usage: vc1_by_hand.py VEKDEC STREAMS

STREAMS holds streams of VC-1 with their checksums, to be damaged. All pictures made here are 64x64: four rows of four
macroblocks with nothing but DC coefficients, PQUANT 8 and so a DC step of 10.
"""
import hashlib
import os
import subprocess
import sys

ROWS = COLUMNS = 4
NO_BITS_SET = "0" + "010" + "0" * ROWS   # a bit plane: not inverted, by rows, each of them empty
ALL_BITS_SET = "1" + "010" + "0" * ROWS  # inverted
DC_PLUS_10 = "0010010" + "0"             # of luma, with its sign
LUMA_ZERO, CHROMA_ZERO = "1", "00"


def payload(bits, ended=True):
    bits += "1" if ended else ""
    bits += "0" * (-len(bits) % 8)
    return int(bits, 2).to_bytes(len(bits) // 8, "big")


def unit(code, bits):
    body = payload(bits)
    for low in b"\0", b"\1", b"\2", b"\3":
        body = body.replace(b"\0\0" + low, b"\0\0\3" + low)
    return b"\0\0\1" + bytes([code]) + body


def sequence(interlaced=False, range_maps="00"):
    header = unit(0x0F, "11" + "000" + "01" + "0" * 9 + format(31, "012b") * 2 + "0" + ("1" if interlaced else "0") + "001000")
    return header + unit(0x0E, "010000" + "0" + "00" + "00" + "11" + "0" + range_maps)


def intra_rows(count, first_dc, ac_prediction=""):
    """Macroblocks without AC; the first block's DC differs from its prediction."""
    blocks = LUMA_ZERO * 4 + CHROMA_ZERO * 2
    rows = ("1" + ac_prediction + blocks) * (COLUMNS * count)
    head = len("1" + ac_prediction)
    return rows[:head] + first_dc + rows[head + len(LUMA_ZERO):]


I_HEADER = "110" + "0" + "01000" + "0" + NO_BITS_SET + "0" + "0" + "0"
P_HEADER = "0" + "0" + "01000" + "0" + "1" + ALL_BITS_SET + "00" + "00" + "0" + "0"
FIRST_SLICE = unit(0x0D, I_HEADER + intra_rows(2, DC_PLUS_10))
SECOND_SLICE = unit(0x0B, format(2, "09b") + "0" + intra_rows(2, LUMA_ZERO))


def sample(dc_level, grey=128):
    """What a block becomes that has only this DC level: both passes of the inverse transform."""
    return ((12 * ((12 * 10 * dc_level + 4) >> 3) + 64) >> 7) + grey


def md5(upper, lower, chroma=128):
    luma = bytes([upper]) * (64 * 32) + bytes([lower]) * (64 * 32)
    return hashlib.md5(luma + bytes([chroma]) * (2 * 32 * 32)).hexdigest()


def record(bits):
    body = payload(bits, ended=False)
    return len(body).to_bytes(4, "little") + b"\0\0\0\0" + body


def file_header(struct_c):
    return (b"\x03\0\0\xc5\x04\0\0\0" + payload(struct_c, ended=False) + (64).to_bytes(4, "little") * 2 + b"\x0c\0\0\0" +
            b"\0" * 12)


class Checks:
    def __init__(self, vekdec):
        self.vekdec, self.failures = vekdec, 0

    def decode(self, what, stream, status, sums, words=""):
        for options in [], ["--guard", "before"], ["--guard", "behind"]:
            done = subprocess.run([self.vekdec, "-q", "-", "--md5", *options], input=stream, capture_output=True, timeout=60,
                                  check=False)
            found, said = done.stdout.decode().split(), done.stderr.decode()
            if done.returncode != status or words not in said or (sums is not None and found != sums):
                self.failures += 1
                print(f"FAILED: {what} {' '.join(options)}: status {done.returncode}, frames {found}, said {said[:300]}")
        return found


def slices(checks):
    """Prediction stops at a slice; a repeated picture header; a slice that is lost; one that comes twice."""
    two = md5(sample(10), sample(0))
    p_slices = unit(0x0D, P_HEADER) + unit(0x0B, format(2, "09b") + "1" + P_HEADER)
    good = sequence() + FIRST_SLICE + SECOND_SLICE
    checks.decode("two slices", good + p_slices, 0, [two, two])
    whole = unit(0x0D, I_HEADER + intra_rows(4, DC_PLUS_10))
    one = md5(sample(10), sample(10))
    checks.decode("one slice", sequence() + whole, 0, [one])
    half = unit(0x0D, I_HEADER + intra_rows(2, LUMA_ZERO))
    checks.decode("half a picture", sequence() + whole + half, 1, [one, md5(sample(0), sample(10))], "8 of 16 macroblocks")
    checks.decode("a slice twice", good + SECOND_SLICE, 1, [two], "lies over")


def ranges(checks):
    """Range mapping of the output, and pictures of reduced range that refer to others and are referred to."""
    mapped = md5((((sample(10) - 128) * (3 + 9) + 4) >> 3) + 128, sample(0))
    checks.decode("range mapping", sequence(range_maps="1011" + "1111") + FIRST_SLICE + SECOND_SLICE, 0, [mapped])
    # Outside the picture the DC level is 102; no grey is added then.
    value = 2 * (sample(102, 0) - 128) + 128
    main = file_header("0100" + "0" * 8 + "0001" + "0000" + "0000" + "1" + "000" + "11" + "01")
    i_reduced = "00" + "1" + "0" + "0" * 7 + "01000" + "0" + "000" + intra_rows(4, LUMA_ZERO, "0")
    tail = "1" + "01000" + "0" + "1" + ALL_BITS_SET + "00" + "00" + "0" + "0"
    p_whole, p_reduced = "00" + "0" + tail, "00" + "1" + tail
    checks.decode("range reduction", main + record(i_reduced) + record(p_whole) + record(p_reduced), 0,
                  [md5(value, value, value)] * 3)


def refused(checks):
    interlaced_i = "10" + I_HEADER[:4] + "0" + I_HEADER[4:10] + NO_BITS_SET + I_HEADER[10:]
    start = sequence(interlaced=True) + unit(0x0D, interlaced_i + intra_rows(4, DC_PLUS_10))
    one = md5(sample(10), sample(10))
    for what, bits, words in [("a frame-interlaced P picture", "10" + "0", "frame-interlaced P and B pictures"),
                              ("B fields", "11" + "100" + "00" + "000", "B fields")]:
        checks.decode(what, start + start + unit(0x0D, bits + "1" * 400), 1, [one, one], "does not decode " + words)


def pictures(stream):
    """Where the pictures of a stream begin, and its end."""
    found, at = [], 36
    if stream[3] == 0xC5:
        while at < len(stream):
            found.append(at)
            at += 8 + int.from_bytes(stream[at:at + 3], "little")
    else:
        found = [i for i in range(len(stream)) if stream[i:i + 4] == b"\0\0\1\x0d"]
    return found + [len(stream)]


def damaged(checks, streams):
    """The first frame stays; whatever comes behind the damage, there is a sentence for it, and as many frames."""
    for name in "g_main_2.rcv", "g_adv_1.vc1", "g_adv_field_p1.vc1":
        with open(os.path.join(streams, name), "rb") as file:
            stream = bytearray(file.read())
        with open(os.path.join(streams, os.path.splitext(name)[0] + ".md5"), encoding="ascii") as file:
            sums = file.read().split()
        starts = pictures(stream)
        longest = max(range(1, len(starts) - 1), key=lambda i: starts[i + 1] - starts[i])
        for i in range((starts[longest] + starts[longest + 1]) // 2, starts[longest + 1]):
            stream[i] = 0xAA
        found = checks.decode("damaged " + name, bytes(stream), 1, None, "picture")
        if len(found) != len(sums) or found[0] != sums[0] or found == sums:
            checks.failures += 1
            print(f"FAILED: damaged {name} gives {len(found)} frames instead of {len(sums)}, or other ones before it")


def main(vekdec, streams):
    checks = Checks(vekdec)
    slices(checks)
    ranges(checks)
    refused(checks)
    damaged(checks, streams)
    if checks.failures == 0:
        print("all as worked out")
    return 1 if checks.failures else 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
