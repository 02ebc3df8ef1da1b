#!/usr/bin/env python3
"""Measures whole processes: the runner beside other programs, and how a run grows.

Writes what it measured as JSON, and a line on standard error for each step. script/bench calls it
with the programs of its build.
"""

import argparse
import hashlib
import json
import os
import pathlib
import shlex
import shutil
import statistics
import struct
import subprocess
import sys
import threading
import time

CORES = len(os.sched_getaffinity(0))
PAGE = os.sysconf("SC_PAGE_SIZE")
HERE = pathlib.Path(__file__).resolve().parent
JOBS = ["convert", "chain", "resize", "png"]
CHAIN = ["Brightness:Level=20", "Contrast:Level=20", "Sharpen:Level=50"]
LARGE_CHAIN = CHAIN + ["Saturation:Level=20", "Soften:Level=50"]
# Sharpen 50: the centre 74 times, less twice each of its eight neighbours, through 58.
MASK = "-2,-2,-2,-2,74,-2,-2,-2,-2"


# For JPEG and for PNG. They look for shorter codes unless told not to, which nobody else does.
MAGICK_SAVING = (("-quality", "75", "-define", "jpeg:optimize-coding=false"), ("-format", "png"))


class Programs:
    """Where the build left its programs."""

    def __init__(self, build):
        self.batch = build / "runner" / "tessarine-batch"
        self.floor = build / "bench" / "bench_floor"
        self.photographs = build / "bench" / "bench_photographs"


def in_parts(pictures):
    """As many parts as there are cores; neighbours go to different ones."""
    return [part for part in (pictures[i::CORES] for i in range(CORES)) if part]


# Each of these tells the processes of a run, all of which start at once: their arguments. They run
# in the folder of the pictures, which are given by their bare names.


def tessarine(programs, job, pictures, out):
    functions = CHAIN if job in ("chain", "resize") else []
    if job == "resize":
        functions = functions + ["Resize:Width=1200"]
    apply = [argument for function in functions for argument in ("--apply", function)]
    row = "png" if job == "png" else "jpg-good"
    return [[programs.batch, "--quiet", "--to", out, "--format", row, *apply, *pictures]]


def windows_run(programs, job, pictures, out):
    """The run that the window's button starts, whose order of steps one can see."""
    return [[*tessarine(programs, job, pictures, out)[0], "--mode", "window"]]


def floor(programs, job, pictures, out):
    return [[programs.floor, job, str(CORES), out, *pictures]]


def vips(_programs, job, pictures, out):
    return [[sys.executable, HERE / "peers" / "vips_job.py", job, out, *part]
            for part in in_parts(pictures)]


def graphicsmagick(_programs, job, pictures, out):
    steps = list(MAGICK_SAVING[job == "png"])
    if job in ("chain", "resize"):
        steps += ["-operator", "All", "Add", "7.84%", "-level", "8.33%,1.0,91.67%",
                  "-convolve", MASK]
    if job == "resize":
        steps += ["-filter", "Triangle", "-resize", "1200x"]
    return [["gm", "mogrify", "-output-directory", out, *steps, *part]
            for part in in_parts(pictures)]


def imagemagick(_programs, job, pictures, out):
    steps = list(MAGICK_SAVING[job == "png"])
    if job in ("chain", "resize"):
        steps += ["-evaluate", "Add", "7.84%", "-level", "8.33%,91.67%",
                  "-define", "convolve:scale=!", "-morphology", "Convolve", "3x3: " + MASK]
    if job == "resize":
        steps += ["-filter", "Triangle", "-resize", "1200x"]
    return [["mogrify", "-path", out, *steps, *part] for part in in_parts(pictures)]


TOOLS = {"tessarine-batch": tessarine, "window's run": windows_run, "floor": floor, "libvips": vips,
         "GraphicsMagick": graphicsmagick, "ImageMagick": imagemagick}


def environment(threads):
    """For programs that are told by it how many threads to use."""
    return dict(os.environ, OMP_NUM_THREADS=str(threads), MAGICK_THREAD_LIMIT=str(threads),
                VIPS_CONCURRENCY=str(threads))


