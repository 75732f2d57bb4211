"""A real Slurm on this machine alone: its daemons, ports and files are a test's own."""

import contextlib
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import time

DEADLINE = 60  # seconds that neither start nor end ever needs
CONFIGURATION = """
ClusterName=test
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={ports[0]}
SlurmdPort={ports[1]}
AuthInfo=socket={folder}/munge.socket
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SchedulerParameters=sched_interval=1,sched_min_interval=0,batch_sched_delay=0
ReturnToService=2
SlurmUser=root
SlurmdUser=root
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd.log
NodeName={host} NodeAddr=127.0.0.1 CPUs=2 RealMemory=1000 State=UNKNOWN
PartitionName=main Nodes={host} Default=YES MaxTime=INFINITE State=UP
"""
PROGRAMS = ("munged", "slurmctld", "slurmd", "sbatch", "squeue")


def why_not():
    """Why there can be none here; empty when there can."""
    lacking = [name for name in PROGRAMS if not shutil.which(name, path=_path())]
    if lacking:
        return f"not installed: {', '.join(lacking)}; run setup.sh"
    return "" if os.getuid() == 0 else "its daemons run as root"


def _path():
    return os.environ["PATH"] + ":/usr/sbin"


def _free_ports(count):
    with contextlib.ExitStack() as held:
        sockets = [held.enter_context(socket.socket()) for _ in range(count)]
        for each in sockets:
            each.bind(("127.0.0.1", 0))
        return [each.getsockname()[1] for each in sockets]


def _wait(condition, what):
    deadline = time.monotonic() + DEADLINE
    while not condition():
        assert time.monotonic() < deadline, what
        time.sleep(0.1)


def _gone(pid):
    try:
        with contextlib.suppress(ChildProcessError):
            os.waitpid(pid, os.WNOHANG)
        os.kill(pid, 0)
        return False
    except ProcessLookupError:
        return True


@contextlib.contextmanager
def cluster(folder):
    """The environment in which sbatch finds it."""
    folder = pathlib.Path(folder)
    for name in ("state", "spool"):
        (folder / name).mkdir(parents=True)
    (folder / "key").write_bytes(os.urandom(128))
    (folder / "key").chmod(0o600)
    text = CONFIGURATION.format(host=socket.gethostname().partition(".")[0], folder=folder,
                                ports=_free_ports(2))
    (folder / "slurm.conf").write_text(text)
    environment = os.environ | {"SLURM_CONF": str(folder / "slurm.conf"), "PATH": _path()}
    pids = [folder / f"{name}.pid" for name in ("slurmd", "slurmctld", "munged")]

    def call(*words):
        subprocess.run([str(word) for word in words], env=environment, check=True, timeout=DEADLINE,
                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    try:
        call("munged", "--force", "--key-file", folder / "key", "--socket", folder / "munge.socket",
             "--pid-file", pids[2], "--log-file", folder / "munged.log", "--seed-file",
             folder / "seed")
        call("slurmctld", "-c")
        call("slurmd")
        _wait(lambda: b"idle" in subprocess.run(
            ["sinfo", "-h", "-o", "%T"], env=environment, capture_output=True,
            check=False).stdout, "no node is ready")
        yield environment
    finally:
        subprocess.run(["scancel", "--user=root"], env=environment, check=False)
        running = [int(path.read_text()) for path in pids if path.exists()]
        for pid in running:
            with contextlib.suppress(ProcessLookupError):
                os.kill(pid, signal.SIGTERM)
        _wait(lambda: all(_gone(pid) for pid in running), "a daemon does not end")
