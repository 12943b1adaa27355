"""vek new and vek rehearse: from a dump to windows, and nothing else of the machine is touched."""

import csv
import json
import shutil

import pytest

from desk import SOURCE

NETS = ["addr", "valid", "ready", "gnt"]
BUS = ["--clock", "bus_tb.dut.clk", "--scope", "bus_tb.dut"]


@pytest.fixture
def lab(desk):
    """A desk where a JTAG server that is started leaves a mark."""
    shutil.copy(SOURCE / "examples/bus/bus.vcd", desk.folder / "sim.vcd")
    server = desk.folder / "Programmer/bin/scanbridge"
    server.write_text(f"#!/bin/sh\ntouch {desk.folder}/started\n")
    server.chmod(0o755)
    yield desk
    assert not (desk.folder / "started").exists()
    assert list((desk.folder / "tmp").iterdir()) == []


def vek(desk, command, *arguments, status=0):
    process = desk.start(command, "sim.vcd", *arguments, command=None)
    out, err = process.communicate(timeout=30)
    assert process.returncode == status, err
    return out, err


def table(desk, name):
    return list(csv.DictReader((desk.folder / name).open()))


def test_rehearse(lab):
    trigger = "addr in 0x50..0x57 & valid rises"
    out, _ = vek(lab, "rehearse", *BUS, *NETS, "--windows", 2, "--trigger", trigger, "--plain", "-o",
                 "spi")
    assert out.startswith("spi_core0_window0.csv\nspi_core0_window1.csv\ncore 0: 6000 samples\n")
    assert "The trigger fires at sample" in out.splitlines()[-1]
    for window in (0, 1):
        rows = table(lab, f"spi_core0_window{window}.csv")
        assert len(rows) == 512 and rows[0].keys() >= {"addr", "valid", "ready", "gnt"}
        hits = [k for k in range(1, 512) if 0x50 <= int(rows[k]["addr"], 0) <= 0x57 and
                int(rows[k]["valid"]) > int(rows[k - 1]["valid"])]
        assert 128 in hits and (window == 1 or hits[0] == 128)
    process = lab.start("check", "spi.vek", "--bench", "spi.json", command=None)
    assert process.communicate()[0] == f"core 0 waits for: {trigger}\nspi.vek: nothing found\n"


def test_sequence_is_static_and_does_not_fire(lab):
    out, err = vek(lab, "rehearse", *BUS, *NETS, "--trigger", "valid then gnt == 3", "-o", "seq",
                   status=10)
    assert "The sequence came to step 2 of 2" in out and "No trigger in time" in err
    assert '<Expressions type="Static">' in (lab.folder / "seq.vek").read_text()


def test_sizes_units_and_lite(lab):
    for arguments, amount, position in ((["--depth", 3000, "--windows", 3], 512, 128),
                                        (["--position", "100%"], 1024, 1020),
                                        (["--position", "1023"], 1024, 1020)):
        vek(lab, "new", *BUS, "valid", *map(str, arguments), "-o", "a")
        text = (lab.folder / "a.vek").read_text()
        assert f'capture_amount="{amount}" trigger_pos="{position}"' in text
        assert "describes no core that was built" in text
    vek(lab, "new", *BUS, *NETS, "--trigger", "valid & !ready", "--units", "3", "-o", "a")
    assert (lab.folder / "a.vek").read_text().count('enabled="1"') == 4
    out, _ = vek(lab, "rehearse", *BUS, *NETS, "--lite", "--plain", "-o", "lite")
    assert out.startswith("lite_core0_window0.csv\n")
    assert len(table(lab, "lite_core0_window0.csv")) == 1024
    bench = json.loads((lab.folder / "lite.json").read_text())
    assert bench["stimulus"] == {"vcd": "sim.vcd", "clock": BUS[1], "scope": BUS[3]}


@pytest.mark.parametrize("arguments, status, words", [
    (["valid"], 2, "look like clocks: bus_tb.dut.clk"),
    ([*BUS, "vlid"], 2, 'fits "vlid"'),
    ([*BUS, "valid", "--trigger", "vlid"], 2, "the nearest is valid"),
    ([*BUS, "valid", "--trigger", "vlad & redy"], 2, "vlad & redy\n           ^~~~"),
    ([*BUS, "valid", "--trigger", "valid", "--lite"], 2, "--lite"),
    ([*BUS, "valid", "--position", "half"], 2, "--position"),
    ([*BUS, "valid", "--depth", "8", "--windows", "4"], 2, "too few"),
    ([*BUS, "valid", "--units", "2"], 2, "no room"),
    (["--clock", "bus_tb.clk", "valid"], 3, "bus_tb.dut.clk"),
    ([*BUS, "valid", "-o", "mine"], 2, "mine.vek is there already"),
    ([*BUS, "valid", "-o", "none/a"], 12, "none/a.vek"),
])
def test_refusals(lab, arguments, status, words):
    (lab.folder / "mine.vek").write_text("somebody's own")
    command = "rehearse" if "bus_tb.clk" in arguments else "new"
    out, err = vek(lab, command, *arguments, status=status)
    assert err.startswith("vek: error: ") and words in err
    assert (lab.folder / "mine.vek").read_text() == "somebody's own"


def test_names_beyond_latin1(lab):
    text = (lab.folder / "sim.vcd").read_text().replace(" valid $end", " g\u0103lbe\u1e47 $end")
    (lab.folder / "sim.vcd").write_text(text)
    assert "g\u0103lbe\u1e47" in vek(lab, "new", *BUS, "g*", status=2)[1]
    assert not (lab.folder / "sim.vek").exists()
