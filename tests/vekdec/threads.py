#!/usr/bin/env python3
"""Whole and damaged streams give the same frames, sentences, counts and status with any number of threads: what is concealed,
or was never sent, must not depend on which thread was first.

usage: threads.py VEKDEC STREAMS_FOLDER ...
"""
import pathlib
import random
import re
import subprocess
import sys
import tempfile

DAMAGED = 16  # of each folder
ENDINGS = {".264", ".m1v", ".m2v", ".m4v", ".rcv", ".vc1", ".avs", ".dv"}


def damaged(stream, draw):
    data = bytearray(stream)
    for _ in range(draw.choice((1, 3, 10, 40))):
        at = draw.randrange(40, len(data))
        kind = draw.random()
        if kind < 0.6:
            data[at] ^= 1 << draw.randrange(8)
        elif kind < 0.8:
            del data[at : at + draw.randrange(1, 400)]
        elif kind < 0.85:  # sent twice
            other = draw.randrange(40, len(data))
            data[at:at] = data[other : other + draw.randrange(1, 2000)]
        else:  # slices, or what begins with MPEG-4's markers, in another order
            begins = [match.start() for match in re.finditer(rb"\0\0[\x01\x40-\xff]", data)][2:]
            if len(begins) > 2:
                i = draw.randrange(len(begins) - 2)
                a, b, c = begins[i : i + 3]
                data[a:c] = data[b:c] + data[a:b]
        if len(data) < 100:
            return bytes(stream)
    return bytes(data)


def result(vekdec, stream, threads, *options):
    done = subprocess.run([vekdec, "-q", "-", "--md5", "--stats", "--threads", str(threads), *options], input=stream,
                          capture_output=True, timeout=300, check=False)
    return done.returncode, done.stdout, [line for line in done.stderr.splitlines() if not line.startswith(b"time:")]


def sheet(vekdec, stream, threads):
    with tempfile.NamedTemporaryFile(suffix=".png") as file:
        subprocess.run([vekdec, "-q", "-", "--sheet", file.name, "--overlay", "mv", "--threads", str(threads)], input=stream,
                       capture_output=True, timeout=300, check=False)
        return file.read()


def main(vekdec, *folders):
    draw = random.Random(1)
    failures = 0
    for folder in folders:
        paths = sorted(path for path in pathlib.Path(folder).iterdir() if path.suffix in ENDINGS)
        whole = [path.read_bytes() * (4 if path.suffix == ".dv" else 1) for path in paths]
        streams = [(path.name, stream) for path, stream in zip(paths, whole)]
        for _ in range(DAMAGED):
            number = draw.randrange(len(whole))
            streams.append((paths[number].name + ", damaged", damaged(whole[number], draw)))
        broken = wrong = 0
        for name, stream in streams:
            one = result(vekdec, stream, 1)
            broken += one[0] != 0
            bad = [threads for threads in (2, 4, 5) if result(vekdec, stream, threads) != one]
            if bad:
                print(f"{folder}: {name}: the result with {bad} threads is another")
                wrong += 1
        # How many pictures behind the last frame wanted are begun depends on the threads; frames and status do not.
        for name, stream in streams[-4:]:
            few = [result(vekdec, stream, threads, "--frames", "3")[:2] for threads in (1, 5)]
            if few[0] != few[1]:
                print(f"{folder}: {name}: the first frames with 5 threads are others")
                wrong += 1
            if sheet(vekdec, stream, 1) != sheet(vekdec, stream, 4):
                print(f"{folder}: {name}: the overlays with 4 threads are others")
                wrong += 1
        print(f"{folder}: {len(streams)} streams, {broken} of them broken, {wrong} failures")
        failures += wrong + (broken < DAMAGED // 4)
    return 1 if failures else 0


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
