"use strict";

// Filters the runs and differences. What is filtered stands behind the address's #, so that a link
// leads to it.
(function () {
    const data = JSON.parse(document.getElementById("runs").textContent);
    const form = document.getElementById("filter");
    const body = document.getElementById("rows");
    const more = document.getElementById("more");
    const count = document.getElementById("count");
    const [LABEL, OUTCOME, CONFIGURATION, BOARD, STARTED, DURATION, ATTEMPT, LAST, MESSAGE, MANIFEST] =
        [...Array(10).keys()];
    const step = 50;
    let found = [];

    function choices(select, texts) {
        texts.forEach((text, number) => select.add(new Option(text, String(number))));
    }

    function wanted() {
        return new URLSearchParams(location.hash.slice(1));
    }

    // An outcome, configuration or board by its text, as in links; -1 for one that is not there.
    function numberOf(texts, text) {
        return text ? texts.indexOf(text) : null;
    }

    function matching() {
        const want = wanted();
        const outcome = numberOf(data.outcomes, want.get("outcome"));
        const configuration = numberOf(data.configurations, want.get("configuration"));
        const board = numberOf(data.boards, want.get("board"));
        const text = (want.get("text") || "").toLowerCase();
        const all = want.get("all") === "1";
        const numbers = [];
        data.runs.forEach((run, number) => {
            if ((all || run[LAST]) && (outcome === null || run[OUTCOME] === outcome) &&
                (configuration === null || run[CONFIGURATION] === configuration) &&
                (board === null || run[BOARD] === board) &&
                (!text || run[LABEL].toLowerCase().includes(text) ||
                 run[MESSAGE].toLowerCase().includes(text)))
                numbers.push(number);
        });
        const isPassed = (number) => data.outcomes[data.runs[number][OUTCOME]] === "passed";
        return numbers.filter((number) => !isPassed(number)).concat(numbers.filter(isPassed));
    }

    function cell(row, text, kind) {
        const made = row.insertCell();
        made.textContent = text;
        made.className = kind;
        return made;
    }

    function addRow(run) {
        const row = body.insertRow();
        cell(row, run[LABEL], "text").title = run[MANIFEST];
        const word = document.createElement("span");
        word.className = "word " + data.outcomes[run[OUTCOME]];
        word.textContent = data.titles[run[OUTCOME]];
        cell(row, "", "").append(word);
        cell(row, run[MESSAGE], "text");
        cell(row, data.configurations[run[CONFIGURATION]], "short");
        cell(row, data.boards[run[BOARD]], "short");
        cell(row, new Date(run[STARTED]).toISOString().slice(0, 19).replace("T", " "), "number");
        cell(row, run[DURATION] < 0 ? "" : (run[DURATION] / 1000).toFixed(3) + " s", "number");
        cell(row, run[ATTEMPT] + (run[LAST] ? "" : ", followed by another"), "");
    }

    function addRows() {
        const from = body.rows.length;
        found.slice(from, from + step).forEach((number) => addRow(data.runs[number]));
        more.hidden = body.rows.length === found.length;
    }

    function showForm() {
        const want = wanted();
        for (const name of ["outcome", "configuration", "board"]) {
            const number = numberOf(data[name + "s"], want.get(name));
            form[name].value = number === null || number < 0 ? "" : String(number);
        }
        form.text.value = want.get("text") || "";
        form.all.checked = want.get("all") === "1";
    }

    function show() {
        if (document.activeElement !== form.text)
            showForm();
        found = matching();
        body.replaceChildren();
        addRows();
        count.textContent = found.length + " of " + data.runs.length + " runs";
        const numbers = new Set(found);
        for (const article of document.querySelectorAll("article"))
            article.hidden = !numbers.has(Number(article.dataset.run));
    }

    function change() {
        const want = new URLSearchParams();
        for (const name of ["outcome", "configuration", "board"]) {
            if (form[name].value !== "")
                want.set(name, data[name + "s"][Number(form[name].value)]);
        }
        if (form.text.value)
            want.set("text", form.text.value);
        if (form.all.checked)
            want.set("all", "1");
        history.replaceState(null, "", "#" + want.toString());
        show();
    }

    choices(form.outcome, data.titles);
    choices(form.configuration, data.configurations);
    choices(form.board, data.boards);
    form.addEventListener("input", change);
    form.addEventListener("submit", (event) => event.preventDefault());
    form.addEventListener("reset", () => { location.hash = ""; });
    more.addEventListener("click", addRows);
    window.addEventListener("hashchange", show);
    showForm();
    show();
    form.hidden = false;
})();
