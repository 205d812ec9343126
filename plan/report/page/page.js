// The table of all servers, the servers that are opened below it, and the start of it all. A server's
// own data is read when it is opened.

const byId = (id) => document.getElementById(id);
const dataOf = (id) => JSON.parse(byId(id).textContent);
const fleet = dataOf("fleet");
const stateNames = {done: "done", partly: "partly done", failed: "failed"};
const stateOrder = {failed: 0, partly: 1, done: 2};

const columns = ["memory", "disk", "processes", "descriptors", "warnings"];
const shownAs = {
    memory: bytes,
    disk: (kib) => bytes(kib * 1024),
    processes: count,
    descriptors: count,
    warnings: count,
};

function stateCell(server) {
    const badge = make("span", "badge " + server.state, stateNames[server.state]);
    const reason = make("small", "reason", visible(server.reason));
    return make("td", "wide", badge, ...(server.reason ? [reason] : []));
}

function coverageCell(server) {
    if (!server.grade) {
        return cell("–");
    }
    const passes = count(server.taken) + " of " + count(server.planned) + " passes";
    return make("td", "", visible(server.coverage), make("small", "", passes));
}

// Servers are called after their files; the name that a host gives itself may be another one.
const otherHost = (server) => server.host !== "" && server.host !== server.name;

