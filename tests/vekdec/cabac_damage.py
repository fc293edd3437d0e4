#!/usr/bin/env python3
"""Damaged and forged CABAC slices through vekdec: what is wrong is reported, and the macroblocks behind it are concealed.

usage: cabac_damage.py VEKDEC STREAMS

Good streams of STREAMS/h264_cabac are cut and changed; slices that no encoder makes are written bin by bin.
"""
import os
import random
import subprocess
import sys

# Tables 9-44 and 9-45.
RANGE_LPS = """128 176 208 240 128 167 197 227 128 158 187 216 123 150 178 205 116 142 169 195 111 135 160 185 105 128 152 175
100 122 144 166 95 116 137 158 90 110 130 150 85 104 123 142 81 99 117 135 77 94 111 128 73 89 105 122 69 85 100 116 66 80 95 110
62 76 90 104 59 72 86 99 56 69 81 94 53 65 77 89 51 62 73 85 48 59 69 80 46 56 66 76 43 53 63 72 41 50 59 69 39 48 56 65 37 45 54 62
35 43 51 59 33 41 48 56 32 39 46 53 30 37 43 50 29 35 41 48 27 33 39 45 26 31 37 43 24 30 35 41 23 28 33 39 22 27 32 37 21 26 30 35
20 24 29 33 19 23 27 31 18 22 26 30 17 21 25 28 16 20 23 27 15 19 22 25 14 18 21 24 14 17 20 23 13 16 19 22 12 15 18 21 12 14 17 20
11 14 16 19 11 13 15 18 10 12 15 17 10 12 14 16 9 11 13 15 9 11 12 14 8 10 12 14 8 9 11 13 7 9 11 12 7 9 10 12 7 8 10 11 6 8 9 11
6 7 9 10 6 7 8 9 2 2 2 2"""
RANGE_LPS = [int(x) for x in RANGE_LPS.split()]
NEXT_LPS = [0, 0, 1, 2, 2, 4, 4, 5, 6, 7, 8, 9, 9, 11, 11, 12, 13, 13, 15, 15, 16, 16, 18, 18, 19, 19, 21, 21, 22, 22, 23, 24,
            24, 25, 26, 26, 27, 27, 28, 29, 29, 30, 30, 30, 31, 32, 32, 33, 33, 33, 34, 34, 35, 35, 35, 36, 36, 36, 37, 37, 37, 38,
            38, 63]
# (m, n) of the contexts used below, of I slices.
INIT = {3: (20, -15), 4: (2, 54), 5: (3, 74), 6: (-28, 127), 7: (-23, 104), 9: (-1, 54), 10: (7, 51), 60: (0, 41), 62: (0, 63),
        63: (0, 63), 64: (-9, 83), 85: (-17, 123), 86: (-12, 115), 87: (-16, 122), 88: (-11, 115), 105: (-7, 93),
        166: (24, 0), 228: (-6, 42), 232: (0, 58)}
QP = 26


