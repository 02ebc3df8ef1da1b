#!/usr/bin/env python3
"""Measures what one more step of a chain takes in the runner and in other programs.

Each program takes the same picture through one step of a kind and through some more in a row: the
difference, divided by their number, is a step's time without reading, writing, and whatever the
first step has to prepare. The programs take turns. Writes what it measured as JSON, and a line on
standard error for each step.
"""

import argparse
import json
import pathlib
import statistics
import sys
import tempfile

from processes import MASK, Programs, photographs, run

HERE = pathlib.Path(__file__).resolve().parent
WIDTH, HEIGHT = 4000, 3000
MEAN = ",".join(["1"] * 9)

# The arguments of one step of each kind. Steps come in twos, since a picture that is made smaller
# has to become larger again.
OURS = {
    "brightness": ["Brightness:Level=20"],
    "look_up": ["Gamma Correction:Gamma=70"],
    "mask": ["Sharpen:Level=50"],
    "mean": ["Blur"],
    "erode": ["Erode"],
    "dilate": ["Dilate"],
    "equalize": ["Equalize"],
    "resize": ["Resize:Width=3000", "Resize:Width=4000"],
    "mosaic": ["Pixelize:Pixel size=8"],
    "noise": ["Noise:Intensity=60"],
}
GRAPHICSMAGICK = {
    "brightness": [["-operator", "All", "Add", "7.84%"]],
    "look_up": [["-gamma", "0.7"]],
    "mask": [["-convolve", MASK]],
    "mean": [["-convolve", MEAN]],
    "equalize": [["-equalize"]],
    "resize": [["-filter", "Triangle", "-resize", "3000x"],
               ["-filter", "Triangle", "-resize", "4000x"]],
    "mosaic": [["-scale", "12.5%", "-scale", "800%"]],
    "noise": [["+noise", "Uniform"]],
}
IMAGEMAGICK = {
    "brightness": [["-evaluate", "Add", "7.84%"]],
    "look_up": [["-level", "0%,100%,0.7"]],
    "mask": [["-define", "convolve:scale=!", "-morphology", "Convolve", "3x3: " + MASK]],
    "mean": [["-define", "convolve:scale=!", "-morphology", "Convolve", "3x3: " + MEAN]],
    "erode": [["-morphology", "Erode", "Square"]],
    "dilate": [["-morphology", "Dilate", "Square"]],
    "equalize": [["-equalize"]],
    "resize": GRAPHICSMAGICK["resize"],
    "mosaic": GRAPHICSMAGICK["mosaic"],
    "noise": [["+noise", "Uniform"]],
}


def repeated(steps, count):
    return [argument for i in range(count) for argument in steps[i % len(steps)]]


# Each of these tells a process that takes a picture through `count` steps on so many threads, or
# None where the program has no such step.


def tessarine(programs, kind, count, threads, picture, out):
    apply = repeated([["--apply", text] for text in OURS[kind]], count)
    return [programs.batch, "--quiet", "--jobs", "1", "--threads", str(threads), "--overwrite",
            "--to", out, "--format", "ppm", *apply, picture]


def vips(_programs, kind, count, _threads, picture, out):
    return [sys.executable, HERE / "peers" / "vips_steps.py", kind, str(count), picture,
            out / "out.ppm"]


def graphicsmagick(_programs, kind, count, _threads, picture, out):
    if kind not in GRAPHICSMAGICK:
        return None
    return ["gm", "mogrify", "-output-directory", out, *repeated(GRAPHICSMAGICK[kind], count),
            picture]


def imagemagick(_programs, kind, count, _threads, picture, out):
    return ["mogrify", "-path", out, *repeated(IMAGEMAGICK[kind], count), picture]


# With how many more steps one of a program stands out from all else.
TOOLS = {"tessarine-batch": (tessarine, 100), "libvips": (vips, 8),
         "GraphicsMagick": (graphicsmagick, 4), "ImageMagick": (imagemagick, 2)}
# Of what takes the others next to no time, so many times as many.
OFTEN = {"look_up": 4}


def measure(programs, picture, out, kind, threads, rounds):
    """Milliseconds that a step takes in each program that has it: medians of the rounds."""
    taken = {tool: [] for tool, (command, _) in TOOLS.items()
             if command(programs, kind, 1, threads, picture, out)}
    for _ in range(rounds):
        for tool in taken:
            command, count = TOOLS[tool]
            if command is not tessarine:
                count *= OFTEN.get(kind, 1)
            # On one thread what the others of the machine take does not count.
            figure = "processor" if threads == 1 else "wall"
            first = len(OURS[kind])
            more, few = (
                run([command(programs, kind, steps, threads, picture.name, out)], picture.parent,
                    threads)[figure] for steps in (first + count, first))
            taken[tool].append((more - few) / count * 1000)
    return {tool: statistics.median(times) for tool, times in taken.items()}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--json", type=pathlib.Path, required=True)
    parser.add_argument("--runs", type=int, default=5)
    options = parser.parse_args()
    programs = Programs(options.build.resolve())
    results = {}
    with tempfile.TemporaryDirectory() as name:
        out = pathlib.Path(name)
        folder, pictures = photographs(programs, out, 1, WIDTH, HEIGHT)
        # A format that takes next to no time to read.
        (out / "results").mkdir()
        run([[programs.batch, "--quiet", "--to", out, "--name", "picture", "--format", "ppm",
              folder / pictures[0]]], out)
        picture = next(out.glob("picture*.ppm"))
        for kind in OURS:
            results[kind] = {}
            for threads in (1, 2):
                times = measure(programs, picture, out / "results", kind, threads, options.runs)
                results[kind][str(threads)] = times
                ours = times["tessarine-batch"]
                print(f"{kind:12} {threads} " + ", ".join(
                    f"{tool} {time:.1f} ms ({time / ours:.1f})" for tool, time in times.items()),
                    file=sys.stderr)
    options.json.write_text(json.dumps({"width": WIDTH, "height": HEIGHT, "runs": options.runs,
                                        "steps": results}, indent=1) + "\n")


main()
