#!/usr/bin/env python3
"""Runs baskets through a real Slurm with tessarine-array, and disturbs it.

usage: array_test.py TESSARINE-BATCH TESSARINE-ARRAY [PICTURES]
"""

import json
import os
import random
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).parent))
from cluster import Cluster, end_with_parent  # noqa: E402

CHAIN = ["--format", "png", "--apply", "Noise:Intensity=40", "--apply", "Sharpen"]


class Wrong(Exception):
    """What does not hold."""


def expect(holds, words):
    if not holds:
        raise Wrong(words)


def is_bad(number):
    return number % 23 == 7


def make_basket(folder, pictures, with_bad, size=(160, 120)):
    """A list of pictures, some of which cannot be read."""
    (folder / "in").mkdir(parents=True)
    (folder / "out").mkdir()
    (folder / "whole").mkdir()
    draws = random.Random(7)
    noise = draws.randbytes(3 * size[0] * size[1] + pictures)
    names = []
    for number in range(1, pictures + 1):
        path = folder / "in" / f"p{number:05}.ppm"
        body = noise[number:number + 3 * size[0] * size[1]]
        path.write_bytes(b"no picture" if with_bad and is_bad(number)
                         else b"P6 %d %d 255\n" % size + body)
        names.append(str(path))
    (folder / "basket.txt").write_text("\n".join(names) + "\n")


def files_of(folder):
    return {entry.name: entry.read_bytes() for entry in folder.iterdir()}


def lines_of(report):
    """The whole lines of a report that may be under way."""
    text = report.read_text() if report.exists() else ""
    return [json.loads(line) for line in text.split("\n")[:-1]]


def summary_of(report):
    return lines_of(report)[-1]["summary"]


class Basket:
    """One basket, its whole run without Slurm, and its array."""

    def __init__(self, cluster, batch, array, folder):
        self.cluster, self.batch, self.array, self.folder = cluster, batch, array, folder
        self.work = folder / "work"

    def run_whole(self, chain):
        done = subprocess.run(
            [self.batch, "--from", self.folder / "basket.txt", "--to", self.folder / "whole",
             "--quiet", "--report", self.folder / "whole.jsonl", *chain],
            stderr=subprocess.DEVNULL, check=False)
        expect(done.returncode in (0, 1), f"the whole run ends with {done.returncode}")

    def submit(self, options, chain):
        return subprocess.Popen(
            [self.array, "--program", self.batch, "--work", self.work, "--wait", *options, "--",
             "--from", self.folder / "basket.txt", "--to", self.folder / "out", *chain],
            env=self.cluster.environment, stderr=subprocess.DEVNULL,
            preexec_fn=end_with_parent)

    def report_of(self, shard, round_number=1):
        return self.work / "reports" / f"1{round_number:02}-shard-{shard}-0.jsonl"

    def process_of(self, shard, shards):
        """The program that does a shard."""
        for process in self.cluster.own_processes():
            try:
                words = Path(f"/proc/{process}/cmdline").read_bytes().split(b"\0")
            except OSError:
                continue
            if words[0] == os.fsencode(self.batch) and b"%d/%d" % (shard, shards) in words:
                return process
        return None

    def wait_for_lines(self, shard, lines, submitted):
        self.cluster.until(f"shard {shard} is under way",
                           lambda: len(lines_of(self.report_of(shard))) >= lines
                           or submitted.poll() is not None, 120)
        expect(submitted.poll() is None, "it ended early")

    def end_of(self, submitted, seconds):
        try:
            return submitted.wait(seconds)
        except subprocess.TimeoutExpired as late:
            submitted.kill()
            raise Wrong(f"not done after {seconds} seconds") from late

    def log(self):
        logs = [self.work / "log", *sorted((self.work / "logs").glob("*.log"))]
        return "".join(f"--- {log.name}\n{log.read_text(errors='replace')}" for log in logs
                       if log.exists())

    def rounds(self):
        return len(list(self.work.glob("round-*")))

    def expect_complete(self, pictures, with_bad):
        """The outputs are those of the whole run, and the report tells of all."""
        expect(files_of(self.folder / "out") == files_of(self.folder / "whole"),
               "the outputs are not those of the whole run")
        merged = lines_of(self.work / "report.jsonl")
        whole = lines_of(self.folder / "whole.jsonl")
        expect([entry["number"] for entry in merged[:-1]] == list(range(1, pictures + 1)),
               "the merged report does not tell of each picture once and in order")
        for ours, theirs in zip(merged[:-1], whole[:-1]):
            for key in ("number", "input", "error", "message"):
                expect(ours[key] == theirs[key], f"the merged report tells {ours}")
            expect((ours["status"] == "failed") == (with_bad and is_bad(ours["number"])),
                   f"the merged report tells {ours}")
        summary = merged[-1]["summary"]
        expect(summary["missing"] == 0 and summary["basket"] == pictures,
               f"the merged report ends with {summary}")
        self.cluster.until("the queue is empty",
                           lambda: not self.cluster.ask("squeue", "-h", "-o", "%A"))
        return summary