class Encoder:
    """Writes bins as 9.3.4.2 says."""

    def __init__(self):
        self.bits, self.low, self.range, self.outstanding, self.first = [], 0, 510, 0, True
        self.states = {}
        for index, (m, n) in INIT.items():
            state = min(max((m * QP >> 4) + n, 1), 126)
            self.states[index] = [63 - state, 0] if state <= 63 else [state - 64, 1]

    def put(self, bit):
        if not self.first:
            self.bits.append(bit)
        self.first = False
        self.bits += [1 - bit] * self.outstanding
        self.outstanding = 0

    def renormalize(self):
        while self.range < 256:
            self.range *= 2
            self.settle(256, 512)
            self.low *= 2

    def settle(self, quarter, half):
        if self.low < quarter:
            self.put(0)
        elif self.low >= half:
            self.low -= half
            self.put(1)
        else:
            self.low -= quarter
            self.outstanding += 1

    def code(self, context, *bins):
        state = self.states[context]
        for value in bins:
            lps = RANGE_LPS[4 * state[0] + (self.range >> 6 & 3)]
            self.range -= lps
            if value == state[1]:
                state[0] = min(state[0] + 1, 62)
            else:
                self.low += self.range
                self.range = lps
                state[1] ^= state[0] == 0
                state[0] = NEXT_LPS[state[0]]
            self.renormalize()
        return self

    def bypass(self, *bins):
        for value in bins:
            self.low = 2 * self.low + self.range * value
            self.settle(512, 1024)
        return self

    def terminate(self, value):
        self.range -= 2
        if value:
            self.low += self.range
            self.range = 2
            self.renormalize()
            self.put(self.low >> 9 & 1)
            self.bits += [self.low >> 8 & 1, 1]
        else:
            self.renormalize()
        return self

    def samples(self, count):
        """pcm_alignment_zero_bits, samples, and a new beginning."""
        self.bits += [0] * (-len(self.bits) % 8) + [0, 1, 0, 1, 0, 1, 0, 1] * count
        self.low, self.range, self.outstanding, self.first = 0, 510, 0, True
        return self

    def flat_macroblock(self, after=0, delta=(0,)):
        """I_16x16 with DC prediction of everything and no AC; `after` neighbours of that type, mb_qp_delta's bins."""
        self.code(3 + after, 1).terminate(0).code(6, 0).code(7, 0).code(9, 1).code(10, 0)  # mb_type 3
        self.code(64, 0)
        contexts = [60, 62] + [63] * len(delta)
        for context, value in zip(contexts, delta):
            self.code(context, value)
        return self


