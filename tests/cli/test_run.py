"""vek run: each cause brought about with the real programs, and what it leaves."""

import json
import os
import re
import resource
import shutil
import signal
import socket
import subprocess
import textwrap

import jsonschema
import pytest

from desk import SOURCE, until

SCHEMA = json.loads((SOURCE / "docs/manifest.schema.json").read_text())
NEVER = lambda text: text.replace("M0&amp;(M1^M2)|M5&amp;!(M1|M2)", "M0&amp;!M0")
LITE = """<?xml version="1"?><VEK_CONFIG><Version>3.0</Version><Mode>Lite</Mode>
    <SxCore_Lite index="0" sample_clock="clk" capture_amount="100"/></VEK_CONFIG>"""
ALL = ["bus-stall_core0_window0.csv", "bus-stall_core0_window1.csv", "run.json"]


def put(name, value):
    return lambda text: re.sub(rf'{name}="[^"]*"', f'{name}="{value}"', text, count=1)


def edit(old, new):
    return lambda text: text.replace(old, new)


# name: status, cause, a word of the message, how the desk is laid, arguments
CAUSES = {
    "done": (0, "done", "", {}, []),
    "no trigger": (10, "no-trigger", "stimulus has ended", dict(edit=NEVER), []),
    "no trigger in time": (10, "no-trigger", "No trigger in time",
                           dict(edit=NEVER, stimulus=dict(endless=True)), ["--wait", "300ms"]),
    "not opened": (7, "open-failed", "cable, location and power", dict(open_result=-1), []),
    "other location": (7, "open-failed", "could not be opened", {}, ["--location", "5"]),
    "empty": (8, "empty", "download", dict(open_result=-20), []),
    "device error": (9, "device-error", "error -7", dict(open_result=-7), []),
    "broken bench": (9, "device-error", "nothing.vcd", dict(stimulus=dict(vcd="nothing.vcd")), []),
    "never listens": (5, "no-answer", "took no connection", dict(faults=dict(never_listen=True)),
                      ["--reply-timeout", "1s"]),
    "silent": (5, "no-answer", "owes a reply", dict(faults=dict(silent_from=3)),
               ["--reply-timeout", "1s"]),
    "short": (5, "no-answer", "incomplete", dict(faults=dict(of="READ_RAM", shortens=4)), []),
    "lost reply": (5, "no-answer", "incomplete", dict(faults=dict(of="READ_RAM", loses=1)), []),
    "dies": (11, "server-lost", "server has ended", dict(faults=dict(of="READ_RAM", die_after=3)),
             []),
    "closes": (11, "server-lost", "server has ended", dict(faults=dict(close_after=2)), []),
}


@pytest.mark.parametrize("name", CAUSES)
def test_cause(desk, name):
    status, cause, word, bench, arguments = CAUSES[name]
    desk.lay(**{"cables": [{"kind": "FT2CH", "location": 3}], **bench})
    got, out, err = desk.run("--manifest", desk.out / "run.json", *arguments)
    manifest = desk.manifest()
    jsonschema.validate(manifest, SCHEMA)
    assert (got, manifest["state"]) == (status, "ended")
    assert manifest["outcome"]["cause"] == cause and manifest["outcome"]["status"] == status
    errors = [line for line in err.splitlines() if line.startswith("vek: error: ")]
    assert len(errors) == (status != 0) and word in "".join(errors)
    written = [w["files"][0]["file"] for c in manifest["cores"] for w in c["windows"]]
    assert [f for f in desk.files() if f.endswith("csv")] == written
    assert out.splitlines() == [f"{desk.out}/{file}" for file in written]
    assert len(written) == {"done": 2, "short": 1, "lost reply": 1, "dies": 1}.get(name, 0)


