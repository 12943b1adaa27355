"""vek report over a night's folder: manifests of real runs, and what becomes of them on the way."""

import datetime
import html.parser
import json
import os
import resource
import shutil
import signal
import sqlite3
import struct
import subprocess
import time
import urllib.parse
import xml.etree.ElementTree as xml
import zlib

import jsonschema
import pytest

from desk import SOURCE, Desk, until
from test_run import NEVER

SCHEMA = json.loads((SOURCE / "docs/report.schema.json").read_text())
HOSTILE = "</script><img src=x onerror=document.title=1>&\"'%1%2\x1b[31m\u202e]]>"
PRINTED = HOSTILE.replace("\x1b", "\ufffd").replace("\u202e", "\ufffd")
WINDOW = "bus-stall_core0_window0.csv"


@pytest.fixture(scope="module")
def runs():
    """A desk, and beside it one manifest of a real run for each outcome, with its captures."""
    desk = Desk()
    desk.night = desk.folder / "runs"

    def run(name, *arguments, status=0, **bench):
        desk.lay(**bench)
        desk.out = desk.night / name
        manifest = desk.out / "run.json"
        labels = ["--label", f"name={name}", "--label", "commit=4f2a"]
        got, _, err = desk.run("--manifest", manifest, *labels, *arguments)
        assert got == status, err
        return manifest

    def compare(name, golden):
        return desk.run("compare", golden, desk.night / name / WINDOW, "--align", "64",
                        "--manifest", desk.night / name / "run.json", command="")[0]

    run("passed")
    golden = desk.folder / "golden.csv"
    shutil.copy(desk.out / WINDOW, golden)
    assert compare("passed", golden) == 0
    run("differed")
    lines = golden.read_text().splitlines(keepends=True)
    at = next(i for i, line in enumerate(lines) if line.startswith("time unit")) + 62  # sample 60
    lines[at] = lines[at].replace(", 1", ", 0", 1)
    golden.write_text("".join(lines))
    assert compare("differed", golden) == 1
    run("no trigger", status=10, edit=NEVER)
    run("board error", status=7, open_result=-1)
    desk.lay(edit=NEVER, stimulus=dict(endless=True))
    desk.out = desk.night / "unfinished"
    killed = desk.start("--manifest", desk.out / "run.json", "--label", "name=unfinished")
    until(lambda: (desk.out / "run.json").exists(), "a run")
    killed.kill()
    killed.communicate()
    until(lambda: desk.processes() == [], "the server's end")
    yield desk
    desk.remove()


@pytest.fixture
def night(runs, tmp_path):
    """A copy of these runs, and the program over it."""
    class Night:
        folder = tmp_path / "night"

        def vek(self, *arguments, **options):
            return runs.finish(self.start(*arguments, **options))

        def start(self, *arguments, **options):
            return runs.start("report", *arguments, command="", **options)

        def json(self, *arguments):
            _, out, err = self.vek(self.folder, "--json", *arguments)
            report = json.loads(out)
            jsonschema.validate(report, SCHEMA)
            assert err == ""
            return report

        def put(self, name, like="passed", hours=0, labels=None, **members):
            """A manifest like one of the real ones, begun that many hours later."""
            manifest = json.loads((runs.night / like / "run.json").read_text())
            manifest["labels"] = {"name": name} if labels is None else labels
            for key in ("started", "ended"):
                if manifest[key]:
                    time = datetime.datetime.fromisoformat(manifest[key].rstrip("Z"))
                    time += datetime.timedelta(hours=hours)
                    manifest[key] = time.isoformat(timespec="milliseconds") + "Z"
            manifest.update(members)
            number = len(list(self.folder.iterdir()))
            path = self.folder / f"run{number}.json"
            path.write_text(json.dumps(manifest))
            return path

    shutil.copytree(runs.night, Night.folder)
    return Night()


def counts(tally):
    return {key: count for key, count in tally.items() if count}


