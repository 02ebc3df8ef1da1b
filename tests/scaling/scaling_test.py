#!/usr/bin/env python3
"""Runs the command lines of docs/scaling.md, the manifest of packaging/kubernetes, and what
packaging/slurm does without a Slurm.

usage: scaling_test.py ROOT TESSARINE-BATCH parallel|kubernetes|array

Exit status 77 says that a tool for the check is missing.
"""

import json
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

BAD = {7, 30}
PICTURES = 48


def fail(words):
    sys.exit(f"scaling: {words}")


def expect(holds, words):
    if not holds:
        fail(words)


def make_pictures(folder):
    """Pictures of which some cannot be read, and their list. They take a while each."""
    folder.mkdir(parents=True)
    draws = random.Random(5)
    names = []
    for number in range(1, PICTURES + 1):
        path = folder / f"p{number:03}.ppm"
        path.write_bytes(b"no picture" if number in BAD
                         else b"P6 320 240 255\n" + draws.randbytes(3 * 320 * 240))
        names.append(str(path))
    return "\n".join(names) + "\n"


def files_of(folder):
    return {entry.name: entry.read_bytes() for entry in folder.iterdir()}


def expect_complete(report):
    """A merged report that tells of all pictures, in order."""
    lines = [json.loads(line) for line in report.read_text().splitlines()]
    expect([line.get("number") for line in lines[:-1]] == list(range(1, PICTURES + 1)),
           "the merged report does not tell of each picture once and in order")
    failed = {line["number"] for line in lines[:-1] if line["status"] == "failed"}
    expect(failed == BAD, f"the merged report tells that {failed} failed")
    expect(lines[-1]["summary"]["missing"] == 0, "the merged report misses pictures")


def command_of(page, mark):
    """The commands of the page's block behind a mark."""
    found = re.search(r"<!-- tested: " + mark + r" -->\n```\n(.*?)```", page, re.S)
    expect(found, f"docs/scaling.md has no block '{mark}'")
    return found.group(1)


def run(command, folder, environment):
    return subprocess.run(["/bin/sh", "-c", command], cwd=folder, env=environment, text=True,
                          stdin=subprocess.DEVNULL, capture_output=True, check=False)


def pids_of(program, words):
    """Processes of a program of ours with these words in their command lines."""
    for entry in Path("/proc").iterdir():
        try:
            line = (entry / "cmdline").read_bytes().split(b"\0")
            if Path(os.readlink(entry / "exe")) == program and all(
                    os.fsencode(word) in line for word in words):
                yield int(entry.name)
        except OSError:
            pass


def test_parallel(root, batch, folder, environment):
    if shutil.which("parallel") is None:
        print("skipped: parallel is not installed")
        sys.exit(77)
    # It makes a folder of its own at home.
    environment["HOME"] = str(folder)
    page = (root / "docs" / "scaling.md").read_text()
    command = command_of(page, "parallel")
    merge = command_of(page, "merge")
    (folder / "basket.txt").write_text(make_pictures(folder / "in"))
    for name in ("out", "whole"):
        (folder / name).mkdir()
    whole = run("tessarine-batch --from basket.txt --to whole --quiet", folder, environment)
    expect(whole.returncode == 1, f"the whole run ends with {whole.returncode}: {whole.stderr}")

    begun = subprocess.Popen(["/bin/sh", "-c", command], cwd=folder, env=environment,
                             stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL)
    killed = None
    while killed is None and begun.poll() is None:
        for process in pids_of(batch, ["3/8", "out"]):
            os.kill(process, signal.SIGKILL)
            killed = process
        time.sleep(0.002)
    status = begun.wait()
    expect(killed is not None, "shard 3 was never seen")
    failed = 1 + len({number for number in BAD})
    expect(1 <= status <= failed, f"parallel tells of {status} shards that failed")

    again = run(command, folder, environment)
    expect(1 <= again.returncode <= len(BAD),
           f"the same command again tells of {again.returncode}: {again.stderr}")
    expect(files_of(folder / "out") == files_of(folder / "whole"),
           "the outputs are not those of the whole run")
    merged = run(merge, folder, environment)
    expect(merged.returncode == 1, f"merging ends with {merged.returncode}: {merged.stderr}")
    expect_complete(folder / "report.jsonl")
    log = (folder / "shards.log").read_text().splitlines()
    runs = [line.split("\t")[0] for line in log[1:]]
    expect(len(runs) < 16, "shards that had ended well were run again")


