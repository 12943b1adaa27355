"""A scheduler with simulated boards on this machine, for tools/rack."""

import getpass
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

HERE = pathlib.Path(__file__).resolve().parent
BUS = HERE.parent / "bus"
DESKS = 4
NETS = ["addr", "valid", "ready", "write", "gnt"]
TRIGGERS = ["addr in 0x50..0x57 & valid rises", "valid & !ready", "write rises", "gnt == 2",
            "(ready) 5 times"]
PATIENCE = 60  # s for the scheduler to come up
ENDING = 15     # s for the captures that run at the end


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


class Board:
    """A server with a simulated board, which its desk starts again when it dies."""

    def __init__(self, program, port, bench, log):
        self.command = [program, "--listen", f"127.0.0.1:{port}"]
        self.environment = {**os.environ, "VEK_BENCH": str(bench)}
        self.port = port
        self.log = log
        self.process = None
        self.isEnding = False
        self.deaths = 0
        self.thread = threading.Thread(target=self.serve)
        self.thread.start()

    def serve(self):
        while not self.isEnding:
            with open(self.log, "ab") as log:
                self.process = subprocess.Popen(self.command, env=self.environment, stdout=log,
                                                stderr=log, stdin=subprocess.DEVNULL,
                                                start_new_session=True)  # Ctrl-C is not for it
            self.process.wait()
            if not self.isEnding:
                self.deaths += 1
                time.sleep(1)

    def kill(self):
        self.process.kill()

    def end(self):
        self.isEnding = True
        while self.thread.is_alive():
            if self.process:
                self.process.terminate()
            self.thread.join(0.2)

    def refusals(self):
        return self.log.read_text().count("refused") if self.log.exists() else 0

    def refuses(self):
        """Whether the server turns a second client away and tells it, as the tests rely on."""
        with socket.create_connection(("127.0.0.1", self.port), PATIENCE) as first:
            hello = f"serving 127.0.0.1:{first.getsockname()[1]}"
            while hello not in self.log.read_text():
                time.sleep(0.05)
            before = self.refusals()
            with socket.create_connection(("127.0.0.1", self.port), PATIENCE) as second:
                try:
                    isClosed = second.recv(1) == b""
                except ConnectionResetError:
                    isClosed = True
            return isClosed and self.refusals() == before + 1