def unit(header, text):
    text += "0" * (-len(text) % 8)
    body = int(text, 2).to_bytes(len(text) // 8, "big")
    out, zeros = bytearray(b"\0\0\1" + bytes([header])), 0
    for byte in body:
        if zeros == 2 and byte <= 3:
            out.append(3)
            zeros = 0
        zeros = zeros + 1 if byte == 0 else 0
        out.append(byte)
    return bytes(out)


def ue(*values):
    return "".join(format(v + 1, "b").rjust(2 * (v + 1).bit_length() - 1, "0") for v in values)


def picture(encoder, width, height):
    """A stream of one I slice, deblocking off."""
    sps = format(77, "08b") + "00000000" + format(30, "08b") + ue(0, 0, 2, 0) + "0" + ue(width - 1, height - 1) + "11001"
    pps = ue(0, 0) + "10" + ue(0, 0, 0) + "000" + ue(0, 0, 0) + "1001"
    head = ue(0, 7, 0) + "0000" + ue(0) + "00" + ue(0, 1)  # slice_qp_delta, disable_deblocking_filter_idc
    head += "1" * (-len(head) % 8)
    data = "".join(map(str, encoder.bits))
    return unit(0x67, sps) + unit(0x68, pps) + unit(0x65, head + data)


class Check:
    def __init__(self, vekdec, streams):
        self.vekdec, self.streams, self.failures, self.reported = vekdec, streams, 0, 0

    def decode(self, stream, *options):
        done = subprocess.run([self.vekdec, "-q", "-", *options], input=stream, capture_output=True, timeout=60, check=False)
        return done.returncode, done.stdout, done.stderr.decode()

    def expect(self, good, what):
        if not good:
            self.failures += 1
            print(f"FAILED: {what}")

    def forged(self, what, encoder, words, size=(2, 1)):
        """Says `words`, or nothing if all is well, and shows the one picture."""
        for side in "before", "behind":
            status, frame, said = self.decode(picture(encoder, *size), "-o", "-", "--guard", side)
            good = (status == 1 and words in said) if words else (status == 0 and said == "")
            self.expect(good and len(frame) == 384 * size[0] * size[1], f"{what}: status {status}, said: {said.strip()}")
        return frame

    def bin_by_bin(self):
        # coded_block_flag of the DC without neighbours, then with one that has none.
        two = Encoder().flat_macroblock().code(88, 0).terminate(0)
        two.flat_macroblock(after=1).code(87, 0).terminate(1)
        self.expect(set(self.forged("two flat macroblocks", two, "")) == {128}, "flat macroblocks are grey")

        self.forged("mb_qp_delta of 26", Encoder().flat_macroblock(delta=[1] * 51 + [0]).code(88, 0).terminate(1),
                    "mb_qp_delta is 26")
        self.forged("mb_qp_delta without end", Encoder().flat_macroblock(delta=[1] * 400).terminate(1), "mb_qp_delta is")
        level = Encoder().flat_macroblock().code(88, 1).code(105, 1).code(166, 1).code(228, 1).code(232, *[1] * 13)
        self.forged("a level without end", level.bypass(*[1] * 300).terminate(1), "far too large")
        self.forged("a macroblock too many", two, "behind the end of the picture", size=(1, 1))
        ones = Encoder()
        ones.bits = [1] * 80
        self.forged("slice data of ones", ones, "codIOffset begins at 510")
        self.forged("slice data that is missing", Encoder(), "the data ends inside")

        pcm = Encoder().code(3, 1).terminate(1).samples(384).terminate(0)
        pcm.code(4, 1).terminate(1).samples(384).terminate(1)
        self.expect(set(self.forged("I_PCM", pcm, "")) == {0x55}, "I_PCM samples come through")
        short = Encoder().code(3, 1).terminate(1).samples(384).terminate(0)
        short.code(4, 1).terminate(1).samples(100)
        short.bits.append(1)
        half = self.forged("I_PCM that is cut off", short, "the data ends inside")
        self.expect(all(half[32 * y:32 * y + 16] == b"\x55" * 16 for y in range(16)), "the macroblock before it is there")

    def slices(self, name):
        with open(os.path.join(self.streams, "h264_cabac", name + ".264"), "rb") as file:
            stream = file.read()
        with open(os.path.join(self.streams, "h264_cabac", name + ".md5"), encoding="ascii") as file:
            sums = file.read().split()
        starts = []
        at = stream.find(b"\0\0\1")
        while at >= 0:
            starts.append(at)
            at = stream.find(b"\0\0\1", at + 3)
        ends = starts[1:] + [len(stream)]
        return stream, sums, [(a, b) for a, b in zip(starts, ends) if stream[a + 3] & 31 in (1, 5)]

    def damaged(self, name):
        """Slices that are cut, or hold wrong bytes: the frames before them are untouched, and all are shown."""
        stream, sums, slices = self.slices(name)
        chance = random.Random(name)
        for i, (first, end) in enumerate(slices):
            cut = chance.randrange(first + 12, end - 4)
            wrong = bytearray(stream)
            for _ in range(3):
                wrong[chance.randrange(first + 12, end)] ^= 1 << chance.randrange(8)
            for what, bad in ("cut", stream[:cut] + stream[end:]), ("changed", bytes(wrong)):
                status, found, said = self.decode(bad, "--md5", "--guard", "behind" if i % 2 else "before")
                found = found.decode().split()
                self.expect(status == (1 if said else 0), f"{name}, slice {i} {what}: status {status}, said {said}")
                self.expect(len(found) == len(sums), f"{name}, slice {i} {what}: {len(found)} frames")
                if what == "cut":
                    self.expect("macroblock" in said, f"{name}, slice {i} cut, but said: {said}")
                self.expect(i > 0 or found != sums, f"{name}: damage of the first picture changes nothing")
                if i == len(slices) - 1:
                    same = sum(a == b for a, b in zip(found, sums))
                    self.expect(same >= len(sums) - 3, f"{name}, last slice {what}: only {same} frames are as before")
                self.reported += said != ""


def main(vekdec, streams):
    check = Check(vekdec, streams)
    check.bin_by_bin()
    for name in "main_ip", "main_b_spatial", "high_mbaff", "hi422_10_b", "jm_field_temporal", "main_pcm":
        check.damaged(name)
    check.expect(check.reported > 60, f"only {check.reported} damaged streams were noticed")
    print(f"{check.reported} damaged streams noticed; {check.failures} failures")
    return 0 if check.failures == 0 else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]) if len(sys.argv) == 3 else __doc__)
