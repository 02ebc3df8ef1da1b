#!/usr/bin/env python3
"""Runs tessarine-batch over damaged pictures and checks that it tells the truth about each.

The damage is reproducible: mutant number k of a folder of samples hangs on the seed, on k and on
the samples alone. Every run is judged by what a person could see: exit status, report, outputs,
folders, memory. The figures go to standard output as a table.
"""

import argparse
import json
import os
import random
import resource
import shutil
import struct
import subprocess
import sys
import tempfile
from collections import Counter
from pathlib import Path

CHUNK = 500  # pictures a run: bounds the disk that mutants and outputs take
CLASSES = ["unreadable", "too-large", "timed-out", "codec-died", "cannot-write"]
OWN_MEMORY = 96  # MiB that an idle process has: its code and its libraries
EXTREMES = [0, 1, 2, 0x7F, 0x80, 0xFF, 0x7FFF, 0x8000, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF]


class Problem(Exception):
    """Something that must not be."""


def truncated(data, rng):
    return data[: rng.randrange(len(data))]


def with_flipped_bytes(data, rng):
    changed = bytearray(data)
    for _ in range(rng.choice([1, 1, 2, 4, 8, 16, 64])):
        changed[rng.randrange(len(changed))] ^= rng.randrange(1, 256)
    return bytes(changed)


