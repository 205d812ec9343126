// How numbers, times and what a host says are written, and the elements that hold them. Whatever
// comes from a host reaches the document as text only, through visible().

const numbers = new Intl.NumberFormat("en");
const count = (value) => numbers.format(value);

// As count(), for numbers too long for the script's arithmetic, and for words.
const grouped = (text) => /^\d+$/.test(text) ? count(BigInt(text)) : text;

// Characters that would be invisible or turn the text around are shown by their codes.
const unseen = new RegExp("[\\u0000-\\u0009\\u000b-\\u001f\\u007f-\\u009f\\u061c" +
    "\\u200b-\\u200f\\u2028-\\u202e\\u2066-\\u2069\\ufeff]", "g");
const visible = (text) => plain(text).replace(unseen,
    (c) => "\\u" + c.charCodeAt(0).toString(16).padStart(4, "0"));

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
    if (isNaN(time)) {
        return "+" + span(seconds);
    }
    return time.toISOString().slice(0, 19).replace("T", " ");
}

const inUnit = (series, value) =>
    series.unit_bytes ? bytes(value * series.unit_bytes) : count(value);

// "KiB", "pages of 4 KiB"; nothing for things that are just counted.
function unitOf(series) {
    const kib = series.unit_bytes / 1024;
    return kib < 1 ? "" : kib === 1 ? "KiB" : "pages of " + kib + " KiB";
}

function exactly(series, value) {
    const unit = unitOf(series);
    const number = unit ? count(value) + " " + unit : count(value);
    return series.unit_bytes ? number + " (" + inUnit(series, value) + ")" : number;
}

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
    [...row.cells].forEach((made, i) => {
        made.dataset.label = headings[i].textContent.trim();
    });
    return row;
}

// Fills a list and hides what surrounds it when there is nothing to list.
function fillList(holder, texts) {
    holder.querySelector("ul").append(...texts.map((text) => make("li", "", visible(text))));
    holder.hidden = texts.length === 0;
}
