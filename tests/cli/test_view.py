"""vek-view: pictures of captures, without a display."""

import csv
import os
import struct
import subprocess
import xml.etree.ElementTree
import zlib

import pytest

from desk import BUILD, SOURCE, until

GREEN, ORANGE, YELLOW, BLACK = (0, 255, 0), (255, 165, 0), (255, 255, 0), (0, 0, 0)
SPI = SOURCE / "examples/spi/spi.vcd"


def view(folder, *arguments, status=0):
    environment = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
    environment["XDG_RUNTIME_DIR"] = str(folder)
    done = subprocess.run([BUILD / "Analyzer/bin/vek-view", *map(str, arguments)], cwd=folder, text=True,
                          env=environment, capture_output=True, timeout=60)
    assert (done.returncode, done.stdout) == (status, ""), done.stderr
    return done.stderr


def texts(path):
    """What is written in a picture."""
    return [element.text for element in xml.etree.ElementTree.parse(path).iter() if element.text]


@pytest.fixture(scope="module")
def captures(tmp_path_factory):
    folder = tmp_path_factory.mktemp("spi")
    subprocess.run([BUILD / "Analyzer/bin/vek", "rehearse", SPI, "--clock", "spi_tb.clk", "--scope",
                    "spi_tb.master", "cs_n", "tx", "sclk", "--trigger", "tx in 0x50..0x57 & cs_n falls",
                    "--format", "csv,rsx,vcd", "--plain", "-o", folder / "spi"], check=True, capture_output=True,
                   env={**os.environ, "TMPDIR": str(folder)})
    return folder


def test_span_and_values(captures):
    row = list(csv.DictReader((captures / "spi_core0_window0.csv").open()))[260]
    value = f"{int(row['tx'], 0):02X}"
    for ending in ("csv", "rsx", "vcd"):
        name = "spi.rsx" if ending == "rsx" else f"spi_core0_window0.{ending}"
        view(captures, name, "--grab", "a.svg", "--from", 250, "--to", 280, "--size", "960x300")
        assert {"cs_n", "tx", "sclk", value} <= set(texts(captures / "a.svg"))
        numbers = [int(text) for text in texts(captures / "a.svg") if text.isdigit()]
        assert 260 in numbers and 280 in numbers and 200 not in numbers and 300 not in numbers


def test_formats_and_themes(captures):
    pictures = []
    for options in ([], ["--dark"], ["--size", "700x300"], ["spi.rsx"]):
        view(captures, "spi_core0_window0.csv", *options, "--grab", "a.png")
        pictures.append((captures / "a.png").read_bytes())
        size = struct.unpack(">II", pictures[-1][16:24])
        assert size == ((700, 300) if "--size" in options else (1200, 560))
    assert len(set(pictures)) == 4
    view(captures, "spi.rsx", "--grab", "a.pdf")
    assert (captures / "a.pdf").read_bytes().startswith(b"%PDF-")


def test_simulators_dump(captures):
    assert "a sample for each time of a change" in view(captures, SPI, "--grab", "a.svg")
    each = texts(captures / "a.svg")
    assert view(captures, SPI, "--clock", "spi_tb.clk", "--grab", "a.svg") == ""
    assert each != texts(captures / "a.svg")