def with_edited_length(data, rng):
    """A number of two or four bytes, of either order, near the front: where sizes and lengths are."""
    changed = bytearray(data)
    for _ in range(rng.choice([1, 1, 2])):
        size = rng.choice([2, 4])
        reach = min(len(changed), rng.choice([32, 128, 1024, len(changed)])) - size
        if reach < 1:
            continue
        place = rng.randrange(reach)
        order = rng.choice(["<", ">"]) + ("H" if size == 2 else "I")
        old = struct.unpack_from(order, changed, place)[0]
        new = rng.choice(EXTREMES + [old + 1, old - 1, old * 2, old // 2, old + 256])
        struct.pack_into(order, changed, place, new & (256**size - 1))
    return bytes(changed)


def with_moved_part(data, rng):
    start = rng.randrange(len(data))
    part = data[start : start + rng.randrange(1, 4096)]
    if rng.random() < 0.5:
        return data[:start] + data[start + len(part) :]
    return data[:start] + part + data[start:]


DAMAGES = [truncated, with_flipped_bytes, with_flipped_bytes, with_edited_length,
           with_edited_length, with_moved_part]


def samples_in(folder):
    files = sorted(p for p in folder.rglob("*") if p.is_file() and p.suffix and p.suffix != ".md")
    return [p for p in files if 0 < p.stat().st_size <= 1 << 20]


def write_mutant(samples, seed, number, folder):
    source = samples[number % len(samples)]
    rng = random.Random(seed * 1_000_003 + number)
    damage = rng.choice(DAMAGES)
    path = folder / f"{number:06}-{damage.__name__}-{source.stem[:40]}{source.suffix}"
    path.write_bytes(damage(source.read_bytes(), rng))
    return path


class Judge:
    """Runs the program over pictures, counts what became of them and finds what must not be."""

    def __init__(self, options, scratch):
        self.options = options
        self.scratch = scratch
        self.counts = Counter()
        self.differing = []
        self.runs = 0
        self.peak = 0

    def run(self, pictures, keep_damage=True):
        """\return one (status, error, bytes of the output) for each picture"""
        out = self.scratch / "out"
        temp = self.scratch / "tmp"
        for folder in (out, temp):
            shutil.rmtree(folder, ignore_errors=True)
            folder.mkdir()
        names = self.scratch / "pictures"
        names.write_bytes(b"\0".join(os.fsencode(p) for p in pictures))
        report = self.scratch / "report"
        command = [self.options.program, "--to", out, "--from", names, "-0", "--quiet",
                   "--report", report, "--timeout", str(self.options.timeout),
                   "--memory", str(self.options.memory)]
        if self.options.metadata:
            command += ["--format", "jpg-good", "--keep-metadata", "--auto-orient"]
        else:
            command += ["--format", "bmp"]
        ended = subprocess.run([str(word) for word in command], stderr=subprocess.PIPE,
                               env=os.environ | {"TMPDIR": str(temp)}, check=False)
        self.runs += 1
        self.peak = max(self.peak, resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)
        lines = [json.loads(line) for line in report.read_text().splitlines()]
        told = [line for line in lines if "summary" not in line]
        results = self.judge(pictures, told, out)

        failed = sum(1 for line in told if line["status"] != "saved")
        expected = 1 if failed else 0
        if ended.returncode != expected:
            raise Problem(f"exit status {ended.returncode}, expected {expected}: "
                          f"{ended.stderr[-400:]!r}")
        if "summary" not in lines[-1] or lines[-1]["summary"]["failed"] != failed:
            raise Problem("the report has no true summary")
        if list(temp.iterdir()):
            raise Problem(f"left in the temp folder: {list(temp.iterdir())}")
        if keep_damage:
            self.counts.update(Counter(error or "saved" for _, error, _ in results))
        return results

    def judge(self, pictures, told, out):
        if [line["number"] for line in told] != list(range(1, len(pictures) + 1)):
            raise Problem("the report does not tell of each picture once and in order")
        results = []
        expected_names = set()
        for picture, line in zip(pictures, told):
            if line["input"] != str(picture):
                raise Problem(f"{line['input']} stands in the place of {picture}")
            if line["status"] == "saved":
                output = Path(line["output"])
                expected_names.add(output.name)
                data = output.read_bytes()
                check = check_jpeg if self.options.metadata else check_bmp
                check(data, line, picture)
                results.append(("saved", "", hash(data)))
            else:
                if line["error"] not in CLASSES or not line["message"]:
                    raise Problem(f"{picture} failed without a reason: {line}")
                results.append((line["status"], line["error"], 0))
        found = {p.name for p in out.iterdir()}
        if found != expected_names:
            raise Problem(f"outputs that nobody told of: {sorted(found ^ expected_names)[:5]}")
        return results


def check_bmp(data, line, picture):
    """A whole BMP of the size that the report tells."""
    if len(data) < 54 or data[:2] != b"BM":
        raise Problem(f"the output of {picture} is no BMP")
    size, = struct.unpack_from("<I", data, 2)
    width, height = struct.unpack_from("<ii", data, 18)
    if size != len(data) or len(data) != 54 + (width * 3 + 3) // 4 * 4 * height:
        raise Problem(f"the output of {picture} is not whole")
    if (width, height) != (line["width"], line["height"]) or line["bytes"] != len(data):
        raise Problem(f"the report tells another size than {width} x {height} of {picture}")


def check_jpeg(data, line, picture):
    """A whole JPEG of the size that the report tells, with whole segments."""
    place = 2
    while data[place] == 0xFF and data[place + 1] != 0xC0:
        place += 2 + struct.unpack_from(">H", data, place + 2)[0]
    height, width = struct.unpack_from(">HH", data, place + 5)
    if data[:2] != b"\xff\xd8" or data[place] != 0xFF or data[-2:] != b"\xff\xd9":
        raise Problem(f"the output of {picture} is not whole")
    if (width, height) != (line["width"], line["height"]) or line["bytes"] != len(data):
        raise Problem(f"the report tells another size than {width} x {height} of {picture}")


def chunks(numbers):
    for start in range(0, len(numbers), CHUNK):
        yield numbers[start : start + CHUNK]


def run_as_they_are(judge, files):
    for part in chunks(files):
        judge.run(part)


def run_mutants(judge, samples, options):
    folder = judge.scratch / "mutants"
    for numbers in chunks(range(options.mutants)):
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        pictures = [write_mutant(samples, options.seed, k, folder) for k in numbers]
        results = judge.run(pictures)
        if numbers[0] % (CHUNK * options.again) == 0:
            again = judge.run(pictures, keep_damage=False)
            # At the edge of its time a picture may go either way.
            judge.differing += [p.name for p, a, b in zip(pictures, results, again)
                                if a != b and "timed-out" not in (a[1], b[1])]
        print(f"{numbers[-1] + 1} of {options.mutants}: {dict(judge.counts)}", file=sys.stderr)


def row(name, counts):
    return "| " + " | ".join([name, str(sum(counts.values())), str(counts["saved"])] +
                             [str(counts[c]) for c in CLASSES]) + " |"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", type=Path, help="tessarine-batch")
    parser.add_argument("samples", type=Path, help="a folder of pictures, damaged ones among them")
    parser.add_argument("--mutants", type=int, default=20000, metavar="N")
    parser.add_argument("--seed", type=int, default=1, metavar="N")
    parser.add_argument("--timeout", type=float, default=10, metavar="SECONDS")
    parser.add_argument("--memory", type=int, default=1024, metavar="MIB")
    parser.add_argument("--metadata", action="store_true",
                        help="keep metadata, turn pictures upright, and write JPEG")
    parser.add_argument("--again", type=int, default=8, metavar="N",
                        help="run one in N parts twice and compare")
    options = parser.parse_args()
    options.program = options.program.resolve()
    samples = samples_in(options.samples.resolve())
    if not samples:
        parser.error(f"no pictures in {options.samples}")

    with tempfile.TemporaryDirectory(prefix="reliability-") as scratch:
        table = ["| pictures | tried | saved | " + " | ".join(CLASSES) + " |",
                 "|---|" + "---:|" * (len(CLASSES) + 2)]
        try:
            files = Judge(options, Path(scratch))
            run_as_they_are(files, samples)
            table.append(row("samples as they are", files.counts))
            mutants = Judge(options, Path(scratch))
            run_mutants(mutants, samples, options)
            if mutants.differing:
                raise Problem("a second run gave something else for " +
                              ", ".join(mutants.differing))
            table.append(row(f"mutants, seed {options.seed}", mutants.counts))
        except Problem as problem:
            print(f"mutants: {problem}", file=sys.stderr)
            return 1
    print("\n".join(table))
    peak = max(files.peak, mutants.peak) // 1024
    print(f"\nRuns: {files.runs + mutants.runs}. Largest process: {peak} MiB, "
          f"with --memory {options.memory} and --timeout {options.timeout:g}.")
    if peak > options.memory + OWN_MEMORY:
        print(f"mutants: a process took {peak} MiB", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