def run(commands, folder, threads=1):
    """Wall and processor seconds of processes that start together, each with so many threads unless
    it knows better. Any failure ends it all."""
    start = time.monotonic()
    before = os.times()
    children = [subprocess.Popen([str(part) for part in command], cwd=folder,
                                 stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                                 env=environment(threads)) for command in commands]
    for command, child in zip(commands, children):
        complaint = child.communicate()[1].decode(errors="replace")
        if child.returncode:
            sys.exit(f"{shlex.join(map(str, command))[:400]}: {child.returncode}: {complaint[-400:]}")
    wall = time.monotonic() - start
    after = os.times()
    return {"wall": wall, "processor": (after.children_user - before.children_user) +
            (after.children_system - before.children_system)}


def size_of(path):
    """Width and height that a JPEG or PNG file tells, None for anything else."""
    data = path.read_bytes()
    if data[:8] == b"\x89PNG\r\n\x1a\n":
        return struct.unpack(">II", data[16:24])
    place = 2
    while data[:2] == b"\xff\xd8" and place + 9 <= len(data) and data[place] == 0xFF:
        if data[place + 1] in (0xC0, 0xC1, 0xC2):
            height, width = struct.unpack(">HH", data[place + 5:place + 9])
            return width, height
        place += 2 + struct.unpack(">H", data[place + 2:place + 4])[0]
    return None


def check(out, count, size, tool):
    """Megabytes of the outputs, which all have to be there and of this size."""
    files = sorted(out.iterdir())
    if len(files) != count:
        sys.exit(f"{tool} left {len(files)} outputs of {count}")
    for path in files:
        if size_of(path) != size:
            sys.exit(f"{tool}: {path.name} is {size_of(path)}, not {size}")
    return sum(path.stat().st_size for path in files) / 1e6


def digest(out):
    """Of all outputs, but for the headers of JPEGs, which may tell different densities."""
    density_ends = 20
    total = hashlib.sha256()
    for path in sorted(out.iterdir()):
        total.update(path.name.encode() + path.read_bytes()[density_ends:])
    return total.hexdigest()


