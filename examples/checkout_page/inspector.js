'use strict';

// The developer's view of the bridge. Opened by its button below the page, or from the start by
// "#inspector" at the end of the page's address; pages that follow in the tab keep it open.
(() => {
  const memory = 'inspector-is-open';
  const panel = element('inspector');
  const toggle = element('inspector-toggle');
  const long = 120;  // characters; longer bodies are folded

  function part(name, className, text) {
    const made = document.createElement(name);
    made.className = className;
    made.textContent = text;
    return made;
  }

  function bodyOf(message) {
    const text = part('code', 'body', message.body);
    if (message.body.length <= long) return text;
    const fold = document.createElement('details');
    fold.append(part('summary', '', `${message.body.length} characters`), text);
    return fold;
  }

  function entry(message) {
    const time = new Date(message.time);
    const clock = part('time', '', `${time.toLocaleTimeString('en-GB')}.${String(time.getMilliseconds()).padStart(3, '0')}`);
    clock.dateTime = time.toISOString();
    const head = part('p', 'crossing', '');
    head.append(clock, part('strong', '', message.direction === 'in' ? '→ page' : '→ application'),
      part('code', '', message.channel));
    const item = document.createElement('li');
    item.dataset.direction = message.direction;
    item.append(head, bodyOf(message));
    if (message.note) item.append(part('p', 'made', message.note));
    return item;
  }

  // Entries that did not change stay as they are, so that a fold stays open and keeps the focus.
  let shown = [];
  function fill(messages) {
    const keys = messages.map((message) => JSON.stringify(message));
    if (keys[0] !== shown[0]) shown = [];
    const list = element('inspector-list');
    keys.forEach((key, index) => {
      if (key === shown[index]) return;
      if (list.children[index]) list.children[index].replaceWith(entry(messages[index]));
      else list.append(entry(messages[index]));
    });
    while (list.children.length > keys.length) list.lastElementChild.remove();
    shown = keys;
    element('inspector-count').textContent = String(keys.length);
    element('inspector-empty').hidden = keys.length > 0;
  }

  function open(isOpen) {
    panel.hidden = !isOpen;
    toggle.setAttribute('aria-expanded', String(isOpen));
    sessionStorage.setItem(memory, String(isOpen));
  }

  toggle.addEventListener('click', () => {
    open(panel.hidden);
    if (!panel.hidden) element('inspector-title').focus();
  });
  element('inspector-close').addEventListener('click', () => {
    open(false);
    toggle.focus();
  });
  bridge.show(fill);
  open(location.hash === '#inspector' || sessionStorage.getItem(memory) === 'true');
})();
