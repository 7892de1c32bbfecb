'use strict';

// What crosses between the pages of this checkout and the application, in either direction, is
// written down here on its way: for the inspector, and without a change to it.
const bridge = (() => {
  const memory = 'bridge-messages';
  const most = 200;  // of a tab; the oldest go first
  let watch = () => {};

  const messages = (() => {
    try {
      return JSON.parse(sessionStorage.getItem(memory)) ?? [];
    } catch {
      return [];
    }
  })();

  function keep() {
    messages.splice(0, messages.length - most);
    try {
      sessionStorage.setItem(memory, JSON.stringify(messages));
    } catch {
      // Without room for more the later pages know less.
    }
    watch(messages);
  }

  function record(direction, channel, body) {
    messages.push({ time: Date.now(), direction, channel, body, note: '' });
    keep();
  }

  // The application's messages are the window's own; a frame may post here too.
  const isFromApplication = (event) => event.source === window && typeof event.data === 'string';

  window.addEventListener('message', (event) => {
    if (isFromApplication(event)) record('in', 'postMessage', event.data);
  });

  return {
    isFromApplication,

    // A call of the application's to a function of the page.
    called: (name, argument) => record('in', name, argument),

    // What the page made of the message it received last.
    note(text) {
      const received = messages.filter((message) => message.direction === 'in').pop();
      if (received) received.note = text;
      keep();
    },

    // False when no application is listening.
    post(name, body) {
      const channel = window.webkit?.messageHandlers?.[name];
      if (!channel) return false;
      record('out', name, body);
      channel.postMessage(body);
      return true;
    },

    // To an address that the application takes for itself, or reads when the customer returns.
    goTo(address) {
      record('out', 'address', address);
      location.assign(address);
    },

    // Calls back with all messages, now and whenever there are more.
    show(callback) {
      watch = callback;
      watch(messages);
    },
  };
})();
