#!/usr/bin/env python3
"""Writes docs/performance.md, and what README.md quotes of it, from measured figures.

usage: performance_page.py FOLDER, which holds functions.json, opencv.json, runs.json and
steps.json
"""

import json
import os
import pathlib
import re
import statistics
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
JOBS = {
    "convert": "convert",
    "chain": "three functions",
    "resize": "three functions, resize",
    "png": "JPEG to PNG",
}


def machine():
    text = pathlib.Path("/proc/cpuinfo").read_text()
    flags = re.search(r"^flags\s*:(.*)$", text, re.M)
    known = flags.group(1).split() if flags else []
    width = ("512-bit vectors" if "avx512bw" in known else
             "256-bit vectors" if "avx2" in known else "128-bit vectors")
    cores = len(os.sched_getaffinity(0))
    memory = os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE") / 2**30
    return f"{cores} {'core' if cores == 1 else 'cores'}, {width}, {memory:.0f} GiB of memory"


def busy(load):
    if load < 0.5:
        return ""
    return (f" Other work kept the machine busy (a load of {load:.0f} at the start): processor "
            f"seconds and ratios tell more than seconds on the wall.")


def table(heads, rows, left=1):
    """A Markdown table; the first columns are texts, the others numbers."""
    rule = ["---"] * left + ["---:"] * (len(heads) - left)
    return "\n".join("| " + " | ".join(row) + " |" for row in [heads, rule, *rows]) + "\n"


def short(number):
    return f"{number:.0f}" if number >= 100 else f"{number:.1f}" if number >= 10 else f"{number:.2f}"


def run_tables(runs):
    """Seconds of each tool, and processor seconds."""
    tools = list(next(iter(runs.values())))
    text = ""
    for figure, head in (("wall", "seconds"), ("processor", "processor seconds")):
        rows = [[JOBS[job]] + [short(runs[job][tool][figure]) for tool in tools] for job in runs]
        text += table([head] + tools, rows) + "\n"
    rows = [[JOBS[job]] + [short(runs[job][tool]["times_ours"]) for tool in tools] for job in runs]
    text += "Round by round, times as long as tessarine-batch:\n\n"
    text += table([""] + tools, rows)
    if "png" in runs:
        sizes = ", ".join(f"{tool} {runs['png'][tool]['megabytes']:.0f}" for tool in tools)
        text += f"\nThe PNG files of one run take, in MB: {sizes}.\n"
    return text


def same_outputs(runs):
    same = [JOBS[job] for job in runs if runs[job]["floor"]["same_bytes"]]
    return (f"Its outputs are the runner's byte for byte, but for the density in their headers: "
            f"{'; '.join(same)}." if same else "Its outputs are not the runner's, byte for byte.")


def growth_table(growth):
    rows = [[f"{entry['pictures']} of {entry['width']} by {entry['height']}",
             f"{entry['wall'] / entry['pictures'] * 1000:.2f}", f"{entry['memory']:.0f}"]
            for entry in growth]
    return table(["pictures", "ms a picture", "MB at most"], rows)


def function_table(functions):
    rows = []
    for entry in functions:
        rows.append([entry["name"], entry["family"], f"{entry['milliseconds']:.1f}",
                     f"{entry['copies']:.1f}", f"{entry['opening']:.1f}", f"{entry['limit']:g}",
                     "" if entry["met"] else "over", f"{entry['two_threads']:.2f}"])
    return table(["function", "family", "ms", "copies", "as opened", "limit", "", "2 threads"],
                 rows, 2)


def opencv_table(pairs):
    rows = [[pair["name"], f"`{pair['ours']}`", pair["theirs"],
             f"{pair['milliseconds_theirs']:.1f}", f"{pair['one_thread']:.2f}",
             f"{pair['two_threads']:.2f}"] for pair in pairs]
    return table(["operation", "ours", "OpenCV's", "theirs, ms", "ours / theirs", "2 threads"],
                 rows, 3)


def steps_table(steps):
    """Milliseconds of a step in each program, with how many times ours that is."""
    tools = list(next(iter(steps.values()))["1"])
    rows = []
    for kind, by_threads in steps.items():
        for threads, times in by_threads.items():
            ours = times[tools[0]]
            rows.append([kind.replace("_", "-"), threads, short(ours)] +
                        [f"{short(times[tool])} ({times[tool] / ours:.1f})" if tool in times else ""
                         for tool in tools[1:]])
    return table(["step", "threads"] + tools, rows)


def near_ours(steps):
    """The steps in which another program takes less than three times as long as ours."""
    near = []
    for kind, by_threads in steps.items():
        for threads, times in by_threads.items():
            ours, *others = times.values()
            times_ours = min(others) / ours
            if times_ours < 3:
                near.append(f"{kind.replace('_', '-')} on {threads} ({times_ours:.1f})")
    if not near:
        return "In every step the fastest of the others takes at least three times as long."
    return f"The fastest of the others takes less than three times as long for: {', '.join(near)}."