def test_each_outcome(night, tmp_path):
    """What is told of real runs, in all forms alike."""
    report = night.json()
    assert counts(report["captures"]) == {"all": 5, "passed": 1, "differed": 1, "no-trigger": 1,
                                          "board-error": 1, "unfinished": 1}
    by_label = {run["label"]: run for run in report["runs"]}
    assert {label.replace(" ", "-") for label in by_label} == set(
        run["outcome"] for run in report["runs"])
    assert by_label["differed"]["message"].endswith("1 samples differ, the first at -4")
    assert "cable, location and power" in by_label["board error"]["message"]
    assert by_label["no trigger"]["status"] == 10 and by_label["unfinished"]["seconds"] is None
    assert [row["label"] for row in report["slowest"]] and report["time"]["per"] == "hour"

    expected = tmp_path / "expected"
    expected.write_text("passed\r\n\n never started \nno trigger\npassed\n")
    (night.folder / "deep").mkdir()
    (night.folder / "deep/cut.json").write_text('{"format": "vek-run", "sch')
    (night.folder / "deep/other.json").write_text("[1]")
    (night.folder / "loop").symlink_to(night.folder)
    with open(night.folder / "report.json", "w") as output:  # made by the shell, and no manifest
        night.start(night.folder, "--json", stdout=output).communicate()
    told = json.loads((night.folder / "report.json").read_text())
    assert (len(told["broken"]), told["other_documents"]) == (1, 2)
    junit = tmp_path / "report.xml"
    report = night.json("--expected", expected, "--junit", junit)
    assert report["missing"] == ["never started"] and report["not_expected"] == 3
    assert [b["path"] for b in report["broken"]] == [str(night.folder / "deep/cut.json")]
    assert (report["other_documents"], report["captures"]["all"]) == (2, 5)

    got, out, _ = night.vek(night.folder, night.folder / "deep", night.folder, "--expected", expected)
    assert got == 1
    for line in ("captures 5", "missing 1", "broken manifests 1", "board error 1"):
        assert line in [" ".join(text.split()) for text in out.splitlines()]
    suites = xml.parse(junit).getroot()
    told = {case.get("name"): [child.tag for child in case] for case in suites.iter("testcase")}
    assert told == {"passed": [], "differed": ["failure"], "no trigger": ["failure"],
                    "board error": ["error"], "unfinished": ["error"], "never started": ["error"],
                    str(night.folder / "deep/cut.json"): ["error"]}
    for kind in ("tests", "failures", "errors"):
        total = sum(int(suite.get(kind)) for suite in suites)
        assert total == {"tests": 7, "failures": 2, "errors": 4}[kind]


def test_the_last_attempt_counts(night):
    """Retried until it passes; a copy of a manifest is no attempt; a capture compared anew."""
    for name in ("differed", "no trigger", "board error", "unfinished"):
        night.put(name, hours=1, attempt=2)
    differed = json.loads((night.folder / "differed/run.json").read_text())
    again = night.put("compared again", "differed", hours=1)
    manifest = json.loads(again.read_text())
    manifest["comparisons"] += [{**differed["comparisons"][0], "equal": True}]
    again.write_text(json.dumps(manifest))
    shutil.copytree(night.folder / "differed", night.folder / "copy")
    (night.folder / "folder.json").mkdir()  # a name tells nothing
    got, out, err = night.vek(night.folder)
    assert (got, err) == (0, "")
    assert "no trigger, then passed" in out and "board error, then passed" in out
    report = night.json()
    assert counts(report["captures"]) == {"all": 6, "passed": 6} and report["all_passed"]
    assert (report["earlier_attempts"], report["copies"]) == (4, 1)
    assert [run["counts"] for run in report["runs"] if run["label"] == "differed"] == [False, True]
    flaky, = report["flaky"]  # the design without a trigger is another file, and the copy is none
    assert flaky["configuration"].startswith("bus-stall.vek")
    assert counts(flaky["runs"]) == {"all": 8, "passed": 6, "differed": 1, "board-error": 1}