# What a manifest may say, as far as ours goes: a name that is none is passed over by some servers
# and does nothing.
FIELDS = {
    "": {"apiVersion", "kind", "metadata", "spec"},
    "metadata": {"name"},
    "spec": {"completionMode", "completions", "parallelism", "backoffLimitPerIndex",
             "podFailurePolicy", "template"},
    "spec.podFailurePolicy": {"rules"},
    "spec.podFailurePolicy.rules": {"action", "onPodConditions", "onExitCodes"},
    "spec.podFailurePolicy.rules.onPodConditions": {"type", "status"},
    "spec.podFailurePolicy.rules.onExitCodes": {"containerName", "operator", "values"},
    "spec.template": {"spec", "metadata"},
    "spec.template.spec": {"restartPolicy", "terminationGracePeriodSeconds", "containers",
                           "volumes"},
    "spec.template.spec.containers": {"name", "image", "env", "command", "args", "resources",
                                      "volumeMounts"},
    "spec.template.spec.containers.env": {"name", "value", "valueFrom"},
    "spec.template.spec.containers.env.valueFrom": {"fieldRef"},
    "spec.template.spec.containers.env.valueFrom.fieldRef": {"fieldPath"},
    "spec.template.spec.containers.resources": {"requests", "limits"},
    "spec.template.spec.containers.resources.requests": {"cpu", "memory"},
    "spec.template.spec.containers.resources.limits": {"cpu", "memory"},
    "spec.template.spec.containers.volumeMounts": {"name", "mountPath", "readOnly"},
    "spec.template.spec.volumes": {"name", "persistentVolumeClaim"},
    "spec.template.spec.volumes.persistentVolumeClaim": {"claimName", "readOnly"},
}


def check_fields(value, path=""):
    if isinstance(value, list):
        for one in value:
            check_fields(one, path)
    elif isinstance(value, dict):
        expect(path in FIELDS, f"the manifest has fields below {path}")
        for key, below in value.items():
            expect(key in FIELDS[path], f"the manifest has a field {path}.{key}")
            check_fields(below, f"{path}.{key}".lstrip("."))


