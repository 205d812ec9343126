// The axes of a chart: where their marks are and what stands at them.

// Round distances between the marks of an axis, in things, bytes and seconds.
const steps = {
    things: Array.from({length: 54}, (_, i) => [1, 2, 5][i % 3] * 10 ** (Math.floor(i / 3) - 3)),
    bytes: Array.from({length: 64}, (_, i) => 2 ** i),
    seconds: [1, 5, 15, 60, 300, 900, 3600, 10800, 21600, 43200, 86400, 172800,
        ...[1, 2, 4, 13, 26, 52, 104, 260, 520, 1040].map((weeks) => weeks * 604800)],
};
const mostMarks = 6;

// The closest marks of which there are not too many up to `end`.
const stepFor = (end, kind) =>
    steps[kind].find((distance) => end / distance <= mostMarks) ?? end;

function marksFrom(first, end, step) {
    return Array.from({length: Math.floor((end - first) / step) + 1}, (_, i) => first + i * step);
}

const axis = (end, marks, callback) => ({
    type: "linear", min: 0, max: end, grid: {}, ticks: {maxRotation: 0, autoSkip: false, callback},
    afterBuildTicks: (scale) => { scale.ticks = marks.map((value) => ({value})); },
});

function valueMark(series, value) {
    if (!sizeOf(series) || value === 0) {
        return count(value);
    }
    const text = bytes(value * sizeOf(series), 2).replace(/\.00 /, " ").replace(/(\.\d)0 /, "$1 ");
    return text + perSecond(series);
}

// Up to a little above everything that is drawn.
function valueAxis(series, levels) {
    const least = series.unit === "cores" ? 0.1 : 1;
    const top = 1.05 * Math.max(...levels, least);
    const unit = sizeOf(series) || 1;
    const kind = sizeOf(series) ? "bytes" : "things";
    const step = stepFor(top * unit, kind);
    // Half a process is nothing.
    const whole = series.unit === "cores" || sizeOf(series) ? step : Math.max(step, 1);
    const marks = marksFrom(0, top * unit, whole).map((mark) => mark / unit);
    return {top, marks, text: (value) => valueMark(series, value)};
}

const dayText = new Intl.DateTimeFormat("en-GB", {day: "numeric", month: "short", timeZone: "UTC"});
const day = 86400;
const firstMonday = 4 * day;  // since the epoch

// Marks at round times of the clock, in seconds since the start. Each tells its time or its day;
// the first one and each that begins a day or a year says which.
function timeAxis(start, end) {
    const step = stepFor(end, "seconds");
    const begin = Date.parse(start) / 1000;
    if (isNaN(begin)) {
        return {top: end, marks: marksFrom(0, end, step), text: span};
    }
    const from = step >= 7 * day ? firstMonday : 0;
    const first = Math.ceil((begin - from) / step) * step + from - begin;
    const marks = marksFrom(first, end, step);
    const year = (value) => clock(start, value).slice(0, 4);
    const text = (value) => {
        const date = dayText.format((begin + value) * 1000);
        const time = clock(start, value).slice(11, step < 60 ? 19 : 16);
        const isFirst = value === marks[0];
        if (step >= day) {
            return isFirst || year(value) !== year(value - step) ? [date, year(value)] : [date];
        }
        return isFirst || time.startsWith("00:00") ? [time, date] : [time];
    };
    return {top: end, marks, text};
}
