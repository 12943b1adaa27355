"""vek image: the words that a recorded run of the same configuration has sent."""

import itertools
import json
import re

import pytest

from desk import SOURCE
from test_wire import WIRES, DEMOS, read

LITE = """<?xml version="1"?><VEK_CONFIG><Version>3.0</Version><Mode>Lite</Mode>
    <SxCore_Lite index="0" sample_clock="clk" capture_amount="200"><SignalList>
    <Signal>valid</Signal><Signal>ready</Signal></SignalList></SxCore_Lite></VEK_CONFIG>"""


def image(desk, *arguments):
    process = desk.start("image", *arguments, command=None)
    out, err = process.communicate(timeout=30)
    assert (process.returncode, err) == (0, "") and list((desk.folder / "tmp").iterdir()) == []
    return out


def without_answers(frames):
    """Requests that get no answer and so have no number; a poll goes on as long as it takes."""
    told = [frame for frame in frames if "request_id".encode("utf-16-be") not in frame]
    return [frame for frame, _ in itertools.groupby(told)]


def reads(frames):
    return sum("READ_RAM".encode("utf-16-be") in frame for frame in frames)


@pytest.mark.parametrize("demo", DEMOS)
def test_same_as_a_run(desk, demo):
    name = demo.split("/")[1]
    bench = json.loads((SOURCE / f"examples/{demo}.json").read_text())
    _, records = read((WIRES / f"{name}.vekwire").read_bytes())
    run = [record[9:] for record in records if record[:1] == b">"]
    told = json.loads(image(desk, SOURCE / f"examples/{demo}.vek", "--device", bench["device"],
                            "--frames", "--json"))
    frames = [bytes.fromhex(row["frame"]) for row in told["requests"]]
    assert without_answers(frames) == without_answers(run)
    assert reads(frames) == reads(run) > 0
    assert told["totals"]["bytes"] == sum(map(len, frames))
    assert told["totals"]["words"] == sum("bits" in row for row in told["requests"])


def test_meanings(desk):
    file = SOURCE / "examples/bus/bus-stall.vek"
    out = image(desk, file)
    for line in ("  M1: in range, 0x50 to 0x57, on address\\[7:0]", "  M5: ==, 0bRF, on grant\\[1:0]",
                 "0x0021 samples - 1  .*01001 0000000000100001 0*11111111  255",
                 "0x0104 M0 counter .* fires at each match number 8",
                 "0x0110 M1 A .* 0*1010000  M1: in range", "turn the chain to core 0",
                 "0xab00 table 0 .*  M0=0 M1=0 M2=0 M5=0 -> 0", "window 1, section 2 of 2"):
        assert re.search(line, out), line
    rows = json.loads(image(desk, file, "--json"))["requests"]
    table = [row for row in rows if row.get("register") == "table 0"]
    assert len(table) == 16
    for row in table:  # M0&(M1^M2)|M5&!(M1|M2)
        m0, m1, m2, m5 = (int(bit) for bit in re.findall("=(.)", row["meaning"]))
        assert row["field"].endswith(f"{m5}{m2}{m1}{m0}")
        assert row["address"] == 43776 + (m0 & (m1 ^ m2) | m5 & (1 - (m1 | m2)))


def test_lite_and_refusals(desk):
    file = desk.folder / "lite.vek"
    file.write_text(LITE)
    out = image(desk, file)
    assert "read from sample 128 on" in out and "window 0, section 2 of 2" in out
    for wrong in (["none.vek"], [file, "--core", "3"]):
        process = desk.start("image", *wrong, command=None)
        assert process.communicate()[1].startswith("vek: error: ") and process.returncode in (2, 3)
