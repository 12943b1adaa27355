"""vek compare: captures of a demo with golden ones, equal and not."""

import json
import shutil
import xml.etree.ElementTree as xml

import jsonschema
import pytest

from desk import SOURCE
from test_convert import captured, path_of, vek  # noqa: F401: a fixture

SCHEMA = json.loads((SOURCE / "docs/manifest.schema.json").read_text())
NAME = "uart-lines_core0_window1"


@pytest.fixture
def folder(captured, tmp_path):  # noqa: F811
    """The second window and its manifest, to be changed; trigger at 64 of 256."""
    for kind in ("csv", "vcd", "rsx"):
        shutil.copy(path_of(captured, kind), tmp_path)
    shutil.copy(captured.out / "run.json", tmp_path)
    captured.work = tmp_path
    return captured


def rows(path, change):
    """Changes the lines of the samples of a CSV file; the manifest no longer holds for it."""
    lines = path.read_text().splitlines(keepends=True)
    head = next(i for i, line in enumerate(lines) if line.startswith("time unit")) + 2
    made = path.with_name("made.csv")
    made.write_text("".join(lines[:head] + change(lines[head:])))
    return made


def flip(row, column):
    """Changes a cell, with the members behind it left as they are."""
    def change(lines):
        cells = lines[row].split(", ")
        cells[column] = "1" if cells[column] == "0" else "0"
        lines[row] = ", ".join(cells)
        return lines
    return change


@pytest.mark.parametrize("kind", ["csv", "vcd", "rsx", "prn", "raw", "plain.csv", "plain.vcd"])
@pytest.mark.parametrize("golden", ["csv", "rsx", "plain.csv"])
def test_equal_in_all_formats(captured, golden, kind):  # noqa: F811
    plain = ["--configuration", captured.configuration] if "plain" in kind + golden or kind == "raw" \
        else []
    got, out, err = vek(captured, "compare", path_of(captured, golden), path_of(captured, kind),
                        "--window", 1, *plain)
    assert (got, out, err) == (0, "equal\n", "")


def test_sessions_window_by_window(folder):
    session = folder.work / "uart-lines.rsx"
    assert vek(folder, "compare", path_of(folder, "rsx"), session)[:2] == (0, "equal\n")
    short = folder.work / "short.rsx"
    assert vek(folder, "convert", path_of(folder, "csv", 0), path_of(folder, "csv", 2), short,
               "--configuration", folder.configuration)[0] == 0
    got, out, _ = vek(folder, "compare", session, short)
    assert got == 1 and "core 0 window 2: missing\n" in out and "core 0 window 1: " in out
    assert vek(folder, "compare", session, path_of(folder, "csv"))[0] == 2


def test_differences(folder):
    golden = folder.work / f"{NAME}.csv"
    made = rows(golden, lambda lines: flip(70, 1)(flip(61, 2)(flip(60, 2)(lines))))
    junit, manifest = folder.work / "report.xml", folder.work / "run.json"
    got, out, err = vek(folder, "compare", golden, made, "--align", 64, "--junit", junit,
                        "--manifest", manifest)
    lines = out.splitlines()
    assert (got, err) == (1, "")
    assert lines[0] == "line: 1 samples differ, the first at 6"
    assert lines[1] == "rx_valid: 2 samples differ, the first at -4"
    assert lines[2].split() == ["sample", "-7", "-6", "-5", "-4", "-3", "-2", "-1", "0"]
    table = [line.split() for line in lines[5:7]]
    assert table[0][0] == "rx_valid" and table[0][1] == "golden" and table[1][0] == "new"
    assert [i for i in range(8) if table[0][2 + i] != table[1][1 + i]] == [3, 4]
    root = xml.parse(junit).getroot()
    assert root[0].get("failures") == "2"
    assert [c.get("name") for c in root.iter("testcase") if len(c)] == ["line", "rx_valid"]
    kept = json.loads(manifest.read_text())
    jsonschema.validate(kept, SCHEMA)
    comparison, = kept["comparisons"]
    assert (comparison["golden_file"], comparison["new_file"]) == (golden.name, made.name)
    window, = comparison["windows"]
    assert (window["golden_at"], window["new_at"], window["around"]["from"]) == (64, 64, -7)
    assert window["around"]["signals"][1]["golden"] == table[0][2:]
    got, out, _ = vek(folder, "compare", golden, made, "--align", "64,64", "--json")
    told = json.loads(out)
    assert told["windows"] == kept["comparisons"][0]["windows"] and not told["equal"]
    # what is out of the range, ignored or masked does not count
    for more in (["--from", -3, "--to", 5, "--ignore", "rx_valid"], ["--from", 20],
                 ["--ignore", "line", "--mask", "rx_valid=0"]):
        assert vek(folder, "compare", golden, made, "--align", 64, *more)[:2] == (0, "equal\n")


def test_lengths_and_signals(folder):
    golden = folder.work / f"{NAME}.csv"
    short = rows(golden, lambda lines: lines[:200])
    got, out, _ = vek(folder, "compare", golden, short, "--align", 64)
    assert got == 1 and out == ("the golden capture has the samples -64 to 191 from the trigger, "
                                "the new one -64 to 135\n")
    assert vek(folder, "compare", golden, short, "--align", 64, "--to", 135)[0] == 0
    lines = golden.read_text()
    renamed = folder.work / "renamed.csv"
    renamed.write_text(lines.replace(", lost,", ", found,"))
    got, out, _ = vek(folder, "compare", golden, renamed, "--align", 64)
    assert got == 1 and out == "lost: missing\nfound: added\n"
    assert vek(folder, "compare", golden, renamed, "--align", 64, "--ignore", "lost", "--ignore",
               "found")[0] == 0
    golden.write_text(lines.replace(", line,", ", 5%2,"))
    got, out, _ = vek(folder, "compare", golden, rows(golden, flip(70, 1)), "--align", 64)
    assert got == 1 and out.startswith("5%2: 1 samples differ, the first at 6\n")


def test_alignment(folder):
    golden = folder.work / f"{NAME}.csv"

    def later(lines):
        moved = [line.split(", ", 1)[1] for line in lines]
        return [f"{i + 1}, {row}" for i, row in enumerate([moved[0]] * 3 + moved)]

    made = rows(golden, later)
    (folder.work / "run.json").rename(folder.work / "kept")
    for arguments, status, word in (
            ([], 2, "--align SAMPLE or --by-edge NAME"),
            (["--align", "64,67", "--from", -64, "--to", 191], 0, "equal"),
            (["--by-edge", "rx_valid", "--from", -20, "--to", 100], 0, "equal"),
            (["--align", "64", "--to", 191], 1, "differ"),
            (["--align", "soon"], 2, "soon"), (["--by-edge", "byte"], 2, "one bit"),
            (["--align", "64", "--from", 900], 2, "range"),
            (["--align", "64", "--from", 9, "--to", 8], 2, "behind"),
            (["--align", "64", "--ignore", "nothing"], 2, "nothing"),
            (["--align", "64", "--mask", "byte=x"], 2, "0xF0"),
            (["--align", "64", "--mask", "byte"], 2, "NAME=BITS"),
            (["--align", "64", "--by-edge", "line"], 2, "excludes"),
            (["--align", "64", "--junit", "/dev/full"], 12, "/dev/full"),
            (["--align", "64", "--manifest", golden], 3, "no manifest")):
        got, out, err = vek(folder, "compare", golden, made, *arguments)
        assert got == status and word in out + err, (arguments, out, err)
        assert len(err.splitlines()) == (status > 1)