function fleetRow(server, index) {
    const link = make("a", "", visible(server.name));
    link.href = "#server-" + index;
    const cells = columns.map((key) =>
        numberCell(server[key] === null ? null : shownAs[key](server[key])));
    cells.splice(4, 0, coverageCell(server));
    const host = otherHost(server) ? [make("small", "", visible(server.host))] : [];
    const row = labelled(make("tr", "", rowHeading(link, ...host), stateCell(server), ...cells),
        byId("servers").tHead.rows[0].cells);
    const text = [server.name, server.host, server.reason, stateNames[server.state], server.coverage]
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
    const before = heading.getAttribute("aria-sort");
    const opposite = {ascending: "descending", descending: "ascending"};
    const direction = opposite[before] || button.dataset.first || "ascending";
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

function showTotals() {
    const entries = shown();
    for (const key of columns) {
        const sum = entries.reduce((total, entry) => total + (entry.server[key] ?? 0), 0);
        byId("total-" + key).textContent = shownAs[key](sum);
    }
    byId("total-name").textContent = "Total of " + count(entries.length);
    byId("total-state").textContent = Object.keys(stateNames)
        .map((state) => [state, entries.filter((e) => e.server.state === state).length])
        .filter(([, number]) => number > 0)
        .map(([state, number]) => count(number) + " " + stateNames[state]).join(", ");
}

// ---- One server ----

function facts(server, details) {
    const coverage = details.explanation?.coverage;
    const failed = coverage?.failed ? ", " + count(coverage.failed) + " failed" : "";
    const passes = count(server.taken) + " of " + count(server.planned) + failed;
    const gap = seconds(coverage?.longest_gap_ms ?? 0);
    return [
        ["Host", otherHost(server) && server.host],
        ["Started", details.start && clock(details.start, 0) + " UTC"],
        ["Passes", server.planned && passes],
        ["A pass every", details.period && span(details.period)],
        ["Longest gap", gap && span(gap)],
        ["Coverage", server.coverage],
        ["Machine", details.machine],
        ["Kernel", details.kernel],
        ["Page size", details.page_size && bytes(details.page_size)],
    ].filter(([, text]) => text);
}

function whenCell(details, line) {
    if (line.peak === null) {
        return cell("");
    }
    return make("td", "time", clock(details.start, seconds(line.peak.at_ms)),
        make("small", "", "pass " + count(line.peak.pass)));
}

function limitCell(line) {
    const [barrier, limit] = line.barrier === null ? [line.value] : line.value.split(":");
    const made = cell(grouped(barrier), "number");
    if (limit && limit !== barrier) {
        made.append(make("small", "", "limit " + visible(grouped(limit))));
    }
    return made;
}

function lineRow(details, line) {
    const scaling = [line.factor && "× " + line.factor,
        line.margin && "+ " + Math.round((line.margin - 1) * 1000) / 10 + " %"];
    const basis = [line.basis, line.basis === "floor" && "of " + line.floor,
        line.made_from.length > 0 && "from " + line.made_from.join(", ")];
    const remarks = line.remarks.map((text) => make("div", "", visible(text)));
    return make("tr", line.basis === "floor" ? "floor-row" : "",
        rowHeading(visible(line.name)),
        limitCell(line), cell(line.meaning, "number meaning"),
        cell(line.seen, "number meaning"),
        whenCell(details, line), cell(basis.filter(Boolean).join(" ")),
        cell(scaling.filter(Boolean).join(", ")), make("td", "wide", ...remarks));
}

function fillExplanation(section, server, details) {
    const explanation = section.querySelector(".explanation");
    const caption = "Configuration of " + visible(server.name) +
        ": what each line comes from, times in UTC";
    setText(explanation, "caption", caption);
    explanation.querySelector(".scroll").setAttribute("aria-label", caption);
    const headings = explanation.querySelectorAll("thead th");
    const lines = details.explanation?.lines ?? [];
    explanation.querySelector("tbody").append(
        ...lines.map((line) => labelled(lineRow(details, line), headings)));
    explanation.hidden = lines.length === 0;
}

function fillHead(section, server, details) {
    const badge = section.querySelector(".badge");
    badge.textContent = stateNames[server.state];
    badge.classList.add(server.state);
    setText(section, "h2", server.name);
    setText(section, ".reason", server.reason);
    for (const [term, text] of facts(server, details)) {
        section.querySelector(".facts").append(
            make("div", "", make("dt", "", term), make("dd", "", visible(text))));
    }
    const notes = section.querySelector(".notes");
    fillList(section.querySelector(".warnings"), details.warnings);
    fillList(notes, details.notes);
    setText(notes, "summary", "Leave out of the copy: " + count(details.notes.length) +
        (details.notes.length === 1 ? " path" : " paths"));
}

function build(index) {
    const server = fleet.servers[index];
    const details = dataOf("data-" + index);
    const section = byId("server-template").content.firstElementChild.cloneNode(true);
    section.id = "server-" + index;
    const heading = section.querySelector("h2");
    heading.id = section.id + "-name";
    section.setAttribute("aria-labelledby", heading.id);
    fillHead(section, server, details);
    fillExplanation(section, server, details);
    const overTime = section.querySelector(".over-time");
    const toCharts = section.querySelector(".to-charts");
    overTime.id = section.id + "-charts";
    toCharts.href = "#" + overTime.id;
    const counts = details.explanation?.counts ?? [];
    overTime.hidden = toCharts.hidden = counts.length === 0;
    section.querySelector(".charts").append(
        ...counts.map((series) => chartFigure(series, server, details)));
    section.querySelector(".close").addEventListener("click", () => close(section));
    return section;
}

function open(index) {
    const section = byId("server-" + index) ?? build(index);
    if (!section.isConnected) {
        byId("opened").append(section);
        section.querySelectorAll("figure").forEach((figure) => inSight.observe(figure));
    }
    return section;
}

function close(section) {
    for (const figure of section.querySelectorAll("figure")) {
        inSight.unobserve(figure);
        charts.get(figure)?.destroy();
        charts.delete(figure);
    }
    section.remove();
    if (location.hash === "#" + section.id) {
        history.replaceState(null, "", location.pathname + location.search);
    }
    document.querySelector('#servers a[href="#' + section.id + '"]').focus();
}

// A link to a server, or to its charts, opens it; so do the browser's back and forward.
function follow() {
    const match = /^#server-(\d+)(-charts)?$/.exec(location.hash);
    if (match && Number(match[1]) < fleet.servers.length) {
        const section = open(Number(match[1]));
        const target = section.querySelector(match[2] ? ".over-time" : ".bar");
        target.scrollIntoView();
        target.querySelector("h2, h3").focus({preventScroll: true});
    }
}

// ---- Start ----

document.title = visible(fleet.title);
setText(document, "#title", fleet.title);
setText(document, "#about", "Written " + clock(fleet.generated, 0) + " UTC");
setText(document, "#program", "tarnhwplan " + fleet.version);
labelled(byId("servers").tFoot.rows[0], byId("servers").tHead.rows[0].cells);
sortBy(document.querySelector("[data-key=name]"));
filter();

byId("filter-text").addEventListener("input", filter);
byId("filter-state").addEventListener("change", filter);
byId("open-all").addEventListener("click", () => shown().forEach(({index}) => open(index)));
document.querySelectorAll("#servers thead button").forEach((button) =>
    button.addEventListener("click", () => sortBy(button)));
addEventListener("hashchange", follow);
addEventListener("beforeprint", beforePrint);
addEventListener("afterprint", afterPrint);
matchMedia("(prefers-color-scheme: dark)").addEventListener("change", repaint);
if (rows.length === 1) {
    document.querySelector(".tools").hidden = true;
    open(0);
}
follow();
