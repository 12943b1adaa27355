"""Recordings of the wire: vek run --record and --attach, vek replay."""

import contextlib
import hashlib
import json
import os
import re
import signal
import struct
import subprocess
import zlib

import pytest

from desk import SOURCE, until

WIRES = SOURCE / "tests/cli/wires"
DEMOS = ["bus/bus-stall", "bus/bus-start", "uart/uart-lines", "uart/uart-link"]
NEVER = lambda text: text.replace("M0&amp;(M1^M2)|M5&amp;!(M1|M2)", "M0&amp;!M0")


def read(data):
    """The head and the records of a recording."""
    head, rest = data.split(b"\n\n", 1)
    check, stream = hashlib.sha256(head + b"\n\n").digest()[:16], b""
    while rest:
        size, = struct.unpack_from(">I", rest, 1)
        block, told, rest = rest[:5 + size], rest[5 + size:21 + size], rest[21 + size:]
        check = hashlib.sha256(check + block).digest()[:16]
        assert check == told and (block[:1] == b"F" or (block, rest) == (b"E\0\0\0\0", b""))
        stream += zlib.decompress(block[9:]) if size else b""
    records = []
    while stream:
        size = 9 if stream[:1] == b"x" else 13 + struct.unpack_from(">I", stream, 9)[0]
        records.append(stream[:size])
        stream = stream[size:]
    return head + b"\n\n", records


def write(head, records):
    check, data, stream = hashlib.sha256(head).digest()[:16], head, b"".join(records)
    parts = [stream[i:i + 50000] for i in range(0, len(stream), 50000)]
    for kind, part in [(b"F", part) for part in parts] + [(b"E", b"")]:
        packed = struct.pack(">I", len(part)) + zlib.compress(part) if part else b""
        block = kind + struct.pack(">I", len(packed)) + packed
        check = hashlib.sha256(check + block).digest()[:16]
        data += block + check
    return data


def start(desk, *arguments):
    return subprocess.Popen([desk.folder / "Analyzer/bin/vek", "replay", *map(str, arguments)],
                            text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                            cwd=desk.folder, env=desk.environment)


def refused(desk, *arguments):
    replay = start(desk, *arguments)
    out, err = replay.communicate(timeout=30)
    assert out == "" and len(err.splitlines()) == 1 and err.startswith("vek: error: ")
    return replay.returncode, err


def replayed(desk, wire, *arguments, program="Analyzer/bin/vek", options=()):
    """Statuses of the client and of the replay, what the latter told, the client's errors."""
    replay = start(desk, wire, *options)
    assert replay.stdout.readline() == "listening on vek1\n"
    client = desk.start(*arguments, program=program)
    err = client.communicate(timeout=30)[1]
    told = "".join(replay.communicate(timeout=30))
    assert desk.processes() == [] and list((desk.folder / "tmp").iterdir()) == []
    return client.returncode, replay.returncode, told, err


def contents(desk):
    return {name: (desk.out / name).read_bytes() for name in desk.files() if "_core" in name}


def recorded(desk, *arguments, status=0):
    wire = desk.folder / "wire.vekwire"
    got, out, err = desk.run("--record", wire, *arguments)
    assert got == status, err
    assert out.splitlines()[-1] == str(wire)
    return wire


@pytest.mark.parametrize("demo", DEMOS)
def test_demo(desk, demo):
    """The chip's own answers again: from the kept recording, a new one, and one of a replay."""
    desk.lay(demo)
    fresh = recorded(desk)
    captured = contents(desk)
    kept = WIRES / (demo.split("/")[1] + ".vekwire")
    again = desk.folder / "again.vekwire"
    for wire in kept, fresh, again:
        for name in captured:
            (desk.out / name).unlink()
        client = ["--attach"] + ["--record", again] * (wire != again)
        assert replayed(desk, wire, *client)[:2] == (0, 0)
        assert contents(desk) == captured
    batch = replayed(desk, kept, "-cable", "FT2CH", "-vek", desk.configuration,
                     program="Analyzer/bin/veksh")
    assert batch[:2] == (0, 0)
    written = {path.name: path.read_bytes() for path in desk.folder.glob("*.csv")}
    assert sorted(written.values()) == sorted(captured.values())  # a lite core's has another name


def test_polls_skip_ahead(desk):
    """A run that has waited a hundred polls is not waited for again."""
    desk.lay()
    wire = recorded(desk)
    served = replayed(desk, wire, "--attach")[2]
    head, records = read(wire.read_bytes())
    word, data = "READ_START_REG".encode("utf-16-be"), "DATA".encode("utf-16-be")
    place = next(i for i, record in enumerate(records) if word in record)
    poll, answer = records[place], next(r for r in records[place:] if data in r)
    bits = answer.index(data) + 8 + 5 + 4  # behind type and size
    waiting = answer[:bits] + b"\1" + answer[bits + 1:]
    wire.write_bytes(write(head, records[:place] + [poll, waiting] * 100 + records[place:]))
    assert replayed(desk, wire, "--attach") == (0, 0, served, "")


@pytest.mark.parametrize("arguments, status, forced", [
    (["--wait", "200ms"], 10, False), (["--force-after", "100ms"], 0, True)])
def test_stopped_and_forced(desk, arguments, status, forced):
    """A poll must not skip beyond the word that has made the core fall silent."""
    desk.lay(edit=NEVER, stimulus=dict(endless=True))
    manifest = ["--manifest", desk.out / "run.json"]
    wire = recorded(desk, *arguments, status=status)
    captured = contents(desk)
    assert replayed(desk, wire, "--attach", *arguments, *manifest)[:2] == (status, 0)
    assert contents(desk) == captured
    assert desk.manifest()["cores"][0]["forced"] == forced


