// The page: rows, the chosen entry, lanes, search and keys.

const { about, entries } = readRecording(document.getElementById("recording").textContent);
const items = foldLines(entries);
const byId = new Map(items.map((item) => [item.id, item]));
const rows = document.getElementById("rows");
const details = document.getElementById("details");
const query = document.getElementById("query");

const hiddenLanes = new Set();
let chosen = null;
let stop = null; // the one entry that the Tab key comes to
let matches = [];

function isVisible(item) {
  return !hiddenLanes.has(item.lane) && (!item.fold || item.fold.isOpen);
}
const visibleItems = () => items.filter(isVisible);
const rowsInChunk = 60;

// --- rows

// A turn stands in one row with the first thing that happens in it, its row mate.
function makeRows() {
  const fragment = document.createDocumentFragment();
  let chunk = null;
  const append = (row) => {
    if (!chunk || chunk.childElementCount === rowsInChunk) {
      chunk = element("div", { class: "chunk", role: "presentation" });
      fragment.append(chunk);
    }
    chunk.append(row);
  };
  let shownTime = null;
  let last = 0;
  for (let at = 0; at < items.length; ++at) {
    const item = items[at];
    if (item.seconds - last >= shortestGap) append(gapRow(item.seconds - last));
    last = item.seconds;
    const time = timeText(item.seconds);
    const row = element("div", { class: "row", role: "listitem" });
    row.append(element("span", { class: "time", text: time === shownTime ? "" : time, "aria-hidden": "true" }));
    shownTime = time;
    row.append(card(item));
    const next = items[at + 1];
    if (item.isMarker && next && next.parent === item && !next.isMarker && next.seconds === item.seconds) {
      row.append(card(next));
      item.rowMate = next;
      ++at;
    }
    append(row);
  }
  rows.append(fragment);
}

function gapRow(seconds) {
  return element("div", { class: "gap", role: "listitem", children: [element("span", { text: `${durationText(seconds)} in which nothing happened` })] });
}

// Which rows are there at all, and the columns of the lanes that are shown.
function arrangeLanes() {
  const shown = lanes.filter((lane) => !hiddenLanes.has(lane));
  const widths = { mainQueue: "7.5rem", screen: "1.2fr", page: "1.2fr", coreServices: "1.3fr", upiApp: "1.7fr" };
  const columns = ["5rem", ...shown.map((lane) => `[${lane}] ${lane === "mainQueue" ? widths.mainQueue : `minmax(0, ${widths[lane] ?? "1fr"})`}`)];
  const story = document.getElementById("story");
  story.style.setProperty("--columns", columns.join(" "));
  for (const lane of lanes) {
    story.style.setProperty(`--track-${lane}`, Math.max(0, shown.indexOf(lane)));
  }
  story.style.setProperty("--tracks", shown.length);
  document.getElementById("heads").replaceChildren(...shown.map((lane) => element("span", { class: `lane-${lane}`, text: laneNames[lane] })));
  document.getElementById("lifelines").replaceChildren(...shown.map((lane) => element("span", { class: `lane-${lane}` })));
  hideRows();
  for (const button of document.querySelectorAll("#lanes button")) {
    button.setAttribute("aria-pressed", String(!hiddenLanes.has(button.dataset.lane)));
  }
}

// A row is there as long as anything in it is.
function hideRows() {
  for (const item of items) {
    const isHidden = !isVisible(item);
    if (item.button.hidden !== isHidden) item.button.hidden = isHidden;
  }
  for (const chunk of rows.children) {
    let count = 0;
    for (const row of chunk.children) {
      const isHidden = row.className === "row" && ![...row.children].some((child) => child.localName === "button" && !child.hidden);
      if (row.hidden !== isHidden) row.hidden = isHidden;
      count += !isHidden;
    }
    chunk.style.setProperty("--rows", count);
  }
}

function openFold(fold, isOpen = !fold.isOpen) {
  fold.isOpen = isOpen;
  fold.button.setAttribute("aria-expanded", String(isOpen));
}

function openFolds(isOpen) {
  for (const item of items) if (item.isFold) openFold(item, isOpen);
  document.getElementById("lines").setAttribute("aria-pressed", String(isOpen));
  if (chosen?.fold && !isOpen) choose(chosen.fold, { focus: false });
  hideRows();
  drawArrows(chosen);
}

function toggleLane(lane) {
  if (!hiddenLanes.delete(lane)) hiddenLanes.add(lane);
  arrangeLanes();
  search();
  drawArrows(chosen);
}

// A chunk that comes near is laid out and moves what the arrows point to, in the frame after.
function drawArrowsSoon() {
  requestAnimationFrame(() => requestAnimationFrame(() => drawArrows(chosen)));
}