def test_kubernetes(root, _, folder, environment):
    try:
        import yaml
    except ImportError:
        print("skipped: python3-yaml is not installed")
        sys.exit(77)
    job = yaml.safe_load((root / "packaging" / "kubernetes" / "tessarine-job.yaml").read_text())
    check_fields(job)
    expect((job["apiVersion"], job["kind"]) == ("batch/v1", "Job"), "the manifest is no Job")
    spec = job["spec"]
    expect(spec["completionMode"] == "Indexed", "the Job is not indexed")
    expect(1 <= spec["parallelism"] <= spec["completions"], "more pods than completions")
    pod = spec["template"]["spec"]
    expect(pod["restartPolicy"] == "Never", "limits by index need restartPolicy Never")
    container = pod["containers"][0]
    expect(all(("value" in one) != ("valueFrom" in one) for one in container["env"]),
           "a variable has no value, or two")
    variables = {one["name"]: one["value"] for one in container["env"] if "value" in one}
    expect(all(isinstance(value, str) for value in variables.values()), "a variable is no text")
    fields = {one["name"]: one["valueFrom"]["fieldRef"]["fieldPath"] for one in container["env"]
              if "valueFrom" in one}
    expect(set(fields.values()) <= {"metadata.name"}, f"pods are asked for {fields}")
    expect(variables["TESSARINE_SHARDS"] == str(spec["completions"]),
           "TESSARINE_SHARDS is not the number of completions")
    rules = spec["podFailurePolicy"]["rules"]
    for rule in rules:
        expect(rule["action"] in ("FailJob", "FailIndex", "Ignore", "Count"), str(rule))
        expect(("onExitCodes" in rule) != ("onPodConditions" in rule), str(rule))
        if "onExitCodes" in rule:
            expect(rule["onExitCodes"]["containerName"] == container["name"], str(rule))
            expect(rule["onExitCodes"]["operator"] in ("In", "NotIn"), str(rule))
    fatal = [rule for rule in rules if rule["action"] == "FailJob"]
    expect([rule["onExitCodes"]["values"] for rule in fatal] == [[2, 3]],
           "another status than 2 and 3 ends the Job")
    expect({one["name"] for one in container["volumeMounts"]}
           == {one["name"] for one in pod["volumes"]}, "mounts and volumes differ")

    # The pods, one after the other, with the mounts in a folder.
    (folder / "pictures").mkdir()
    basket = make_pictures(folder / "pictures" / "in")
    (folder / "pictures" / "basket.txt").write_text(basket)
    for name in ("results/pictures", "results/reports", "whole"):
        (folder / name).mkdir(parents=True)
    words = [re.sub(r"/(pictures|results)\b", lambda found: found.group(0) if
                    found.string[:found.start()].endswith("/results")
                    else f"{folder}{found.group(0)}", word)
             for word in container["command"] + container["args"]]

    # All attempts of an index have one host name, as they have here, and pods of different names.
    def run_pod(index, attempt):
        names = {name: f"tessarine-{index}-{attempt}" for name in fields}
        own = dict(environment, JOB_COMPLETION_INDEX=str(index), **variables, **names)
        return subprocess.run(words, env=own, stdin=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, check=False).returncode

    statuses = [run_pod(index, "aaaaa") for index in range(spec["completions"])]
    expect(set(statuses) == {0, 1}, f"pods end with {statuses}")
    expect(1 <= statuses.count(1) <= len(BAD), f"pods end with {statuses}")
    again = statuses.index(1)
    expect(run_pod(again, "bbbbb") == 1, "a picture that cannot be read can be at another attempt")
    reports = len(list((folder / "results" / "reports").iterdir()))
    expect(reports == spec["completions"] + 1,
           f"{spec['completions'] + 1} attempts leave {reports} reports")
    chain = re.search(r"--format .*", words[-1]).group(0)
    whole = run(f"tessarine-batch --from pictures/basket.txt --to whole --quiet {chain}", folder,
                environment)
    expect(whole.returncode == 1, f"the whole run ends with {whole.returncode}: {whole.stderr}")
    expect(files_of(folder / "results" / "pictures") == files_of(folder / "whole"),
           "the outputs are not those of the whole run")
    merged = run("tessarine-batch --merge-reports results/reports/*.jsonl --report all.jsonl",
                 folder, environment)
    expect(merged.returncode == 1, f"merging ends with {merged.returncode}: {merged.stderr}")
    expect_complete(folder / "all.jsonl")


def write_program(path, text):
    path.write_text(text)
    path.chmod(0o755)


