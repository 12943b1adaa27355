"""A capture as a test: what the design did around the trigger, asserted sample by sample.

Runs with pytest, on a desk with a board or, as here, on the simulated chip. VEK is the program, "vek"
unless given; the desk is chosen by VEK_CABLE, VEK_LOCATION, VEK_SERVER and VEK_DEVICE.
"""

import csv
import json
import os
import pathlib
import subprocess

import pytest

DESIGN = pathlib.Path(__file__).resolve().parent.parent / "bus/bus-stall.vek"
os.environ.setdefault("VEK_BENCH", str(DESIGN.with_suffix(".json")))  # of the simulated chip


@pytest.fixture(scope="module")
def capture(tmp_path_factory):
    """The manifest of a run, and the rows of each of its windows."""
    out = tmp_path_factory.mktemp("capture")
    run = subprocess.run([os.environ.get("VEK", "vek"), "run", DESIGN, "-o", f"{out}/", "--wait", "30s",
                          "--plain", "--clock", "50MHz", "--manifest", out / "run.json"],
                         capture_output=True, text=True)
    assert run.returncode == 0, run.stderr  # the status names the cause: no trigger is 10
    manifest = json.loads((out / "run.json").read_text())
    windows = []
    for window in manifest["cores"][0]["windows"]:
        with open(out / window["files"][0]["file"], newline="") as file:
            windows.append([{name: int(value, 0) for name, value in row.items()}
                            for row in csv.DictReader(file)])
    return manifest, windows


def around_trigger(capture, window):
    """The row of the trigger's sample, and the one before it."""
    manifest, windows = capture
    sample = manifest["cores"][0]["windows"][window]["trigger_sample"]
    return windows[window][sample], windows[window][sample - 1]


def test_first_window_shows_the_stalled_read(capture):
    trigger, _ = around_trigger(capture, 0)
    assert (trigger["valid"], trigger["ready"], trigger["write"]) == (1, 0, 0)
    assert trigger["address"] == 0x51


def test_second_window_shows_the_grant_changing_hands(capture):
    trigger, before = around_trigger(capture, 1)
    assert (before["grant"], trigger["grant"]) == (1, 2)


def test_address_holds_while_the_bus_stalls(capture):
    for rows in capture[1]:
        for before, now in zip(rows, rows[1:]):
            if before["valid"] and not before["ready"]:
                assert now["address"] == before["address"], f"at {now['time_ns']} ns"
