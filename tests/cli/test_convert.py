"""vek convert: captures of a demo through every format and back, and what it refuses."""

import json
import os
import re
import shutil
import subprocess

import pytest

from desk import BUILD, Desk

KINDS = ["csv", "vcd", "rsx", "prn", "raw", "plain.csv", "plain.vcd"]


def vek(desk, *arguments):
    done = subprocess.run([desk.folder / "Analyzer/bin/vek", *map(str, arguments)], text=True,
                          capture_output=True, cwd=desk.folder, env=desk.environment, timeout=60)
    return done.returncode, done.stdout, done.stderr


def content(path):
    """The bytes of a file, but for the time at which a dump was written."""
    return re.sub(rb"\$date\n.*\n\$end\n", b"", path.read_bytes())


@pytest.fixture(scope="module")
def captured():
    """A demo's three windows in all formats, in out/, the plain ones in plain/."""
    desk = Desk().lay("uart/uart-lines")
    assert desk.run("--format", "csv,vcd,rsx", "--manifest", desk.out / "run.json")[0] == 0
    plain = desk.folder / "plain"
    done = vek(desk, "run", desk.configuration, "-o", f"{plain}/", "--format", "csv,vcd,raw",
               "--plain", "--clock", "50MHz", "--manifest", plain / "run.json")
    assert done[0] == 0, done
    for window in range(3):
        name = f"uart-lines_core0_window{window}"
        assert vek(desk, "convert", desk.out / f"{name}.csv", desk.out / f"{name}.prn")[0] == 0
    yield desk
    desk.remove()


def path_of(desk, kind, window=1):
    if kind == "rsx":
        return desk.out / "uart-lines.rsx"
    folder = desk.folder / "plain" if "plain" in kind or kind == "raw" else desk.out
    return folder / f"uart-lines_core0_window{window}.{kind.split('.')[-1]}"


@pytest.mark.parametrize("source", KINDS)
@pytest.mark.parametrize("target", KINDS)
def test_round_trip(captured, source, target):
    """Byte for byte what the run has written, whatever the way."""
    desk = captured
    work = desk.folder / f"{source}-{target}"
    work.mkdir()
    ending = target.split(".")[-1]
    options = ["--configuration", desk.configuration]
    options += ["--plain", "--clock", "50MHz"] if "plain" in target else []
    if target == "rsx":
        sources = [path_of(desk, source, w) for w in range(3)] if source != "rsx" else [
            path_of(desk, "rsx")]
    else:
        sources = [path_of(desk, source)]
        options += ["--window", 1] if source == "rsx" else []
    got, out, err = vek(desk, "convert", *sources, work / f"o.{ending}", *options)
    assert (got, err) == (0, "")
    assert out.split()[0] == f"{work}/o.{ending}"
    assert content(work / f"o.{ending}") == content(path_of(desk, target))
    if target == "raw":
        assert content(work / "o.channels") == content(path_of(desk, "raw").with_suffix(".channels"))


@pytest.mark.parametrize("source, target", [("csv", "prn"), ("prn", "csv"), ("rsx", "csv"),
                                            ("rsx", "vcd"), ("rsx", "raw"), ("rsx", "plain.vcd"),
                                            ("vcd", "vcd"), ("plain.vcd", "plain.csv"),
                                            ("plain.csv", "plain.csv"), ("rsx", "rsx")])
def test_what_the_formats_hold_by_themselves(captured, source, target, tmp_path):
    """Without configuration or manifest; a PRN file has no names of groups of buses."""
    desk = captured
    given = tmp_path / path_of(desk, source).name
    shutil.copy(path_of(desk, source), given)
    out = tmp_path / f"o.{target.split('.')[-1]}"
    options = ["--window", 1] if source == "rsx" and target != "rsx" else []
    options += ["--plain"] if "plain" in target else []
    options += ["--clock", "50MHz"] if "plain" in target or "plain" in source else []
    got, _, err = vek(desk, "convert", given, out, *options)
    assert (got, err) == (0, "")
    expected, made = content(path_of(desk, target)), content(out)
    if (source, target) == ("prn", "csv"):
        expected, made = (text.split(b"Data:\n")[1] for text in (expected, made))
    assert made == expected


def test_simulators_dump_becomes_a_session_that_opens(desk):
    desk.lay("bus/bus-stall")
    out = desk.folder / "sim.rsx"
    got, _, err = vek(desk, "convert", desk.folder / "bus.vcd", out)
    assert got == 2 and "--clock NAME" in err and len(err.splitlines()) == 1
    assert vek(desk, "convert", desk.folder / "bus.vcd", out, "--clock", "clk", "--trigger", 5)[0] == 0
    named = desk.folder / "named.rsx"
    got, _, err = vek(desk, "convert", desk.folder / "bus.vcd", named, "--trigger", 5,
                      "--configuration", desk.configuration)
    assert (got, err) == (0, "")
    assert 'text="address"' in named.read_text()
    csv = desk.folder / "sim.csv"
    assert vek(desk, "convert", named, csv)[0] == 0
    rows = csv.read_text().splitlines()
    assert "time unit: us, grant, gnt[1]" in csv.read_text()
    # what the chip has captured are samples of the same dump
    assert desk.run()[0] == 0
    first = (desk.out / "bus-stall_core0_window0.csv").read_text().splitlines()[10:]
    cells = [row.split(", ", 1)[1] for row in rows[10:]]
    assert "\n".join(row.split(", ", 1)[1] for row in first) in "\n".join(cells)
    workbench = BUILD / "Analyzer/bin/vek-workbench"
    for session in (out, named):
        pictures = desk.folder / f"{session.stem}-panes"
        done = subprocess.run([workbench, "--grab", pictures, session], text=True,
                              capture_output=True, timeout=60,
                              env={**desk.environment, "QT_QPA_PLATFORM": "offscreen"})
        assert done.returncode == 0, done.stderr
        assert (pictures / "core0.png").stat().st_size > 5000


