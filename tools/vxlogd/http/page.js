"use strict";

const MOST_KEPT = 2000; // entries
const MOST_SHOWN = 500;
const PAUSE = 2000; // milliseconds between two looks at the state

// The levels of the system's journal. The meaning of others, and of 0, which is also the level of a client that names
// none, is left open.
const LEVELS = new Map([[1, ["‼", "alert"]], [2, ["‼", "critical"]], [3, ["✖", "error"]], [4, ["▲", "warning"]],
    [5, ["●", "notice"]], [6, ["○", "info"]], [7, ["…", "debug"]]]);

const byId = (id) => document.getElementById(id);

function make(name, className, ...children) {
    const element = document.createElement(name);
    if (className) element.className = className;
    element.append(...children); // texts become text, never markup
    return element;
}

/** Characters that do not show, or that move others, as visible escapes. */
function visible(text) {
    return text.replace(/[\p{Cc}\p{Cf}\p{Co}\p{Cs}\p{Zl}\p{Zp}\u115F\u1160\u3164\uFFA0]/gu,
        (found) => `\\u{${found.codePointAt(0).toString(16).toUpperCase()}}`);
}

/** Keeps the direction of a text within it. */
function isolated(text, className) {
    return make("bdi", className, visible(text));
}

// ---- Filters: the rules of vxview's --level, --text, --where and --ignore-case

function levelRange(text) {
    const found = /^(-?\d+)?(?:(\.\.)(-?\d+)?)?$/.exec(text);
    if (!found || (found[1] === undefined && found[3] === undefined)) throw new Error(`Level takes N, N.. or N..M, not "${text}"`);
    const low = found[1] === undefined ? -Infinity : Number(found[1]);
    return [low, found[2] ? (found[3] === undefined ? Infinity : Number(found[3])) : low];
}

function condition(text, ignoresCase) {
    const found = /^([^=!~<>]+)(!=|!~|<=|>=|=|~|<|>)(.*)$/su.exec(text);
    if (!found) throw new Error(`Field takes a condition such as peer=10.0.0.1 or level<=3, not "${text}"`);
    const [, field, operator, value] = found;
    const fold = (each) => ignoresCase ? each.toLowerCase() : each;
    let expression = null;
    if (operator.includes("~")) {
        try {
            expression = new RegExp(value, ignoresCase ? "iu" : "u");
        } catch {
            throw new Error(`"${value}" is no regular expression`);
        }
    }
    return (entry) => {
        if (entry[field] === undefined) return operator.startsWith("!");
        const actual = String(entry[field]);
        if (expression) return expression.test(actual) === (operator === "~");
        const areNumbers = value.trim() !== "" && actual.trim() !== "" && !isNaN(value) && !isNaN(actual);
        const [left, right] = areNumbers ? [Number(actual), Number(value)] : [fold(actual), fold(value)];
        switch (operator) {
        case "=": return left === right;
        case "!=": return left !== right;
        case "<": return left < right;
        case "<=": return left <= right;
        case ">": return left > right;
        default: return left >= right;
        }
    };
}

function readFilter() {
    const ignoresCase = byId("case").checked;
    const fold = (each) => ignoresCase ? each.toLowerCase() : each;
    const conditions = [];
    if (byId("level").value.trim()) {
        const [low, high] = levelRange(byId("level").value.trim());
        conditions.push((entry) => entry.level >= low && entry.level <= high);
    }
    if (byId("text").value) {
        const part = fold(byId("text").value);
        conditions.push((entry) => FIELDS.some((field) => fold(String(entry[field])).includes(part)));
    }
    if (byId("where").value.trim()) conditions.push(condition(byId("where").value.trim(), ignoresCase));
    return (entry) => entry.missed !== undefined || conditions.every((holds) => holds(entry));
}

const FIELDS = ["sequence", "timestamp", "level", "peer", "text"];

// ---- The tail

let kept = []; // the newest last
let waiting = [];
let passes = () => true;
let isPaused = false;
let isDue = false;

function rowOf(entry) {
    if (entry.missed !== undefined) return make("li", "note", `${entry.missed} entries came too fast for this page; they are in the log`);
    const [sign, word] = LEVELS.get(entry.level) ?? ["·", "level"];
    const meta = make("span", "meta", isolated(entry.timestamp), " ", make("span", "level", `${sign} ${word} ${entry.level}`), " ",
        isolated(entry.peer), ` #${entry.sequence}`);
    const row = make("li", entry.level >= 1 && entry.level <= 3 ? "severe" : entry.level === 4 ? "warn" : "", meta, make("br"),
        isolated(entry.text, "body"));
    if (entry.cut) row.append(make("span", "note", ` … cut here; ${entry.cut} more characters are in the log`));
    return row;
}

function tellShown(found) {
    byId("shown").textContent = `${found} of ${kept.length} kept entries pass${isPaused ? `; paused, ${waiting.length} wait` : ""}`;
}

function showAll() {
    const found = kept.filter(passes);
    byId("entries").replaceChildren(...found.slice(-MOST_SHOWN).reverse().map(rowOf));
    tellShown(found.length);
}

/** Adds what has come, at most once for each picture of the screen. */
function showNew() {
    isDue = false;
    if (isPaused) return tellShown(kept.filter(passes).length);
    const added = waiting;
    waiting = [];
    kept = kept.concat(added).slice(-MOST_KEPT);
    const list = byId("entries");
    list.prepend(...added.filter(passes).slice(-MOST_SHOWN).reverse().map(rowOf));
    while (list.childElementCount > MOST_SHOWN) list.lastElementChild.remove();
    tellShown(kept.filter(passes).length);
}

