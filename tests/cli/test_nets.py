"""vek nets: what a dump has, counted once more here."""

import json
import re

import pytest

from desk import SOURCE

DUMP = """$timescale 1ns $end
$scope module tb $end
$var wire 1 ! clk $end
$var wire 1 ' slow $end
$scope module dut $end
$var reg 4 " state [3:0] $end
$var wire 1 ! clock $end
$var real 64 # level $end
$var wire 1 $ odd $end
$upscope $end
$upscope $end
$enddefinitions $end
#0
0!
0'
bxx00 "
0$
r1.5 #
r2.5 $
"""
BODY = "".join(f"#{t}\n{t // 5 % 2}!\n" + (f"b{t % 16:b} \"\n" if t % 20 == 0 else "") +
               (f"{t // 35 % 2}'\n" if t % 35 == 0 else "") +
               (f"{t * t % 3 % 2}$\n" if t % 15 == 0 else "") for t in range(5, 800, 5))


def nets(desk, *arguments, status=0):
    process = desk.start("nets", *arguments, command=None)
    out, err = process.communicate(timeout=30)
    assert process.returncode == status, err
    return out, err


def test_lists(desk):
    file = desk.folder / "sim.vcd"
    file.write_text(DUMP + BODY)
    found = {net["path"]: net for net in json.loads(nets(desk, file, "--json")[0])["nets"]}
    for path, code in {"tb.clk": "!", "tb.slow": "'", "tb.dut.clock": "!", "tb.dut.state": '"',
                       "tb.dut.odd": "$"}.items():
        assert found[path]["changes"] == len(re.findall(rf"^\S* ?{re.escape(code)}$", BODY, re.M))
    assert [path for path, net in found.items() if net["clock"]] == ["tb.clk", "tb.slow",
                                                                     "tb.dut.clock"]
    assert found["tb.dut.state"]["width"] == 4 and found["tb.dut.state"]["scope"] == "tb.dut"
    assert not found["tb.dut.level"]["bits"]
    for pattern, paths in {"dut.*": 4, "tb.*": 6, "cl*": 2, "stat?": 1, "state": 1, "ate": 0,
                           "tb/dut/odd": 1}.items():
        assert len(nets(desk, file, pattern, status=not paths)[0].splitlines()) == paths, pattern
    assert len(nets(desk, file, "odd", "state", "--clocks", status=1)[0].splitlines()) == 0


@pytest.mark.parametrize("text, status, words", [
    (DUMP + BODY + "b01", 0, "warning"),
    (DUMP + "#5\n1%\n", 3, "line 21"),
    ("", 3, "error"),
    ("$var wire x ! a $end", 3, "line 1"),
])
def test_broken(desk, text, status, words):
    file = desk.folder / "sim.vcd"
    file.write_text(text)
    out, err = nets(desk, file, status=status)
    assert words in err and len(err.splitlines()) == 1
