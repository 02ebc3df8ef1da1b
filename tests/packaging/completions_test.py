"""What the completions make of command lines in the shells themselves.

completions_test.py SHELL FOLDER: FOLDER holds the completions, a folder a shell. A line is typed
and ended by the completion key; a function in the program's place tells the words that it gets.
"""

import os
import pathlib
import pty
import select
import shutil
import subprocess
import sys
import tempfile
import time

# What is typed before the key and, behind "|", after it, and the words that come of it. Lists and folders lie in the folder
# where it is typed; each has a neighbour that does not fit.
CASES = [
    ("--rec", ["--recursive"]),
    ("--mode ind", ["--mode", "independent"]),
    ("--format jpg-su", ["--format", "jpg-superb"]),
    ("--format=jpg-su", ["--format=jpg-superb"]),
    ("--functions war", ["--functions", "warm.qfk"]),
    ("--pictures bas", ["--pictures", "basket.qpkl"]),
    ("--to ou", ["--to", "out"]),
    ("hol", ["holiday.JPG"]),
    ("--shard au", ["--shard", "auto"]),
    ("--merge-reports rep1.jsonl rep2", ["--merge-reports", "rep1.jsonl", "rep2.jsonl"]),
    ("--apply Contr", ["--apply", "Contrast"]),
    ("--apply Rotate\\ I", ["--apply", "Rotate Intelligently"]),
    ("--apply \"Rotate I", ["--apply", "Rotate Intelligently"]),
    ("--apply Contrast:Le", ["--apply", "Contrast:Level="]),
    ("--apply Resize:Width=3,Kee", ["--apply", "Resize:Width=3,Keep proportions="]),
    ("--apply \"Hue Rotation:Off|\"", ["--apply", "Hue Rotation:Offset="]),
]
WINDOW_CASES = [
    ("--ver", ["--version"]),
    ("war", ["warm.qfk"]),
    ("hol", ["holiday.JPG"]),
]
FILES = ["warm.qfk", "warnings.txt", "basket.qpkl", "basics.txt", "outline.txt", "holiday.JPG",
         "holes.txt", "rep1.jsonl", "rep2.jsonl"]
SHOW = "{ printf '<%s>' \"$@\"; echo '<end>'; }"


class Shell:
    """A shell at a terminal."""

    def __init__(self, command, preparation, folder):
        self.name = command[0]
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.environ.update(TERM="dumb", LC_ALL="C.UTF-8", HOME=folder, HISTFILE="/dev/null")
            os.execvp(command[0], command)
        self.type(preparation + "; echo rea''dy\n")
        self.until("ready")

    def type(self, text):
        os.write(self.terminal, text.encode())

    def until(self, end):
        """What is said up to `end`."""
        said = ""
        deadline = time.monotonic() + 30
        while end not in said:
            if time.monotonic() > deadline:
                raise AssertionError(f"no '{end}' in what the shell says: {said!r}")
            if select.select([self.terminal], [], [], 0.5)[0]:
                said += os.read(self.terminal, 65536).decode(errors="replace")
        return said

    def words(self, line):
        before, _, after = line.partition("|")
        self.type(before + "\t")
        time.sleep(0.15)
        # A quotation that what is offered leaves open is closed by hand; bash closes each.
        self.type("\n" if self.name == "bash" else after + "\n")
        said = self.until("<end>")
        said = said[said.rindex("\n", 0, said.index("<end>")) + 1:said.index("<end>")]
        return [word.rstrip("/") for word in said.strip("\r\n<>").split("><")]

    def close(self):
        os.close(self.terminal)
        os.waitpid(self.process, 0)


def fish_words(completions, folder, program, line):
    """What fish offers in the place of the last word."""
    said = subprocess.run(
        ["fish", "--no-config", "-c", f"source {completions}/fish/{program}.fish; complete -C $argv",
         f"{program} {line.partition('|')[0]}"],
        cwd=folder, env=dict(os.environ, HOME=folder, LC_ALL="C.UTF-8"), check=True,
        capture_output=True, text=True).stdout
    return [offer.split("\t")[0].rstrip("/") for offer in said.splitlines()]


def main():
    shell, completions = sys.argv[1], pathlib.Path(sys.argv[2])
    if not shutil.which(shell):
        print(f"skipped: {shell} is not installed")
        return 77
    library = pathlib.Path("/usr/share/bash-completion/bash_completion")
    if shell == "bash" and not library.exists():
        print("skipped: bash-completion is not installed")
        return 77

    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        for name in FILES:
            pathlib.Path(folder, name).touch()
        pathlib.Path(folder, "out").mkdir()
        for program, cases in ("tessarine-batch", CASES), ("tessarine", WINDOW_CASES):
            if not (completions / "bash" / program).exists():
                continue
            if shell == "bash":
                terminal = Shell(
                    ["bash", "--norc", "--noprofile", "-i"],
                    f"bind 'set enable-bracketed-paste off'; . {library}; "
                    f". {completions}/bash/{program}; {program}() {SHOW}", folder)
            elif shell == "zsh":
                terminal = Shell(
                    ["zsh", "-f", "-i"],
                    f"unset zle_bracketed_paste; fpath=({completions}/zsh $fpath); "
                    f"autoload -U compinit; compinit -D -u; {program}() {SHOW}", folder)
            for line, expected in cases:
                if shell == "fish":
                    words = fish_words(completions, folder, program, line)
                    # It offers other files too, behind those that fit, and knows no pictures.
                    fits = expected[-1] in words[:1] or (line == "hol" and expected[-1] in words)
                else:
                    words = terminal.words(f"{program} {line}")
                    fits = words == expected
                if not fits:
                    print(f"{program} {line}: {words}, expected {expected}")
                    failures += 1
            if shell != "fish":
                terminal.close()
    return 1 if failures else 0


sys.exit(main())
