"""Triggers as text: what a text means, worked out here sample by sample, is what the chip does."""

import json
import os
import random

import jsonschema
import pytest

from desk import SOURCE

SCHEMA = json.loads((SOURCE / "docs/manifest.schema.json").read_text())
SAMPLES = 500
AMOUNT = 32
RUNS = int(os.environ.get("VEK_TRIGGER_RUNS", 60))  # 500 now and then
TYPES = {0: "=", 1: "=E", 2: "=<", 3: "=<E", 4: "=<R", 5: "=<RE"}  # what a match type can do
SIGNALS = {"a": 1, "b": 1, "c": 1, "addr": 8, "state": 3, "number": 16}
NETS = [f"{name}[{i}]" if width > 1 else name
        for name, width in SIGNALS.items() for i in reversed(range(width))]
PORTS = [["a", "b", "c"], ["addr"], ["state", "a"], ["b", "addr"]]


def nets_of(name):
    return [net for net in NETS if net.split("[")[0] == name]


# The language's meaning. A node is a tuple; `rows` is a list of values by net.

def value(names, row):
    return int("".join(str(row[net]) for net in names), 2)


def meaning(node, rows, start):
    """A truth value for each sample from `start` on, at which the counters are reloaded."""
    kind, *rest = node
    span = range(start, len(rows))
    if kind == "level":
        nets, wanted = rest
        return [all(w == "x" or str(rows[k][net]) == w for net, w in zip(nets, wanted))
                for k in span]
    if kind == "number":
        nets, sign, low, high = rest
        does = {"<": lambda x: x < low, ">": lambda x: x > low, "<=": lambda x: x <= low,
                ">=": lambda x: x >= low, "in": lambda x: low <= x <= high}[sign]
        return [does(value(nets, rows[k])) for k in span]
    if kind == "edge":
        net, word = rest
        pairs = [(rows[max(k - 1, 0)][net], rows[k][net]) for k in span]
        return [{"rises": (0, 1) == p, "falls": (1, 0) == p, "changes": p[0] != p[1]}[word]
                for p in pairs]
    if kind == "count":
        inner, times, in_row = rest
        fired, left = [], times
        for isMatch in meaning(inner, rows, start):
            left = left - 1 if isMatch else times if in_row else left
            fired.append(isMatch and left == 0)
            left = left or times
        return fired
    if kind == "!":
        return [not x for x in meaning(rest[0], rows, start)]
    does = {"&": all, "|": any, "^": lambda values: sum(values) % 2 == 1}[kind]
    return [does(values) for values in zip(*(meaning(node, rows, start) for node in rest))]


def firing(steps, rows, windows, position):
    """The trigger samples of the windows, as many as fire."""
    found, start = [], 0
    for _ in range(windows):
        k = start
        for step in steps:
            truth = meaning(step, rows, start) if start < len(rows) else []
            while k < len(rows) and not truth[k - start]:
                k += 1
            if k >= len(rows):
                return found
            k += 1
        found.append(k - 1)
        start = k + AMOUNT - 1 - position
    return found


# Random texts

