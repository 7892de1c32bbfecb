// The arrows from cause to effect: down the cause's lifeline, then across to the effect.

const arrows = document.getElementById("arrows");

function drawPath(points, kind) {
  const path = document.createElementNS("http://www.w3.org/2000/svg", "path");
  path.setAttribute("d", points);
  path.setAttribute("class", kind);
  arrows.append(path);
}

function drawHead(x, y, direction, kind) {
  const [a, b] = { right: [-6, 4], left: [6, 4], down: [4, -6] }[direction];
  const corners = direction === "down" ? `${x - a},${y + b} ${x + a},${y + b}` : `${x + a},${y - b} ${x + a},${y + b}`;
  const head = document.createElementNS("http://www.w3.org/2000/svg", "polygon");
  head.setAttribute("points", `${x},${y} ${corners}`);
  head.setAttribute("class", kind);
  arrows.append(head);
}

// Where the entry's dot is, and how far its card reaches, in the drawing's own coordinates.
function placeOf(entry, origin) {
  const dot = entry.button.firstChild.getBoundingClientRect();
  const box = entry.button.getBoundingClientRect();
  return {
    x: dot.left + dot.width / 2 - origin.left,
    y: dot.top + dot.height / 2 - origin.top,
    top: box.top - origin.top,
    right: box.right - origin.left,
  };
}

// What stands for the entry: a fold for a line in it.
function shownAs(entry) {
  return entry.fold && !entry.fold.isOpen ? entry.fold : entry;
}

// The nearest cause that is on the page: those between are in lanes that are hidden.
function visibleCause(entry) {
  let cause = entry.parent;
  while (cause && !isVisible(cause)) cause = cause.parent;
  return cause;
}

function drawArrow(from, to, kind) {
  const radius = 6;
  if (Math.abs(from.x - to.x) < 2) {
    drawPath(`M${from.x} ${from.y}V${to.y - 7}`, kind);
    drawHead(to.x, to.y - 4, "down", kind);
  } else if (to.x > from.x) {
    drawPath(`M${from.x} ${from.y}V${to.y - radius}q0 ${radius} ${radius} ${radius}H${to.x - 8}`, kind);
    drawHead(to.x - 5, to.y, "right", kind);
  } else if (from.x > to.right + 12) {
    drawPath(`M${from.x} ${from.y}V${to.y - radius}q0 ${radius} ${-radius} ${radius}H${to.right + 6}`, kind);
    drawHead(to.right + 1, to.y, "left", kind);
  } else {
    drawPath(`M${from.x} ${from.y}V${to.top - 6}`, kind);
    drawHead(from.x, to.top, "down", kind);
  }
}

// Marks what is related to the entry, and draws the arrows: those to it over those from it.
function drawArrows(chosen) {
  arrows.replaceChildren();
  for (const related of document.querySelectorAll(".cause, .effect")) related.classList.remove("cause", "effect");
  if (!chosen) return;
  const origin = document.getElementById("timeline").getBoundingClientRect();
  arrows.setAttribute("width", origin.width);
  arrows.setAttribute("height", origin.height);
  const effects = [...new Set(effectsOf(chosen).map(shownAs))].filter(isVisible);
  const causes = causesOf(chosen).filter(isVisible);
  for (const effect of effects) effect.button.classList.add("effect");
  for (const cause of causes) cause.button.classList.add("cause");
  // A turn and what shares its row are one end of an arrow.
  const related = new Set([chosen, ...effects, ...causes]);
  const drawTo = (entry, kind) => {
    if (related.has(entry.rowMate)) return;
    let cause = visibleCause(entry);
    if (cause && cause.rowMate === entry) cause = related.has(cause) && cause === chosen ? null : visibleCause(cause);
    if (cause && related.has(cause)) drawArrow(placeOf(cause, origin), placeOf(entry, origin), kind);
  };
  for (const effect of effects.reverse()) drawTo(effect, "to-effect");
  if (isVisible(chosen)) drawTo(chosen, "to-chosen");
  for (const cause of causes) drawTo(cause, "to-chosen");
}