@pytest.mark.parametrize("arguments, change, status, word", [
    (["--wait", "soon"], None, 2, "soon"),
    (["--amount", "8192"], None, 2, "memory"),
    (["--match", "M0=99999"], None, 2, "M0"),
    (["--match", "M9=1"], None, 2, "M9"),
    (["--expression", "M0&"], None, 2, "M0&"),
    (["--core", "4"], None, 2, "no core 4"),
    (["--server", "board:x"], None, 2, "HOST"),
    (["--format", "doc"], None, 2, "doc"),
    (["--cable", "USB"], None, 2, "USB"),
    ([], put("capture_amount", 0), 3, "below 1"),
    ([], put("window_num", 0), 3, "below 1"),
    ([], lambda text: LITE, 3, "no signals"),
    ([], edit("<SxCore", "<Core"), 3, ""),
    ([], edit(">3.0<", ">9.1<"), 3, "version of Vek config file is too high"),
    ([], edit(">3.0<", ">x<"), 3, "Invalid Vek"),
    ([], edit(">Standard<", ">Other<"), 3, "Other"),
    ([], edit("</VEK_CONFIG>", ""), 3, ":"),
])
def test_refused_before_the_server_is_started(desk, arguments, change, status, word):
    desk.lay(**({"edit": change} if change else {}))
    (desk.folder / "Programmer/bin/scanbridge").unlink()
    got, out, err = desk.run(*arguments)
    assert (got, out, desk.files()) == (status, "", [])
    assert word in err and len(err.splitlines()) == 1


def test_paced_as_the_batch_tool(desk):
    desk.lay()
    assert desk.run("--paced")[0] == 0
    batch = desk.start("-cable", "FT2CH", "-vek", desk.configuration, program="Analyzer/bin/veksh")
    assert batch.wait() == 0
    for name in desk.files():
        assert (desk.out / name).read_bytes() == (desk.folder / name).read_bytes()


def test_no_server_program(desk):
    desk.lay()
    (desk.folder / "Programmer/bin/scanbridge").unlink()
    got, _, err = desk.run()
    assert got == 4 and "scanbridge" in err


def test_busy_cable_and_queue(desk):
    desk.lay(edit=NEVER, stimulus=dict(endless=True))
    first = desk.start("--wait", "3s")
    until(lambda: desk.processes("scanbridge"), "a server")
    second = desk.start("--queue", "100ms", "--manifest", desk.folder / "second.json")
    assert second.communicate()[1].startswith("vek: error: Another run holds the cable")
    assert second.returncode == 6 and not (desk.folder / "second.json").exists()
    third = desk.start("--queue", "20s", "--wait", "0")
    assert first.wait() == 10
    assert desk.finish(third)[0] == 10


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_signal(desk, number):
    desk.lay(edit=NEVER, stimulus=dict(endless=True))
    run = desk.start("--manifest", desk.out / "run.json", "--progress",
                     preexec_fn=lambda: signal.signal(number, signal.SIG_DFL))  # jobs ignore INT
    until(lambda: "waiting for the trigger" in run.stderr.readline(), "an armed core")
    assert desk.manifest()["state"] == "running"
    server, = desk.processes("scanbridge")  # a terminal's interrupt must not reach it
    assert os.getpgid(server) != os.getpgid(run.pid)
    jsonschema.validate(desk.manifest(), SCHEMA)
    run.send_signal(number)
    got, _, _ = desk.finish(run)
    assert got == 128 + number and desk.manifest()["outcome"]["cause"] == "signal"


def test_stopped_server_and_second_signal(desk):
    desk.lay(edit=NEVER, stimulus=dict(endless=True))
    run = desk.start("--reply-timeout", "3s", "--progress")
    until(lambda: "waiting for the trigger" in run.stderr.readline(), "an armed core")
    os.kill(desk.processes("scanbridge")[0], signal.SIGSTOP)
    assert desk.finish(run)[0] == 5

    run = desk.start("--progress")
    until(lambda: "waiting for the trigger" in run.stderr.readline(), "an armed core")
    os.kill(desk.processes("scanbridge")[0], signal.SIGSTOP)
    run.send_signal(signal.SIGTERM)
    until(lambda: "stopping" in run.stderr.readline(), "the first signal")
    run.send_signal(signal.SIGTERM)
    assert run.wait() == -signal.SIGTERM
    for server in desk.processes("scanbridge"):  # a system may have woken it
        os.kill(server, signal.SIGCONT)
    until(lambda: desk.processes() == [], "the server's end")