// --- the chosen entry

function choose(entry, { focus = true } = {}) {
  if (chosen) chosen.button.removeAttribute("aria-current");
  chosen = entry;
  document.body.classList.toggle("has-choice", chosen !== null);
  if (stop) stop.tabIndex = -1;
  if (chosen) {
    chosen.button.setAttribute("aria-current", "true");
    stop = chosen.button;
    if (hiddenLanes.has(chosen.lane)) toggleLane(chosen.lane);
    if (chosen.fold && !chosen.fold.isOpen) {
      openFold(chosen.fold, true);
      hideRows();
    }
    showDetails();
    chosen.button.scrollIntoView({ block: "nearest" });
    if (focus) chosen.button.focus({ preventScroll: true });
  } else {
    const first = visibleItems()[0];
    stop = first?.button;
    showOverview();
  }
  if (stop) stop.tabIndex = 0;
  drawArrows(chosen);
  drawArrowsSoon();
}

function linkTo(entry) {
  const link = element("button", { type: "button", class: `link lane-${entry.lane}${entry.isBad ? " bad" : ""}`, children: [element("span", { class: "dot" })] });
  const more = entry.isFold ? "" : shortData(entry);
  link.append(element("span", { class: "title", text: more ? `${entry.title}: ${more}` : entry.title }));
  link.append(element("span", { class: "when", text: timeText(entry.seconds) }));
  link.addEventListener("click", () => choose(entry));
  return element("li", { children: [link] });
}

function listOf(title, list, most = 12) {
  if (list.length === 0) return [];
  const items = list.slice(0, most).map(linkTo);
  if (list.length > most) items.push(element("li", { class: "more", text: `and ${list.length - most} more` }));
  return [element("h3", { text: title }), element("ul", { class: "links", children: items })];
}

function showDetails() {
  const wall = new Date(1000 * (about.wallSeconds + chosen.seconds)).toISOString().replace("T", " ").replace("Z", " UTC");
  const close = element("button", { type: "button", class: "close", "aria-label": "Close", text: "×" });
  close.addEventListener("click", () => choose(null));
  const parts = [
    close,
    element("p", { class: `what lane-${chosen.lane}`, children: [element("span", { class: "dot" }), `${laneNames[chosen.lane]} · ${kindOf(chosen)}`] }),
    element("h2", { text: chosen.title }),
    element("p", { class: "when", text: `${timeText(chosen.seconds)} · ${wall}` }),
  ];
  if (chosen.picture) {
    const open = element("button", { type: "button", class: "thumbnail", "aria-label": `Open the picture ${chosen.title}`, children: [element("img", { src: chosen.picture, alt: chosen.title })] });
    open.addEventListener("click", openPicture);
    parts.push(open);
  }
  if (chosen.data) parts.push(dataList(chosen.data));
  if (chosen.isFold) parts.push(element("pre", { text: chosen.lines.map((line) => line.title).join("\n") }));
  parts.push(...listOf("Caused by", causesOf(chosen)), ...listOf("Effects", [...new Set(chosen.effects.map(shownAs))]));
  details.replaceChildren(...parts);
  details.scrollTop = 0;
}

// What a reader wants to know first.
function showOverview() {
  const results = entries.filter((entry) => entry.lane === "host" && entry.kind === "call");
  const failures = entries.filter((entry) => entry.isBad);
  details.replaceChildren(
    element("h2", { text: "What came of it" }),
    ...listOf("The host was told", results),
    ...(results.length ? [] : [element("p", { text: "The host was told nothing." })]),
    ...listOf("What failed", failures, 20),
    element("h3", { text: "How to read this" }),
    element("p", { text: "Time runs down, each lane is a part of the checkout. Choose an entry to see its data, and by arrows what brought it about and what came of it." }),
    element("p", { children: ["Press ", element("kbd", { text: "?" }), " for the keys."] }),
  );
}

function openPicture() {
  const dialog = document.getElementById("picture");
  dialog.querySelector("h2").textContent = chosen.title;
  const image = dialog.querySelector("img");
  image.src = chosen.picture;
  image.alt = chosen.title;
  dialog.showModal();
}

function move(step) {
  const list = visibleItems();
  const at = list.indexOf(chosen);
  const to = at < 0 ? (step > 0 ? 0 : list.length - 1) : at + step;
  if (list.length) choose(list[Math.min(list.length - 1, Math.max(0, to))]);
}

function moveToEffect() {
  const effect = effectsOf(chosen).map(shownAs).find(isVisible);
  if (effect) choose(effect);
}

