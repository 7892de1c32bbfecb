"use strict";
// The recording as the page reads it: entries with what caused them and what they brought about.

const laneNames = {
  mainQueue: "Main queue",
  host: "Host",
  facade: "Facade",
  screen: "Screen",
  page: "Page",
  coreServices: "Core services",
  upiApp: "UPI app",
};
const lanes = Object.keys(laneNames);
const shortestGap = 1; // seconds that are worth a word

const kindNames = {
  note: "note",
  call: "call",
  answer: "answer",
  event: "event",
  console: "console line",
  picture: "picture",
  turn: "turn of the main queue",
  timer: "timer on the main queue",
  task: "background task",
  load: "load",
  stop: "stop",
  question: "navigation asked",
  decision: "late decision",
  started: "load started",
  committed: "page committed",
  finished: "page finished",
  failed: "load failed",
  script: "script",
  scriptAnswer: "script answered",
  message: "message from the page",
  post: "message to the page",
  panel: "panel",
  canOpen: "app looked up",
  open: "app opened",
  opened: "launch answered",
  active: "application active",
  write: "default written",
  remove: "default removed",
  show: "screen shown",
  shown: "screen shown",
  hide: "screen hidden",
  hidden: "screen hidden",
};

function readRecording(source) {
  const { about, entries } = JSON.parse(source);
  const byId = new Map(entries.map((entry) => [entry.id, entry]));
  for (const entry of entries) {
    entry.effects = [];
    entry.parent = entry.cause < entry.id ? byId.get(entry.cause) : undefined;
    entry.parent?.effects.push(entry);
    entry.isBad = isFailure(entry);
    entry.isMarker = entry.lane === "mainQueue" && !["note", "call", "answer"].includes(entry.kind);
  }
  return { about, entries };
}

function isFailure({ kind, title, data }) {
  return (
    kind === "failed" ||
    (kind === "event" && /EXCEPTION|FAILED/.test(title)) ||
    (["answer", "scriptAnswer"].includes(kind) && data?.error !== undefined) ||
    (kind === "opened" && data?.opened === false) ||
    (kind === "console" && title.includes("❌")) ||
    (kind === "call" && title === "onCheckoutResponse" && data?.error !== undefined)
  );
}

function causesOf(entry) {
  const causes = [];
  for (let cause = entry.parent; cause; cause = cause.parent) causes.push(cause);
  return causes;
}

// Everything that came of an entry, nearest first; of a great many the first ones.
function effectsOf(entry, most = 400) {
  const effects = [...entry.effects];
  for (let at = 0; at < effects.length && effects.length < most; ++at) effects.push(...effects[at].effects);
  return effects.slice(0, most);
}

// What is listed: the entries, where two or more console lines in a row stand as one fold, which may
// be opened. A line that tells of a failure stays outside.
function foldLines(entries) {
  const items = [];
  let fold = null;
  let last = null;
  for (const entry of entries) {
    const isLine = entry.kind === "console" && !entry.isBad;
    const joins = isLine && last?.kind === "console" && !last.isBad && last.lane === entry.lane && entry.seconds - last.seconds < shortestGap;
    last = entry;
    if (!joins) fold = null;
    if (joins && !fold) {
      const first = items.pop();
      fold = { id: first.id - 0.5, isFold: true, isOpen: false, kind: "console", lane: first.lane, seconds: first.seconds, parent: first.parent, effects: [], lines: [first] };
      first.fold = fold;
      items.push(fold, first);
    }
    if (fold) {
      fold.lines.push(entry);
      entry.fold = fold;
    }
    items.push(entry);
  }
  for (const item of items) {
    if (!item.isFold) continue;
    item.title = plural(item.lines.length, "console line");
    item.tags = [...new Set(item.lines.map(({ title }) => /^\[([A-Z ]+)\]/.exec(title)?.[1]).filter(Boolean))];
  }
  return items;
}

// A few members of its data, for a card.
function shortData({ data, kind }) {
  if (!data || !["call", "answer", "event", "note"].includes(kind)) return "";
  const parts = Object.entries(data).map(([key, value]) => `${key} ${typeof value === "string" ? value : JSON.stringify(value)}`);
  return parts.join(" · ").slice(0, 160);
}

// The lines of a search are found without regard to case, in what a reader sees of an entry.
function searchText(entry) {
  entry.text ??= `${laneNames[entry.lane]} ${kindNames[entry.kind] ?? entry.kind} ${entry.title} ${
    entry.data ? JSON.stringify(entry.data) : ""
  }`.toLowerCase();
  return entry.text;
}

function timeText(seconds) {
  if (seconds < 60) return `${seconds.toFixed(3)} s`;
  const minutes = Math.floor(seconds / 60);
  return `${minutes}:${(seconds - 60 * minutes).toFixed(3).padStart(6, "0")}`;
}

function durationText(seconds) {
  if (seconds < 10) return `${seconds.toFixed(1)} s`;
  if (seconds < 60) return `${Math.round(seconds)} s`;
  const minutes = Math.floor(seconds / 60);
  if (minutes < 60) return `${minutes} min ${Math.round(seconds - 60 * minutes)} s`;
  return `${Math.floor(minutes / 60)} h ${minutes % 60} min`;
}

function plural(count, one, many = `${one}s`) {
  return `${count.toLocaleString("en")} ${count === 1 ? one : many}`;
}