def test_killed_at_any_moment(desk):
    desk.lay()
    for delay in range(12):
        run = desk.start()
        try:
            run.wait(delay * 0.004)
        except Exception:
            run.kill()
            run.wait()
        assert desk.run("--manifest", desk.out / "run.json")[0] == 0
        assert desk.files() == ALL


def test_what_is_in_the_way(desk):
    desk.lay()
    desk.out.mkdir()
    target = desk.out / ALL[0]
    for put_there in (target.mkdir, lambda: target.symlink_to("/dev/full")):
        put_there()
        got, out, err = desk.run("--manifest", desk.out / "run.json")
        assert (got, out, desk.files()) == (12, "", ALL[:1]) and str(target) in err
        target.rmdir() if target.is_dir() else target.unlink()

    manifest = desk.out / "run.json"
    manifest.write_text("{}")  # somebody else's
    assert desk.run("--manifest", manifest)[0] == 12 and manifest.read_text() == "{}"
    assert desk.run("--manifest", "/dev/full")[0] == 12
    for name in ("bus-stall_core7_window12.csv", "bus-stall_core0_window1.vcd", "bus-stall.csv",
                 "bus-stall_core0_window0.csv.bak", "a_bus-stall_core0_window0.csv"):
        (desk.out / name).write_text("")
    manifest.unlink()
    assert desk.run("--manifest", manifest)[0] == 0
    assert desk.files() == ["a_bus-stall_core0_window0.csv", "bus-stall.csv", ALL[0],
                            "bus-stall_core0_window0.csv.bak", ALL[1], ALL[2]]


def test_full_disk(desk):
    desk.lay()

    def limit():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (8192, 8192))

    got, out, err = desk.run("--manifest", desk.out / "run.json", preexec_fn=limit)
    assert (got, out, desk.files()) == (12, "", ["run.json"]) and ALL[0] in err
    assert desk.manifest()["outcome"]["cause"] == "output"


def test_cores_by_their_own_index(desk):
    """One core fires, one never does, one is forced; indexes are no places."""
    def three(text):
        core = text[text.index("<SxCore"):text.index("</SxCore>") + len("</SxCore>")]
        second = NEVER(core).replace('index="0"', 'index="3"', 1)
        return text.replace(core, second + core.replace('index="0"', 'index="5"', 1))

    desk.lay(edit=three)
    shutil.copy(desk.configuration, desk.folder / "built.vek")
    manifest = desk.out / "run.json"
    assert desk.run("--wait", "10s", "--manifest", manifest)[0] == 10
    results = {core["index"]: core["result"] for core in desk.manifest()["cores"]}
    assert results == {3: "no-trigger", 5: "captured"}
    assert [f[:15] for f in desk.files()] == ["bus-stall_core5"] * 2 + ["run.json"]
    assert desk.run("--core", "3", "--force-after", "0", "--manifest", manifest)[0] == 0
    assert [(c["index"], c["forced"]) for c in desk.manifest()["cores"]] == [(3, True)]


def test_overrides_and_names(desk):
    desk.lay()
    desk.out = desk.folder / "neu%1 ä"
    manifest = desk.out / "run.json"
    got, _, err = desk.run("--amount", "200", "--windows", "1", "--position", "10", "--format",
                           "csv,vcd,rsx", "--match", "M0=1", "--manifest", manifest)
    assert got == 0 and "only 128 are read" in err
    window = desk.manifest()["cores"][0]["windows"][0]
    assert (window["samples"], window["trigger_sample"], len(window["files"])) == (128, 10, 2)
    assert desk.manifest()["warnings"]
    assert desk.files() == ["bus-stall.rsx", ALL[0], "bus-stall_core0_window0.vcd", "run.json"]
    assert desk.run("--format", "rsx")[0] == 0  # replaces its own session
    desk.configuration = desk.out / "bus-stall.rsx"  # a run from its own session keeps that
    before = desk.configuration.read_bytes()
    assert desk.run("--format", "rsx")[0] == 12 and desk.configuration.read_bytes() == before
    desk.configuration = desk.folder / "bus-stall.vek"
    (desk.out / "bus-stall.rsx").write_text("<KVX/>")
    assert desk.run("--format", "rsx")[0] == 12  # and nobody else's


