#!/usr/bin/env python3
"""Streams inside containers decode to the same frames as raw, from files and from pipes; other files are named.

usage: containers.py VEKDEC STREAMS

ffmpeg wraps the streams; without it the test is skipped (exit status 77).
"""
import os
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
KINDS = ["mp4", "mov", "mkv", "avi", "ts", "mpg", "mxf", "wmv", "flv"]


def run(*command, **options):
    return subprocess.run([str(c) for c in command], capture_output=True, timeout=120, check=False, **options)


def main(vekdec, streams):
    failures = 0

    def expect(good, what, done):
        nonlocal failures
        if not good:
            failures += 1
            print(f"FAILED: {what}: status {done.returncode}, said {done.stdout.decode()[:200]}{done.stderr.decode()[:300]}")

    if shutil.which("ffmpeg") is None:
        print("skipped: no ffmpeg to make containers with")
        return SKIPPED
    with tempfile.TemporaryDirectory() as work:
        def make(name, *arguments):
            path = os.path.join(work, name)
            done = run("ffmpeg", "-nostdin", "-y", "-loglevel", "error", *arguments, path)
            if done.returncode != 0:
                raise RuntimeError(f"ffmpeg cannot make {name}: {done.stderr.decode()}")
            return path

        for kind in KINDS:
            name = "base_refs"
            path = make("x." + kind, "-fflags", "+genpts", "-framerate", "30", "-i", f"{streams}/{name}.264", "-c", "copy")
            sums = f"{streams}/{name}.md5"
            done = run(vekdec, "-q", path, "--check", sums)
            expect(done.returncode == 0, f"{kind} from a file", done)
            if kind not in ("mxf",):  # its index stands behind the frames
                with open(path, "rb") as file:
                    done = run(vekdec, "-q", "-", "--check", sums, stdin=file)
                expect(done.returncode == 0 or kind in ("mp4", "mov"), f"{kind} from a pipe", done)
        header = run(vekdec, "-q", make("jm.avi", "-fflags", "+genpts", "-framerate", "30", "-i", f"{streams}/jm_no_d8inf.264",
                                     "-c", "copy"), "--frames", "1", "-o", os.path.join(work, "x.y4m"))
        with open(os.path.join(work, "x.y4m"), "rb") as file:
            expect(b" F25:1 " not in file.readline(), "the container's frame rate, where the stream names none", header)
        # B pictures, fields, more than 8 bits, CABAC.
        for name in "main_b_temporal_178x146", "jm_field_temporal", "hi422_10_b", "../h264_cabac/high_8x8":
            path = make(os.path.basename(name) + ".mp4", "-r", "25", "-i", f"{streams}/{name}.264", "-c", "copy")
            done = run(vekdec, "-q", path, "--check", f"{streams}/{name}.md5")
            expect(done.returncode == 0, f"{name} in mp4", done)
        # The other standards, where they usually are.
        for name, kinds in [("mpeg2/m2_ibp.m2v", ["mpg", "ts", "mxf", "mkv"]), ("mpeg2/m1_ibp.m1v", ["mpg", "avi"]),
                            ("mpeg4/m4_ibp.m4v", ["avi", "mp4", "mkv"]), ("h263/p_all.h263", ["mkv", "avi"]),
                            ("h263/base_gob.h263", ["3gp"]), ("h261/loop.h261", ["avi", "mkv"]),
                            ("avs/random_i_small.avs", ["mpg"]),
                            ("avs/ipb_odd.avs", ["ts", "mkv", "avi"]), ("dv/ntsc411_all.dv", ["avi", "mov", "mxf"])]:
            raw = os.path.join(os.path.dirname(streams), name)
            for kind in kinds:
                path = make("other." + kind, "-fflags", "+genpts", "-i", raw, "-map", "0:v", "-c", "copy")
                done = run(vekdec, "-q", path, "--check", os.path.splitext(raw)[0] + ".md5")
                expect(done.returncode == 0, f"{name} in {kind}", done)
        # VC-1: frames without start codes, and what a container says of Simple and Main profile.
        vc1 = os.path.join(streams, "..", "vc1")
        for stream, kinds in ("g_main_2.rcv", ["wmv", "mkv", "avi"]), ("g_adv_field_p1.vc1", ["wmv", "mkv", "mp4", "ts"]):
            name = os.path.splitext(stream)[0]
            for kind in kinds:
                path = make(f"{name}.{kind}", "-fflags", "+genpts", "-i", os.path.join(vc1, stream), "-c", "copy")
                done = run(vekdec, "-q", path, "--check", os.path.join(vc1, name + ".md5"))
                expect(done.returncode == 0, f"{name} in {kind}", done)
        # What it is, where it is nothing to decode.
        sound = make("sound.mp4", "-f", "lavfi", "-i", "sine=d=1", "-c:a", "aac")
        other = make("other.mkv", "-f", "lavfi", "-i", "testsrc2=s=64x64:d=1", "-c:v", "ffv1")
        picture = make("picture.png", "-f", "lavfi", "-i", "testsrc2=s=64x64:d=1", "-frames:v", "1")
        cut = os.path.join(work, "cut.mp4")
        with open(os.path.join(work, "x.mp4"), "rb") as whole, open(cut, "wb") as part:
            part.write(whole.read(600))
        for path, words in [(sound, "aac audio only"), (other, "the video is ffv1"), (picture, "a PNG picture"),
                            (cut, "cut.mp4")]:
            done = run(vekdec, path, "-o", os.path.join(work, "none.y4m"))
            said = done.stderr.decode()
            expect(done.returncode == 2 and words in said and said.count("\n") == 1, os.path.basename(path), done)
            expect(not os.path.exists(os.path.join(work, "none.y4m")), f"{path} leaves an output", done)
    if failures == 0:
        print("all as described")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
