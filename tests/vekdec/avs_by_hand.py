#!/usr/bin/env python3
"""AVS streams written bit by bit, whose samples are worked out here, and changed ones: what no stream at hand shows.

usage: avs_by_hand.py VEKDEC STREAMS

STREAMS holds AVS streams with their checksums, to be changed.
"""
import os
import subprocess
import sys


def number(value, bits):
    return format(value, f"0{bits}b")


def ue(value):
    return number(value + 1, 2 * (value + 1).bit_length() - 1)


def se(value):
    return ue(2 * value - 1 if value > 0 else -2 * value)


def payload(bits, ended=True):
    bits += "1" if ended else ""
    bits += "0" * (-len(bits) % 8)
    return int(bits, 2).to_bytes(len(bits) // 8, "big")


def unit(code, bits, ended=True):
    body = payload(bits, ended)
    assert not any(b"\0\0" + bytes([low]) in body for low in range(4))
    return b"\0\0\1" + bytes([code]) + body


def stuffed(bits):
    """The bytes of a unit that gets 10 behind every 22 zero bits that begin at a byte; how often."""
    out, count = "", 0
    for bit in bits + "1":
        if len(out) % 8 == 6 and out.endswith("0" * 22):
            out, count = out + "10", count + 1
        out += bit
    return payload(out, False), count


def sequence(width, height, formats="01" + "001"):  # 4:2:0, 8 bits
    return unit(0xB0, number(0x20, 8) + number(0x20, 8) + "1" + number(width, 14) + number(height, 14) + formats + "0001" + "0011"
                + number(1, 18) + "1" + number(1, 12) + "0" + "1" + number(1, 18) + "000")


SETTINGS = "1" + "00" + "1" + number(32, 6)  # progressive_frame, order of fields, QP 32 for the whole picture


def picture_i(marker="1"):
    return number(0xFFFF, 16) + "0" + marker + number(0, 8) + SETTINGS + "0000" + "1"  # no loop filter


def picture_p(skip_runs):
    return number(0xFFFF, 16) + "01" + number(1, 8) + SETTINGS + "1" + "0000" + str(skip_runs) + "1"  # one reference


GREY_I = "1111" + ue(0) + ue(4)  # predicted modes, DC, no coefficients: all 128
RUN_0, P_16X16, NOT_CODED = ue(0), ue(0), ue(0)
BLOCK_3 = ue(17) + "1000" + "110"  # its cbp code, level 1 at DC, end of block: two more in all samples at QP 32


def grey(width, height, luma=128, chroma=128):
    return bytes([luma]) * (width * height) + bytes([chroma]) * (width * height // 2)


class Checks:
    def __init__(self, vekdec):
        self.vekdec, self.failures = vekdec, 0

    def run(self, stream, *options):
        done = subprocess.run([self.vekdec, "-q", "-", *options], input=stream, capture_output=True, timeout=60, check=False)
        return done.returncode, done.stdout, done.stderr.decode()

    def expect(self, what, good, found):
        if not good:
            self.failures += 1
            print(f"FAILED: {what}: {found}")

    def frames(self, what, stream, wanted, status=0, words=""):
        """The stream decodes to these samples, with these words."""
        done, video, said = self.run(stream, "-o", "-")
        self.expect(what, done == status and video == b"".join(wanted) and words in said and (words or not said),
                    f"status {done}, {len(video)} bytes, said {said.strip()[:300]}")


def stuffing(checks):
    """Large vectors have rows of zero bits, which would look like start codes; what follows is still found."""
    macroblocks = "".join(RUN_0 + P_16X16 + se(v) + se(v) + BLOCK_3 for v in (16384, 8192))  # the second adds to the first
    body, stuffings = stuffed("0" + macroblocks)
    checks.expect("stuffing", stuffings == 2, f"{stuffings} in the stream")
    stream = (sequence(32, 16) + unit(0xB3, picture_i()) + unit(0x00, GREY_I * 2) + unit(0xB6, picture_p(1))
              + b"\0\0\1\0" + body)
    below = bytes(([128] * 8 + [130] * 8) * 2) * 8
    checks.frames("stuffing", stream, [grey(32, 16), bytes([128]) * 256 + below + bytes([128]) * 256])


def weights_for_all(checks):
    """mb_weighting_flag 0: no bits in the macroblocks, skipped ones are weighted too; with and without skip_mode_flag."""
    weight = number(40, 8) + number(256 - 7, 8) + "1" + number(16, 8) + number(5, 8) + "1"
    wanted = grey(32, 16, (128 * 40 + 16 >> 5) - 7, (128 * 16 + 16 >> 5) + 5)
    for skip_runs, macroblocks in [(1, ue(1) + P_16X16 + "11" + NOT_CODED), (0, ue(0) + ue(1) + "11" + NOT_CODED)]:
        stream = (sequence(32, 16) + unit(0xB3, picture_i()) + unit(0x00, GREY_I * 2) + unit(0xB6, picture_p(skip_runs))
                  + unit(0x00, "1" + weight * 2 + "0" + macroblocks))
        checks.frames(f"weights for all, skip_mode_flag {skip_runs}", stream, [grey(32, 16), wanted])


def draft(checks):
    """Headers of the draft: no marker bit, the macroblocks right behind the header, no one bit at their end."""
    start = sequence(96, 80, "00" + "000") + unit(0xB5, number(2, 4))
    intra = unit(0xB3, picture_i(marker="") + GREY_I * 30, False)
    skipped = unit(0xB6, picture_p(1) + ue(30), False)
    checks.frames("draft", start + intra + skipped, [grey(96, 80)] * 2)
    checks.frames("draft, one picture", start + intra, [grey(96, 80)])


def refused(checks, streams):
    intra = unit(0xB3, picture_i()) + unit(0x00, GREY_I * 2)
    for what, stream, words in [("4:2:2", sequence(32, 16, "10" + "001") + intra, "4:2:2 chroma"),
                                ("the largest size", sequence(16383, 16383) + intra, "16383x16383 samples")]:
        checks.frames(what, stream, [], 2, "vekdec does not decode AVS " + ("of " if "x" in words else "with ") + words)
    # The fourth picture, of P fields, becomes one of B fields: it is left out, and what refers to it has others.
    fields, sums = read(streams, "fields")
    at = [i for i, u in enumerate(fields) if u[3] == 0xB6][2]
    assert fields[at][6] >> 6 == 1
    changed = fields[at][:6] + bytes([fields[at][6] ^ 0xC0]) + fields[at][7:]
    status, out, said = checks.run(b"".join(fields[:at] + [changed] + fields[at + 1:]), "--md5")
    found = out.decode().split()
    checks.expect("B fields", status == 1 and "does not decode AVS with B fields" in said and len(found) == len(sums) - 1
                  and found[:3] == sums[:3], f"status {status}, {len(found)} frames, said {said.strip()[:300]}")


def damaged(checks, streams):
    """A lost slice shows the rows of the picture before, and the filter leaves them alone."""
    units, sums = read(streams, "slices")  # 208x176, slices of three rows of macroblocks
    status, whole, _ = checks.run(b"".join(units), "-o", "-")
    second_picture = [i for i, u in enumerate(units) if u[3] == 0xB6][0]
    assert units[second_picture + 2][3] == 3
    status, video, said = checks.run(b"".join(units[:second_picture + 2] + units[second_picture + 3:]), "-o", "-")
    size = 208 * 176 * 3 // 2
    first, shown = video[:size], video[2 * size:3 * size]  # a B picture lies between them
    rows = slice(48 * 208, 96 * 208)
    checks.expect("a lost slice", status == 1 and "39 of 143 macroblocks are missing" in said and len(video) == len(whole)
                  and first == whole[:size] and shown[rows] == first[rows] and shown[rows] != whole[2 * size:3 * size][rows]
                  and shown[:48 * 208] == whole[2 * size:2 * size + 48 * 208], f"status {status}, said {said.strip()[:300]}")


def lost_field(checks, streams):
    """The lines of the other field stand in for one that never came."""
    units, _ = read(streams, "fields")  # 176x160, one slice a field
    second = [i for i, u in enumerate(units) if u[3] == 5][0]
    status, video, said = checks.run(b"".join(units[:second] + units[second + 1:]), "-o", "-", "--frames", "1")
    rows = [video[i * 176:(i + 1) * 176] for i in range(160)]
    checks.expect("a lost field", status == 1 and "a field is missing" in said and rows[0::2] == rows[1::2] and len(set(rows)) > 9,
                  f"status {status}, said {said.strip()[:300]}")


def cut(checks, streams):
    """From the second I picture on: the B picture before it in order of display lacks a reference and is left out."""
    units, sums = read(streams, "ratecontrol")  # I P B P B I B P ...
    start = [i for i, u in enumerate(units) if u[3] == 0xB3][1]
    status, out, said = checks.run(units[0] + b"".join(units[start:]), "--md5", "--stats")
    found = out.decode().split()
    missing = "a prediction from a picture that is not there"  # the P picture behind it refers over the cut
    checks.expect("a cut stream", status == 1 and found[0] == sums[6] and len(found) == 9 and "1 B pictures at the" in said
                  and missing in said, f"status {status}, {len(found)} frames, said {said.strip()[:300]}")


def sizes(checks, streams):
    """Another size in mid-stream: all frames of both."""
    (one, first), (other, second) = read(streams, "ip_qp36"), read(streams, "ipb_odd")
    status, out, said = checks.run(b"".join(one + other), "--md5")
    checks.expect("two sizes", status == 0 and out.decode().split() == first + second, f"status {status}, said {said}")


def read(streams, name):
    """The units of a stream, start codes included, and its checksums."""
    with open(os.path.join(streams, name + ".avs"), "rb") as file:
        stream = file.read()
    with open(os.path.join(streams, name + ".md5"), encoding="ascii") as file:
        sums = file.read().split()
    parts = stream.split(b"\0\0\1")
    return [b"\0\0\1" + part for part in parts[1:]], sums


def main(vekdec, streams):
    checks = Checks(vekdec)
    stuffing(checks)
    weights_for_all(checks)
    draft(checks)
    refused(checks, streams)
    damaged(checks, streams)
    lost_field(checks, streams)
    cut(checks, streams)
    sizes(checks, streams)
    if checks.failures == 0:
        print("all as worked out")
    return 1 if checks.failures else 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