@pytest.mark.parametrize("faults, status", [
    (dict(of="READ_RAM", die_after=3), 11), (dict(of="READ_RAM", loses=1), 5),
    (dict(silent_from=3), 5), (dict(garbled_from=1), 5)])
def test_faults_come_again(desk, faults, status):
    desk.lay(faults=faults)
    wire = recorded(desk, "--reply-timeout", "500ms", status=status)
    assert replayed(desk, wire, "--attach", "--reply-timeout", "500ms")[:2] == (status, 0)


@pytest.mark.parametrize("arguments, status, word", [
    (["--position", "1"], 0, "WRITE_REGISTOR DATA="), (["--amount", "96"], 11, "READ_RAM"),
    (["--location", "5"], 9, "OPEN")])
def test_never_recorded(desk, arguments, status, word):
    desk.lay()
    wire = recorded(desk)
    got, replay, told, err = replayed(desk, wire, "--attach", *arguments)
    assert (got, replay) == (status, 1)
    lines = [line for line in told.splitlines() if "warning: never recorded" in line]
    assert 0 < len(lines) <= 10 and any(word in line for line in lines)
    assert status != 9 or "The recording holds no such request." in err
    json_ = start(desk, wire, "--json")
    assert json_.stderr.readline() == "vek: listening on vek1\n"
    assert desk.start("--attach", *arguments).wait() == status
    outcome = json.loads(json_.communicate()[0])
    assert outcome["unrecorded"] > 0 and outcome["recording"]["socket"] == "local"


def test_broken_files(desk):
    data = (WIRES / "uart-lines.vekwire").read_bytes()
    wire = desk.folder / "wire.vekwire"

    def told(content):
        wire.write_bytes(content)
        status, err = refused(desk, wire)
        assert status == 3 and str(wire) in err
        return err

    for size in [1, 8, 9, 40, *range(100, len(data), 97), len(data) - 1]:
        assert "it is cut" in told(data[:size])
    for place in [*range(10, len(data), 41), len(data) - 1]:
        altered = bytes([*data[:place], data[place] ^ 4, *data[place + 1:]])
        assert re.search("altered|cut", told(altered))
    head, records = read(data)
    assert "altered" in told(data + b"\n")
    assert "altered" in told(write(head, records + [b"?" + b"\0" * 8]))
    assert "altered" in told(write(head, records + [b"<" + b"\0" * 8 + b"\xff" * 4]))
    assert "altered" in told(write(head, records + [b"<\0"]))
    assert "message" in told(write(head, records + [b">" + b"\0" * 12]))
    assert "empty" in told(b"")
    assert "version 2" in told(data.replace(b"vekwire 1", b"vekwire 2", 1))
    assert "no recording" in told(b"PK\3\4")
    assert refused(desk, desk.folder / "none.vekwire")[0] == 3
    assert refused(desk, desk.folder)[0] == 3


def test_killed_run_leaves_a_prefix(desk):
    desk.lay(edit=NEVER, stimulus=dict(endless=True))
    wire = desk.folder / "wire.vekwire"
    run = desk.start("--record", wire)
    until(lambda: wire.exists() and wire.stat().st_size > 500, "blocks")
    run.kill()
    run.wait()
    until(lambda: desk.processes() == [], "the server's end")
    assert "cut" in refused(desk, wire)[1]
    with contextlib.suppress(FileNotFoundError):
        os.unlink(desk.folder / "tmp/vek1")
    stopped = replayed(desk, wire, "--attach", "--wait", "100ms", options=["--cut"])
    assert stopped[:2] == (10, 1) and "WRITE_START_REG" in stopped[2]  # it was never stopped


def test_whose_socket_it_is(desk):
    desk.lay()
    wire = WIRES / "bus-stall.vekwire"
    got, _, err = desk.run("--attach")
    assert got == 4 and "no JTAG server to attach to" in err
    assert desk.run("--attach", "--server", "localhost")[0] == 2
    replay = start(desk, wire)
    replay.stdout.readline()
    assert refused(desk, wire)[0] == 6  # a live server is not replaced
    own = desk.start("--queue", "0")
    assert own.wait() == 6 and "Another program's JTAG server" in own.stderr.read()
    replay.send_signal(signal.SIGTERM)
    assert replay.wait() == 128 + signal.SIGTERM
    desk.lay(edit=NEVER, stimulus=dict(endless=True))
    run = desk.start("--progress")
    until(lambda: "waiting for the trigger" in run.stderr.readline(), "an armed core")
    assert refused(desk, wire)[0] == 6
    run.send_signal(signal.SIGTERM)
    assert desk.finish(run)[0] == 128 + signal.SIGTERM


def test_over_tcp(desk):
    desk.lay()
    assert desk.run()[0] == 0
    captured = contents(desk)
    replay = start(desk, WIRES / "bus-stall.vekwire", "--listen", "127.0.0.1:0")
    port = replay.stdout.readline().rsplit(":", 1)[1].strip()
    wire = desk.folder / "tcp.vekwire"
    assert desk.start("--server", f"127.0.0.1:{port}", "--record", wire).wait() == 0
    assert replay.wait() == 0 and contents(desk) == captured
    assert b"\nsocket: tcp\n" in wire.read_bytes()
    assert refused(desk, wire, "--listen", "here")[0] == 2


def test_recording_spares_other_files(desk):
    desk.lay()
    before = desk.configuration.read_bytes()
    for path in desk.configuration, desk.folder / "tmp", desk.folder / "none/wire.vekwire":
        got, _, err = desk.run("--record", path)
        assert got == 12 and str(path) in err
    assert desk.configuration.read_bytes() == before
    assert desk.run("--record", "/dev/full")[0] == 12
    wire = recorded(desk)
    assert recorded(desk) == wire and read(wire.read_bytes())
