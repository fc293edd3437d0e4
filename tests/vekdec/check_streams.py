#!/usr/bin/env python3
"""Decodes every stream that a folder's index names and compares all frames with their checksums.

usage: check_streams.py VEKDEC FOLDER [VEKDEC OPTION ...]

FOLDER/streams.tsv has the streams' names in its first column; NAME.md5 lies beside NAME.264 (or another ending). Prints each
stream that is not bit-exact, then how many were; exits 1 if one was not, and 77 (skipped) where the folder is not there.

Checksums beside this project's own streams (tests/streams/corrected/FOLDER/NAME.md5) take the place of those of a collection that
are wrong.
"""
import os
import subprocess
import sys

SKIPPED = 77
CORRECTED = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "streams", "corrected")


def main(vekdec, folder, options):
    index = os.path.join(folder, "streams.tsv")
    if not os.path.exists(index):
        print(f"{folder}: not there, nothing checked")
        return SKIPPED
    with open(index, encoding="utf-8") as f:
        names = [line.split("\t")[0] for line in f.read().splitlines()[1:] if line]
    exact, missing = 0, []
    for name in names:
        stream = os.path.join(folder, name)
        sums = os.path.splitext(stream)[0] + ".md5"
        corrected = os.path.join(CORRECTED, os.path.basename(os.path.normpath(folder)), os.path.basename(sums))
        if os.path.exists(corrected):
            sums = corrected
        if not os.path.exists(stream) or not os.path.exists(sums):
            missing.append(name)
            continue
        runs = [([], sums)]
        for zoom in range(4):  # of interleaved pictures, reduced 1, 2, 4, 8 times
            reduced = os.path.splitext(stream)[0] + f".z{zoom}.md5"
            if os.path.exists(reduced):
                runs.append((["--interleaved", "--zoom", str(1 << zoom)], reduced))
        good = True
        for how, wanted in runs:
            done = subprocess.run([vekdec, "-q", stream, "--check", wanted, *how, *options], capture_output=True, text=True,
                                  check=False)
            if done.returncode != 0:
                good = False
                said = (done.stdout + done.stderr).strip().splitlines() or [f"status {done.returncode}"]
                print(f"{name} {' '.join(how)}: {'; '.join(said[:3])}")
        exact += good
    print(f"{exact} of {len(names)} streams bit-exact, {len(missing)} not found {' '.join(missing)}")
    return 0 if exact + len(missing) == len(names) and exact > 0 else 1


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1], sys.argv[2], sys.argv[3:]))
