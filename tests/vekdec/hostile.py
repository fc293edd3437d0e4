#!/usr/bin/env python3
"""Streams that are wrong on purpose, through vekdec: it goes on, says so, and takes no more memory than the level allows.

usage: hostile.py VEKDEC STREAMS [unlimited]

STREAMS holds h264/ (good ones, damaged here) and forged/ with its index. `unlimited` leaves the limit of memory out, for
programs built with sanitizers, which reserve far more than they use.
"""
import os
import resource
import subprocess
import sys

MEMORY = 640 << 20  # of one thread: the largest of the forged pictures takes 170 MB; two of them and their packed samples are there at once


class Hostile:
    def __init__(self, vekdec, streams, limited):
        self.vekdec, self.streams, self.limited, self.failures = vekdec, streams, limited, 0

    def decode(self, what, stream, status, frames, words):
        """Decodes; compares the status, the number of frames and what must stand in the report."""
        def limit():
            if self.limited:
                resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
        for options in [], ["--guard", "before"], ["--guard", "behind"]:
            done = subprocess.run([self.vekdec, "-q", "-", "--md5", "--threads", "1", *options], input=stream, capture_output=True,
                                  preexec_fn=limit, timeout=60, check=False)
            said = done.stderr.decode()
            sums = done.stdout.decode().split()
            good = done.returncode == status and len(sums) == frames and words in said
            if status == 2 and said.count("\n") != 1:
                good = False
            if not good:
                print(f"FAILED: {what} {' '.join(options)}: status {done.returncode} instead of {status}, {len(sums)} frames "
                      f"instead of {frames}, said: {said.strip()[:400]}")
                self.failures += 1
        return sums

    def read(self, name):
        with open(os.path.join(self.streams, name), "rb") as file:
            return file.read()

    def sums(self, name):
        return self.read(name).decode().split()


def units(stream):
    """The stream's NAL units, start codes included."""
    starts = []
    at = stream.find(b"\0\0\1")
    while at >= 0:
        starts.append(at)
        at = stream.find(b"\0\0\1", at + 3)
    return [stream[a:b] for a, b in zip(starts, starts[1:] + [len(stream)])]


