#!/usr/bin/env python3
"""vekproc from the outside: what must hold of its results whatever the picture, and its sentences.

usage: command_line.py VEKPROC VEKDEC STREAMS
"""
import os
import subprocess
import sys
import tempfile


class Test:
    def __init__(self, vekproc, vekdec, streams, work):
        self.vekproc, self.work, self.failures = vekproc, work, 0
        self.interlaced = self.path("interlaced.y4m")
        self.odd = self.path("odd.y4m")
        for stream, file in ("mpeg4/m4_interlaced.m4v", self.interlaced), ("mpeg4/m4_tiny_50x34.m4v", self.odd):
            subprocess.run([vekdec, "-q", os.path.join(streams, stream), "-o", file], check=True)

    def path(self, name):
        return os.path.join(self.work, name)

    def expect(self, good, what):
        if not good:
            self.failures += 1
            print(f"FAILED: {what}")

    def run(self, *arguments, **options):
        return subprocess.run([self.vekproc, "-q", *arguments], capture_output=True, timeout=120, check=False, **options)

    def made(self, *arguments):
        """The bytes of what the arguments make."""
        done = self.run(*arguments, "-o", self.path("made"))
        self.expect(done.returncode == 0, f"{' '.join(arguments)}: status {done.returncode}, {done.stderr.decode()}")
        with open(self.path("made"), "rb") as file:
            return file.read()

    def bands(self):
        """Bands of rows on several threads make what one call makes."""
        for what in (["--deinterlace", "blend"], ["--deinterlace", "edge"], ["--deinterlace", "median", "--rate", "field"],
                     ["--deinterlace", "motion", "--rate", "field"], ["--deinterlace", "triangle", "--order", "bff"],
                     ["--deinterlace", "mix"], ["--denoise", "cast", "--noise", "8"], ["--denoise", "smooth"],
                     ["--denoise", "adaptive"], ["--denoise", "mosquito", "--strength", "20"]):
            one, many = (self.made(self.interlaced, *what, "--threads", threads) for threads in ("1", "3"))
            self.expect(one == many, f"{' '.join(what)} depends on the threads")
            rate = 2 if "field" in what else 1
            self.expect(len(one) == rate * 12 * 176 * 144 * 3 // 2, f"{' '.join(what)} makes {len(one)} bytes")

    def conversions(self):
        """Layouts without a loss come back as they were; four quarter turns are none."""
        size = ["--size", "50x34"]
        planes = self.made(self.odd)
        for layout in "nv12", "uyvy":
            there = self.path("there")
            with open(there, "wb") as file:
                file.write(self.made(self.odd, "--to", layout))
            back = self.made(there, *size, "--format", layout, "--to", "yuv420")
            same = planes == back if layout == "nv12" else planes[:50 * 34] == back[:50 * 34]
            self.expect(same, f"yuv420 through {layout}")
        frame = 50 * 34 + 2 * 25 * 17
        luma = b"".join(planes[i:i + 50 * 34] for i in range(0, len(planes), frame))
        turned = self.path("turned.y4m")
        self.run(self.odd, "-o", turned, "--rotate", "90")
        for _ in range(3):
            self.run(turned, "-o", self.path("next.y4m"), "--rotate", "90")
            os.replace(self.path("next.y4m"), turned)
        back = self.made(turned)
        self.expect(luma == b"".join(back[i:i + 50 * 34] for i in range(0, len(back), frame)), "four quarter turns")
        self.expect(len(self.made(self.odd, "--resize", "1/8")) == len(planes) // frame * (7 * 5 + 2 * 4 * 3), "an eighth")
        self.expect(len(self.made(self.odd, "--resize", "4", "--to", "bgr565")) == len(planes) // frame * 200 * 136 * 2,
                    "four times, 16 bits")

    def words(self):
        """What cannot be done is told in one sentence, with status 2; a difference with status 1."""
        with open(self.odd, "rb") as file:
            stream = file.read()
        cut = self.path("cut.y4m")
        with open(cut, "wb") as file:
            file.write(stream[:-7])
        nothing = self.path("nothing.y4m")
        with open(nothing, "wb") as file:
            file.write(stream[:stream.index(b"\n") + 1])
        mono = self.path("mono.y4m")
        with open(mono, "wb") as file:
            file.write(b"YUV4MPEG2 W8 H8 F25:1 Cmono\nFRAME\n" + bytes(64))
        for arguments, words in (([cut], "ends inside a picture"), ([nothing], "holds no picture"), ([mono], "the format mono"),
                                 ([self.path("none")], "cannot read"), ([self.odd, "--resize", "3"], "--resize"),
                                 ([self.odd, "-o", self.path("x.y4m"), "--to", "bgra"], "y4m holds planes"),
                                 ([self.odd, "-o", "/dev/full"], "cannot write"),
                                 ([self.odd, "--size", "0x4"], "--size"), ([], "IN is required")):
            done = self.run(*arguments)
            said = done.stderr.decode()
            self.expect(done.returncode == 2 and words in said, f"{arguments}: status {done.returncode}, said {said}")
        raw = self.run("-", "--size", "50x34", "--format", "yuv420", "--compare", self.odd, input=self.made(self.odd))
        self.expect(raw.returncode == 0 and b"without a difference" in raw.stdout, f"raw from a pipe: {raw.stdout}")
        longer = self.run(self.odd, "--compare", self.interlaced)
        self.expect(longer.returncode == 2, "pictures of two sizes are no reference")
        wrong = self.path("wrong.txt")
        with open(wrong, "w", encoding="utf-8") as file:
            file.write("vekiDeinterlaceTriangle_8u_C1R\t8x8\tseed=1 amp=4\tfield=0\t0\t" + "0" * 32 + "\n")
        done = self.run("--known-answers", wrong)
        self.expect(done.returncode == 1 and b"0 of 1 known answers agree" in done.stdout, "a wrong answer is told")


def main(vekproc, vekdec, streams):
    with tempfile.TemporaryDirectory() as work:
        test = Test(vekproc, vekdec, streams, work)
        test.bands()
        test.conversions()
        test.words()
    if test.failures == 0:
        print("all as described")
    return 1 if test.failures else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