def pixels(path):
    """Rows of (red, green, blue) of a PNG of 8 bits."""
    data, at, packed = path.read_bytes(), 8, b""
    width, height = (int.from_bytes(data[k:k + 4], "big") for k in (16, 20))
    step = {2: 3, 6: 4}[data[25]]
    while at < len(data):
        size = int.from_bytes(data[at:at + 4], "big")
        packed += data[at + 8:at + 8 + size] if data[at + 4:at + 8] == b"IDAT" else b""
        at += size + 12
    raw, rows, above = zlib.decompress(packed), [], bytearray(width * step)
    for y in range(height):
        start = y * (width * step + 1)
        kind, row = raw[start], bytearray(raw[start + 1:start + 1 + width * step])
        for i in range(len(row)):
            left, up = row[i - step] if i >= step else 0, above[i]
            corner = above[i - step] if i >= step else 0
            nearest = min((left, up, corner), key=lambda v: abs(left + up - corner - v))
            row[i] = (row[i] + (0, left, up, (left + up) // 2, nearest)[kind]) & 255
        rows.append([tuple(row[x * step:x * step + 3]) for x in range(width)])
        above = row
    return rows


def test_edges_and_trigger_stand_at_their_samples(captures):
    rows = [f"{k},{int(10 <= k < 30)},{k // 8}\n" for k in range(40)]
    (captures / "step.csv").write_text("sample,a,bus\n" + "".join(rows))
    size = ("--size", "900x200")
    view(captures, "step.csv", "--grab", "a.png", "--from", 0, "--to", 39, "--trigger", 20, *size)
    rows = pixels(captures / "a.png")
    assert (len(rows[0]), len(rows)) == (900, 200)
    columns = [[row[x] for row in rows] for x in range(900)]
    begin = next(x for x in range(900) if columns[x][-3] == BLACK)
    scale = (900 - begin) / 40
    # the first row's level changes where a column is green from its low to its high
    edges = [x for x in range(begin, 900) if columns[x][50:].count(GREEN) >= 18 and
             all(c == GREEN for c in columns[x][58:72])]
    assert [round((x - begin) / scale, 1) for x in edges] == [10, 30]
    # the cursor stands on the trigger
    lines = [x for x in range(900) if columns[x].count(ORANGE) > 100]
    assert [round((x - begin) / scale, 1) for x in lines] == [20]
    view(captures, "step.csv", "--grab", "b.png", "--from", 10, "--to", 29, *size)
    rows = pixels(captures / "b.png")
    assert not any(pixel in (ORANGE, YELLOW) for row in rows for pixel in row)  # nothing tells the trigger
    assert rows[60].count(GREEN) <= 2  # high all the time: no more than the edges are there
    view(captures, "step.csv", "--grab", "dark.png", "--from", 10, "--to", 29, "--dark", *size)
    dark = pixels(captures / "dark.png")
    assert dark[2][2] < (80, 80, 80) < rows[2][2] and dark[60][begin + 5:] == rows[60][begin + 5:]


def test_windows_of_a_run_are_one_capture(captures):
    subprocess.run([BUILD / "Analyzer/bin/vek", "rehearse", SPI, "--clock", "spi_tb.clk", "--scope",
                    "spi_tb.master", "cs_n", "sclk", "--windows", "2", "--trigger", "cs_n falls", "--format", "csv,rsx", "-o", captures / "two"], check=True,
                   capture_output=True, env={**os.environ, "TMPDIR": str(captures)})
    pictures = []
    for files in ([f"two_core0_window{k}.csv" for k in (1, 0)], ["two.rsx"], ["two_core0_window0.csv"]):
        view(captures, *files, "--trigger", 128, "--grab", "a.png")
        pictures.append((captures / "a.png").read_bytes())
    assert pictures[0] == pictures[1] != pictures[2]


def test_plain_dump_with_and_without_a_clock(captures):
    (captures / "plain.vcd").write_text(
        "$version vek $end $timescale 1 ns $end $scope module m $end $var wire 1 ! trigger $end "
        "$var wire 1 # a $end $upscope $end $enddefinitions $end\n"
        "#0 0! 0# #20 1# #50 0# #70 1# #90\n")
    for clock, samples in ([], 4), (["--clock", "100MHz"], 9):
        told = view(captures, "plain.vcd", *clock, "--grab", "a.svg")
        assert ("a sample for each time of a change" in told) == (not clock)
        ruler = [int(text) for text in texts(captures / "a.svg") if text.isdigit()]
        assert max(ruler) == samples - 1


@pytest.mark.parametrize("arguments, status, words", [
    (["none.csv", "--grab", "a.png"], 3, "none.csv"),
    (["broken.csv", "--grab", "a.png"], 3, "broken.csv"),
    (["spi.rsx", "--grab", "a.gif"], 2, ".png, .svg or .pdf"),
    (["spi.rsx", "--grab", "a.png", "--size", "3x3"], 2, "--size"),
    (["spi.rsx", "--grab", "a.png", "--from", "9", "--to", "3"], 2, "--to"),
    (["spi.rsx", "--grab", "a.png", "--trigger", "x"], 2, "--trigger"),
    (["--grab", "a.png"], 2, "no capture"),
    (["spi.rsx", "--grab", "none/a.png"], 12, "none/a.png"),
    (["spi.rsx", "--grab", "full.svg"], 12, "full.svg"),
    (["spi.rsx"], 2, "no display"),
])
def test_refusals(captures, arguments, status, words):
    (captures / "broken.csv").write_text("no table\n")
    (captures / "a.png").unlink(missing_ok=True)
    if not (captures / "full.svg").is_symlink():
        (captures / "full.svg").symlink_to("/dev/full")
    assert words in view(captures, *arguments, status=status)
    assert not (captures / "a.png").exists()


def test_rehearse_opens_the_viewer(desk):
    viewer = desk.folder / "Analyzer/bin/vek-view"
    arguments = ("rehearse", SPI, "--clock", "spi_tb.clk", "cs_n", "--view", "-o", desk.folder / "a")
    process = desk.start(*arguments, command=None)
    assert "no vek-view" in process.communicate()[1] and process.returncode == 2
    viewer.write_text(f"#!/bin/sh\necho \"$@\" > {desk.folder}/shown.new\nmv {desk.folder}/shown.new "
                      f"{desk.folder}/shown\n")
    viewer.chmod(0o755)
    desk.environment["DISPLAY"] = ":none"
    process = desk.start(*arguments, command=None)
    assert process.communicate()[1] == "" and process.returncode == 0
    until((desk.folder / "shown").exists, "the viewer was not started")
    assert (desk.folder / "shown").read_text() == f"{desk.folder}/a.rsx\n"
