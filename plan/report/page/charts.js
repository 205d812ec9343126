// The charts: a figure for each series, drawn when it comes into sight, its numbers in a table. What
// a series belongs to is its `setting`: a name, the start, the gaps and the lines of a configuration.

const charts = new Map();   // figure to chart, for those that are drawn
const plans = new WeakMap();  // figure to what draws it

function whenInSight(action) {
    return new IntersectionObserver((entries) =>
        entries.filter((entry) => entry.isIntersecting).forEach((entry) => action(entry.target)),
    {rootMargin: "300px"});
}
const figuresInSight = whenInSight((figure) => draw(figure));

// Each moment is told by what it is after the one before, some values by their thousandths.
function pointsOf(series) {
    const points = [];
    let at = 0;
    for (let i = 0; i < series.points.length; i += 2) {
        at += series.points[i];
        points.push({x: at, y: series.points[i + 1] / (series.scale ?? 1)});
    }
    return points;
}

const seconds = (milliseconds) => Math.floor(milliseconds / 1000);

// Of the line that the count gives its size. One that wrapped around is no height in a chart.
function barrierOf(series, lines) {
    const line = lines.find(({name}) => name === series.line);
    return line?.barrier <= Number.MAX_SAFE_INTEGER ? line.barrier : null;
}

const peakPlace = (peak) => peak.pass ? ", pass " + count(peak.pass) : "";

function chartFigure(series, setting) {
    const figure = byId("chart-template").content.firstElementChild.cloneNode(true);
    const points = pointsOf(series);
    const barrier = barrierOf(series, setting.lines);
    const floor = series.floor ?? null;
    const peak = series.peak && "Peak " + exactly(series, series.peak.value) + " at " +
        clock(setting.start, seconds(series.peak.at_ms)) + peakPlace(series.peak) + ".";
    const rest = [series.p95 !== undefined &&
            "95 % of the time at most " + inUnit(series, series.p95) + ".",
        floor !== null && "Floor " + inUnit(series, floor) + ".",
        barrier !== null && "Barrier " + inUnit(series, barrier) + "."];
    setText(figure, "strong", series.label);
    setText(figure, ".peak-text", peak ?? "Nothing was measured.");
    setText(figure, ".rest", rest.filter(Boolean).join(" "));
    setText(figure, ".remarks", [...(series.remarks ?? []), ...(series.notes ?? [])].join("; "));
    figure.querySelector("canvas").setAttribute("aria-label",
        visible("Chart of " + series.label + " on " + setting.name + " over time. " + (peak ?? "") +
            " The numbers stand in a table below."));
    fillNumbers(figure, points, setting, series.label + " on " + setting.name +
        (unitOf(series) ? ", in " + unitOf(series) : ""));
    plans.set(figure, planOf(series, setting, points, floor, barrier));
    figuresInSight.observe(figure);
    return figure;
}

// The same numbers as a table, made when somebody opens it.
function fillNumbers(figure, points, setting, title) {
    const holder = figure.querySelector("details");
    setText(holder, "summary", "Numbers (" + count(points.length) + ")");
    setText(holder, "caption", title);
    holder.querySelector(".scroll").setAttribute("aria-label", visible(title));
    holder.addEventListener("toggle", () => {
        const body = holder.querySelector("tbody");
        if (!body.hasChildNodes()) {
            body.append(...points.map((point) => make("tr", "",
                rowHeading(clock(setting.start, point.x)),
                numberCell(span(point.x)), numberCell(count(point.y)))));
        }
    });
}

// All that a drawing needs, on the screen or on paper.
function planOf(series, setting, points, floor, barrier) {
    const end = Math.max(points.at(-1)?.x ?? 0, 1);
    const peak = series.peak && {x: seconds(series.peak.at_ms), y: series.peak.value};
    return {
        series, setting, points, floor, barrier, end, peak,
        gaps: setting.gaps.map((gap) => [seconds(gap.from_ms), seconds(gap.to_ms)]),
        peakText: peak ? inUnit(series, peak.y) : "",
        time: timeAxis(setting.start, end),
        values: valueAxis(series, [peak?.y ?? 0, floor ?? 0, barrier ?? 0]),
    };
}

// Whether nothing was watched from the one point to the other.
const isGap = (plan, one, other) =>
    plan.gaps.some(([from, to]) => one.x <= from && other.x >= to);

const colour = (name) =>
    getComputedStyle(document.documentElement).getPropertyValue("--" + name).trim();

function level(label, value, end, dash) {
    return {label, data: value === null ? [] : [0, end].map((x) => ({x, y: value})),
        borderDash: dash, borderWidth: 2, pointRadius: 0};
}

function dataSets(plan) {
    return [
        {label: "measured", data: plan.points, borderWidth: 1.5, borderJoinStyle: "round",
            pointRadius: plan.points.length > 1 ? 0 : 2,
            segment: {borderColor: ({p0, p1}) =>
                isGap(plan, p0.parsed, p1.parsed) ? "transparent" : undefined}},
        {label: "peak", data: plan.peak ? [plan.peak] : [], pointRadius: 4, showLine: false},
        level("floor", plan.floor, plan.end, [2, 3]),
        level("barrier", plan.barrier, plan.end, [7, 4]),
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

function options(plan) {
    const title = (items) => clock(plan.setting.start, items[0].parsed.x);
    const scale = ({top, marks, text}) => axis(top, marks, text);
    return {
        animation: false, responsive: true, maintainAspectRatio: false, parsing: false,
        normalized: true, layout: {padding: {top: 18, right: 6}},
        interaction: {mode: "nearest", axis: "x", intersect: false},
        gaps: plan.gaps, peakText: plan.peakText,
        scales: {x: scale(plan.time), y: scale(plan.values)},
        plugins: {
            legend: {display: false},
            tooltip: {filter: (item) => item.datasetIndex === 0, callbacks: {title,
                label: (item) => exactly(plan.series, item.parsed.y)}},
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
    const plan = plans.get(figure);
    const made = {
        type: "line", data: {datasets: dataSets(plan)}, options: options(plan), plugins: [marks],
    };
    paint(made);
    charts.set(figure, new Chart(figure.querySelector("canvas"), made));
}

function dropCharts(section) {
    for (const figure of section.querySelectorAll("figure")) {
        figuresInSight.unobserve(figure);
        charts.get(figure)?.destroy();
        charts.delete(figure);
    }
}
