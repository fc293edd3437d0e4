#!/usr/bin/env python3
"""vekdec where the n-th allocation fails, n = 1 to the last: one sentence, status 2, and no frame that is wrong.

What can go on without, such as the buffer of a file, goes on: then all frames are right and nothing is said.

usage: failing_allocation.py VEKDEC_FAILING STREAMS
"""
import os
import subprocess
import sys

RUNS = [["--threads", "1"], ["--threads", "3"], ["--threads", "2", "-o", "/dev/null"]]
NEVER = 77  # the program had fewer


def run(vekdec, stream, arguments, n):
    return subprocess.run([vekdec, "-q", stream, "--md5", *arguments], capture_output=True, text=True, check=False,
                          env={**os.environ, "VEKVC_FAIL_ALLOCATION": str(n)})


def is_well(done, sums):
    shown = done.stdout.split()
    if done.returncode == 0:
        return shown == sums and not done.stderr
    said = done.stderr.count("\n") == 1 and ("emory" in done.stderr or "cannot start" in done.stderr)
    return done.returncode == 2 and said and shown == sums[:len(shown)]


def main(vekdec, streams):
    stream = os.path.join(streams, "base_tiny_50x34.264")
    with open(os.path.join(streams, "base_tiny_50x34.md5"), encoding="ascii") as file:
        sums = file.read().split()
    failures = 0
    for arguments in RUNS:
        n, refused = 1, 0
        while (done := run(vekdec, stream, arguments, n)).returncode != NEVER:
            refused += done.returncode == 2
            if not is_well(done, sums):
                print(f"{' '.join(arguments)}, allocation {n} fails: status {done.returncode}, said: "
                      f"{done.stderr.strip()[:300]}")
                failures += 1
            n += 1
        print(f"{' '.join(arguments)}: {n - 1} allocations failed in their turn, {refused} ended the program")
        failures += refused < 500
    return 0 if failures == 0 else 1


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
