// Pieces of the document. What comes from the recording becomes text, never markup.

function element(name, { text, children = [], ...attributes } = {}) {
  const made = document.createElement(name);
  for (const [attribute, value] of Object.entries(attributes)) {
    if (value === true) made.setAttribute(attribute, "");
    else if (value !== undefined && value !== false) made.setAttribute(attribute, value);
  }
  if (text !== undefined) made.textContent = text;
  made.append(...children);
  return made;
}

const iconPaths = {
  note: "M3 3h10v7l-3 3H3z",
  call: "M2 8h11M9 4l4 4-4 4",
  answer: "M14 8H3M7 4 3 8l4 4",
  event: "M4 14V2h8l-2 3 2 3H4",
  picture: "M2 3h12v10H2zM2 11l4-4 3 3 2-2 3 3",
  load: "M8 2v9M4 7l4 4 4-4M3 14h10",
  question: "M8 14a6 6 0 1 1 0-12 6 6 0 0 1 0 12zM10.5 5.5 9 9l-3.5 1.5L7 7z",
  script: "M5 4 2 8l3 4M11 4l3 4-3 4",
  message: "M2 3h12v8H7l-3 3v-3H2z",
  panel: "M2 3h12v10H2zM2 6h12",
  open: "M7 3H3v10h10V9M9 3h4v4M13 3 7 9",
  active: "M13 8H4M8 4 4 8l4 4M2 2v12",
  write: "M3 3h8l2 2v8H3zM5 3v4h5V3M5 13v-3h6v3",
  show: "M2 3h12v10H2zM5 8l2 2 4-4",
  failed: "M8 2l6.5 11.5h-13zM8 6v4M8 12v.1",
};
const iconOf = {
  stop: "failed", decision: "question", started: "load", committed: "load", finished: "show", post: "answer", scriptAnswer: "answer",
  canOpen: "question", opened: "open", remove: "write", shown: "show", hide: "panel", hidden: "panel",
};

function icon(kind, isBad) {
  const drawing = document.createElementNS("http://www.w3.org/2000/svg", "svg");
  drawing.setAttribute("viewBox", "0 0 16 16");
  drawing.setAttribute("class", "icon");
  drawing.setAttribute("aria-hidden", "true");
  const path = document.createElementNS("http://www.w3.org/2000/svg", "path");
  path.setAttribute("d", iconPaths[isBad ? "failed" : (iconOf[kind] ?? kind)] ?? iconPaths.note);
  drawing.append(path);
  return drawing;
}

function kindOf(item) {
  return item.isFold ? "console lines" : (kindNames[item.kind] ?? item.kind);
}

function card(item) {
  const form = item.isMarker ? "marker" : item.isFold ? "fold" : item.kind === "console" ? "line" : "card";
  const button = element("button", {
    type: "button",
    class: `entry ${form} lane-${item.lane}${item.isBad ? " bad" : ""}${item.picture ? " with-picture" : ""}`,
    tabindex: -1,
    "data-id": item.id,
    "aria-expanded": item.isFold ? "false" : undefined,
    children: [element("span", { class: "dot" })],
  });
  const add = (name, text) => text && button.append(element("span", { class: name, text }));
  add("unseen", `${timeText(item.seconds)}, ${laneNames[item.lane]}, ${kindOf(item)}: `);
  if (item.isMarker) {
    add("title", item.title.replace(/^background |^timer of /, ""));
  } else {
    if (form === "card") button.append(icon(item.kind, item.isBad));
    if (form === "card") button.append(element("span", { class: "lane-name", text: laneNames[item.lane], "aria-hidden": "true" }));
    add("title", item.title);
    add("more", item.isFold ? item.tags.join(" · ").toLowerCase() : shortData(item));
    add("badge", item.data?.decision);
    if (item.picture) button.append(element("img", { src: item.picture, alt: "" }));
  }
  item.button = button;
  return button;
}

// A text that is JSON is easier to read with its members one below the other.
function readable(value) {
  if (typeof value === "string" && /^\s*[{[]/.test(value)) {
    try {
      return JSON.stringify(JSON.parse(value), null, 2);
    } catch {
      return value;
    }
  }
  return typeof value === "object" && value !== null ? JSON.stringify(value, null, 2) : String(value);
}

function dataList(data) {
  const list = element("dl", { class: "data" });
  for (const [key, value] of Object.entries(data)) {
    const text = readable(value);
    const isBlock = text.length > 60 || text.includes("\n");
    list.append(element("dt", { text: key }));
    list.append(element("dd", { children: [element(isBlock ? "pre" : "code", { text })] }));
  }
  return list;
}