class Rack:
    """Up within `with`; what it started is ended at its end."""

    def __init__(self, programs, boards=8, work=2, dead=None, keep=False):
        self.vek = programs / "Analyzer/bin/vek"
        self.server = programs / "Programmer/bin/scanbridge"
        self.boardCount = boards
        self.work = work
        self.dead = dead  # index of a board whose server is never started
        self.keep = keep
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="rack-", dir="/tmp"))
        self.environment = {**os.environ, "SLURM_CONF": str(self.folder / "slurm.conf"),
                            "RACK": str(self.folder), "RACK_TMP": str(self.folder / "tmp"),
                            "PATH": f"{self.vek.parent}:{os.environ['PATH']}:/usr/sbin"}
        self.boards = {}
        self.daemons = {}
        self.left = []  # processes that had to be killed at the end

    def __enter__(self):
        try:
            self.lay()
            self.start_boards()
            self.start_daemon("slurmctld", ["slurmctld", "-D", "-i"])
            for desk in self.desks:
                self.start_desk(desk)
            self.until(lambda: self.slurm("sinfo", "-h", "-t", "idle", "-o", "%D")
                       == f"{len(self.desks)}\n", "the desks did not come up")
        except BaseException:
            self.end()
            raise
        return self

    def __exit__(self, *_):
        self.end()

    def lay(self):
        """Writes the rack's files; the scripts and the configuration are those beside this one."""
        for name in ("state", "spool", "log", "suspects", "runs", "golden", "boards", "tmp"):
            (self.folder / name).mkdir()
        for name in ("boards.sh", "capture.sh", "health.sh"):
            shutil.copy(HERE / name, self.folder)
        self.desks = [f"desk{i + 1}" for i in range((self.boardCount + 1) // 2)]
        ports = free_ports(1 + DESKS + self.boardCount)
        filled = {"FOLDER": str(self.folder), "CONTROLLER": "localhost", "CONTROLLER_PORT": str(ports[0]),
                  "USER": getpass.getuser(), "DESK_TIMEOUT": "10", "HEALTH_INTERVAL": "5"}
        text = (HERE / "slurm.conf").read_text()
        for key, value in filled.items():
            text = text.replace(f"@{key}@", value)
        (self.folder / "slurm.conf").write_text(text)
        nodes, gres, table = [], [], []
        for i, desk in enumerate(self.desks):
            numbers = [n for n in (2 * i, 2 * i + 1) if n < self.boardCount]
            nodes.append(f"NodeName={desk} NodeHostname=localhost NodeAddr=127.0.0.1 Port={ports[1 + i]} "
                         f"CPUs={len(numbers)} Gres=board:tk501:{len(numbers)}")
            for place, number in enumerate(numbers):
                file = self.folder / f"boards/{number}"
                file.touch()
                gres.append(f"NodeName={desk} Name=board Type=tk501 File={file}")
                port = ports[1 + DESKS + number]
                table.append("\t".join([desk, str(place), f"board{number}", f"127.0.0.1:{port}", "-", "-",
                                        "TK-501"]))
                self.boards[number] = port
        nodes.append(f"PartitionName=boards Nodes={','.join(self.desks)} Default=YES MaxTime=10 State=UP")
        (self.folder / "desks.conf").write_text("\n".join(nodes) + "\n")
        (self.folder / "gres.conf").write_text("\n".join(gres) + "\n")
        (self.folder / "boards.tsv").write_text("\n".join(table) + "\n")

    def start_boards(self):
        """All run throughout, of one design whose configuration is made from the demo's dump."""
        design = self.folder / "bus"
        subprocess.run([self.vek, "new", BUS / "bus.vcd", "--clock", "bus_tb.dut.clk", "--scope",
                        "bus_tb.dut", *NETS, "--windows", "2", "--units", "5", "-o", design],
                       check=True, stdout=subprocess.DEVNULL)
        bench = json.loads((self.folder / "bus.json").read_text())
        bench["faults"] = {"work": self.work}
        (self.folder / "bus.json").write_text(json.dumps(bench))
        for number, port in self.boards.items():
            self.boards[number] = None if number == self.dead else Board(
                self.server, port, self.folder / "bus.json", self.folder / f"log/board{number}")
            if number != self.dead:
                self.until(lambda: self.listens(port), f"board {number} does not listen")
                self.port = port
        for i, trigger in enumerate(TRIGGERS):
            golden = self.folder / f"golden/{i}"
            golden.mkdir()
            subprocess.run([self.vek, "run", f"{design}.vek", "--server", f"127.0.0.1:{self.port}", "--device",
                            "TK-501", "--trigger", trigger, "-o", f"{golden}/", "--manifest",
                            golden / "run.json"],
                           check=True, stdout=subprocess.DEVNULL)

    @staticmethod
    def listens(port):
        line = f":{port:04X} "
        return any(line in row and " 0A " in row for row in open("/proc/net/tcp"))

    def start_daemon(self, name, command):
        with open(self.folder / f"log/{name}-out", "ab") as log:
            self.daemons[name] = subprocess.Popen(command, env=self.environment, stdout=log, stderr=log,
                                                  stdin=subprocess.DEVNULL, start_new_session=True)

    def start_desk(self, desk):
        self.start_daemon(desk, ["slurmd", "-D", "-N", desk])

    def end_daemon(self, name):
        process = self.daemons.pop(name)
        process.terminate()
        try:
            process.wait(10)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    def slurm(self, *command):
        """What a command of the scheduler prints; None when it failed, as while the controller starts."""
        done = subprocess.run(command, env=self.environment, capture_output=True, text=True)
        return done.stdout if done.returncode == 0 else None

    def until(self, isSo, problem, patience=PATIENCE):
        end = time.monotonic() + patience
        while not isSo():
            if time.monotonic() > end:
                logs = "".join(f"\n== {log.name}\n{log.read_text()[-1500:]}"
                               for log in sorted((self.folder / "log").glob("slurm*")))
                raise SystemExit(f"rack: {problem}{logs}")
            time.sleep(0.2)

    def submit(self, captures):
        """An array with a task a capture."""
        lines = [f"capture{n}\t{self.folder}/bus.vek\t{self.folder}/golden/{n % len(TRIGGERS)}\t"
                 f"{TRIGGERS[n % len(TRIGGERS)]}\n" for n in range(captures)]
        (self.folder / "captures.tsv").write_text("".join(lines))
        (self.folder / "expected.txt").write_text("".join(f"capture{n}\n" for n in range(captures)))
        self.began = time.monotonic()
        self.submit_tasks(f"1-{captures}")

    def submit_again(self):
        """The captures that came to no end, after the queue has; how many. The scheduler forgets to
        put back a job that ends while its desk does not answer, if the desk is counted down then."""
        report = json.loads(self.report("--json", capture_output=True, text=True).stdout)
        names = report["missing"] + [run["label"] for run in report["runs"] if run["counts"]
                                     and run["outcome"] in ("unfinished", "stopped", "board-error")]
        if names:
            self.submit_tasks(",".join(str(int(name.removeprefix("capture")) + 1) for name in names))
        return len(names)

    def submit_tasks(self, tasks):
        said = self.slurm("sbatch", f"--array={tasks}", "--gres=board:tk501:1", "--parsable", "--output",
                          f"{self.folder}/log/task-%a", "--open-mode=append", str(self.folder / "capture.sh"),
                          str(self.folder / "captures.tsv"), str(self.folder / "runs"))
        if not said:
            raise SystemExit("rack: the captures were not taken")

    def queue(self):
        """How many tasks are in which state; one that was put back counts as pending."""
        end = time.monotonic() + PATIENCE
        while (said := self.slurm("squeue", "-h", "-r", "-o", "%T")) is None:
            if time.monotonic() > end:
                raise SystemExit("rack: the controller does not tell its queue")
        rows = said.split()
        return {state: rows.count(state) for state in sorted(set(rows))}

    def wait(self, show=False, patience=600):
        """Seconds since the captures were submitted."""
        end = time.monotonic() + patience
        while queue := self.queue():
            if show:
                print("queue:", ", ".join(f"{count} {state.lower()}" for state, count in queue.items()),
                      flush=True)
            if time.monotonic() > end:
                raise SystemExit(f"rack: the queue does not come to its end: {queue}")
            time.sleep(2 if show else 0.3)
        return time.monotonic() - self.began

    def report(self, *options, **how):
        return subprocess.run([self.vek, "report", self.folder / "runs", "--expected",
                               self.folder / "expected.txt", *options], **how)

    def end(self):
        """Ends all that was started, by its id, and removes the folder. A second Ctrl-C would leave
        the rest running; servers started later would inherit it if it stayed ignored."""
        before = {number: signal.signal(number, signal.SIG_IGN)
                  for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)}
        try:
            self.take_down()
        finally:
            for number, handler in before.items():
                signal.signal(number, handler)

    def take_down(self):
        if "slurmctld" in self.daemons and self.slurm("scancel", "--user", getpass.getuser()) is not None:
            patience = time.monotonic() + ENDING
            while self.slurm("squeue", "-h") and time.monotonic() < patience:
                time.sleep(0.2)
        for name in sorted(self.daemons, key=lambda name: name == "slurmctld"):  # the controller last
            self.end_daemon(name)
        for board in self.boards.values():
            if isinstance(board, Board):
                board.end()
        self.left = self.processes()
        for process in self.left:
            os.kill(process, signal.SIGKILL)
        if self.keep:
            print(f"runs and logs: {self.folder}", file=sys.stderr)
        else:
            shutil.rmtree(self.folder, ignore_errors=True)

    def processes(self):
        """Ids of all processes below the daemons: they have the rack's folder in their environment."""
        mark = f"RACK={self.folder}".encode()
        found = []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if mark in (process / "environ").read_bytes().split(b"\0"):
                    found.append(int(process.name))
            except OSError:
                pass  # it has just ended, or is another user's
        return found
