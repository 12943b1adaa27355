"""vek check: files that are each broken in one way, told by that one message at its line."""

import json
import re

import pytest

from desk import SOURCE

STALL = (SOURCE / "examples/bus/bus-stall.vek").read_text()
LITE = """<?xml version="1"?>
<VEK_CONFIG>
    <Version>3.0</Version>
    <Mode>Lite</Mode>
    <SxCore_Lite index="0" sample_clock="clk" trig_type="0" capture_amount="100" implemention="0" input_register_enabled="0" capture_init_data_enabled="0" module_name="dut">
        <SignalList>
            <Signal capture_enable="true">a</Signal>
        </SignalList>
    </SxCore_Lite>
</VEK_CONFIG>
"""
UNIT1 = '<MatchUnit index="1" enabled="1" match_type="4"'
EXPRESSION = "M0&amp;(M1^M2)|M5&amp;!(M1|M2)"
LONG = "!(M0&amp;(M1^M2))|" * 6 + "M5&amp;!(M1|M2)&amp;!M0&amp;!M1"

# what is replaced (the first time), by what, the finding's words, and its element and attribute
ERRORS = [
    ('storage_depth="1024" ', "", "is missing, and reads as 0", "SxCore", "storage_depth"),
    ('window_num="2"', 'window_num="two"', '"two" is no number', "SxCore", "window_num"),
    ('window_num="2"', 'window_num="0"', "0 is below 1", "SxCore", "window_num"),
    ('window_num="2"', 'window_num="8"', "256 samples are more than the 128", "SxCore",
     "capture_amount"),
    ('"256"', '"99999999999"', "is no number", "SxCore", "capture_amount"),
    ('trigger_pos="80"', 'trigger_pos="256"', "lies outside of 256", "SxCore", "trigger_pos"),
    ('trigger_pos="80"', 'trigger_pos="-1"', "-1 is below 0", "SxCore", "trigger_pos"),
    ('SxCore index="0"', 'SxCore index="16"', "16 is not 0 to 15", "SxCore", "index"),
    ('enabled="false"', 'enabled="no"', 'neither "true" nor "false"', "SxCore",
     "capture_init_data_enabled"),
    ('capture_init', 'capture_from_trigger="2" capture_init', "2 is not 0 to 1", "SxCore",
     "capture_from_trigger"),
    ('capture_enable="true">valid', 'capture_enable="yes">valid', "the signal is dropped", "Signal",
     "capture_enable"),
    ('capture_enable="true" name="grant"', 'capture_enable="1" name="grant"', "not captured", "Bus",
     "capture_enable"),
    ("<Signal>gnt[0]</Signal>", "<Sgnal>gnt[0]</Sgnal>", "nothing in Bus is called that", "Sgnal", ""),
    (">store.busy<", "><", "a signal without a name", "Signal", ""),
    ("<Triggers>", "<Trigers/><Triggers>", "nothing in SxCore is called that", "Trigers", ""),
    ("</Triggers>", "</Triggers><Triggers/>", "only the first one in SxCore counts", "Triggers", ""),
    ("<Mode>", "<Version>3.0</Version><Mode>", "only the first one", "Version", ""),
    ("</VEK_CONFIG>", "<VEK_ID>a</VEK_ID><VEK_ID>b</VEK_ID></VEK_CONFIG>", "only the first one",
     "VEK_ID", ""),
    ("<Version>3.0</Version>", "", "Unknown Vek Version", "VEK_CONFIG", ""),
    (">3.0<", ">3.x<", "Invalid Vek config file", "Version", ""),
    (">3.0<", ">3.1<", "too high", "Version", ""),
    ("Standard", "Fast", 'unknown mode "Fast"', "Mode", ""),
    ('<Trigger index="5"/>', '<Trigger index="4"/>', "an earlier port has index 4", "Trigger",
     "index"),
    ('<MatchUnit index="4"', '<MatchUnit index="3"', "an earlier unit has index 3", "MatchUnit",
     "index"),
    ('<MatchUnit index="15"', '<MatchUnit index="16"', "16 is not 0 to 15", "MatchUnit", "index"),
    (UNIT1, '<MatchUnit index="1" enabled="1" match_type="0"', "type Basic can't do in range",
     "MatchUnit", "func"),
    (UNIT1, '<MatchUnit index="1" enabled="1" match_type="6"', "6 is not 0 to 5", "MatchUnit",
     "match_type"),
    ('func="6"', 'func="8"', "8 is not 0 to 7", "MatchUnit", "func"),
    ('value0="01010000"', 'value0="010100001"', "9 characters for a port of 8", "MatchUnit",
     "value0"),
    ('value1="01010111"', 'value1="01010X11"', "'X' is no character", "MatchUnit", "value1"),
    ('value0="10"', 'value0="1R"', "'R' is no character of a value that Basic", "MatchUnit",
     "value0"),
    ('value0="RF"', 'value0="rF"', "'r' is no character", "MatchUnit", "value0"),
    ('value1="" trigger="2"', 'value1=""', "watches no port", "MatchUnit", "trigger"),
    ('trigger="2"', 'trigger="4"', "has no signals", "MatchUnit", "trigger"),
    ('trigger="2"', 'trigger="16"', "16 is not 0 to 15", "MatchUnit", "trigger"),
    ('counter="8"', 'counter="17"', "17 is not 1 to 16", "MatchUnit", "counter"),
    ('counter_width="4"', 'counter_width="0"', "0 is not 1 to 16", "MatchUnit", "counter_width"),
    ('type="Dynamic"', 'type="dynamic"', "neither", "Expressions", "type"),
    (EXPRESSION, EXPRESSION + "&amp;M3", "no unit M3 in use", "Expression", ""),
    (EXPRESSION, EXPRESSION + "|M16", "no unit M16", "Expression", ""),
    (EXPRESSION, EXPRESSION.replace("^", "+"), "'+' does not belong", "Expression", ""),
    (EXPRESSION, EXPRESSION + ")", "brackets", "Expression", ""),
    (EXPRESSION, EXPRESSION + "|", "no valid expression", "Expression", ""),
    (EXPRESSION, LONG, "another table", "Expression", ""),
    ("</SxCore>", '</SxCore><SxCore_Lite index="0"/>', "nothing in VEK_CONFIG", "SxCore_Lite", ""),
    ("</Mode>", "</Mod>", "at 4:", "", ""),
]
WARNINGS = [
    ('capture_amount="256" trigger_pos="80"', 'capture_amount="200" trigger_pos="80"',
     "of 200 samples only 128", "SxCore", "capture_amount"),
    ('module_name="bus_system"', 'module_nam="bus_system"', "no reader knows", "SxCore",
     "module_nam"),
    ('"true">ready<', '"true">valid<', "stands twice", "Signal", ""),
    ('value0="10"', 'value0="0"', "filled up with 0", "MatchUnit", "value0"),
    ('value0="01010000"', 'value0="11010000"', "ends before it begins", "MatchUnit", "value1"),
    (EXPRESSION, "M0&amp;(M1^M2)", "M5 is in use, and no expression", "MatchUnit", ""),
    (f"<Expression>{EXPRESSION}</Expression>", "", "fires at its first sample", "Expressions", ""),
    ("</Expression>", f"</Expression><Expression>{EXPRESSION}</Expression>",
     "which of 2 dynamic expressions", "Expressions", ""),
    ("bus_system", "b\u00fcs", "are UTF-8", "", ""),
]
LITE_ERRORS = [
    ('capture_init_data_enabled="0"', 'capture_init_data_enabled="true"', "no number",
     "SxCore_Lite", "capture_init_data_enabled"),
    ("</SxCore_Lite>", '</SxCore_Lite>' + LITE.split("</Mode>")[1].split("</VEK")[0],
     "several cores", "SxCore_Lite", ""),
    ('enable="true"', 'enable="false"', "captures no signals", "SxCore_Lite", ""),
]
BROKEN = [("error", STALL, *row) for row in ERRORS] + \
         [("warning", STALL, *row) for row in WARNINGS] + \
         [("error", LITE, *row) for row in LITE_ERRORS]


