// Shows the fleet that stands in the page as JSON. Whatever comes from a host reaches the document
// as text only. A server's own data is read, and its charts are drawn, when it is opened.
"use strict";

(() => {
    const byId = (id) => document.getElementById(id);
    const dataOf = (id) => JSON.parse(byId(id).textContent);
    const fleet = dataOf("fleet");
    const stateNames = {done: "done", partly: "partly done", failed: "failed"};
    const stateOrder = {failed: 0, partly: 1, done: 2};

    // ---- Texts ----

    const numbers = new Intl.NumberFormat("en");
    const count = (value) => numbers.format(value);

    // As count(), for numbers too long for the script's arithmetic, and for words.
    const grouped = (text) => /^\d+$/.test(text) ? count(BigInt(text)) : text;

    // Characters that would be invisible or turn the text around are shown by their codes.
    const visible = (text) => String(text).replace(
        /[\u0000-\u0009\u000b-\u001f\u007f-\u009f\u061c\u200b-\u200f\u2028-\u202e\u2066-\u2069\ufeff]/g,
        (c) => "\\u" + c.charCodeAt(0).toString(16).padStart(4, "0"));

    function bytes(value) {
        const units = ["bytes", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"];
        let unit = 0;
        while (value >= 1024 && unit < units.length - 1) {
            value /= 1024;
            unit++;
        }
        const text = unit > 0 && value < 100 ? value.toFixed(1).replace(/\.0$/, "") : value.toFixed(0);
        return text + " " + units[unit];
    }

    function span(seconds) {
        if (seconds === 0) {
            return "0s";
        }
        const parts = [["d", 86400], ["h", 3600], ["m", 60], ["s", 1]];
        const texts = [];
        for (const [letter, size] of parts) {
            const whole = Math.floor(seconds / size);
            if (whole > 0 && texts.length < 2) {
                texts.push(whole + letter);
                seconds -= whole * size;
            }
        }
        return texts.join(" ");
    }

    // "2026-03-12 14:05:00"; the time since the start where the start is not known.
    function clock(start, seconds) {
        const time = new Date(Date.parse(start) + seconds * 1000);
        return isNaN(time) ? "+" + span(seconds) : time.toISOString().slice(0, 19).replace("T", " ");
    }

    const inUnit = (series, value) =>
        series.bytes ? bytes(value * series.bytes) : count(value);

    function exactly(series, value) {
        const plain = series.unit ? count(value) + " " + series.unit : count(value);
        return series.bytes ? plain + " (" + inUnit(series, value) + ")" : plain;
    }

    // ---- Elements ----

    function make(tag, className, ...content) {
        const element = document.createElement(tag);
        if (className) {
            element.className = className;
        }
        element.append(...content);
        return element;
    }

    const cell = (text, className) => make("td", className, visible(text ?? ""));
    const numberCell = (text) => cell(text ?? "–", "number");

    function rowHeading(...content) {
        const heading = make("th", "", ...content);
        heading.scope = "row";
        return heading;
    }

    function setText(root, selector, text) {
        root.querySelector(selector).textContent = visible(text);
    }

    // Where the screen is narrow a row becomes a card, and each cell tells its heading.
    function labelled(row, headings) {
        [...row.cells].forEach((made, i) => { made.dataset.label = headings[i].textContent.trim(); });
        return row;
    }

    // Fills a list and hides what surrounds it when there is nothing to list.
    function fillList(holder, texts) {
        holder.querySelector("ul").append(...texts.map((text) => make("li", "", visible(text))));
        holder.hidden = texts.length === 0;
    }

    // ---- The table of all servers ----

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
        if (!server.coverage) {
            return cell("–");
        }
        const passes = count(server.passes) + " of " + count(server.planned) + " passes";
        return make("td", "", visible(server.grade), make("small", "", passes));
    }

    function fleetRow(server, index) {
        const link = make("a", "", visible(server.name));
        link.href = "#server-" + index;
        const cells = columns.map((key) =>
            numberCell(server[key] === null ? null : shownAs[key](server[key])));
        cells.splice(4, 0, coverageCell(server));
        const row = labelled(make("tr", "", rowHeading(link), stateCell(server), ...cells),
            byId("servers").tHead.rows[0].cells);
        const text = [server.name, server.reason, stateNames[server.state], server.grade]
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
        const failed = details.failedPasses ? ", " + count(details.failedPasses) + " failed" : "";
        const passes = count(server.passes) + " of " + count(server.planned) + failed;
        return [
            ["Started", details.start && clock(details.start, 0) + " UTC"],
            ["Passes", server.planned && passes],
            ["A pass every", details.period && span(details.period)],
            ["Longest gap", details.gap && span(details.gap)],
            ["Coverage", server.grade],
            ["Machine", details.machine],
            ["Kernel", details.kernel],
            ["Page size", details.pageSize && bytes(details.pageSize)],
        ].filter(([, text]) => text);
    }

    function whenCell(details, line) {
        if (line.at === null) {
            return cell("");
        }
        return make("td", "time", clock(details.start, line.at),
            make("small", "", "pass " + count(line.pass)));
    }

    function limitCell(line) {
        const made = cell(grouped(line.barrier), "number");
        if (line.limit && line.limit !== line.barrier) {
            made.append(make("small", "", "limit " + visible(grouped(line.limit))));
        }
        return made;
    }

    function lineRow(details, line) {
        const scaling = [line.factor && "× " + line.factor, line.margin && "+ " + line.margin];
        const remarks = line.remarks.map((text) => make("div", "", visible(text)));
        return make("tr", line.basis === "floor" ? "floor-row" : "",
            rowHeading(visible(line.name)),
            limitCell(line), cell(line.meaning, "number"),
            cell(line.seen === null ? "" : count(line.seen), "number"),
            whenCell(details, line), cell(line.basis),
            cell(scaling.filter(Boolean).join(", ")), make("td", "wide", ...remarks));
    }

    function fillExplanation(section, server, details) {
        const explanation = section.querySelector(".explanation");
        const caption = "Configuration of " + visible(server.name) +
            ": what each line comes from, times in UTC";
        setText(explanation, "caption", caption);
        explanation.querySelector(".scroll").setAttribute("aria-label", caption);
        const headings = explanation.querySelectorAll("thead th");
        explanation.querySelector("tbody").append(
            ...details.lines.map((line) => labelled(lineRow(details, line), headings)));
        explanation.hidden = details.lines.length === 0;
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
        section.querySelector(".over-time").hidden = details.series.length === 0;
        section.querySelector(".charts").append(
            ...details.series.map((series) => chartFigure(series, server, details)));
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

    // A link to a server opens it; so do the browser's back and forward.
    function follow() {
        const match = /^#server-(\d+)$/.exec(location.hash);
        if (match && Number(match[1]) < fleet.servers.length) {
            const section = open(Number(match[1]));
            section.scrollIntoView();
            section.querySelector("h2").focus({preventScroll: true});
        }
    }

    // ---- Charts ----

    const charts = new Map();   // figure to chart, for those that are drawn
    const plans = new WeakMap();  // figure to what draws it
    const inSight = new IntersectionObserver((entries) => {
        for (const entry of entries) {
            if (entry.isIntersecting) {
                draw(entry.target);
            }
        }
    }, {rootMargin: "300px"});

    function pointsOf(series) {
        const points = [];
        for (let i = 0; i < series.points.length; i += 2) {
            points.push({x: series.points[i], y: series.points[i + 1]});
        }
        return points;
    }

    function chartFigure(series, server, details) {
        const figure = byId("chart-template").content.firstElementChild.cloneNode(true);
        const points = pointsOf(series);
        const peak = "Peak " + exactly(series, series.peak.value) + " at " +
            clock(details.start, series.peak.at) + ", pass " + count(series.pass) + ".";
        const rest = [series.floor !== null && "Floor " + inUnit(series, series.floor) + ".",
            series.barrier !== null && "Barrier " + inUnit(series, series.barrier) + "."];
        setText(figure, "strong", series.label);
        setText(figure, ".peak-text", points.length ? peak : "Nothing was measured.");
        setText(figure, ".rest", rest.filter(Boolean).join(" "));
        figure.querySelector("canvas").setAttribute("aria-label",
            visible("Chart of " + series.label + " on " + server.name + " over time. " + peak +
                " The numbers stand in a table below."));
        fillNumbers(figure, points, details, series.label + " on " + server.name +
            (series.unit ? ", in " + series.unit : ""));
        plans.set(figure, {series, points, details});
        return figure;
    }

    // The same numbers as a table, made when somebody opens it.
    function fillNumbers(figure, points, details, title) {
        const holder = figure.querySelector("details");
        setText(holder, "summary", "Numbers (" + count(points.length) + ")");
        setText(holder, "caption", title);
        holder.querySelector(".scroll").setAttribute("aria-label", visible(title));
        holder.addEventListener("toggle", () => {
            const body = holder.querySelector("tbody");
            if (!body.hasChildNodes()) {
                body.append(...points.map((point) => make("tr", "",
                    rowHeading(clock(details.start, point.x)),
                    numberCell(span(point.x)), numberCell(count(point.y)))));
            }
        });
    }

    const colour = (name) =>
        getComputedStyle(document.documentElement).getPropertyValue("--" + name).trim();

    // Round distances between the marks of an axis, in things, bytes and seconds.
    const steps = {
        things: Array.from({length: 48}, (_, i) => [1, 2, 5][i % 3] * 10 ** Math.floor(i / 3)),
        bytes: Array.from({length: 64}, (_, i) => 2 ** i),
        seconds: [1, 5, 15, 60, 300, 900, 3600, 10800, 21600, 43200, 86400, 172800,
            ...[1, 2, 4, 13, 26, 52].map((weeks) => weeks * 604800)],
    };

    // Marks from 0 to `end`: the closest together of which there are at most six.
    function marksUpTo(end, kind) {
        const step = steps[kind].find((distance) => end / distance <= 6) ?? end;
        return Array.from({length: Math.floor(end / step) + 1}, (_, i) => i * step);
    }

    const axis = (end, marks, callback) => ({
        type: "linear", min: 0, max: end, grid: {}, ticks: {maxRotation: 0, callback},
        afterBuildTicks: (scale) => { scale.ticks = marks.map((value) => ({value})); },
    });

    function valueAxis(series) {
        const top = 1.05 * Math.max(series.peak.value, series.floor, series.barrier, 1);
        const unit = series.bytes || 1;
        const marks = marksUpTo(top * unit, series.bytes ? "bytes" : "things");
        return axis(top, marks.map((mark) => mark / unit), (value) => value ? inUnit(series, value) : "0");
    }

    function level(label, value, ends, dash) {
        return {label, data: value === null ? [] : ends.map((x) => ({x, y: value})),
            borderDash: dash, borderWidth: 2, pointRadius: 0};
    }

    function dataSets(series, points, ends) {
        const peak = points.length ? [{x: series.peak.at, y: series.peak.value}] : [];
        return [
            {label: "measured", data: points, borderWidth: 1.5,
                pointRadius: points.length > 1 ? 0 : 2},
            {label: "peak", data: peak, pointRadius: 4, showLine: false},
            level("floor", series.floor, ends, [2, 3]),
            level("barrier", series.barrier, ends, [7, 4]),
        ];
    }

    // What stands behind the lines, where nothing was watched, and the peak's value beside it.
    const marks = {
        id: "marks",
        beforeDatasetsDraw(chart) {
            const {ctx, chartArea: area, scales} = chart;
            ctx.fillStyle = colour("gap");
            for (const [from, to] of chart.options.gaps) {
                const left = scales.x.getPixelForValue(from);
                ctx.fillRect(left, area.top, scales.x.getPixelForValue(to) - left, area.height);
            }
        },
        afterDatasetsDraw(chart) {
            const {ctx, chartArea: area} = chart;
            const point = chart.getDatasetMeta(1).data[0];
            if (point) {
                const inRightHalf = point.x > (area.left + area.right) / 2;
                ctx.fillStyle = colour("peak");
                ctx.font = "600 12px system-ui, sans-serif";
                ctx.textAlign = inRightHalf ? "right" : "left";
                ctx.fillText(chart.options.peakText, point.x + (inRightHalf ? -7 : 7), point.y - 7);
            }
        },
    };

    function options(series, details, ends) {
        const title = (items) => clock(details.start, items[0].parsed.x);
        return {
            animation: false, responsive: true, maintainAspectRatio: false, parsing: false,
            normalized: true, layout: {padding: {top: 18, right: 6}},
            interaction: {mode: "nearest", axis: "x", intersect: false},
            gaps: details.gaps, peakText: inUnit(series, series.peak.value),
            scales: {x: axis(ends[1], marksUpTo(ends[1], "seconds"), span), y: valueAxis(series)},
            plugins: {
                legend: {display: false},
                tooltip: {filter: (item) => item.datasetIndex === 0, callbacks: {title,
                    label: (item) => exactly(series, item.parsed.y)}},
            },
        };
    }

    // Gives a chart, or what one is made from, the colours in force.
    function paint({data, options}) {
        const names = ["line", "peak", "floor", "barrier"];
        data.datasets.forEach((set, i) => {
            set.borderColor = set.pointBackgroundColor = colour(names[i]);
        });
        for (const {ticks, grid} of [options.scales.x, options.scales.y]) {
            ticks.color = colour("quiet");
            grid.color = grid.tickColor = grid.borderColor = colour("rule");
        }
    }

    function repaint() {
        charts.forEach((chart) => {
            paint(chart);
            chart.update();
        });
    }

    function draw(figure) {
        if (charts.has(figure)) {
            return;
        }
        const {series, points, details} = plans.get(figure);
        const ends = [0, Math.max(points.length ? points[points.length - 1].x : 0, 1)];
        const plan = {
            type: "line", data: {datasets: dataSets(series, points, ends)},
            options: options(series, details, ends), plugins: [marks],
        };
        paint(plan);
        charts.set(figure, new Chart(figure.querySelector("canvas"), plan));
    }

    function beforePrint() {
        document.documentElement.dataset.print = "";
        document.querySelectorAll("figure").forEach(draw);
        charts.forEach((chart) => chart.resize(310, 190));
        repaint();
    }

    function afterPrint() {
        delete document.documentElement.dataset.print;
        charts.forEach((chart) => chart.resize());
        repaint();
    }

    // ---- Start ----

    document.title = visible(fleet.title);
    setText(document, "#title", fleet.title);
    setText(document, "#about", "Written " + clock(fleet.generated, 0) + " UTC");
    setText(document, "#program", "tarnhwplan " + fleet.version);
    byId("servers").tBodies[0].append(...rows.map((entry) => entry.row));
    labelled(byId("servers").tFoot.rows[0], byId("servers").tHead.rows[0].cells);
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
        open(0);
    }
    follow();
})();