def killed_tasks_are_made_good(basket, pictures):
    """One task is killed by SIGKILL and one by scancel, in the middle of their work."""
    make_basket(basket.folder, pictures, with_bad=True)
    basket.run_whole(CHAIN)
    shards = 8
    begin = time.monotonic()
    submitted = basket.submit(["--shards", str(shards)], CHAIN)
    basket.wait_for_lines(1, 4, submitted)
    process = basket.process_of(1, shards)
    expect(process is not None, "the program of shard 1 is not found")
    os.kill(process, signal.SIGKILL)
    basket.wait_for_lines(4, 4, submitted)
    array = (basket.work / "jobs").read_text().split()[1]
    cancelled = subprocess.run(["scancel", f"{array}_4"], env=basket.cluster.environment,
                               check=False)
    expect(cancelled.returncode == 0, "scancel fails")
    status = basket.end_of(submitted, 300)
    seconds = time.monotonic() - begin
    expect(status == 1, f"it ends with {status}, and some pictures cannot be read")
    first = lines_of(basket.report_of(1))
    expect("summary" not in first[-1], "shard 1 had ended before it was killed")
    told = lines_of(basket.report_of(4))
    expect("summary" not in told[-1] or told[-1]["summary"]["interrupted"],
           "shard 4 had ended before it was cancelled")
    summary = basket.expect_complete(pictures, with_bad=True)
    # What a killed task had saved was left alone by the next.
    for shard, before in ((1, first), (4, told)):
        saved = {entry["number"] for entry in before if entry.get("status") == "saved"}
        again = lines_of(basket.report_of(shard, 2))
        expect(again and "summary" in again[-1], f"shard {shard} was not submitted again")
        for entry in again[:-1]:
            expect(entry["number"] not in saved or entry["status"] == "kept",
                   f"shard {shard} did double work: {entry}")
    return (f"{pictures} pictures, {shards} shards, one killed, one cancelled: complete after "
            f"{seconds:.1f} s and {basket.rounds()} rounds; {summary['saved']} saved, "
            f"{summary['kept']} kept, {summary['failed']} failed, {summary['missing']} missing")


def all_done_ends_with_0(basket, pictures):
    """Nothing fails and one task is killed: the array ends with status 0."""
    make_basket(basket.folder, pictures, with_bad=False)
    basket.run_whole(CHAIN)
    submitted = basket.submit(["--shards", "4", "--partition", "ordinary", "--time", "10",
                               "--cpus-per-task", "2", "--max-running", "3"], CHAIN)
    basket.wait_for_lines(2, 4, submitted)
    os.kill(basket.process_of(2, 4), signal.SIGKILL)
    status = basket.end_of(submitted, 300)
    expect(status == 0, f"it ends with {status}")
    basket.expect_complete(pictures, with_bad=False)
    expect(basket.rounds() == 2, "one shard was left to do")
    array = (basket.work / "reports").glob("102-*")
    expect([entry.name for entry in array] == ["102-shard-2-0.jsonl"],
           "others than the killed shard were submitted again")
    return f"{pictures} pictures, 4 shards, one killed, none unreadable: status 0 after 2 rounds"


def shards_are_reckoned(basket, pictures):
    """Shards are as many as keep their start under 2 percent."""
    chain = [*CHAIN, *["--apply", "Blur"] * 60]
    make_basket(basket.folder, pictures, with_bad=False, size=(900, 700))
    basket.run_whole(chain)
    submitted = basket.submit(["--task-start", "0"], chain)
    status = basket.end_of(submitted, 600)
    expect(status == 0, f"it ends with {status}")
    basket.expect_complete(pictures, with_bad=False)
    said = next(line for line in (basket.work / "log").read_text().splitlines()
                if "starts in" in line)
    start = int(said.split("starts in ")[1].split(" ")[0])
    reports = [summary_of(report) for report in (basket.work / "reports").glob("101-*")]
    worked = sum(summary["ms"] for summary in reports)
    part = start * len(reports) / (start * len(reports) + worked)
    expect(len(reports) > 1, "one shard is no division: " + said)
    expect(part <= 0.02, f"starting takes {part:.1%} of {len(reports)} shards: {said}")
    return (f"{pictures} pictures, reckoned {len(reports)} shards: start of one {start} ms, "
            f"{part:.2%} of the time")


def what_cannot_start_says_so(basket, pictures):
    """A command line that the program refuses is not tried again and again."""
    make_basket(basket.folder, pictures, with_bad=False)
    submitted = basket.submit(["--shards", "4"], ["--format", "none"])
    status = basket.end_of(submitted, 120)
    expect(status == 2, f"it ends with {status}")
    expect("none" in (basket.work / "logs" / "plan.log").read_text(), "the reason is not told")
    expect(basket.rounds() == 0, "shards were submitted")
    return "a refused command line ends with status 2 and no shard"


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    batch, array = (str(Path(word).resolve()) for word in sys.argv[1:3])
    pictures = int(sys.argv[3]) if len(sys.argv) == 4 else 400
    # Terminated, it ends as by Ctrl+C: through everything that tidies up.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    with tempfile.TemporaryDirectory(prefix="tessarine-array-") as folder:
        with Cluster(cpus=4) as cluster:
            tries = [(killed_tasks_are_made_good, pictures), (all_done_ends_with_0, 200),
                     (shards_are_reckoned, 60), (what_cannot_start_says_so, 3)]
            for work, count in tries:
                basket = Basket(cluster, batch, array, Path(folder) / work.__name__)
                try:
                    print(f"slurm: {work(basket, count)}", flush=True)
                except (Wrong, RuntimeError) as failure:
                    sys.exit(f"slurm: {work.__name__}: {failure}\n{basket.log()}")
    print("slurm: all as it should be")


if __name__ == "__main__":
    main()