def test_boards(night):
    """One board of eight is dead, one fails a third of its captures, one has a bad day."""
    shutil.rmtree(night.folder)
    night.folder.mkdir()
    number = 0
    for board in range(8):
        for turn in range(30):
            like = "passed"
            if board == 2 or (board == 5 and turn % 3 == 0) or (board == 6 and turn == 0):
                like = "board error" if board == 2 else "differed"
            night.put(f"capture {number}", like, hours=turn, host=f"desk{board // 2}",
                      location=str(board % 2), server="127.0.0.1:5" if board > 3 else "")
            number += 1
    report = night.json()
    assert [(b["board"], b["failed"], b["dead"]) for b in report["failing_boards"]] == [
        ("desk1 FT2CH 0", 30, True), ("desk2 127.0.0.1:5 FT2CH 1", 10, False)]
    assert len(report["boards"]) == 8 and report["boards"][0]["name"] == "desk1 FT2CH 0"
    assert report["time"]["per"] == "hour" and len(report["time"]["rows"]) == 30
    night.put("lab", hours=200, labels={"name": "lab", "board": "by the window"})
    report = night.json()
    assert report["time"]["per"] == "day" and "by the window" in [b["name"] for b in report["boards"]]


def test_hostile_and_broken(night, tmp_path):
    night.put(HOSTILE, "no trigger")
    night.put("", hours=3)  # goes by its own name
    for i, text in enumerate(["", "{", "\xff", '{"format":"vek-run","schema":2}',
                              '{"format":"vek-run","schema":1,"state":"ended"}',
                              '{"format":"vek-run","schema":1,"state":"gone",'
                              '"started":"2026-03-01T00:00:00.000Z"}']):
        (night.folder / f"bad{i}.json").write_text(text)
    with open(night.folder / "large.json", "wb") as file:
        file.truncate(17 << 20)
    junit = tmp_path / "report.xml"
    report = night.json("--junit", junit)
    assert len(report["broken"]) == 7 and all(b["reason"] for b in report["broken"])
    assert HOSTILE in [run["label"] for run in report["runs"]]
    assert str(night.folder / "run6") in [run["label"] for run in report["runs"]]
    names = [case.get("name") for case in xml.parse(junit).getroot().iter("testcase")]
    assert PRINTED in names
    assert "\x1b" not in night.vek(night.folder)[1]

    empty = tmp_path / "empty"
    empty.mkdir()
    assert night.vek(empty)[0] == 1  # nothing is not all passed
    assert night.vek(tmp_path / "none")[0] == 3
    assert night.vek(night.folder, "--expected", empty)[0] == 3
    assert night.vek(night.folder, "--junit", "/dev/full")[0] == 12
    assert night.vek()[0] == 2