def drop_row(data):
    lines = data.split(b"\n")
    return b"\n".join(lines[:40] + lines[41:])


# name: kind of the file, what is done to it, a word of the message
BROKEN = {
    "csv cut": ("csv", lambda d: d[:-7], "only 15"),
    "csv row": ("csv", drop_row, "line 41"),
    "csv value": ("csv", lambda d: d.replace(b" 1,", b" 2,", 1), "neither 0 nor 1"),
    "csv short": ("csv", lambda d: d.replace(b" 0, 0,\n", b" 0,\n", 1), "values"),
    "csv head": ("csv", lambda d: b"Group:" + d, "no table"),
    "csv empty": ("csv", lambda d: b"", "no table"),
    "prn value": ("prn", lambda d: d.replace(b"\t99\t", b"\tFF\t", 1), "not those of the columns"),
    "prn cut": ("prn", lambda d: d[:-30], "ends within"),
    "vcd cut": ("vcd", lambda d: d[:len(d) // 2], ""),
    "vcd end": ("vcd", lambda d: d[:d.rindex(b"#")], "last time"),
    "vcd code": ("vcd", lambda d: d.replace(b'\n0"\n', b"\n0~\n", 1), "no variable"),
    "plain end": ("plain.vcd", lambda d: d[:d.rindex(b"#")], "last sample"),
    "plain number": ("plain.csv", lambda d: d.replace(b"\n20,", b"\n20,x", 1), "line 3"),
    "rsx cut": ("rsx", lambda d: d[:len(d) // 2], ""),
    "rsx value": ("rsx", lambda d: d.replace(b">000000", b">00x000", 1), "not of 0 and 1"),
    "rsx length": ("rsx", lambda d: d.replace(b">000000", b">00000", 1), "same samples"),
    "rsx windows": ("rsx", lambda d: d.replace(b'segments="3"', b'segments="7"'), "windows"),
    "rsx row": ("rsx", lambda d: d.replace(b'sig" id="14"', b'sig" id="94"'), "not there"),
    "rsx core": ("rsx", lambda d: d.replace(b'core="0"', b'core="9"'), "core 9"),
    "raw size": ("raw", lambda d: d[:-1], "whole samples"),
}


@pytest.mark.parametrize("name", BROKEN)
def test_broken_files(captured, name, tmp_path):
    desk = captured
    kind, change, word = BROKEN[name]
    given = tmp_path / path_of(desk, kind).name
    whole = path_of(desk, kind).read_bytes()
    given.write_bytes(change(whole))
    assert given.read_bytes() != whole
    if kind == "raw":
        shutil.copy(path_of(desk, kind).with_suffix(".channels"), tmp_path)
    got, out, err = vek(desk, "convert", given, tmp_path / "o.csv", "--window", 0,
                        "--clock", "50MHz")
    assert (got, out) == (3, "") and word in err
    assert len(err.splitlines()) == 1 and err.startswith(f"vek: error: {given}: ")
    assert not (tmp_path / "o.csv").exists()


@pytest.mark.parametrize("arguments, status, word", [
    (["out/uart-lines.rsx", "o.csv"], 2, "--window"),
    (["out/uart-lines.rsx", "o.csv", "--window", "3"], 2, "3 windows"),
    (["out/uart-lines.rsx", "o.rsx", "--core", "4"], 2, "core 4"),
    (["lone.csv", "o.vcd"], 2, "--trigger N"),
    (["lone.csv", "lone.csv"], 2, "is read"),
    (["lone.csv", "same.csv"], 2, "is read"),
    (["lone.csv", "o.doc"], 2, ".prn"),
    (["lone.doc", "o.csv"], 2, ".prn"),
    (["lone.csv", "o.prn", "--plain"], 2, "--plain"),
    (["lone.csv", "out/uart-lines_core0_window0.csv", "o.csv"], 2, "one .rsx"),
    (["none.csv", "o.vcd"], 3, "none.csv"),
    (["out.csv", "o.vcd"], 3, "folder"),
    (["lone.csv", "no/where/o.csv"], 12, "o.csv"),
    (["lone.csv", "/dev/full"], 2, "ends in"),
    (["lone.csv", "full.csv"], 12, "full.csv"),
    (["plain.vcd", "o.csv"], 2, "--clock"),
])
def test_refused(captured, arguments, status, word):
    desk = captured
    shutil.copy(path_of(desk, "csv"), desk.folder / "lone.csv")
    (desk.folder / "out.csv").mkdir(exist_ok=True)
    shutil.copy(path_of(desk, "plain.vcd"), desk.folder / "plain.vcd")
    for link, target in (("same.csv", "lone.csv"), ("full.csv", "/dev/full")):
        if not (desk.folder / link).is_symlink():
            os.symlink(target, desk.folder / link)
    got, out, err = vek(desk, "convert", *arguments)
    assert (got, out) == (status, "") and word in err
    assert len(err.splitlines()) == 1 and err.startswith("vek: error: ")


def test_json(captured, tmp_path):
    got, out, _ = vek(captured, "convert", path_of(captured, "csv"), tmp_path / "o.prn", "--json")
    assert got == 0
    assert json.loads(out) == {"written": [f"{tmp_path}/o.prn"], "samples": 256, "windows": 1,
                               "warnings": []}
