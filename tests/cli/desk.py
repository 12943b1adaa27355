"""A desk of its own for each test: the built programs, a bench, and a folder for the sockets."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import time

BUILD = pathlib.Path(os.environ["VEK_BUILD_ROOT"])
SOURCE = pathlib.Path(os.environ["VEK_SOURCE_ROOT"])
WAIT = 30  # s; nothing here takes long


def until(condition, what):
    end = time.monotonic() + WAIT
    while not condition():
        assert time.monotonic() < end, what
        time.sleep(0.005)


class Desk:
    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="vek", dir="/tmp"))  # short: sockets
        self.out = self.folder / "out"
        (self.folder / "tmp").mkdir()
        for name in ("Analyzer/bin/vek", "Analyzer/bin/veksh", "Programmer/bin/scanbridge"):
            target = self.folder / name
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(BUILD / name, target)
        self.environment = {k: v for k, v in os.environ.items() if not k.startswith("VEK_")}
        self.environment.update(TMPDIR=str(self.folder / "tmp"), LC_ALL="C")

    def lay(self, demo="bus/bus-stall", edit=lambda text: text, **members):
        """The files of a demo, with an edited configuration and other members in the bench."""
        source = (SOURCE / "examples" / demo).parent
        for file in source.glob("*.vcd"):
            shutil.copy(file, self.folder)
        name = demo.split("/")[1]
        built = (source / f"{name}.vek").read_text()
        (self.folder / "built.vek").write_text(built)
        self.configuration = self.folder / f"{name}.vek"
        self.configuration.write_text(edit(built))
        bench = json.loads((source / f"{name}.json").read_text())
        stimulus = {**bench.pop("stimulus"), **members.pop("stimulus", {})}
        bench.update(design="built.vek", stimulus=stimulus, **members)
        path = self.folder / "bench.json"
        path.write_text(json.dumps(bench))
        self.environment["VEK_BENCH"] = str(path)
        return self

    def start(self, *arguments, program="Analyzer/bin/vek", command="run", **options):
        if command and program.endswith("vek"):
            arguments = ("run", "-o", f"{self.out}/", *arguments, self.configuration)
        return subprocess.Popen([self.folder / program, *map(str, arguments)], text=True,
                                **{"stdout": subprocess.PIPE, **options}, stderr=subprocess.PIPE,
                                cwd=self.folder, env=self.environment)

    def run(self, *arguments, **options):
        """Status, standard output and standard error; what a run must never leave is looked for."""
        return self.finish(self.start(*arguments, **options))

    def finish(self, process):
        out, err = process.communicate(timeout=WAIT)
        assert self.processes() == []
        assert list((self.folder / "tmp").iterdir()) == []
        assert [f for f in self.files() if re.search(r"\.\w{6}$", f)] == []  # temporary names
        return process.returncode, out, err

    def files(self):
        return sorted(f.name for f in self.out.glob("*")) if self.out.exists() else []

    def manifest(self):
        return json.loads((self.out / "run.json").read_text())

    def processes(self, name=""):
        """Ids of the programs of this desk that run."""
        found = []
        for entry in pathlib.Path("/proc").iterdir():
            try:
                if os.readlink(entry / "exe").startswith(f"{self.folder}/"):
                    if os.readlink(entry / "exe").endswith(name):
                        found.append(int(entry.name))
            except OSError:
                continue
        return found

    def remove(self):
        for process in self.processes():
            os.kill(process, 9)
        shutil.rmtree(self.folder)