def test_array(root, batch, folder, environment):
    array = root / "packaging" / "slurm" / "tessarine-array"
    # A Slurm that takes every job and does none.
    tools = folder / "tools"
    tools.mkdir()
    write_program(tools / "sbatch", "#!/bin/sh\necho 17\n")
    write_program(tools / "squeue", "#!/bin/sh\n")
    write_program(tools / "scontrol", "#!/bin/sh\necho 'MaxArraySize = 1001'\n")
    environment["PATH"] = f"{tools}:{environment['PATH']}"

    def submit(work, *words, options=()):
        return subprocess.run([array, "--program", folder / "batch", "--work", folder / work,
                               *options, "--", *words], env=environment, text=True,
                              stdin=subprocess.DEVNULL, capture_output=True, check=False)

    write_program(folder / "batch", "#!/bin/sh\nexit 99\n")
    run_of_all = ["--from", "basket.txt", "--to", "out"]
    journal = ["--resume", "journal"]
    for number, wish in enumerate((["--overwrite"], ["--on-exists", "overwrite"],
                                   ["--on-exists=overwrite"])):
        refused = submit("refused", *run_of_all, *wish)
        expect(refused.returncode == 2 and "--resume" in refused.stderr
               and " ".join(wish).replace("=", " ") in refused.stderr,
               f"{wish} ends with {refused.returncode}: {refused.stderr}")
        expect(not (folder / "refused").exists(), "a refused array leaves a folder")
        for words in ([*wish, *journal], [*journal, *wish]):
            taken = submit(f"taken{number}-{words.index('journal')}", *run_of_all, *words)
            expect(taken.returncode == 0, f"{words} is not taken: {taken.stderr}")
    # What a plan says counts like a word of the command line.
    write_program(folder / "one.ppm", "P6 1 1 255\nabc")
    for wish, status in ("overwrite", 2), ("keep", 0):
        plan = folder / f"{wish}.plan"
        made = subprocess.run([batch, "--to", folder, "--on-exists", wish, "--plan", plan,
                               folder / "one.ppm"], stderr=subprocess.DEVNULL, check=False)
        expect(made.returncode == 0, f"no plan is made: {made.returncode}")
        planned = submit(f"planned-{wish}", "--from-plan", plan)
        expect(planned.returncode == status, f"a plan to {wish} ends with {planned.returncode}")
        expect(submit(f"resumed-{wish}", f"--from-plan={plan}", *journal).returncode == 0,
               f"a plan to {wish} is refused with a journal")
    for wish in (["--on-exists", "keep"], ["--name", "overwrite"]):
        expect(submit("taken-" + wish[1], *run_of_all, *wish).returncode == 0, f"{wish} is refused")

    # Shards are reckoned by what was left to do: a program that takes a second for such a picture,
    # and finds all done in the first so many of a hundred samples.
    def reckoned(work, kept):
        write_program(folder / "batch", f"""#!/bin/sh
while [ $# -gt 0 ]; do
    case $1 in
        --shard) shard=$2 ;;
        --report) report=$2 ;;
    esac
    shift
done
case $shard in
    */2000000000) counts='"pictures":0,"saved":0,"kept":0,"failed":0' ms=0 ;;
    */100)
        if [ "${{shard%/*}}" -lt {kept} ]; then
            counts='"pictures":40,"saved":0,"kept":40,"failed":0' ms=3
        else
            counts='"pictures":40,"saved":28,"kept":10,"failed":2' ms=30000
        fi
        ;;
    *) exit 3 ;;
esac
echo "{{\\"summary\\":{{$counts,\\"interrupted\\":false,\\"ms\\":$ms,\\"basket\\":4000}}}}" >"$report"
""")
        taken = submit(work, *run_of_all, options=["--task-start", "1"])
        expect(taken.returncode == 0, f"it is not submitted: {taken.stderr}")
        step = subprocess.run([folder / work / "tessarine-array", "--step", "plan", folder / work],
                              env=environment, text=True, stdin=subprocess.DEVNULL,
                              capture_output=True, check=False)
        expect(step.returncode == 0, f"dividing ends with {step.returncode}: {step.stderr}")
        samples = len(list((folder / work / "reports").glob("01-*")))
        return int(re.search(r"shards \S+ of (\d+) are", step.stderr).group(1)), samples

    # 2% of 4000 seconds, less what the samples saw and what starting this program takes.
    for kept, samples in ((0, 1), (1, 2), (5, 6)):
        shards, tried = reckoned(f"kept-{kept}", kept)
        expect(20 <= shards <= 81, f"with {kept} samples done before there are {shards} shards")
        expect(tried == samples, f"with {kept} samples done before it took {tried}")
    expect(reckoned("kept-all", 100) == (1, 10), "a basket that is done is divided")


def main():
    if len(sys.argv) != 4 or sys.argv[3] not in ("parallel", "kubernetes", "array"):
        sys.exit(__doc__)
    root, batch = Path(sys.argv[1]), Path(sys.argv[2]).resolve()
    environment = dict(os.environ, PATH=f"{batch.parent}:{os.environ['PATH']}")
    for name in [name for name in environment if name.startswith(("SLURM_", "JOB_COMPLETION_"))]:
        del environment[name]
    with tempfile.TemporaryDirectory(prefix="tessarine-scaling-") as folder:
        globals()["test_" + sys.argv[3]](root, batch, Path(folder), environment)
    print(f"scaling: {sys.argv[3]} as it should be")


if __name__ == "__main__":
    main()
