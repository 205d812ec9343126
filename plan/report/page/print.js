// The charts on paper: drawings of lines, which hundreds of servers can have at once, sharp at any
// size. The style sheet says which of canvas and drawing is seen where.

const paper = {width: 310, height: 170, left: 52, right: 304, top: 20, bottom: 140};

function draws(tag, className, attributes, text = "") {
    const element = document.createElementNS("http://www.w3.org/2000/svg", tag);
    element.setAttribute("class", className);
    for (const [name, value] of Object.entries(attributes)) {
        element.setAttribute(name, value);
    }
    element.textContent = text;
    return element;
}

const rounded = (value) => Math.round(value * 10) / 10;
const across = (plan, x) =>
    rounded(paper.left + Math.min(x / plan.end, 1) * (paper.right - paper.left));
const up = (plan, y) =>
    rounded(paper.bottom - y / plan.values.top * (paper.bottom - paper.top));

// A path along the points; it is lifted where nothing was watched.
function pathOf(plan) {
    return plan.points.map((point, i) =>
        (i === 0 || isGap(plan, plan.points[i - 1], point) ? "M" : "L") +
        across(plan, point.x) + " " + up(plan, point.y)).join("");
}

function gridOf(plan) {
    const rows = plan.values.marks.map((mark) => up(plan, mark));
    const columns = plan.time.marks.map((mark) => across(plan, mark));
    const lines = rows.map((y) => "M" + paper.left + " " + y + "H" + paper.right)
        .concat(columns.map((x) => "M" + x + " " + paper.top + "V" + paper.bottom));
    const texts = plan.values.marks.map((mark, i) =>
        draws("text", "value", {x: paper.left - 4, y: rows[i] + 3}, plan.values.text(mark)));
    plan.time.marks.forEach((mark, i) => texts.push(
        ...[plan.time.text(mark)].flat().map((line, below) =>
            draws("text", "time", {x: columns[i], y: paper.bottom + 12 + below * 11}, line))));
    return [draws("path", "grid", {d: lines.join("")}), ...texts];
}

function peakOf(plan) {
    const x = across(plan, plan.peak.x);
    const y = up(plan, plan.peak.y);
    const inRightHalf = x > (paper.left + paper.right) / 2;
    return [draws("circle", "peak", {cx: x, cy: y, r: 3}),
        draws("text", inRightHalf ? "peak value" : "peak",
            {x: x + (inRightHalf ? -6 : 6), y: y - 5}, plan.peakText)];
}

function drawingOf(plan) {
    const levels = ["floor", "barrier"].filter((name) => plan[name] !== null).map((name) =>
        draws("path", name, {d: "M" + paper.left + " " + up(plan, plan[name]) + "H" + paper.right}));
    const gaps = plan.gaps.map(([from, to]) => draws("rect", "gap", {
        x: across(plan, from), y: paper.top, height: paper.bottom - paper.top,
        width: rounded(across(plan, to) - across(plan, from))}));
    const drawing = draws("svg", "drawing", {viewBox: "0 0 " + paper.width + " " + paper.height});
    drawing.append(...gaps, ...gridOf(plan), ...levels, draws("path", "line", {d: pathOf(plan)}),
        ...(plan.peak ? peakOf(plan) : []));
    return drawing;
}

// A thousand charts, or ten thousand lines, take a printer's driver minutes.
const mostPrintedServers = 50;

// A server's configuration as its file has it.
function configurationOf(details) {
    const lines = (details.explanation?.lines ?? []).filter(({basis}) => basis !== "missing");
    return make("pre", "on-paper configuration",
        lines.map(({name, value}) => visible(name) + '="' + visible(value) + '"').join("\n"));
}

function beforePrint() {
    const tooMany = document.querySelectorAll(".server").length > mostPrintedServers;
    document.body.classList.toggle("many", tooMany);
    for (const [section, {details, isFilled}] of sections) {
        // A printer waits for nobody: it gets what has been read by now.
        if (details && tooMany) {
            fillFacts(section);
            section.append(configurationOf(details));
        } else if (details && !isFilled) {
            fillBody(section);
        }
    }
    for (const figure of document.querySelectorAll(tooMany ? "#together figure" : "figure")) {
        figure.querySelector(".canvas").append(drawingOf(plans.get(figure)));
    }
}

function afterPrint() {
    document.querySelectorAll(".drawing, .configuration").forEach((made) => made.remove());
}
