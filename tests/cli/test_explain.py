"""vek explain: why triggers fire or not, held against counts made here and against a run."""

import csv
import json
import random

import pytest

SAMPLES = 3000
NETS = {"valid": 1, "ready": 1, "addr": 4, "n": 16}
PORTS = [["valid", "ready"], ["addr"], ["valid", "addr"]]
RANGE, EDGES = 4, 1


def bits(name):
    width = NETS[name]
    return [name] if width == 1 else [f"{name}[{i}]" for i in reversed(range(width))]


def items(names, flag=""):
    return "".join(f"<Signal{flag}>{b}</Signal>" for name in names for b in bits(name))


def design(units, expressions, kind="Static"):
    """`units`: port, type, func, value0, value1, count, in a row."""
    text = "".join(
        f'<MatchUnit index="{i}" enabled="1" match_type="{u[1]}" counter_enable="{int(u[5] > 1)}" '
        f'counter_width="8" counter="{u[5]}" countinuous="{u[6]}" func="{u[2]}" value0="{u[3]}" '
        f'value1="{u[4]}" trigger="{u[0]}"/>' for i, u in enumerate(units))
    return f"""<?xml version="1"?><VEK_CONFIG><Version>3.0</Version><Mode>Standard</Mode>
<SxCore index="0" sample_clock="tb.clk" trig_type="0" storage_depth="128" window_num="1"
 capture_amount="128" trigger_pos="20" module_name="m" implementation="0"
 capture_init_data_enabled="false"><SignalList>{items(NETS, ' capture_enable="true"')}</SignalList>
<Triggers>{"".join(f'<Trigger index="{i}"><SignalList>{items(port)}</SignalList></Trigger>'
                   for i, port in enumerate(PORTS))}</Triggers>
<MatchUnits>{text}</MatchUnits><Expressions type="{kind}" ex_implementation="0">
{"".join(f"<Expression>{e.replace('&', '&amp;')}</Expression>" for e in expressions)}
</Expressions></SxCore></VEK_CONFIG>"""


def rows(seed):
    """valid and addr 3 never together; addr stays below 12; ready in runs of 7 at most."""
    draw, found, run = random.Random(seed), [], 0
    for n in range(SAMPLES):
        addr = draw.randrange(12)
        valid = int(addr != 3 and draw.random() < 0.4)
        ready = int(draw.random() < 0.7 and run < 7)
        run = run + 1 if ready else 0
        found.append({"valid": valid, "ready": ready, "addr": addr, "n": n})
    return found


@pytest.fixture
def lab(desk):
    desk.rows = rows(7)
    text = "$scope module tb $end\n$var wire 1 ! clk $end\n"
    codes = dict(zip(NETS, "abcd"))
    for name, width in NETS.items():
        text += f"$var wire {width} {codes[name]} {name} $end\n"
    text += "$upscope $end\n$enddefinitions $end\n"
    for k, row in enumerate(desk.rows):
        text += f"#{10 * k}\n0!\n" + "".join(
            f"b{value:b} {codes[name]}\n" for name, value in row.items()) + f"#{10 * k + 5}\n1!\n"
    (desk.folder / "sim.vcd").write_text(text)
    desk.configuration = desk.folder / "design.vek"
    return desk


def explain(desk, text, *arguments, status):
    desk.configuration.write_text(text)
    source = arguments or ("--vcd", desk.folder / "sim.vcd")
    told = []
    for form in ([], ["--json"]):
        process = desk.start("explain", desk.configuration, *source, *form, command=None)
        out, desk.err = process.communicate(timeout=30)
        assert process.returncode == status, desk.err
        told.append(out)
    core = json.loads(told[1])["cores"][0]
    assert told[0].rstrip().endswith(core["sentence"])
    return core


def seen(samples):
    samples = list(samples)
    return {"count": len(samples), **({"first": samples[0], "last": samples[-1]} if samples else {})}


def where(desk, test):
    return seen(k for k, row in enumerate(desk.rows) if test(row))


def test_range_that_is_never_entered(lab):
    core = explain(lab, design([(1, RANGE, 6, "1101", "1111", 1, 0)], ["M0"]), status=1)
    unit = core["units"][0]
    assert unit["matched"] == {"count": 0} and not core["fires"]
    first = next(k for k, row in enumerate(lab.rows) if row["addr"] == 11)
    assert unit["nearest_below"] == {"value": "0xB", "sample": first}
    assert "never" in core["sentence"] and "0xD to 0xF" in core["sentence"]


def test_edge_never_with_a_value(lab):
    core = explain(lab, design([(2, EDGES, 0, "R0011", "", 1, 0)], ["M0"]), status=1)
    at3 = sum(row["addr"] == 3 for row in lab.rows)
    rises = [k for k in range(1, SAMPLES) if lab.rows[k]["valid"] > lab.rows[k - 1]["valid"]]
    parts = {part["part"]: part["count"] for part in core["units"][0]["parts"]}
    assert parts == {"valid rises": len(rises), "addr[3:0] == 0x3": at3}
    counts = {miss["samples"]["count"] for miss in core["units"][0]["nearest"]}
    assert counts == {len(rises), at3}
    assert "but never while" in core["sentence"]


