// What all servers come to together, and the table of them: sorted, filtered, summed up.

const stateNames = {done: "done", partly: "partly done", failed: "failed"};
const stateOrder = {failed: 0, partly: 1, done: 2};

// The columns of numbers.
const shownAs = {
    cores: (value) => value.toFixed(2),
    memory_used: bytes,
    memory: bytes,
    disk: kib,
    processes: count,
    descriptors: count,
    warnings: count,
};

function stateCell(server) {
    const badge = make("span", "badge " + server.state, stateNames[server.state]);
    return make("td", "wide", badge, server.reason && make("small", "reason", visible(server.reason)));
}

function coverageCell(server) {
    return cell(server.grade ? server.coverage : "–", "", server.grade &&
        small(count(server.taken) + " of " + count(server.planned) + " passes"));
}

function tableRow(heading, state, numbers, coverage) {
    const row = make("tr", "", heading, state, ...numbers.slice(0, -1), coverage, numbers.at(-1));
    return labelled(row, byId("servers").tHead.rows[0].cells);
}

function fleetRow(server, index) {
    const link = make("a", "", visible(server.name));
    link.href = "#server-" + index;
    const numbers = Object.entries(shownAs).map(([key, text]) =>
        numberCell(server[key] === null ? null : text(server[key])));
    const heading = rowHeading(link, small(server.host !== server.name && server.host));
    const row = tableRow(heading, stateCell(server), numbers, coverageCell(server));
    const text = [server.name, server.host ?? "", server.reason, stateNames[server.state], server.coverage]
        .map(visible).join("\n").toLowerCase();
    return {server, index, row, text};
}

const rows = fleet.servers.map(fleetRow);
const shown = () => rows.filter((entry) => !entry.row.hidden);
const collator = new Intl.Collator("en", {numeric: true});

function order(a, b, key, sign) {
    const one = a.server[key];
    const other = b.server[key];
    if (one === null || other === null) {  // what is not known stands last, however sorted
        return (one === null) - (other === null) || a.index - b.index;
    }
    const difference = key === "name" ? collator.compare(one, other)
        : key === "state" ? stateOrder[one] - stateOrder[other] : one - other;
    return sign * difference || a.index - b.index;
}

function sortBy(button) {
    const heading = button.closest("th");
    const opposite = {ascending: "descending", descending: "ascending"};
    const direction = opposite[heading.getAttribute("aria-sort")] ??
        (heading.className === "number" ? "descending" : "ascending");
    for (const other of document.querySelectorAll("#servers [aria-sort]")) {
        other.removeAttribute("aria-sort");
    }
    heading.setAttribute("aria-sort", direction);
    rows.sort((a, b) => order(a, b, button.dataset.key, direction === "ascending" ? 1 : -1));
    byId("servers").tBodies[0].append(...rows.map((entry) => entry.row));
    say("sorted by " + button.textContent.toLowerCase() + ", " + direction);
}

function say(more) {
    const number = shown().length;
    const text = number === rows.length ? "All " + count(number) + " servers shown"
        : count(number) + " of " + count(rows.length) + " servers shown";
    byId("status").textContent = more ? text + "; " + more : text;
}

function filter() {
    const text = byId("filter-text").value.trim().toLowerCase();
    const state = byId("filter-state").value;
    for (const entry of rows) {
        const fits = !state || entry.server.state === state ||
            (state === "warned" && entry.server.warnings > 0);
        entry.row.hidden = !fits || !entry.text.includes(text);
    }
    showTotals();
    say();
}

function statesOf(entries) {
    return Object.keys(stateNames)
        .map((state) => [state, entries.filter((e) => e.server.state === state).length])
        .filter(([, number]) => number > 0)
        .map(([state, number]) => count(number) + " " + stateNames[state]).join(", ");
}

// A total is that of the servers that have the number; it says so where others have not.
function totalCell(entries, key, text) {
    const known = entries.map((entry) => entry.server[key]).filter((value) => value !== null);
    const sum = known.reduce((one, other) => one + other, 0);
    return known.length === 0 ? numberCell(null)
        : numberCell(text(sum), small(known.length < entries.length && "of " + count(known.length)));
}

function showTotals() {
    const entries = shown();
    const heading = rowHeading("Total of " + count(entries.length));
    heading.id = "total-name";
    const totals = Object.entries(shownAs).map(([key, text]) => totalCell(entries, key, text));
    const row = tableRow(heading, cell(statesOf(entries), "wide"), totals, cell(""));
    byId("servers").tFoot.replaceChildren(row);
}

// ---- All servers together ----

const momentOf = (usage) => clock(usage.start, seconds(usage.peak.at_ms)).slice(0, 16) + " UTC";

function togetherFigures() {
    const figures = [["Servers", count(rows.length), statesOf(rows)]];
    for (const [usage, name] of [[fleet.usage.cores, "CPU"], [fleet.usage.memory, "Memory"]]) {
        if (usage) {
            figures.push(
                [name + ", all together", inUnit(usage, usage.peak.value), momentOf(usage)],
                [name + ", peaks added up", inUnit(usage, usage.sum_of_peaks),
                    "as if all had it at once"]);
        }
    }
    return figures;
}

function whoIsMissing(usages) {
    const missing = rows.length - Math.min(...usages.map((usage) => usage.servers));
    return missing === 0 ? "" : count(missing) + " of " + count(rows.length) + " servers " +
        (missing === 1 ? "says" : "say") + " nothing about CPU or memory (failed, or recorded by " +
        "an older program) and " + (missing === 1 ? "is" : "are") + " in none of these sums.";
}

function showTogether() {
    const usages = [fleet.usage.cores, fleet.usage.memory].filter(Boolean);
    byId("together").hidden = usages.length === 0 || rows.length === 1;
    if (byId("together").hidden) {
        return;
    }
    fillTerms(document.querySelector(".figures"), togetherFigures());
    setText(document, "#not-counted", whoIsMissing(usages));
    document.querySelector("#together .charts").append(...usages.map((usage) => chartFigure(
        usage, {name: "all servers together", start: usage.start, gaps: [], lines: []})));
}