def test_database(night, tmp_path):
    """What is new comes in, once; what has ended or was compared since is brought up to date."""
    base = tmp_path / "runs.db"

    def rows(sql):
        with sqlite3.connect(base) as connection:
            return connection.execute(sql).fetchall()

    def report(*arguments):
        return night.json("--sqlite", base, *arguments)["database"]

    unfinished = night.put("killed", "unfinished", hours=1)
    assert report() == {"added": 6, "updated": 0}
    before = base.read_bytes()
    assert report() == {"added": 0, "updated": 0} and base.read_bytes() == before
    tables = rows("SELECT sql FROM sqlite_master WHERE sql NOT NULL")
    manual = (SOURCE / "docs/reports.md").read_text()
    assert len(tables) == 7 and all(sql in manual for sql, in tables)
    outcomes = "SELECT outcome, count(*) FROM captures GROUP BY outcome ORDER BY outcome"
    assert rows(outcomes) == [("board-error", 1), ("differed", 1), ("no-trigger", 1), ("passed", 1),
                              ("unfinished", 2)]
    assert rows("SELECT label, signal, result, differing, first FROM differences "
                "JOIN runs ON run = id") == [("differed", "grant", "differs", 1, -4)]
    assert rows("SELECT value FROM labels WHERE key = 'commit' GROUP BY value") == [("4f2a",)]
    assert rows("SELECT result, forced, windows, cores.seconds IS NULL FROM cores JOIN runs ON run = id "
                "WHERE label IN ('passed', 'no trigger') ORDER BY label DESC") == [
                    ("captured", 0, 2, 0), ("no-trigger", 0, 0, 1)]

    night.put("passed", "no trigger", hours=1)
    ended = json.loads(night.put("killed", hours=1).read_text())
    ended["started"] = json.loads(unfinished.read_text())["started"]
    unfinished.write_text(json.dumps(ended))
    differed = night.folder / "differed/run.json"
    manifest = json.loads(differed.read_text())
    manifest["comparisons"] += [{**manifest["comparisons"][0], "equal": True, "windows": []}]
    differed.write_text(json.dumps(manifest))
    assert report() == {"added": 2, "updated": 2}
    assert rows("SELECT count(*), max(report) FROM runs") == [(8, 2)]
    assert rows("SELECT count(*) FROM differences") == [(0,)]
    assert rows("SELECT outcome FROM captures WHERE label = 'killed'") == [("passed",), ("passed",)]

    before = base.read_bytes()
    for i in range(300):
        night.put(f"more {i}")
    counts_ = set()
    for delay in range(12):  # at any moment: all or nothing
        report_ = night.start(night.folder, "--sqlite", base)
        time.sleep(delay * 0.01)
        report_.kill()
        report_.communicate()
        counts_.add(rows("SELECT count(*) FROM runs")[0][0])
    assert 8 in counts_ and counts_ <= {8, 308}
    base.write_bytes(before)

    def limit():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (len(before), len(before)))

    got, _, err = night.vek(night.folder, "--sqlite", base, preexec_fn=limit)
    assert got == 12 and str(base) in err and rows("SELECT count(*) FROM runs") == [(8,)]
    for name, text in (("notes", b"no database"), ("other", None)):
        other = tmp_path / name
        if text:
            other.write_bytes(text * 100)
        else:
            with sqlite3.connect(other) as connection:
                connection.execute("CREATE TABLE runs (id)")
        kept = other.read_bytes()
        assert night.vek(night.folder, "--sqlite", other)[0] == 12 and other.read_bytes() == kept


CHROMIUM = shutil.which("chromium") or shutil.which("chromium-browser")
VIEWER = """#!/bin/sh
printf '%s\\n' "$*" >> calls
[ ! -e broken ] || exit 1
cat > "$3" <<'END'
<svg xmlns="http://www.w3.org/2000/svg" width="960" height="40"><rect width="960" height="40" fill="#12ab34"/>
<script>parent.document.title = 1</script></svg>
END
"""


class Page(html.parser.HTMLParser):
    """The rows of the runs, the differences that show, and the title, of a page as it stands."""
    def __init__(self, text):
        super().__init__(convert_charrefs=True)
        self.rows, self.articles, self.values = [], [], 0
        self.title, self.into = "", None
        self.images = [0, 0]  # other ones, and pictures of waves
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        if tag == "tbody":
            self.into = "rows" if attributes.get("id") == "rows" else None
        elif tag == "tr" and self.into == "rows":
            self.rows.append([])
        elif tag == "td" and self.into == "rows":
            self.rows[-1].append("")
        elif tag == "article" and "hidden" not in attributes:
            self.articles.append(attributes["data-run"])
        elif tag == "img":
            self.images[attributes["src"].startswith("data:image/svg+xml;base64,")] += 1
        elif tag == "title" and not self.title:
            self.into = "title"
        self.values += attributes.get("class") == "values"

    def handle_endtag(self, tag):
        if tag in ("table", "title"):
            self.into = None

    def handle_data(self, data):
        if self.into == "title":
            self.title += data
        elif self.into == "rows" and self.rows and self.rows[-1]:
            self.rows[-1][-1] += data


def chromium(tmp_path, page, *arguments):
    if not CHROMIUM:
        pytest.skip("Chromium is not installed: apt-get install chromium")
    return subprocess.run(
        [CHROMIUM, "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
         f"--user-data-dir={tmp_path}/profile", *arguments, page], capture_output=True, text=True,
        timeout=60, check=True, env={**os.environ, "HOME": str(tmp_path)}).stdout