def test_counter_that_stays_short(lab):
    core = explain(lab, design([(0, EDGES, 0, "X1", "", 8, 1)], ["M0"]), status=1)
    unit = core["units"][0]
    assert unit["matched"] == where(lab, lambda row: row["ready"])
    assert (unit["counter"]["highest"], unit["counter"]["needed"]) == (7, 8)
    assert "at most 7 where the counter takes 8" in core["sentence"]


def test_units_never_together(lab):
    text = design([(0, EDGES, 0, "1X", "", 1, 0), (1, RANGE, 0, "0011", "", 1, 0)], ["M0&M1"])
    core = explain(lab, text, status=1)
    assert [unit["matched"] for unit in core["units"]] == [
        where(lab, lambda row: row["valid"]), where(lab, lambda row: row["addr"] == 3)]
    assert core["expressions"][0]["true"] == {"count": 0}
    kept = {entry.pop("unit"): entry for entry in core["expressions"][0]["kept_false_alone"]}
    assert kept == {"M1": where(lab, lambda row: row["valid"]),
                    "M0": where(lab, lambda row: row["addr"] == 3)}


def test_sequence_that_is_stuck(lab):
    units = [(1, RANGE, 0, "0101", "", 1, 0), (0, EDGES, 0, "1X", "", 1, 0),
             (1, RANGE, 0, "0011", "", 1, 0)]
    core = explain(lab, design(units, ["M0", "M1&M2"]), status=1)
    first = next(k for k, row in enumerate(lab.rows) if row["addr"] == 5)
    assert core["sequence"] == {"steps": 2, "reached": 2, "samples": [first]}
    assert f"step 2 of 2, after M0 was true at sample {first}" in core["sentence"]


@pytest.mark.parametrize("kind, trigger", [("Static", None), ("Dynamic", None), ("Dynamic", "")])
def test_fires_where_a_run_does(lab, kind, trigger):
    units = [(0, EDGES, 0, "R1", "", 2, 0), (1, RANGE, 6, "0101", "0111", 1, 0)]
    trigger = ["--trigger", "(valid rises & ready) 3 times"] if trigger == "" else []
    text = design(units, ["M0&M1" if kind == "Static" else "!M0&M1"], kind)
    core = explain(lab, text, "--vcd", lab.folder / "sim.vcd", *trigger, status=0)
    (lab.folder / "bench.json").write_text(json.dumps(dict(
        device="TK-501", design="design.vek", stimulus=dict(vcd="sim.vcd"))))
    lab.environment["VEK_BENCH"] = str(lab.folder / "bench.json")
    assert explain(lab, text, "--bench", lab.folder / "bench.json", *trigger, status=0) == core
    assert lab.run("--plain", *trigger)[0] == 0
    row = list(csv.DictReader((lab.out / "design_core0_window0.csv").open()))[20]
    number = sum(int(row[name]) << int(name[2:-1]) for name in row if name[:2] == "n[")
    assert core["triggers"] == [number]


def test_capture(lab):
    never = design([(1, RANGE, 6, "1101", "1111", 1, 0)], ["M0"])
    lab.configuration.write_text(never)
    (lab.folder / "bench.json").write_text(json.dumps(dict(
        device="TK-501", design="design.vek", stimulus=dict(vcd="sim.vcd", endless=True))))
    lab.environment["VEK_BENCH"] = str(lab.folder / "bench.json")
    assert lab.run("--force-after", "10ms", "--format", "csv,rsx")[0] == 0
    for file in ("design_core0_window0.csv", "design.rsx"):
        core = explain(lab, never, "--capture", lab.out / file, status=1)
        assert core["samples"] == 128 and core["units"][0]["nearest_below"]["value"] == "0xB"
        assert lab.err == ""
    lacking = never.replace('<Signal capture_enable="true">addr[3]', '<Signal capture_enable="false">addr[3]')
    explain(lab, lacking, "--capture", lab.out / "design.rsx", status=1)
    assert "does not hold addr[3]" in lab.err


@pytest.mark.parametrize("arguments, status, words", [
    ([], 2, "One of --vcd"), (["--vcd", "sim.vcd", "--clock", "clok"], 3, "clk"),
    (["--vcd", "sim.vcd", "--clock", "tb.none"], 3, "none"), (["--vcd", "cut.vcd"], 3, "line"),
    (["--capture", "none.csv"], 3, "none.csv"), (["--bench", "sim.vcd"], 3, "sim.vcd"),
])
def test_refusals(lab, arguments, status, words):
    lab.configuration.write_text(design([(0, EDGES, 0, "1X", "", 1, 0)], ["M0"]))
    (lab.folder / "cut.vcd").write_text("$scope module tb $end\n$var wire 1 ! clk")
    process = lab.start("explain", lab.configuration, *arguments, command=None)
    out, err = process.communicate(timeout=30)
    assert process.returncode == status and out == "" and words in err
    assert err.startswith("vek: error: ") and len(err.splitlines()) == 1