def emptied(folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


def photographs(programs, work, count, width, height):
    """A folder with that many pictures, drawn at the first time."""
    folder = work / f"photographs-{width}x{height}"
    folder.mkdir(parents=True, exist_ok=True)
    if len(list(folder.iterdir())) < count:
        print(f"drawing {count} pictures of {width} by {height}", file=sys.stderr)
        subprocess.run([programs.photographs, folder, str(count), str(width), str(height)],
                       check=True)
    return folder, sorted(path.name for path in folder.iterdir())[:count]


def median_of(runs, figure):
    return statistics.median(entry[figure] for entry in runs)


def measure_end_to_end(programs, work, runs, jobs, tools):
    folder, pictures = photographs(programs, work, 40, 2048, 1536)
    results = {}
    for job in jobs:
        size = (1200, 900) if job == "resize" else (2048, 1536)
        # PNG takes so long that fewer rounds and no first one tell as much.
        rounds = (runs + 1) // 2 if job == "png" else runs
        taken = {tool: [] for tool in tools}
        megabytes = {}
        digests = {}
        # One round before those that count; in each round every tool has its turn.
        for number in range(0 if job == "png" else -1, rounds):
            for tool in tools:
                out = emptied(work / "out")
                figures = run(TOOLS[tool](programs, job, pictures, out), folder)
                megabytes[tool] = check(out, len(pictures), size, tool)
                digests[tool] = digest(out)
                if number >= 0:
                    taken[tool].append(figures)
        results[job] = {
            tool: {"wall": median_of(taken[tool], "wall"),
                   "processor": median_of(taken[tool], "processor"),
                   "megabytes": megabytes[tool], "runs": rounds,
                   "same_bytes": digests[tool] == digests.get("tessarine-batch"),
                   # Round by round, so that what else the machine did falls on both.
                   "times_ours": statistics.median(
                       theirs["wall"] / ours["wall"] for theirs, ours in
                       zip(taken[tool], taken["tessarine-batch"]))
                   if "tessarine-batch" in tools else None}
            for tool in tools}
        for tool, entry in results[job].items():
            print(f"{job:8} {tool:16} {entry['wall']:7.2f} s {entry['processor']:7.2f} s of "
                  f"processors, {entry['times_ours'] or 0:5.2f} times ours, "
                  f"{entry['megabytes']:6.1f} MB", file=sys.stderr)
    return results


class MemoryWatch:
    """The most memory that a process and its descendants have together, shared pages once."""

    def __init__(self, process):
        self.process = process
        self.most = 0
        self.ended = threading.Event()
        self.thread = threading.Thread(target=self.look)
        self.thread.start()

    def look(self):
        while not self.ended.wait(0.01):
            self.most = max(self.most, sum(map(self.share_of, self.family())))

    def family(self):
        found = [self.process]
        for pid in found:
            try:
                for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
                    found += map(int, (task / "children").read_text().split())
            except OSError:
                pass
        return found

    @staticmethod
    def share_of(pid):
        """Bytes; where a process keeps its pages to itself, shared ones count in full."""
        try:
            lines = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()
            return next(int(line.split()[1]) for line in lines if line.startswith("Pss:")) * 1024
        except (OSError, StopIteration):
            pass
        try:
            return int(pathlib.Path(f"/proc/{pid}/statm").read_text().split()[1]) * PAGE
        except OSError:
            return 0  # it ended

    def end(self):
        self.ended.set()
        self.thread.join()
        return self.most / 1e6


def measure_run(programs, folder, pictures, functions, out, options=()):
    """Seconds, and MB at most, of one run of the runner."""
    apply = [argument for function in functions for argument in ("--apply", function)]
    command = [programs.batch, "--quiet", "--to", emptied(out), *apply, *options, "--from", "-"]
    start = time.monotonic()
    with subprocess.Popen([str(part) for part in command], cwd=folder, text=True,
                          stdin=subprocess.PIPE) as child:
        watch = MemoryWatch(child.pid)
        try:
            child.communicate("".join(f"{picture}\n" for picture in pictures))
        finally:
            most = watch.end()
    if child.returncode:
        sys.exit(f"tessarine-batch ended with {child.returncode}")
    return {"wall": time.monotonic() - start, "memory": most}


def measure_growth(programs, work, runs):
    results = []
    for width, height, counts in ((320, 240, (10, 100, 1000)), (2048, 1536, (10, 100))):
        for count in counts:
            folder, pictures = photographs(programs, work, count, width, height)
            taken = []
            for _ in range(runs + 1):
                taken.append(measure_run(programs, folder, pictures, CHAIN, work / "out"))
                check(work / "out", count, (width, height), "tessarine-batch")
            entry = {"width": width, "height": height, "pictures": count,
                     "wall": median_of(taken[1:], "wall"),
                     "memory": max(each["memory"] for each in taken)}
            results.append(entry)
            print(f"{count:5} of {width} by {height}: {entry['wall'] / count * 1000:7.2f} ms each, "
                  f"{entry['memory']:.0f} MB at most", file=sys.stderr)
    return results


def measure_large(programs, work):
    width, height = 20000, 15000
    folder, pictures = photographs(programs, work, 1, width, height)
    entry = measure_run(programs, folder, pictures, LARGE_CHAIN, work / "out")
    check(work / "out", 1, (width, height), "tessarine-batch")
    print(f"{width} by {height}, {len(LARGE_CHAIN)} functions: {entry['wall']:.1f} s, "
          f"{entry['memory']:.0f} MB at most", file=sys.stderr)
    return entry | {"width": width, "height": height,
                    "functions": [function.split(":")[0] for function in LARGE_CHAIN]}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", type=pathlib.Path, required=True, help="the build's folder")
    parser.add_argument("--json", type=pathlib.Path, required=True, help="where the figures go")
    parser.add_argument("--work", type=pathlib.Path,
                        help="folder for pictures and outputs; default in the build's")
    parser.add_argument("--runs", type=int, default=5, help="counted runs of each; default 5")
    parser.add_argument("--jobs", nargs="*", choices=JOBS, default=JOBS,
                        help="what to measure end to end; default all")
    parser.add_argument("--tools", nargs="*", choices=list(TOOLS), default=list(TOOLS))
    parser.add_argument("--no-growth", action="store_true", help="end to end only")
    parser.add_argument("--large", action="store_true",
                        help="also one picture of 300 megapixels; takes minutes and much memory")
    options = parser.parse_args()

    programs = Programs(options.build.resolve())
    work = (options.work or options.build / "bench-pictures").resolve()
    load = os.getloadavg()[0]
    results = {"load": load, "end_to_end": measure_end_to_end(programs, work, options.runs, options.jobs,
                                                              options.tools)}
    if not options.no_growth:
        results["growth"] = measure_growth(programs, work, options.runs)
    if options.large:
        results["large"] = measure_large(programs, work)
    shutil.rmtree(work / "out", ignore_errors=True)
    options.json.write_text(json.dumps(results, indent=1) + "\n")


if __name__ == "__main__":
    main()