def page(functions, opencv, runs, steps):
    missed = [entry["name"] for entry in functions["functions"] if not entry["met"]]
    verdict = ("All families keep their limits." if not missed else
               f"Over their limits are {len(missed)} of {len(functions['functions'])}: "
               f"{', '.join(missed)}.")
    faster = statistics.median(entry["two_threads"] for entry in functions["functions"])
    large = ""
    if "large" in runs:
        one = runs["large"]
        large = (f"\nOne picture of {one['width'] * one['height'] / 1e6:.0f} megapixels "
                 f"({one['width']} by {one['height']}) through {', '.join(one['functions'])}: "
                 f"{one['wall']:.1f} seconds and {one['memory']:.0f} MB at most.\n")
    return f"""# Performance

How long Tessarine takes, beside what the machine allows and beside other programs. `script/bench` measures all of it in one go and writes this page; figures without a neighbour from the same run mean little, so every table has one.

Measured on {machine()}; pixel work built for {functions['level']}.{busy(runs['load'])}

## Whole runs

40 JPEGs of 2048 by 1536 pixels (soft shapes under grain, quality 75, 4:2:0) on all cores. Medians of {runs['end_to_end']['convert']['floor']['runs']} rounds, {runs['end_to_end']['png']['floor']['runs']} for PNG, in which each program has its turn; after each run each output is seen to be there in its size.

{run_tables(runs['end_to_end'])}
- **convert** decodes and encodes at quality 75; **three functions** are brightness 20, contrast 20 and sharpen 50; **resize** goes on to 1200 pixels wide; all in the order told.
- **window's run** is `tessarine-batch --mode window`: what the window does after a click, with pictures read ahead as far as nobody can tell.
- **floor** (`bench/floor/`) does these jobs and no other: TurboJPEG and libpng, a thread a core, kept buffers, arithmetic that is made for this very machine. Nothing is caged, checked or told. {same_outputs(runs['end_to_end'])}
- **libvips** is called as a library (`bench/peers/vips_job.py`), a process a core; its tools would do one operation a process, with a file between any two.
- **GraphicsMagick** and **ImageMagick** run as `mogrify`, a process a core and a thread a process, which is their fastest way over many files. They compute with 16 bits a channel.
- The others' contrast spreads around a fixed middle, which spares them the pass that finds the picture's own, and clips; their resize also weighs in pixels between. Each writes PNG at its own settings.

## Growth

Three functions over more and more pictures. Memory is that of the runner and its helpers together, shared pages counted once.

{growth_table(runs['growth'])}{large}
## Functions

Every function on 12 megapixels, one thread, in copies: the time that `memcpy` takes for the same buffer into memory in use, {functions['copy']:.1f} ms here. The processor's time counts, medians; copies go before and after each call. "Copies" is the function with the inputs of its example in [functions.md](functions.md), "as opened" with those that its sheet opens with. A family's limit holds for both, but for Contrast, which is a look-up only while no channel leaves its range. Resize (to 3000 wide) and Rotate Intelligently count by the pixels of the result. The last column tells how many times as fast two threads are ({faster:.2f} in the median).

{verdict} The copy itself is {functions['copy_two_threads']:.2f} times as fast on two threads: where memory is the bound, a second thread brings no more than that, and a function of less than one copy has reached it with one thread.

{function_table(functions['functions'])}
StuckiBW is a member beside the catalogue. It diffuses errors from pixel to pixel, and a second thread brings it nothing.

## Beside OpenCV

OpenCV {opencv['version']} on the same picture with four channels, into a picture that is there already; the two take turns. Below 1 ours is faster. On one thread the processor's time counts, on two the wall's.

{opencv_table(opencv['pairs'])}
The operations are of one kind, not the same: our results hold to definitions that name each rounding, and the comparison is of what a user of either would call. `WAVES` works out its places at each call, where OpenCV has a map made beforehand. Only `bench/` knows OpenCV.

## Steps beside other programs

What one more step of a chain takes on a picture of {steps['width']} by {steps['height']}, in milliseconds: each program takes it through one step of a kind and through many more, and the difference counts, without reading, writing and what the first step prepares. In brackets, how many times ours. On one thread the processor's time counts, on two the wall's; medians of {steps['runs']} rounds, in which the programs take turns. Steps of libvips flow into each other, three channels a pixel; GraphicsMagick and ImageMagick compute with 16 bits a channel.

{near_ours(steps['steps'])} A step of ours reads and writes the whole picture, and the least of them reach what memory allows; steps that flow into each other do not go there and back.

{steps_table(steps['steps'])}"""


def quote(runs):
    chain = runs["end_to_end"]["chain"]
    ours = chain["tessarine-batch"]
    others = ", ".join(f"{tool} {short(entry['wall'])}" for tool, entry in chain.items()
                       if tool not in ("tessarine-batch", "window's run", "floor"))
    return (f"40 JPEGs of 3 megapixels through brightness, contrast and sharpen, on "
            f"{machine().split(',')[0]}: {short(ours['wall'])} seconds ({others}; the least that "
            f"codecs and arithmetic allow: {short(chain['floor']['wall'])}). Every function "
            f"against the machine's memory and against OpenCV: "
            f"[docs/performance.md](docs/performance.md).")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__.strip())
    folder = pathlib.Path(sys.argv[1])
    functions, opencv, runs, steps = (json.loads((folder / f"{name}.json").read_text())
                                      for name in ("functions", "opencv", "runs", "steps"))
    missing = [job for job in JOBS if job not in runs["end_to_end"]]
    if missing or "growth" not in runs:
        sys.exit("performance_page: runs.json is not of a whole measurement")
    (ROOT / "docs" / "performance.md").write_text(page(functions, opencv, runs, steps))
    readme = ROOT / "README.md"
    text = readme.read_text()
    begin, end = "<!-- figures of script/bench -->\n", "<!-- end of figures -->\n"
    if begin not in text or end not in text:
        sys.exit("performance_page: README.md lost the marks of its figures")
    head, rest = text.split(begin, 1)
    readme.write_text(head + begin + quote(runs) + "\n" + end + rest.split(end, 1)[1])


main()