def check(desk, *arguments):
    process = desk.start("check", *arguments, command=None)
    out, err = process.communicate(timeout=30)
    assert err == ""
    return process.returncode, out


@pytest.mark.parametrize("severity, text, old, new, words, element, attribute", BROKEN,
                         ids=[f"{n}: {row[4]}" for n, row in enumerate(BROKEN)])
def test_one_mistake_is_one_message(desk, severity, text, old, new, words, element, attribute):
    assert old in text
    file = desk.folder / "design.vek"
    broken = text.replace(old, new, 1)
    file.write_text(broken)
    status, out = check(desk, file, "--json")
    found = json.loads(out)
    assert len(found["findings"]) == 1, out
    finding = found["findings"][0]
    assert words in finding["message"]
    assert finding["severity"] == severity and status == (severity == "error")
    assert (finding.get("element", ""), finding.get("attribute", "")) == (element, attribute)
    place = f":{finding['line']}" if "line" in finding else ""
    if "line" in finding:
        assert element in broken.splitlines()[finding["line"] - 1]
    status, out = check(desk, file)
    assert f"{file}{place}: {severity}: " in out and words in out


@pytest.mark.parametrize("demo", ["bus/bus-stall", "bus/bus-start", "uart/uart-link",
                                  "uart/uart-lines"])
def test_demos_are_clean(desk, demo):
    files = SOURCE / f"examples/{demo}.vek", "--bench", SOURCE / f"examples/{demo}.json"
    status, out = check(desk, *files)
    assert status == 0 and out.endswith(f"{files[0]}: nothing found\n")
    assert ("core 0 waits for: " in out) == (demo != "bus/bus-start")


def test_sessions_are_clean(desk):
    desk.lay().run("--format", "rsx")
    session = desk.out / "bus-stall.rsx"
    status, out = check(desk, session)
    assert status == 0 and out.endswith(f"{session}: nothing found\n")


@pytest.mark.parametrize("members, severity, words", [
    (dict(device="TK-1077"), "error", '"TK-1077" is no device'),
    (dict(stimulus=dict(clock="cl")), "error", "clk"),
    (dict(stimulus=dict(clock="ready_never")), "error", "ready"),
    (dict(stimulus=dict(signals={"valid": "vaild"})), "error", "valid"),
    (dict(color=1), "error", "color"),
])
def test_bench(desk, members, severity, words):
    desk.lay(**members)
    status, out = check(desk, desk.configuration, "--bench", desk.folder / "bench.json")
    assert status == 1 and re.search(f": {severity}: .*{re.escape(words)}", out), out


def test_short_stimulus_and_unreadable(desk):
    desk.lay()
    (desk.folder / "bench.json").write_text(json.dumps(dict(
        device="TK-501", design="built.vek", stimulus=dict(pattern="counter", samples=9))))
    status, out = check(desk, desk.configuration, "--bench", desk.folder / "bench.json")
    assert status == 0 and "it has 9 samples, and a window of core 0 takes 256" in out
    process = desk.start("check", desk.folder / "none.vek", command=None)
    assert process.communicate()[1].startswith("vek: error: ") and process.returncode == 3
