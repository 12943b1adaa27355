"""What must hold in a rack where things go wrong, for tools/rack --test."""

import collections
import datetime
import json
import os
import pathlib
import random
import re
import signal
import time

KILLS = 10          # of captures: half by SIGKILL, half by putting the job back while it runs
DEATHS = 5          # of servers, which their desks start again
PAUSE = 0.8         # s between two troubles


class Troubles:
    def __init__(self, rack, seed):
        self.rack = rack
        self.random = random.Random(seed)
        self.killed = 0
        self.returned = None  # when the lost desk was started again, as in manifests
        self.checks = 0
        self.problems = []
        print(f"seed {seed}", flush=True)

    def run(self):
        """Makes trouble while the captures run, and looks at what became of them. The exit status."""
        troubles = [self.kill_capture, self.put_back] * (KILLS // 2) + [self.kill_server] * DEATHS
        self.random.shuffle(troubles)
        self.rack.until(lambda: self.captures(), "no capture has begun")
        self.lose_desk()
        while (troubles or not self.returned) and self.rack.queue():
            comes = troubles and troubles[-1]()
            if comes:
                troubles.pop()
            self.return_desk()
            time.sleep(PAUSE if comes else 0.05)
        seconds = self.rack.wait(show=True)
        if again := self.rack.submit_again():
            print(f"{again} submitted again")
            self.rack.wait(show=True)
        self.expect(not troubles, f"the captures ended before {len(troubles)} of the troubles came")
        print(f"all done after {seconds:.0f} s\n", flush=True)
        self.look_at_scheduler()
        self.look_at_boards()
        self.look_at_report()
        for problem in self.problems:
            print(f"FAILED: {problem}")
        print(f"{self.checks - len(self.problems)} passed, {len(self.problems)} failed")
        return int(bool(self.problems))

    def expect(self, isSo, problem):
        self.checks += 1
        if not isSo:
            self.problems.append(problem)

    def captures(self):
        """The processes of this rack's captures that are at work, on boards that are not dead."""
        begin = b"vek\0run\0" + str(self.rack.folder).encode() + b"/"
        dead = f"VEK_BOARD=board{self.rack.dead}\0".encode()
        found = []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                isOurs = (process / "cmdline").read_bytes().startswith(begin)
                if isOurs and dead not in (process / "environ").read_bytes():
                    found.append(int(process.name))
            except OSError:
                pass  # it has just ended
        return found

    @staticmethod
    def environment(process):
        """Empty for one that has ended."""
        try:
            text = pathlib.Path(f"/proc/{process}/environ").read_text()
        except OSError:
            return {}
        return dict(entry.split("=", 1) for entry in text.split("\0") if "=" in entry)

    def kill_capture(self):
        running = self.captures()
        if not running:
            return False
        try:
            os.kill(self.random.choice(running), signal.SIGKILL)
        except ProcessLookupError:
            return False
        self.killed += 1
        return True

    def put_back(self):
        """As an operator does: the scheduler ends the job and starts it again."""
        running = self.captures()
        if not running:
            return False
        process = self.random.choice(running)
        try:
            os.kill(process, signal.SIGSTOP)  # so that it can't be through before it is ended
        except ProcessLookupError:
            return False
        job = self.environment(process)
        if not job:
            return False
        task = f"{job['SLURM_ARRAY_JOB_ID']}_{job['SLURM_ARRAY_TASK_ID']}"
        if self.rack.slurm("scontrol", "requeue", task) is None:
            os.kill(process, signal.SIGCONT)
            return False
        self.killed += 1
        return True

    def kill_server(self):
        """One whose board is at work, if the capture is not just at its end."""
        running = self.captures()
        if not running:
            return False
        name = self.environment(self.random.choice(running)).get("VEK_BOARD")
        board = name and self.rack.boards[int(name.removeprefix("board"))]
        if not board or board.process.poll() is not None:
            return False  # it is being started again
        board.kill()
        return True

    def lose_desk(self):
        """One that has no dead board."""
        dead = self.rack.desks[self.rack.dead // 2]
        self.lost = self.random.choice([d for d in self.rack.desks if d != dead])
        self.rack.end_daemon(self.lost)

    def return_desk(self):
        """Once the scheduler has missed it."""
        state = self.rack.slurm("sinfo", "-h", "-n", self.lost, "-o", "%t") or ""
        if not self.returned and state.startswith("down"):
            self.rack.start_desk(self.lost)
            self.returned = datetime.datetime.now(datetime.timezone.utc).isoformat()

    def look_at_scheduler(self):
        completed = collections.Counter()
        for line in (self.rack.folder / "log/completed").read_text().splitlines():
            if "JobState=COMPLETED" in line:
                completed[int(re.search(r"ArrayTaskId=(\d+)", line)[1])] += 1
        wanted = (self.rack.folder / "captures.tsv").read_text().count("\n")
        self.expect(completed == collections.Counter(range(1, wanted + 1)),
                    f"tasks that did not end well once and only once: "
                    f"{[n for n in range(1, wanted + 1) if completed[n] != 1]}")

    def look_at_boards(self):
        for number, board in self.rack.boards.items():
            if board:
                self.expect(board.refusals() == 0, f"board {number} refused a second client")
                self.expect(board.refuses(), f"board {number} lets two clients in")
        deaths = sum(board.deaths for board in self.rack.boards.values() if board)
        self.expect(deaths == DEATHS, f"{deaths} servers were started again, not {DEATHS}")
        self.expect(self.killed == KILLS, f"{self.killed} captures were killed, not {KILLS}")
        runs = collections.defaultdict(list)
        for path in self.rack.folder.glob("runs/*/*/run.json"):
            manifest = json.loads(path.read_text())
            if manifest["state"] == "ended":
                runs[manifest["labels"]["board"]].append((manifest["started"], manifest["ended"]))
        back = [f"board{n}" for n in self.rack.boards if self.rack.desks[n // 2] == self.lost]
        self.expect(self.returned and
                    any(began > self.returned for board in back for began, _ in runs[board]),
                    f"no capture ran on {self.lost} after its return")
        for board, times in runs.items():
            times.sort()
            self.expect(all(a[1] <= b[0] for a, b in zip(times, times[1:])),
                        f"two captures at once on {board}")

    def look_at_report(self):
        self.rack.report()
        report = json.loads(self.rack.report("--json", capture_output=True, text=True).stdout)
        wanted = (self.rack.folder / "expected.txt").read_text().count("\n")
        tally = report["captures"]
        self.expect(tally["all"] == tally["passed"] == wanted and report["all_passed"],
                    f"of {wanted} captures the report has {tally}, "
                    f"{len(report['missing'])} missing, {len(report['broken'])} broken")
        self.expect(report["earlier_attempts"] >= KILLS,
                    f"{report['earlier_attempts']} earlier attempts, though {KILLS} were killed")
        failing = [board["board"] for board in report["failing_boards"]]
        dead = f"board{self.rack.dead}"
        self.expect(dead in failing, f"the report does not name {dead}, but {failing}")
