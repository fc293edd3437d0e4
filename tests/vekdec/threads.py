#!/usr/bin/env python3
"""Damaged H.264 streams give the same frames, sentences and status with any number of threads: what is concealed, or was
never sent, must not depend on which thread was first.

usage: threads.py VEKDEC STREAMS_FOLDER ...
"""
import pathlib
import random
import subprocess
import sys

STREAMS = 40


def damaged(stream, draw):
    data = bytearray(stream)
    for _ in range(draw.choice((1, 3, 10, 40))):
        at = draw.randrange(40, len(data))
        kind = draw.random()
        if kind < 0.6:
            data[at] ^= 1 << draw.randrange(8)
        elif kind < 0.8:
            del data[at : at + draw.randrange(1, 400)]
        else:  # sent twice
            other = draw.randrange(40, len(data))
            data[at:at] = data[other : other + draw.randrange(1, 2000)]
        if len(data) < 100:
            return bytes(stream)
    return bytes(data)


def main(vekdec, *folders):
    draw = random.Random(1)
    streams = sorted(path for folder in folders for path in pathlib.Path(folder).glob("*.264"))
    failures = broken = 0
    for number in range(STREAMS):
        path = draw.choice(streams)
        stream = damaged(path.read_bytes(), draw)
        results = []
        for threads in 1, 2, 5:
            done = subprocess.run([vekdec, "-q", "-", "--md5", "--threads", str(threads)], input=stream,
                                  capture_output=True, timeout=300, check=False)
            results.append((done.returncode, done.stdout, done.stderr))
        broken += results[0][0] != 0
        if results.count(results[0]) != len(results):
            print(f"stream {number}, made of {path.name}: the result depends on the number of threads")
            failures += 1
    print(f"{STREAMS} streams, {broken} of them broken, {failures} failures")
    return 1 if failures or broken < STREAMS // 2 else 0


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
