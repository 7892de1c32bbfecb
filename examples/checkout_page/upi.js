'use strict';

// The UPI apps of this device, as the application hands them over, and the hand-off to one.
const upi = (() => {
  let choose = () => {};

  function icon(app) {
    const frame = document.createElement('span');
    frame.className = 'app-icon';
    frame.setAttribute('aria-hidden', 'true');
    const initial = () => { frame.textContent = [...(app.upi_app_name ?? '?')][0] ?? '?'; };
    if (!/^(https?:\/\/|data:image\/(png|svg\+xml|jpeg|webp);)/.test(app.appiconbase64 ?? '')) {
      initial();
      return frame;
    }
    const image = document.createElement('img');
    image.alt = '';
    image.addEventListener('error', initial);
    image.src = app.appiconbase64;
    frame.append(image);
    return frame;
  }

  function row(app) {
    const button = document.createElement('button');
    button.type = 'button';
    button.className = 'row';
    button.dataset.package = app.package_name;
    const name = document.createElement('span');
    name.className = 'grow';
    name.textContent = app.upi_app_name ?? app.package_name;
    const chevron = element('card-method').querySelector('.chevron').cloneNode(true);
    button.append(icon(app), name, chevron);
    button.addEventListener('click', () => choose(app));
    const item = document.createElement('li');
    item.append(button);
    return item;
  }

  // The application hands the list over once; pages that come later in this checkout keep it.
  const memory = 'upi-apps';

  function show(text) {
    sessionStorage.setItem(memory, text);
    let apps = [];
    try {
      const parsed = JSON.parse(text).UPIApps;
      apps = Array.isArray(parsed) ? parsed.filter((app) => typeof app?.package_name === 'string') : [];
    } catch {
      // A text that is no list of apps offers none.
    }
    window.zorvik_web.receivedApps = apps;
    element('no-apps').textContent = apps.length === 0 ? 'No UPI app was found on this device.' : '';
    element('upi-apps').replaceChildren(...apps.map(row));
  }

  // Asks the application to open the app; false when no application is listening.
  function open(url, packageName, transactionId) {
    return bridge.post('openUpiIntent', JSON.stringify({ url, package_name: packageName, transactionId }));
  }

  window.zorvik_web = {
    UPIIntentAvailable(text) {
      bridge.called('zorvik_web.UPIIntentAvailable', text);
      show(text);
    },
  };

  // Shows the apps of an earlier page, if any, and gives up on new ones after a while.
  function start(handler) {
    choose = handler;
    const earlier = sessionStorage.getItem(memory);
    if (earlier !== null) show(earlier);
    setTimeout(() => {
      if (!window.zorvik_web.receivedApps) element('no-apps').textContent = 'No UPI app was offered on this device.';
    }, 4000);
  }

  return { open, start };
})();