class Draw(random.Random):
    def chance(self, percent):
        return self.randrange(100) < percent

    def blank(self):
        return self.choice(["", " ", "  "])

    def number(self, number, width):
        return self.choice([str(number), hex(number), f"0b{number:0{width}b}"])

    def test(self, unit, rows):
        """A test that this unit can do, as text and node."""
        names = PORTS[unit["port"]]
        can = TYPES[unit["type"]]
        nets = [net for name in names for net in nets_of(name)]
        row = self.choice(rows)
        if "<" in can and self.chance(60):
            text = names[0] if len(names) == 1 else "{" + ", ".join(names) + "}"
            return self.ordered(text, nets, can, row)
        name = self.choice(names)
        own = nets_of(name)
        if "E" in can and self.chance(60):
            net, word = self.choice(own), self.choice(["rises", "falls", "changes"])
            return f"{net} {word}", ("edge", net, word)
        if len(own) == 1 and self.chance(70):
            return name, ("level", own, "1")
        bits = "".join(str(row[net]) if self.chance(70) else "x" for net in own)
        text = self.number(value(own, row), len(own))
        if self.chance(50):
            text = "0b" + bits.lstrip("0" if self.chance(20) else "") or "0b0"
            text = "0b0" if text == "0b" else text
        else:
            bits = f"{value(own, row):0{len(own)}b}"
        node = ("level", own, bits)
        return (f"{name} != {text}", ("!", node)) if self.chance(20) else (f"{name}=={text}", node)

    def ordered(self, text, nets, can, row):
        low = value(nets, row)
        high = min(low + self.randrange(9), 2 ** len(nets) - 1)
        shown = self.number(low, len(nets))
        if "R" in can and self.chance(60):
            node = ("number", nets, "in", low, high)
            text += f" in {shown}..{self.number(high, len(nets))}"
            return (text.replace(" in ", " not in "), ("!", node)) if self.chance(20) else (text, node)
        sign = self.choice(["<", ">", "<=", ">="])
        return f"{text} {sign} {shown}", ("number", nets, sign, low, 0)

    def leaf(self, unit, rows):
        text, node = self.test(unit, rows)
        if unit["counter"] and self.chance(70):
            times, in_row = self.randint(1, 6), self.chance(40)
            text = f"({text}) {times} times" + (" in a row" if in_row else "")
            return text, ("count", node, times, in_row), 5
        return text, node, 5

    def expression(self, units, rows, depth):
        """Text, node, and how strongly it binds."""
        if depth == 0 or len(units) == 1 or self.chance(20):
            return self.leaf(units[0], rows)
        if self.chance(15):
            text, node, binds = self.expression(units, rows, depth - 1)
            return "!" + self.bracketed(text, binds < 4), ("!", node), 4
        sign, strength = self.choice([("|", 1), ("^", 2), ("&", 3), ("&", 3)])
        cut = self.randint(1, len(units) - 1)
        texts, nodes = [], []
        for part in units[:cut], units[cut:]:
            text, node, binds = self.expression(part, rows, depth - 1)
            texts.append(self.bracketed(text, binds < strength))
            nodes.append(node)
        return (self.blank() + sign + self.blank()).join(texts), (sign, *nodes), strength

    def bracketed(self, text, needed):
        return f"({text})" if needed or self.chance(15) else text

    def built(self, units, rows):
        """An expression of a static core, and a text and node that its units can be set to."""
        if len(units) == 1:
            text, node, binds = self.leaf(units[0], rows)
            name = f"M{units[0]['index']}"
            if self.chance(30):
                return f"!{name}", f"!({text})", ("!", node)
            turns = node[0] != "count" and self.chance(20)
            return ("!" if turns else "") + name, self.bracketed(text, binds < 5), node
        cut = self.randint(1, len(units) - 1)
        sign = self.choice("|^&&")
        left, right = (self.built(part, rows) for part in (units[:cut], units[cut:]))
        return (f"({left[0]}){sign}({right[0]})", f"({left[1]}) {sign} ({right[1]})",
                (sign, left[2], right[2]))


# The desk

def samples_of(draw):
    rows, now = [], {name: 0 for name in SIGNALS}
    for k in range(SAMPLES):
        for name, width in SIGNALS.items():
            if draw.chance(40):
                now[name] = draw.choice([draw.getrandbits(width), draw.randrange(min(2 ** width, 6))])
        now["number"] = k
        rows.append({net: now[name] >> i & 1 for name in SIGNALS
                     for i, net in enumerate(reversed(nets_of(name)))})
    return rows


def dump_of(rows):
    ids = {net: chr(34 + i) for i, net in enumerate(NETS)}
    lines = ["$timescale 1ns $end", "$scope module top $end", "$var wire 1 ! clk $end"]
    for net in NETS:
        name, _, index = net.partition("[")
        lines.append(f"$var wire 1 {ids[net]} {name} {'[' + index if index else ''} $end")
    lines += ["$upscope $end", "$enddefinitions $end"]
    for k, row in enumerate(rows):
        changes = [f"{bit}{ids[net]}" for net, bit in row.items()]
        lines += [f"#{10 * k}", "0!", *changes, f"#{10 * k + 5}", "1!"]
    return "\n".join(lines) + "\n"


def items(names, flag=""):
    text = ""
    for name in names:
        if SIGNALS[name] == 1:
            text += f"<Signal{flag}>{name}</Signal>"
        else:
            members = "".join(f"<Signal>{net}</Signal>" for net in nets_of(name))
            text += f'<Bus restorename="{name}"{flag}>{members}</Bus>'
    return f"<SignalList>{text}</SignalList>"