function take(entry) {
    waiting.push(entry);
    if (waiting.length > MOST_KEPT) waiting.shift();
    if (!isDue) {
        isDue = true;
        setTimeout(showNew, 100);
    }
}

function listen() {
    const source = new EventSource("/tail");
    source.onmessage = (event) => take(JSON.parse(event.data));
    source.addEventListener("missed", (event) => take({missed: Number(event.data)}));
    source.onerror = () => {
        if (source.readyState === EventSource.CLOSED) setTimeout(listen, 5 * PAUSE); // refused; otherwise it tries again
    };
}

// ---- The state

const sizes = (bytes) => {
    if (bytes < 0) return "unknown";
    const units = ["B", "KiB", "MiB", "GiB", "TiB"];
    let unit = 0;
    for (; bytes >= 1024 && unit < units.length - 1; ++unit) bytes /= 1024;
    return `${bytes.toFixed(unit && bytes < 10 ? 1 : 0)} ${units[unit]}`;
};
const durations = (seconds) => seconds < 120 ? `${seconds} s` : seconds < 7200 ? `${Math.floor(seconds / 60)} min` : `${Math.floor(seconds / 3600)} h`;
const counts = (number) => number.toLocaleString("en");

const FIGURES = [["Lines per second", "lines_per_second", counts], ["Lines written", "lines_written_total", counts],
    ["Lines lost", "lines_lost_total", counts], ["Connections", "connections", counts],
    ["Connections so far", "connections_accepted_total", counts], ["Turned away", "connections_turned_away_total", counts],
    ["Lines waiting", "queue_lines", counts], ["Memory of these", "queue_bytes", sizes], ["Size of the log", "log_bytes", sizes],
    ["Waiting for brokers", "forward_unacknowledged_lines", counts], ["Refused by brokers", "forward_refused_lines_total", counts],
    ["Free room", "log_free_bytes", sizes], ["Running for", "uptime_seconds", durations]];

function showFigures(figures) {
    byId("figures").replaceChildren(...FIGURES.filter(([, name]) => name in figures)
        .map(([label, name, form]) => make("div", "", make("dt", "", label), make("dd", "", form(figures[name])))));
}

/** Errors at the bottom, then warnings, then all others. */
function partsOf(levels) {
    const parts = {errors: 0, warnings: 0, others: 0};
    for (const [level, count] of Object.entries(levels))
        parts[level >= 1 && level <= 3 ? "errors" : level === "4" ? "warnings" : "others"] += count;
    return parts;
}

function showChart(minutes) {
    const chart = byId("chart");
    const [width, height, shown] = [600, 120, 60];
    const now = Math.floor(Date.now() / 60000);
    const bars = minutes.map((minute) => ({age: now - minute.start / 60, parts: partsOf(minute.levels)}))
        .filter((bar) => bar.age < shown);
    const sum = (parts) => parts.errors + parts.warnings + parts.others;
    const highest = Math.max(0, ...bars.map((bar) => sum(bar.parts)));
    const total = {errors: 0, warnings: 0, others: 0};
    chart.querySelectorAll(":scope > rect").forEach((each) => each.remove());
    for (const bar of bars) {
        let top = height;
        for (const [name, count] of Object.entries(bar.parts)) {
            if (!count) continue;
            total[name] += count;
            const size = Math.max(1, count / highest * (height - 4));
            top -= size;
            const rectangle = document.createElementNS("http://www.w3.org/2000/svg", "rect");
            const place = {x: (shown - 1 - Math.max(0, bar.age)) * width / shown + 1, y: top, width: width / shown - 2, height: size, class: name};
            for (const [key, value] of Object.entries(place)) rectangle.setAttribute(key, value);
            chart.append(rectangle);
        }
    }
    byId("highest").textContent = counts(highest);
    chart.setAttribute("aria-label", `${total.errors} errors, ${total.warnings} warnings and ${total.others} other entries in the last hour; `
        + `at most ${highest} in a minute`);
    const levels = new Map();
    for (const minute of minutes)
        for (const [level, count] of Object.entries(minute.levels)) levels.set(level, (levels.get(level) ?? 0) + count);
    const order = [...levels].sort(([left], [right]) => (Number(left) || 0) - (Number(right) || 0));
    byId("levels").replaceChildren(...order.map(([level, count]) => {
        const [sign, word] = LEVELS.get(Number(level)) ?? ["·", "level"];
        return make("tr", "", make("td", "", `${sign} ${word} ${level}`), make("td", "", counts(count)));
    }));
}

function showHealth(text) {
    if (byId("health").textContent !== text) byId("health").textContent = text; // else it would be read out again
}

async function look() {
    try {
        const answer = await fetch("/api/status");
        if (!answer.ok) throw new Error(`the server says ${answer.status}`);
        const state = await answer.json();
        byId("log").textContent = visible(state.log);
        showHealth(state.trouble ? `✖ The log cannot be written: ${visible(state.trouble)}` : "✔ The log is written");
        showFigures(state.figures);
        showChart(state.minutes);
    } catch {
        showHealth("✖ The server does not answer");
    }
    setTimeout(look, PAUSE);
}

function change() {
    try {
        passes = readFilter();
        byId("fault").textContent = "";
        showAll();
    } catch (fault) {
        byId("fault").textContent = fault.message;
    }
}

byId("filter").addEventListener("input", change);
byId("filter").addEventListener("submit", (event) => event.preventDefault());
byId("pause").addEventListener("click", () => {
    isPaused = !isPaused;
    byId("pause").setAttribute("aria-pressed", String(isPaused));
    byId("pause").textContent = isPaused ? "Go on" : "Pause";
    showNew();
});
change();
listen();
look();
