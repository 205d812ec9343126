// The charts: a figure for each count, drawn when it comes into sight, its numbers in a table.

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

const seconds = (milliseconds) => Math.floor(milliseconds / 1000);

// Of the line that the count gives its size. One that wrapped around is no height in a chart.
function barrierOf(series, details) {
    const line = details.explanation.lines.find(({name}) => name === series.line);
    return line?.barrier <= Number.MAX_SAFE_INTEGER ? line.barrier : null;
}

function chartFigure(series, server, details) {
    const figure = byId("chart-template").content.firstElementChild.cloneNode(true);
    const points = pointsOf(series);
    const barrier = barrierOf(series, details);
    const peak = series.peak && "Peak " + exactly(series, series.peak.value) + " at " +
        clock(details.start, seconds(series.peak.at_ms)) + ", pass " + count(series.peak.pass) + ".";
    const rest = [series.floor !== null && "Floor " + inUnit(series, series.floor) + ".",
        barrier !== null && "Barrier " + inUnit(series, barrier) + "."];
    setText(figure, "strong", series.label);
    setText(figure, ".peak-text", peak ?? "Nothing was measured.");
    setText(figure, ".rest", rest.filter(Boolean).join(" "));
    setText(figure, ".remarks", series.remarks.join("; "));
    figure.querySelector("canvas").setAttribute("aria-label",
        visible("Chart of " + series.label + " on " + server.name + " over time. " + (peak ?? "") +
            " The numbers stand in a table below."));
    fillNumbers(figure, points, details, series.label + " on " + server.name +
        (unitOf(series) ? ", in " + unitOf(series) : ""));
    plans.set(figure, {series, points, details, barrier});
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

function markText(series, value) {
    if (!series.unit_bytes || value === 0) {
        return count(value);
    }
    return bytes(value * series.unit_bytes, 2).replace(/\.00 /, " ").replace(/(\.\d)0 /, "$1 ");
}

function valueAxis(series, barrier) {
    const top = 1.05 * Math.max(series.peak?.value ?? 0, series.floor, barrier, 1);
    const unit = series.unit_bytes || 1;
    const marks = marksUpTo(top * unit, series.unit_bytes ? "bytes" : "things");
    return axis(top, marks.map((mark) => mark / unit),
        (value) => markText(series, value));
}

const gapsOf = (details) => details.explanation.coverage.gaps.map(
    (gap) => [seconds(gap.from_ms), seconds(gap.to_ms)]);

function level(label, value, ends, dash) {
    return {label, data: value === null ? [] : ends.map((x) => ({x, y: value})),
        borderDash: dash, borderWidth: 2, pointRadius: 0};
}

function dataSets({series, points, details, barrier}, ends) {
    const isAcross = (segment) => gapsOf(details).some(
        ([from, to]) => segment.p0.parsed.x <= from && segment.p1.parsed.x >= to);
    const peak = series.peak ? [{x: seconds(series.peak.at_ms), y: series.peak.value}] : [];
    return [
        {label: "measured", data: points, borderWidth: 1.5,
            pointRadius: points.length > 1 ? 0 : 2,
            segment: {borderColor: (segment) => isAcross(segment) ? "transparent" : undefined}},
        {label: "peak", data: peak, pointRadius: 4, showLine: false},
        level("floor", series.floor, ends, [2, 3]),
        level("barrier", barrier, ends, [7, 4]),
    ];
}

// What stands behind the lines, where nothing was watched, and the peak's value beside it.
const marks = {
    id: "marks",
    beforeDatasetsDraw(chart) {
        const {ctx, chartArea: area, scales} = chart;
        ctx.fillStyle = colour("gap");
        for (const [from, to] of chart.options.gaps) {
            const left = Math.min(scales.x.getPixelForValue(from), area.right);
            const right = Math.min(scales.x.getPixelForValue(to), area.right);
            ctx.fillRect(left, area.top, right - left, area.height);
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

function options({series, details, barrier}, ends) {
    const title = (items) => clock(details.start, items[0].parsed.x);
    return {
        animation: false, responsive: true, maintainAspectRatio: false, parsing: false,
        normalized: true, layout: {padding: {top: 18, right: 6}},
        interaction: {mode: "nearest", axis: "x", intersect: false},
        gaps: gapsOf(details), peakText: series.peak ? inUnit(series, series.peak.value) : "",
        scales: {x: axis(ends[1], marksUpTo(ends[1], "seconds"), span), y: valueAxis(series, barrier)},
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
    const made = plans.get(figure);
    const {points} = made;
    const ends = [0, Math.max(points.length ? points[points.length - 1].x : 0, 1)];
    const plan = {
        type: "line", data: {datasets: dataSets(made, ends)},
        options: options(made, ends), plugins: [marks],
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