def colours(png):
    """How many pixels a PNG of 8 bits a channel has of each colour."""
    data, at, size, channels = png.read_bytes(), 8, None, 0
    packed = b""
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + length]
        if kind == b"IHDR":
            size, channels = struct.unpack(">II", body[:8]), {2: 3, 6: 4}[body[9]]
        packed += body if kind == b"IDAT" else b""
        at += length + 12
    raw, stride, found = zlib.decompress(packed), size[0] * channels, {}
    above = bytearray(stride)
    for y in range(size[1]):
        kind, line = raw[y * (stride + 1)], bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for x in range(stride):
            left = line[x - channels] if x >= channels else 0
            corner = above[x - channels] if x >= channels else 0
            near = left + above[x] - corner
            paeth = min((left, above[x], corner), key=lambda value: abs(near - value))
            line[x] = (line[x] + (0, left, above[x], (left + above[x]) // 2, paeth)[kind]) & 255
        for x in range(0, stride, channels):
            colour = line[x:x + 3].hex()
            found[colour] = found.get(colour, 0) + 1
        above = line
    return found


def test_page(runs, night, tmp_path):
    """What people see: filters in the address, escaped text, waves or values, in a real browser."""
    night.put(HOSTILE, "no trigger", labels={"name": HOSTILE, "board": "A&B <i>%1"})
    night.put("no trigger", hours=1, attempt=2)
    path = tmp_path / "page.html"
    viewer = runs.folder / "Analyzer/bin/vek-view"
    assert night.vek(night.folder, "--html", path)[0] == 1  # without a viewer
    text = path.read_text()
    assert Page(text).images == [0, 0] and Page(text).values == 1 and "://" not in text.replace(
        "http://www.w3.org", "")
    viewer.write_text(VIEWER)
    viewer.chmod(0o755)
    try:
        (runs.folder / "broken").touch()
        assert night.vek(night.folder, "--html", path)[0] == 1
        assert Page(path.read_text()).images == [0, 0] and "grant" in path.read_text()
        (runs.folder / "broken").unlink()
        assert night.vek(night.folder, "--html", path)[0] == 1
        call = (runs.folder / "calls").read_text().splitlines()[-1].split()
        assert call[:2] == [str(night.folder / "differed" / WINDOW), "--grab"]
        assert call[3:7] == ["--from", "36", "--to", "100"]  # the difference is at 60
    finally:
        viewer.unlink()

    def shown(**filters):
        address = path.as_uri() + "#" + urllib.parse.urlencode(filters)
        page = Page(chromium(tmp_path, address, "--dump-dom"))
        assert page.title == "Captures" and page.images == [0, 1]
        return page

    page = shown()
    assert [row[0] for row in page.rows] == [PRINTED, "board error", "differed", "unfinished",
                                             "no trigger", "passed"]
    assert len(page.articles) == 1 and page.rows[0][4] == "A&B <i>%1"
    assert [row[:3] for row in shown(outcome="differed").rows] == [
        ["differed", "differed", "grant: 1 samples differ, the first at -4"]]
    page = shown(board="A&B <i>%1")
    assert [row[0] for row in page.rows] == [PRINTED] and page.articles == []
    assert [row[0] for row in shown(text="cable, LOCATION").rows] == ["board error"]
    assert len(shown(outcome="no-trigger", all=1).rows) == 2 and shown(board="none").rows == []

    seen = []
    for fragment in ("#outcome=differed", "#outcome=board-error"):
        shot = tmp_path / "shot.png"
        chromium(tmp_path, path.as_uri() + fragment, f"--screenshot={shot}", "--window-size=800,1100")
        seen.append(colours(shot))
    red, purple, waves = "c62828", "7b3fa0", "12ab34"
    assert seen[0][waves] > 20000 and waves not in seen[1]
    assert seen[0][red] > seen[1][red] > 0 and seen[1][purple] > seen[0][purple] > 0