def unit(header, fields):
    """A NAL unit of fields: (value, number of bits), or a value alone for ue(v)."""
    text = ""
    for field in fields:
        if isinstance(field, tuple):
            text += format(field[0], f"0{field[1]}b")
        else:
            text += format(field + 1, "b").rjust(2 * (field + 1).bit_length() - 1, "0")
    text += "1"
    text += "0" * (-len(text) % 8)
    body = int(text, 2).to_bytes(len(text) // 8, "big")
    return b"\0\0\1" + bytes([header]) + body.replace(b"\0\0\0", b"\0\0\3\0").replace(b"\0\0\1", b"\0\0\3\1")


def unsupported(hostile):
    """Units of a kind that is not decoded: left out in mid-stream; alone, one sentence."""
    good = units(hostile.read("h264/base_ip.264"))
    sums = hostile.sums("h264/base_ip.md5")
    slices = [i for i, u in enumerate(good) if u[3] & 31 in (1, 5)]
    at = slices[10]
    assert good[at][3:5] == b"\x41\x9a"  # a P slice
    partition = good[:at] + [good[at][:3] + b"\x42" + good[at][4:]] + good[at + 1:]
    sp = good[:at] + [good[at][:4] + b"\x92" + good[at][5:]] + good[at + 1:]
    # 4:4:4 of the same size, as parameter sets 1
    sps444 = unit(0x67, [(244, 8), (0, 8), (30, 8), 1, 3, (0, 1), 0, 0, (0, 1), (0, 1), 0, 2, 1, (0, 1), 10, 8, (1, 1), (1, 1),
                         (0, 1), (0, 1)])
    pps444 = unit(0x68, [1, 1, (0, 1), (0, 1), 0, 0, 0, (0, 1), (0, 2), 0, 0, 0, (0, 3)])
    slice444 = unit(0x65, [0, 7, 1, (0, 4), 0, (0, 2), 0, 25])
    for what, stream, words in [("data partitioning", partition, "data partitioning"), ("an SP slice", sp, "SP slices")]:
        # The picture is lost; what follows refers to the one before.
        found = hostile.decode(what + " in mid-stream", b"".join(stream), 1, 19, "does not decode H.264 with " + words)
        if found[:10] != sums[:10]:
            print(f"FAILED: {what} in mid-stream changes the frames before it")
            hostile.failures += 1
    found = hostile.decode("4:4:4 from the middle on", b"".join(good[:at] + [sps444, pps444, slice444]), 1, 10,
                           "does not decode H.264 with 4:4:4 chroma")
    if found != sums[:10]:
        print("FAILED: 4:4:4 from the middle on changes the frames before it")
        hostile.failures += 1
    for what, stream, words in [
            ("4:4:4 alone", [sps444, pps444, slice444], "4:4:4 chroma"),
            ("data partitioning alone", [u if u[3] & 31 not in (1, 5) else u[:3] + b"\x42" + u[4:] for u in good],
             "data partitioning")]:
        hostile.decode(what, b"".join(stream), 2, 0, "nothing could be decoded: ")


def renamed(hostile):
    """One bit of a slice's type is wrong: it becomes a parameter set or a delimiter, but its picture does not end there."""
    good = units(hostile.read("h264/base_slices.264"))
    frames = len(hostile.sums("h264/base_slices.md5"))
    for old, new in (0x65, 0x67), (0x41, 0x49):
        at = [i for i, u in enumerate(good) if u[3] == old][1]  # not the first slice of its picture
        assert good[at][4] & 0x80 == 0
        stream = good[:at] + [good[at][:3] + bytes([new]) + good[at][4:]] + good[at + 1:]
        hostile.decode(f"a slice as unit {new:#x}", b"".join(stream), 1, frames, "picture")


def references(hostile):
    """Level 1.0, but sixteen references as large as any level's: all are coded, the level bounds what is kept."""
    mbs = 512 * 272
    stream = unit(0x67, [(66, 8), (0, 8), (10, 8), 0, 4, 2, 16, (0, 1), 511, 271, (1, 1), (1, 1), (0, 2)])
    stream += unit(0x68, [0, 0, (0, 1), (0, 1), 0, 0, 0, (0, 1), (0, 2), 0, 0, 0, (0, 3)])
    stream += unit(0x65, [0, 7, 0, (0, 8), 0, (0, 2), 0])  # no macroblock
    for frame in range(1, 10):
        stream += unit(0x61, [0, 5, 0, (frame, 8), (0, 2), (0, 1), 0, mbs])  # all skipped
    sums = hostile.decode("sixteen large references at level 1.0", stream, 1, 10, "ends inside")
    if len(set(sums)) != 1:
        print("FAILED: skipped pictures differ from the first one")
        hostile.failures += 1


def other_coding(hostile):
    """CAVLC slices under a parameter set that says CABAC: some have no valid header; the frames before are untouched."""
    good = units(hostile.read("h264/base_ip.264"))
    sums = hostile.sums("h264/base_ip.md5")
    at = [i for i, u in enumerate(good) if u[3] & 31 in (1, 5)][10]
    pps = next(u for u in good if u[3] & 31 == 8)
    assert pps[4] == 0xCE
    cabac = pps[:4] + b"\xee" + pps[5:]
    stream = good[:at] + [cabac] + [u for u in good[at:] if u[3] & 31 != 8]
    found = hostile.decode("CABAC from the middle on", b"".join(stream), 1, 16, "cabac_init_idc is 19")
    if found[:10] != sums[:10]:
        print("FAILED: CABAC from the middle on changes the frames before it")
        hostile.failures += 1


def parameter_sets(hostile):
    """Legal ways to send parameter sets that a careless decoder stumbles over."""
    good = units(hostile.read("h264/base_ip.264"))
    sums = hostile.sums("h264/base_ip.md5")
    sps, pps = good[0], good[1]
    assert (sps[3] & 31, pps[3] & 31) == (7, 8)
    hostile.decode("a picture parameter set before its sequence parameter set", b"".join([pps, sps, *good[2:]]), 0, 20, "")
    later = b"".join([sps, unit(0x68, [2, 5, (0, 1), (0, 1), 0, 0, 0, (0, 1), (0, 2), 0, 0, 0, (0, 3)]), *good[1:]])
    found = hostile.decode("a picture parameter set whose sequence parameter set never comes", later, 0, 20, "")
    repeated = hostile.decode("parameter sets before every unit", b"".join(sps + pps + u for u in good), 0, 20, "")
    if found != sums or repeated != sums:
        print("FAILED: repeated or unused parameter sets change frames")
        hostile.failures += 1


def main(vekdec, streams, *mode):
    hostile = Hostile(vekdec, streams, mode != ("unlimited",))
    index = hostile.read("forged/streams.tsv").decode().splitlines()[1:]
    for line in index:
        name, status, frames, words = line.split("\t")[:4]
        hostile.decode(name, hostile.read("forged/" + name), int(status), int(frames), words)
    references(hostile)
    renamed(hostile)
    unsupported(hostile)
    other_coding(hostile)
    parameter_sets(hostile)
    print(f"{len(index)} forged streams; {hostile.failures} failures")
    return 0 if hostile.failures == 0 and index else 1


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
