"""vek-view: pictures of captures, without a display."""

import csv
import os
import struct
import subprocess
import xml.etree.ElementTree

import pytest

from desk import BUILD, SOURCE, until

SPI = SOURCE / "examples/spi/spi.vcd"


def view(folder, *arguments, status=0):
    environment = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "QT_QPA_PLATFORM")}
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


@pytest.mark.parametrize("arguments, status, words", [
    (["none.csv", "--grab", "a.png"], 3, "none.csv"),
    (["broken.csv", "--grab", "a.png"], 3, "broken.csv"),
    (["spi.rsx", "--grab", "a.gif"], 2, ".png, .svg or .pdf"),
    (["spi.rsx", "--grab", "a.png", "--size", "3x3"], 2, "--size"),
    (["spi.rsx", "--grab", "a.png", "--from", "9", "--to", "3"], 2, "--to"),
    (["spi.rsx", "--grab", "a.png", "--trigger", "x"], 2, "--trigger"),
    (["--grab", "a.png"], 2, "no capture"),
    (["spi.rsx", "--grab", "none/a.png"], 12, "none/a.png"),
])
def test_refusals(captures, arguments, status, words):
    (captures / "broken.csv").write_text("no table\n")
    (captures / "a.png").unlink(missing_ok=True)
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
