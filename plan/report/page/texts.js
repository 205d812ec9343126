// How numbers, times and what a host says are written, and the elements that hold them. Whatever
// comes from a host reaches the document as text only, through visible().

const numbers = new Intl.NumberFormat("en");
const count = (value) => numbers.format(value);

// As count(), for numbers too long for the script's arithmetic, and for words.
const grouped = (text) => /^\d+$/.test(text) ? count(BigInt(text)) : text;

// Characters that would be invisible or turn the text around are shown by their codes.
const unseen = new RegExp("[\\u0000-\\u0009\\u000b-\\u001f\\u007f-\\u009f\\u00ad\\u061c" +
    "\\u200b-\\u200f\\u2028-\\u202e\\u2060-\\u2069\\ufeff\\u{e0000}-\\u{e007f}]", "gu");
const visible = (text) => plain(text).replace(unseen,
    (c) => "\\u" + c.codePointAt(0).toString(16).padStart(4, "0"));

// A text that is no UTF-8 comes as the digits of its bytes.
function plain(text) {
    const bytes = text?.hex?.match(/../g)?.map((digits) => parseInt(digits, 16));
    return bytes ? new TextDecoder().decode(Uint8Array.from(bytes)) : String(text);
}

function bytes(value, digits = 1) {
    const units = ["bytes", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"];
    let unit = 0;
    while (value >= 1024 && unit < units.length - 1) {
        value /= 1024;
        unit++;
    }
    return value.toFixed(unit > 0 && value < 100 ? digits : 0) + " " + units[unit];
}

const kib = (value) => bytes(value * 1024);
const cores = (value) => count(Number(value.toFixed(2))) + (value === 1 ? " core" : " cores");

function span(seconds) {
    const parts = [["d", 86400, Infinity], ["h", 3600, 24], ["m", 60, 60], ["s", 1, 60]];
    return parts.map(([letter, size, most]) => [Math.floor(seconds / size) % most, letter])
        .filter(([whole]) => whole > 0).slice(0, 2).map((part) => part.join("")).join(" ") || "0s";
}

// "2026-03-12 14:05:00"; the time since the start where the start is not known.
function clock(start, seconds) {
    const time = new Date(Date.parse(start) + seconds * 1000);
    if (isNaN(time)) {
        return "+" + span(seconds);
    }
    return time.toISOString().slice(0, 19).replace("T", " ");
}

// What one of a series is in bytes; 0 for what has no size.
const sizes = {bytes: 1, bytes_per_second: 1};
const sizeOf = (series) => series.unit_bytes ?? sizes[series.unit] ?? 0;

const perSecond = (series) => series.unit === "bytes_per_second" ? "/s" : "";

// "11.8 GiB", "1,248", "1.25 cores", "3.4 MiB/s".
function inUnit(series, value) {
    if (sizeOf(series)) {
        return bytes(value * sizeOf(series)) + perSecond(series);
    }
    return series.unit === "cores" ? cores(value) : count(value);
}

// "cores", "KiB", "pages of 4 KiB"; nothing for things that are just counted.
function unitOf(series) {
    if (series.unit !== undefined) {
        return {number: "", bytes_per_second: "bytes/s"}[series.unit] ?? series.unit;
    }
    const inKib = series.unit_bytes / 1024;
    return inKib < 1 ? "" : inKib === 1 ? "KiB" : "pages of " + inKib + " KiB";
}

function exactly(series, value) {
    const text = inUnit(series, value);
    return series.unit_bytes ? count(value) + " " + unitOf(series) + " (" + text + ")" : text;
}

// What is nothing is left out of the content.
function make(tag, className, ...content) {
    const element = document.createElement(tag);
    if (className) {
        element.className = className;
    }
    element.append(...content.filter(Boolean));
    return element;
}

const small = (text) => text && make("small", "", visible(text));
const cell = (text, className, ...more) => make("td", className, visible(text ?? ""), ...more);
const numberCell = (text, ...more) => cell(text ?? "–", "number", ...more);

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
    let at = 0;
    for (const made of row.cells) {
        made.dataset.label = headings[at].textContent.trim();
        at += made.colSpan;
    }
    return row;
}

// Fills a list and hides what surrounds it when there is nothing to list.
function fillList(holder, texts) {
    holder.querySelector("ul").append(...texts.map((text) => make("li", "", visible(text))));
    holder.hidden = texts.length === 0;
}

// A description list's terms, each with its text and, where there is more to say, a smaller one.
function fillTerms(list, terms) {
    list.append(...terms.map(([term, text, more]) => make("div", "", make("dt", "", term),
        make("dd", "", visible(text), small(more)))));
}