@pytest.mark.parametrize("address, host", [("127.0.0.1", "localhost"), ("[::1]", "[::1]")])
def test_server_elsewhere(desk, address, host):
    """The same bytes over TCP; a second client and a lost or missing server are told."""
    desk.lay(stimulus=dict(endless=True))
    assert desk.run()[0] == 0
    local = {name: (desk.out / name).read_bytes() for name in desk.files()}
    board = desk.start("--listen", f"{address}:0", program="Programmer/bin/scanbridge")
    port = int(board.stdout.readline().rsplit(":", 1)[1])
    server = ("--server", f"{host}:{port}", "--manifest", desk.out / "run.json")
    for _ in range(5):  # one right behind the other
        run = desk.start(*server)
        assert (run.wait(), len(run.stdout.readlines()), run.stderr.read()) == (0, 2, "")
    assert {name: (desk.out / name).read_bytes() for name in local} == local
    assert desk.manifest()["server"] == f"{host}:{port}"

    connection = socket.create_connection((address.strip("[]"), port))
    assert all("serving" in board.stdout.readline() for _ in range(6))
    busy = desk.start(*server)
    assert busy.wait() == 6 and "another client" in busy.stderr.read()
    connection.close()
    desk.lay(edit=NEVER, stimulus=dict(endless=True))
    waiting = desk.start(*server, "--progress")
    until(lambda: "waiting for the trigger" in waiting.stderr.readline(), "an armed core")
    board.kill()
    board.wait()
    assert waiting.wait() == 11 and desk.manifest()["outcome"]["cause"] == "server-lost"
    for wrong in ("here", f"{address}:99999"):
        server_ = desk.start("--listen", wrong, program="Programmer/bin/scanbridge")
        assert server_.wait() == 1 and wrong in server_.stderr.read()
    refused = desk.run(*server, "--reply-timeout", "200ms")
    assert refused[0] == 5 and "refused" in refused[2]


def test_help_manual_and_completion(desk):
    """What the program says of itself stands in its manual page, and is completed."""
    def help_of(command):
        return subprocess.run([desk.folder / "Analyzer/bin/vek", command, "--help"], text=True,
                              capture_output=True, check=True).stdout

    help_ = help_of("run")
    manual = (SOURCE / "packaging/vek.1").read_text()
    assert textwrap.dedent(help_.split("Exit status:\n")[1]).strip("\n") in manual
    assert "".join(help_.partition("Exit status:\n")[1:]) in help_of("replay")
    options, of_replay, of_report = (
        set(re.findall(r"(?m)^  (?:-\w,)?(--[a-z-]+)", help_of(command)))
        for command in ("run", "replay", "report"))
    assert options | of_replay | of_report <= set(re.findall(r"--[a-z-]+", manual.replace("\\-", "-")))

    def completed(*words):
        script = (f"source {SOURCE}/packaging/vek.bash; COMP_WORDS=(vek {' '.join(words)}); "
                  f"COMP_CWORD={len(words)}; _vek; printf '%s\\n' \"${{COMPREPLY[@]}}\"")
        return subprocess.run(["bash", "-c", script], text=True, capture_output=True, check=True,
                              cwd=SOURCE / "examples/bus").stdout.split()

    assert set(completed("run", "--")) == options
    assert set(completed("replay", "--")) == of_replay
    assert set(completed("report", "--")) == of_report
    assert completed("run", "--cable", "L") == ["LPT"]
    assert completed("run", "--format", "csv,v") == ["csv,vcd"]
    assert completed("run", "bus-stall") == ["bus-stall.vek"]