def configuration(units, expressions, dynamic):
    ports = "".join(f'<Trigger index="{i}">{items(names)}</Trigger>' for i, names in enumerate(PORTS))
    match = "".join(
        f'<MatchUnit index="{u["index"]}" enabled="1" match_type="{u["type"]}" func="0" value0=""'
        f' counter_enable="{int(u["counter"])}" counter_width="4" counter="3" countinuous="1"'
        f' value1="" trigger="{u["port"]}"/>' for u in units)
    shown = "".join(f"<Expression>{e.replace('&', '&amp;')}</Expression>" for e in expressions)
    kind = 'type="Dynamic" ex_implementation="0"' if dynamic else 'type="Static"'
    return f"""<?xml version="1"?><VEK_CONFIG><Version>3.0</Version><Mode>Standard</Mode>
        <SxCore index="0" sample_clock="clk" storage_depth="256" window_num="1" capture_amount="32"
            trigger_pos="0">{items(SIGNALS, ' capture_enable="true"')}<Triggers>{ports}</Triggers>
        <MatchUnits>{match}</MatchUnits><Expressions {kind}>{shown}</Expressions>
        </SxCore></VEK_CONFIG>"""


def lay(desk, rows, units, expressions, dynamic):
    desk.configuration = desk.folder / "random.vek"
    desk.configuration.write_text(configuration(units, expressions, dynamic))
    (desk.folder / "top.vcd").write_text(dump_of(rows))
    bench = {"device": "TK-501", "design": "random.vek", "stimulus": {"vcd": "top.vcd"}}
    (desk.folder / "bench.json").write_text(json.dumps(bench))
    desk.environment["VEK_BENCH"] = str(desk.folder / "bench.json")


def case(draw, rows):
    """A core's units and expressions, a text that it should do, and the text's steps as nodes."""
    dynamic = draw.chance(65)
    units = [{"index": i, "port": draw.randrange(len(PORTS)), "type": draw.choice(sorted(TYPES)),
              "counter": draw.chance(30)} for i in sorted(draw.sample(range(16), 8))]
    free = draw.sample(units, len(units))
    texts, nodes, expressions = [], [], []
    for _ in range(draw.choice([1, 1, 1, 2, 3])):
        own = [free.pop() for _ in range(min(len(free), draw.randint(1, 3)))]
        if dynamic:
            text, node, _ = draw.expression(own, rows, 3)
            expression = "M0"
        else:
            expression, text, node = draw.built(own, rows)
        texts.append(text)
        nodes.append(node)
        expressions.append(expression)
        if not free:
            break
    return dynamic, units, expressions, " then ".join(texts), nodes


def captured_numbers(desk, windows, position):
    """What the counter of samples shows in the trigger's row of each window."""
    found = []
    for window in range(windows):
        header, *rows = (desk.out / f"random_core0_window{window}.csv").read_text().splitlines()
        column = header.split(",").index("number")
        found.append(int(rows[position].split(",")[column], 0))
    return found


def test_fires_where_the_text_says(desk):
    draw = Draw(17)
    fired = refused = 0
    for run in range(RUNS):
        if run % 20 == 0:
            rows = samples_of(draw)
        dynamic, units, expressions, text, nodes = case(draw, rows)
        lay(desk, rows, units, expressions, dynamic)
        windows, position = draw.choice([1, 2]), draw.randrange(AMOUNT - 4)
        status, _, err = desk.run("--trigger", text, "--windows", windows, "--position", position,
                                  "--plain", "--manifest", desk.out / "run.json")
        case_text = f"run {run}: {text}\n{expressions}\n{units}\n{err}"
        if status == 2:
            refused += 1
            assert "takes every unit" in err or "take every unit" in err or "built into" in err, case_text
            continue
        expected = firing(nodes, rows, windows, position)
        assert status == (0 if len(expected) == windows else 10), case_text
        manifest = desk.manifest()
        assert manifest["configuration"]["overrides"]["trigger"] == text
        jsonschema.validate(manifest, SCHEMA)
        if status == 0:
            fired += 1
            assert captured_numbers(desk, windows, position) == expected, case_text
    print(f"{fired} of {RUNS} fired, {refused} refused")
    assert fired > RUNS / 3 and refused <= RUNS / 10


WRONG = {
    "adr == 5": ("adr", "the nearest is addr"),
    "addr in 0x50..0x57 & b rises": ("b rises", "needs a unit with edges on trigger port"),
    "addr == 5 && b": ("&&", '"&&" is written & here'),
}


@pytest.mark.parametrize("text", WRONG)
def test_error_points_at_its_place(desk, text):
    units = [{"index": i, "port": i, "type": 4, "counter": False} for i in range(len(PORTS))]
    lay(desk, samples_of(Draw(1)), units, ["M0"], True)
    status, out, err = desk.run("--trigger", text)
    place, message = WRONG[text]
    first, shown, pointer = err.splitlines()
    assert status == 2 and out == "" and desk.files() == []
    assert first.startswith("vek: error: --trigger: core 0: ") and message in first
    assert shown == "    " + text
    assert pointer == "    " + " " * text.index(place) + "^" + "~" * (len(place) - 1)
