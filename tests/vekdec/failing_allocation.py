#!/usr/bin/env python3
"""vekdec where the n-th allocation fails, n = 1 to 500: one sentence, status 2, and no frame that is wrong.

usage: failing_allocation.py VEKDEC_FAILING STREAMS
"""
import os
import subprocess
import sys

ALLOCATIONS = 500
NEVER = 77  # the program had fewer


def main(vekdec, streams):
    stream = os.path.join(streams, "base_tiny_50x34.264")
    with open(os.path.join(streams, "base_tiny_50x34.md5"), encoding="ascii") as file:
        sums = file.read().split()
    failures = 0
    for n in range(1, ALLOCATIONS + 1):
        done = subprocess.run([vekdec, "-q", stream, "--md5"], capture_output=True, text=True, check=False,
                              env={**os.environ, "VEKVC_FAIL_ALLOCATION": str(n)})
        shown = done.stdout.split()
        if done.returncode != 2 or done.stderr.count("\n") != 1 or "emory" not in done.stderr or shown != sums[:len(shown)]:
            print(f"allocation {n} fails: status {done.returncode}, {len(shown)} frames, said: {done.stderr.strip()[:300]}"
                  if done.returncode != NEVER else f"fewer than {n} allocations")
            failures += 1
    print(f"{ALLOCATIONS} allocations failed in their turn, {failures} not well")
    return 0 if failures == 0 else 1


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
