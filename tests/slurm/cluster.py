"""A Slurm of one node on this machine, with its own settings, that ends with its user."""

import ctypes
import os
import shutil
import signal
import socket
import subprocess
import tempfile
import time
from pathlib import Path

SETTINGS = """\
ClusterName=tessarine
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={controller}
SlurmdPort={daemon}
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
AuthInfo=socket={folder}/munge/socket
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
MpiDefault=none
SwitchType=switch/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SchedulerParameters=sched_interval=2,bf_interval=2
SlurmdParameters=config_overrides
ReturnToService=2
KillWait=5
NodeName={host} NodeAddr=127.0.0.1 CPUs={cpus} State=UNKNOWN
PartitionName=ordinary Nodes=ALL Default=YES MaxTime=INFINITE State=UP
"""


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


def end_with_parent():
    """A daemon is not to outlive a test that is killed."""
    ctypes.CDLL(None).prctl(1, signal.SIGTERM)


def program(name):
    """A daemon's program, which may lie where only the system's own PATH leads."""
    return shutil.which(name, path=os.environ.get("PATH", "") + ":/usr/sbin:/sbin")


class Cluster:
    """Use it with `with`: daemons, jobs and files are gone at its end, whatever happened."""

    def __init__(self, cpus):
        self.folder = Path(tempfile.mkdtemp(prefix="tessarine-slurm-"))
        self.folder.chmod(0o755)
        self.cpus = cpus
        self.daemons = []
        self.environment = dict(os.environ, SLURM_CONF=str(self.folder / "slurm.conf"))

    def __enter__(self):
        try:
            self.start()
        except BaseException:
            self.stop()
            raise
        return self

    def __exit__(self, *_):
        self.stop()

    def start(self):
        for name in ("munge", "state", "spool"):
            (self.folder / name).mkdir(mode=0o755)
        controller, daemon = free_ports(2)
        host = socket.gethostname().split(".")[0]
        (self.folder / "slurm.conf").write_text(
            SETTINGS.format(folder=self.folder, host=host, cpus=self.cpus,
                            controller=controller, daemon=daemon))
        # Nothing is asked of control groups, which not every machine hands out.
        (self.folder / "cgroup.conf").write_text(
            "CgroupAutomount=no\nConstrainCores=no\nConstrainRAMSpace=no\n")
        key = self.folder / "munge" / "key"
        key.write_bytes(os.urandom(128))
        key.chmod(0o400)
        munge = self.folder / "munge"
        self.daemon("munged", "--foreground", f"--key-file={key}", f"--socket={munge}/socket",
                    f"--pid-file={munge}/pid", f"--log-file={munge}/log",
                    f"--seed-file={munge}/seed", "--num-threads=2")
        self.until("munged answers", lambda: (munge / "socket").exists())
        self.daemon("slurmctld", "-D", "-f", str(self.folder / "slurm.conf"))
        self.daemon("slurmd", "-D", "-N", host, "-f", str(self.folder / "slurm.conf"))
        self.until("the node is idle", lambda: self.ask("sinfo", "-h", "-o", "%T") == "idle")

    def daemon(self, name, *arguments):
        log = open(self.folder / f"{name}.out", "wb")
        self.daemons.append(subprocess.Popen(
            [program(name), *arguments], stdin=subprocess.DEVNULL, stdout=log, stderr=log,
            env=self.environment, preexec_fn=end_with_parent))

    def ask(self, *words):
        """What a command of Slurm prints; empty where it fails."""
        done = subprocess.run(words, env=self.environment, capture_output=True, text=True,
                              check=False)
        return done.stdout.strip() if done.returncode == 0 else ""

    def until(self, what, holds, seconds=60):
        end = time.monotonic() + seconds
        while not holds():
            for daemon in self.daemons:
                if daemon.poll() is not None:
                    raise RuntimeError(f"{daemon.args[0]} ended with {daemon.returncode}:\n"
                                       + self.logs())
            if time.monotonic() > end:
                raise RuntimeError(f"waited {seconds} seconds in vain until {what}:\n"
                                   + self.logs())
            time.sleep(0.02)

    def logs(self):
        text = ""
        for log in sorted(self.folder.glob("*.log")) + sorted(self.folder.glob("*.out")):
            lines = log.read_text(errors="replace").splitlines()[-12:]
            text += f"--- {log.name}\n" + "\n".join(lines) + "\n"
        return text

    def own_processes(self):
        """Processes that belong to this Slurm: those that have its settings."""
        sign = f"SLURM_CONF={self.folder}/slurm.conf".encode()
        found = []
        for entry in Path("/proc").iterdir():
            if not entry.name.isdigit() or int(entry.name) == os.getpid():
                continue
            try:
                if sign in (entry / "environ").read_bytes().split(b"\0"):
                    found.append(int(entry.name))
            except OSError:
                pass
        return found

    def stop(self):
        if len(self.daemons) == 3:
            jobs = self.ask("squeue", "-h", "-o", "%A").split()
            if jobs:
                self.ask("scancel", *jobs)
                time.sleep(2)
        for daemon in reversed(self.daemons):
            daemon.terminate()
        for daemon in reversed(self.daemons):
            try:
                daemon.wait(20)
            except subprocess.TimeoutExpired:
                daemon.kill()
                daemon.wait()
        for process in self.own_processes():
            try:
                os.kill(process, signal.SIGKILL)
            except ProcessLookupError:
                pass
        shutil.rmtree(self.folder, ignore_errors=True)
