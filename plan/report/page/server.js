// The servers that are opened below the table. A section stands there at once; what is in it is read
// then, and built when it comes into sight.

const sections = new Map();  // section to {server, index, reading, details, isFilled}
const sectionsInSight = whenInSight((section) => fillWhenRead(section));

// "8, at most 2.31 in use"
function hardwareFacts(server, {hardware}) {
    const disks = (hardware?.file_systems ?? [])
        .map((disk) => visible(disk.mount_point) + " " + kib(disk.size_kib));
    return [
        ["Cores", hardware?.cpus && count(hardware.cpus),
            server.cores !== null && count(Number(server.cores.toFixed(2))) + " in use, 95 % of the time"],
        ["Memory", hardware?.memory_kib && kib(hardware.memory_kib),
            server.memory_used !== null && "at most " + bytes(server.memory_used) + " in use"],
        ["Swap", hardware && hardware.swap_kib !== null &&
            (hardware.swap_kib ? kib(hardware.swap_kib) : "none")],
        [disks.length === 1 ? "Disk" : "Disks", disks.join(", ")],
    ];
}

function facts(server, details) {
    const coverage = details.explanation?.coverage;
    const failed = coverage?.failed ? ", " + count(coverage.failed) + " failed" : "";
    const passes = count(server.taken) + " of " + count(server.planned) + failed;
    const gap = seconds(coverage?.longest_gap_ms ?? 0);
    return [
        ...hardwareFacts(server, details),
        ["Kernel", details.kernel, details.machine],
        ["Page size", details.page_size && bytes(details.page_size)],
        ["Started", details.start && clock(details.start, 0) + " UTC"],
        ["Passes", server.planned && passes],
        ["A pass every", details.period && span(details.period)],
        ["Longest gap", gap && span(gap)],
        ["Coverage", server.coverage],
    ].filter(([, text]) => text);
}

// A number stands at the right of its own column; a text has the room of two.
function valueCells(line) {
    const [first, limit] = line.barrier === null ? [line.value] : line.value.split(":");
    if (line.limit === null) {
        const text = cell(line.value);
        text.colSpan = 2;
        return [text];
    }
    const more = limit && limit !== first && small("limit " + grouped(limit));
    return [numberCell(grouped(first), more), cell(line.meaning, "number meaning")];
}

function seenCell(details, line) {
    return cell(line.seen, "seen", line.peak &&
        small(clock(details.start, seconds(line.peak.at_ms)) + peakPlace(line.peak)));
}

function basisCell(line) {
    const floor = line.basis === "floor" ? " of " + count(line.floor) : "";
    const scaling = line.derivation || (line.factor ? "× " + line.factor : "");
    const margin = line.margin ? "+ " + Math.round((line.margin - 1) * 1000) / 10 + " %" : "";
    return cell(line.basis + floor, "basis", small([scaling, margin].filter(Boolean).join(", ")));
}

function lineRow(details, line) {
    const remarks = [...line.remarks, ...(line.notes ?? [])].map((text) => make("div", "", visible(text)));
    return make("tr", line.basis === "floor" ? "floor-row" : "",
        rowHeading(visible(line.name)), ...valueCells(line), seenCell(details, line),
        basisCell(line), make("td", "wide", ...remarks));
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

const charted = ["cores", "memory", "swap", "tasks", "disk_bytes", "network_bytes"];

function fillCharts(section, server, details) {
    const explanation = details.explanation;
    const setting = {name: server.name, start: details.start,
        gaps: explanation?.coverage.gaps ?? [], lines: explanation?.lines ?? []};
    const usage = charted.map((name) => explanation?.usage?.find((used) => used.name === name));
    for (const [holder, series] of [[".of-usage", usage.filter((used) => used?.points)],
        [".of-counts", explanation?.counts ?? []]]) {
        section.querySelector(holder).hidden = series.length === 0;
        section.querySelector(holder + " .charts").append(
            ...series.map((one) => chartFigure(one, setting)));
    }
    section.querySelector(".no-usage").hidden = usage.some((used) => used?.points) || !explanation;
    section.querySelector(".over-time").hidden = !explanation;
}

function fillHead(section, server) {
    setText(section, ".badge", stateNames[server.state]);
    section.querySelector(".badge").classList.add(server.state);
    setText(section, "h2", server.name);
    setText(section, ".reason", server.reason);
    section.querySelector(".to-charts").href = "#" + section.id + "-charts";
    section.querySelector(".to-lines").href = "#" + section.id + "-lines";
    section.querySelector(".to-parts").hidden = !server.grade;
}

// What stands above charts and lines.
function fillFacts(section) {
    const {server, details} = sections.get(section);
    const waiting = section.querySelector(".waiting");
    if (waiting) {
        waiting.remove();
        fillTerms(section.querySelector(".facts"), facts(server, details));
        fillList(section.querySelector(".warnings"), details.warnings);
        section.querySelector(".body").hidden = false;
    }
}

function fillBody(section) {
    const state = sections.get(section);
    const {server, details} = state;
    state.isFilled = true;
    sectionsInSight.unobserve(section);
    fillFacts(section);
    fillCharts(section, server, details);
    fillExplanation(section, server, details);
    const notes = section.querySelector(".notes");
    fillList(notes, details.notes);
    setText(notes, "summary", "Leave out of the copy: " + count(details.notes.length) +
        (details.notes.length === 1 ? " path" : " paths"));
}

function build(index) {
    const server = fleet.servers[index];
    const section = byId("server-template").content.firstElementChild.cloneNode(true);
    section.id = "server-" + index;
    const heading = section.querySelector("h2");
    heading.id = section.id + "-name";
    section.querySelector(".over-time").id = section.id + "-charts";
    section.querySelector(".explanation").id = section.id + "-lines";
    section.setAttribute("aria-labelledby", heading.id);
    fillHead(section, server);
    section.querySelector(".close").addEventListener("click", () => close(section));
    sections.set(section, {server, index});
    return section;
}

// The server's data, read once.
function read(section) {
    const state = sections.get(section);
    state.reading ??= detailsOf(state.index).then((details) => { state.details = details; });
    return state.reading;
}

async function fillWhenRead(section) {
    await read(section);
    if (sections.get(section)?.isFilled === undefined && section.isConnected) {
        fillBody(section);
    }
}

function open(index) {
    const section = byId("server-" + index) ?? build(index);
    if (!section.isConnected) {
        byId("opened").append(section);
        sectionsInSight.observe(section);
    }
    return section;
}

// One after the other, so that the page stays at hand.
async function openAll() {
    const opened = shown().map(({index}) => open(index));
    for (const section of opened) {
        if (sections.has(section)) {
            await read(section);
        }
    }
}

function close(section) {
    dropCharts(section);
    sectionsInSight.unobserve(section);
    sections.delete(section);
    section.remove();
    if (location.hash.startsWith("#" + section.id)) {
        history.replaceState(null, "", location.pathname + location.search);
    }
    document.querySelector('#servers a[href="#' + section.id + '"]').focus();
}

// A link to a server, or to a part of it, opens it; so do the browser's back and forward.
async function follow() {
    const match = /^#server-(\d+)(-charts|-lines)?$/.exec(location.hash);
    if (match && Number(match[1]) < fleet.servers.length) {
        const section = open(Number(match[1]));
        await fillWhenRead(section);
        const parts = {"-charts": ".over-time", "-lines": ".explanation"};
        const target = section.querySelector(parts[match[2]] ?? ".bar");
        target.scrollIntoView();
        target.querySelector("h2, h3").focus({preventScroll: true});
    }
}