function moveToFailure() {
  const failures = visibleItems().filter((entry) => entry.isBad);
  if (failures.length) choose(failures.find((entry) => entry.id > (chosen?.id ?? 0)) ?? failures[0]);
}

// --- search

function search() {
  const text = query.value.trim().toLowerCase();
  for (const match of matches) match.button.classList.remove("match");
  matches = text ? entries.filter((entry) => !hiddenLanes.has(entry.lane) && searchText(entry).includes(text)) : [];
  for (const match of matches) {
    match.button.classList.add("match");
    if (match.fold) openFold(match.fold, true);
  }
  if (matches.length) hideRows();
  tellFound();
}

function tellFound() {
  const at = matches.indexOf(chosen);
  document.getElementById("found").textContent =
    !query.value.trim() ? "" : matches.length === 0 ? "none" : at < 0 ? plural(matches.length, "match", "matches") : `${at + 1} of ${matches.length}`;
}

// The match after the chosen entry, or before it; round and round.
function moveToMatch(step, options) {
  if (matches.length === 0) return;
  const id = chosen?.id ?? 0;
  const later = step > 0 ? matches.find((entry) => entry.id > id) : matches.findLast((entry) => entry.id < id);
  choose(later ?? (step > 0 ? matches[0] : matches[matches.length - 1]), options);
  tellFound();
}

// --- keys

const keys = {
  ArrowDown: () => move(1),
  j: () => move(1),
  ArrowUp: () => move(-1),
  k: () => move(-1),
  ArrowLeft: () => chosen && visibleCause(chosen) && choose(visibleCause(chosen)),
  ArrowRight: () => chosen && moveToEffect(),
  Home: () => move(-entries.length),
  End: () => move(entries.length),
  n: () => moveToMatch(1),
  N: () => moveToMatch(-1),
  f: moveToFailure,
  c: () => openFolds(document.getElementById("lines").getAttribute("aria-pressed") === "false"),
  "/": () => query.focus(),
  "?": () => document.getElementById("keys").showModal(),
  Escape: () => (query.value ? clearSearch() : choose(null)),
};

function clearSearch() {
  query.value = "";
  search();
}

document.addEventListener("keydown", (event) => {
  if (event.ctrlKey || event.metaKey || event.altKey || document.querySelector("dialog[open]")) return;
  if (event.target === query) {
    if (event.key === "Enter") moveToMatch(event.shiftKey ? -1 : 1, { focus: false });
    else if (event.key === "Escape") (query.value ? clearSearch() : query.blur());
    else return;
    return event.preventDefault();
  }
  const lane = lanes[Number(event.key) - 1];
  if (!lane && !Object.hasOwn(keys, event.key)) return;
  event.preventDefault();
  if (lane) toggleLane(lane);
  else keys[event.key]();
});

rows.addEventListener("click", (event) => {
  const button = event.target.closest(".entry");
  if (!button) return;
  const entry = byId.get(Number(button.dataset.id));
  if (entry.isFold) {
    openFold(entry);
    hideRows();
  }
  if (entry === chosen && entry.picture) return openPicture();
  choose(entry);
});
query.addEventListener("input", search);
document.getElementById("previous").addEventListener("click", () => moveToMatch(-1));
document.getElementById("next").addEventListener("click", () => moveToMatch(1));
document.getElementById("help").addEventListener("click", keys["?"]);
document.getElementById("lines").addEventListener("click", keys.c);
new ResizeObserver(([{ target }]) => document.body.style.setProperty("--top", `${target.offsetHeight}px`)).observe(document.getElementById("top"));

// --- beginning

for (const [index, lane] of lanes.entries()) {
  const count = entries.filter((entry) => entry.lane === lane).length;
  const button = element("button", { type: "button", class: `toggle lane-${lane}`, "data-lane": lane, "aria-pressed": "true", title: `Show or hide (${index + 1})` });
  button.append(element("span", { class: "dot" }), element("span", { text: laneNames[lane] }), element("span", { class: "count", text: count }));
  button.addEventListener("click", () => toggleLane(lane));
  document.getElementById("lanes").append(button);
}
document.getElementById("summary").textContent = [
  new Date(1000 * about.wallSeconds).toISOString().replace("T", " ").replace(/\.\d+Z/, " UTC"),
  durationText(about.seconds),
  plural(entries.length, "entry", "entries"),
].join(" · ");
document.getElementById("end").textContent =
  about.dropped > 0
    ? `The recording ends here. Its first ${plural(about.dropped, "entry", "entries")} were dropped to keep it small.`
    : "The recording ends here.";
makeRows();
arrangeLanes();
choose(null);
const sizes = new ResizeObserver(drawArrowsSoon);
for (const chunk of rows.children) sizes.observe(chunk);
