-- a report that added runs
CREATE TABLE reports (
    id INTEGER PRIMARY KEY,
    made TEXT NOT NULL,
    program TEXT NOT NULL
);
CREATE TABLE runs (
    id INTEGER PRIMARY KEY,
    report INTEGER NOT NULL REFERENCES reports,
    label TEXT NOT NULL,
    started TEXT NOT NULL,
    host TEXT NOT NULL,
    board TEXT NOT NULL,
    attempt INTEGER NOT NULL,
    -- passed, differed, no-trigger, board-error, stopped, output-error, unfinished
    outcome TEXT NOT NULL,
    -- the exit status; NULL while unfinished, like cause and seconds
    status INTEGER,
    cause TEXT,
    message TEXT NOT NULL,
    seconds REAL,
    -- the file's name, with what was overridden
    configuration TEXT NOT NULL,
    sha256 TEXT NOT NULL,
    cable TEXT NOT NULL,
    location TEXT NOT NULL,
    server TEXT NOT NULL,
    device TEXT NOT NULL,
    program TEXT NOT NULL,
    manifest TEXT NOT NULL,
    -- how many there were in the manifest
    comparisons INTEGER NOT NULL,
    UNIQUE (label, started, host, board)
);
CREATE TABLE labels (
    run INTEGER NOT NULL REFERENCES runs ON DELETE CASCADE,
    key TEXT NOT NULL,
    value TEXT NOT NULL,
    PRIMARY KEY (run, key)
) WITHOUT ROWID;
CREATE TABLE cores (
    run INTEGER NOT NULL REFERENCES runs ON DELETE CASCADE,
    core INTEGER NOT NULL,
    trigger TEXT NOT NULL,
    result TEXT NOT NULL,
    forced INTEGER NOT NULL,
    windows INTEGER NOT NULL,
    -- from arming; NULL when it did not fire
    seconds REAL,
    PRIMARY KEY (run, core)
) WITHOUT ROWID;
-- of the last comparison of the two files
CREATE TABLE differences (
    run INTEGER NOT NULL REFERENCES runs ON DELETE CASCADE,
    golden TEXT NOT NULL,
    new TEXT NOT NULL,
    window TEXT NOT NULL,
    -- empty: the lengths differ, or the whole window is missing or added
    signal TEXT NOT NULL,
    -- differs, missing, added, or how the lengths differ
    result TEXT NOT NULL,
    -- samples, and the first of them from the trigger
    differing INTEGER,
    first INTEGER
);
CREATE INDEX differences_of_runs ON differences (run);
-- the attempts that count, of each report
CREATE VIEW captures AS SELECT * FROM runs WHERE NOT EXISTS (
    SELECT 1 FROM runs AS later WHERE later.report = runs.report AND later.label = runs.label
        AND (later.started, later.attempt, later.id) > (runs.started, runs.attempt, runs.id)
);
