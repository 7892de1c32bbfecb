'use strict';

(() => {
  let order = null;
  let waitingFor = null;  // the UPI payment that an app was asked for

  const views = ['loading', 'methods', 'waiting', 'outcome'];
  let view = 'loading';

  // The first view leaves the focus where it is, so that the page is read from its top; each later
  // one takes it, since what had it may be gone.
  function show(name) {
    if (name === view) return;
    for (const one of views) element(one).hidden = one !== name;
    document.documentElement.classList.remove('arriving');
    if (view !== 'loading') element(`${name}-title`).focus({ preventScroll: true });
    view = name;
    window.scrollTo(0, 0);
  }

  function notify(text, kind = 'good') {
    const notice = element('notice');
    notice.textContent = text;
    notice.dataset.kind = kind;
    notice.hidden = text === '';
    if (text) notice.scrollIntoView({ block: 'nearest' });
  }

  // For the inspector, and for the demonstration's own journal at the back end.
  function journal(received, action) {
    service.ask('/api/demo/journal', { line: `${received} -> ${action}` }).catch(() => {});
    bridge.note(action);
  }

  const explain = (error) => (error instanceof service.Refusal
    ? error.message : 'The payment service cannot be reached. Please try again.');

  function toMethods(text = '', kind = 'good') {
    waitingFor = null;
    notify(text, kind);
    show('methods');
  }

  // --- the end of a payment

  async function finish(transactionId, form) {
    const answer = await service.transaction(transactionId);
    const isPaid = answer.status === 'SUCCESS';
    element('outcome-mark').dataset.kind = isPaid ? 'good' : 'bad';
    element('outcome-path').setAttribute('d', isPaid ? 'm6 12.5 4 4 8-9' : 'm7.5 7.5 9 9m0-9-9 9');
    element('outcome-title').textContent = isPaid ? 'Payment received' : 'Payment not completed';
    element('outcome-text').textContent = isPaid
      ? `Taking you back to ${order.merchant}…` : answer.message;
    element('outcome-retry').hidden = isPaid;
    notify('');
    show('outcome');
    if (!isPaid) return;
    await service.pause(1100);
    service.respond(order.response_url, service.payloadOf(answer), form);
  }

  // --- UPI

  function showWaiting(payment, text) {
    element('waiting-title').textContent = `Waiting for ${payment.app_name}`;
    element('waiting-text').textContent = text;
    element('waiting-reference').textContent = `Reference ${payment.transaction_id}`;
    element('open-again').textContent = `Open ${payment.app_name} again`;
    element('open-again').hidden = !payment.url;
    show('waiting');
  }

  async function watch(payment) {
    const isWanted = () => waitingFor === payment;
    try {
      const answer = await service.settled(payment.transaction_id, isWanted, (isTrouble) => {
        if (isWanted() && isTrouble) notify('No connection. Trying again…', 'warn');
        if (isWanted() && !isTrouble && element('notice').dataset.kind === 'warn') notify('');
      });
      if (!answer || !isWanted()) return;
      waitingFor = null;
      if (answer.next) {
        bridge.goTo(answer.next);
      } else {
        await finish(payment.transaction_id, 'json');
      }
    } catch (error) {
      if (isWanted()) toMethods(explain(error), 'bad');
    }
  }

  function handOver(payment) {
    if (!upi.open(payment.url, payment.package_name, payment.transaction_id)) {
      leaveApp('UPI apps can be opened from the shop’s application only.', 'bad');
      return;
    }
    showWaiting(payment, 'Approve the payment in the app, then come back here.');
  }

  async function payByApp(app) {
    notify('');
    try {
      const payment = await service.ask('/api/checkout/upi', { package_name: app.package_name });
      waitingFor = payment;
      handOver(payment);
      watch(payment);
    } catch (error) {
      notify(explain(error), 'bad');
    }
  }

  // A request that nobody waits for must not be paid later. True when the order turns out to be
  // paid already; the checkout ends with that, then.
  async function closePayments() {
    const closed = await service.ask('/api/checkout/close', {});
    const paid = closed.payments.find((payment) => payment.status === 'SUCCESS');
    if (paid) await finish(paid.transaction_id, 'json');
    return Boolean(paid);
  }

  async function leaveApp(text, kind) {
    toMethods(text, kind);
    try {
      await closePayments();
    } catch (error) {
      notify(explain(error), 'bad');
    }
  }

  async function leave() {
    element('leave').close();
    try {
      if (await closePayments()) return;
      service.respond(order.response_url, {
        order_id: order.order_id, status: 'CANCELLED', message: 'Left without paying',
      }, 'json');
    } catch (error) {
      notify(explain(error), 'bad');
    }
  }

  // --- cards and banks

  // Says it below the form's fields, tied to the one that is wrong.
  function showError(id, text, input) {
    const error = element(id);
    for (const one of error.closest('form').querySelectorAll('input')) {
      one.removeAttribute('aria-invalid');
      one.removeAttribute('aria-describedby');
    }
    error.textContent = text;
    error.hidden = text === '';
    input?.setAttribute('aria-invalid', 'true');
    input?.setAttribute('aria-describedby', id);
    input?.focus();
  }

  // A button that is at work keeps the focus, but does nothing more.
  const isBusy = (button) => button.getAttribute('aria-disabled') === 'true';
  const makeBusy = (button, busy) => button.setAttribute('aria-disabled', String(busy));

  function cardProblem(number, expiry, cvv) {
    let sum = 0;
    [...number].reverse().forEach((digit, index) => {
      const value = Number(digit) * (index % 2 ? 2 : 1);
      sum += value > 9 ? value - 9 : value;
    });
    if (!/^\d{12,19}$/.test(number) || sum % 10) return ['This card number is not complete', 'card-number'];
    if (!/^(0[1-9]|1[0-2])\/\d\d$/.test(expiry)) return ['The expiry date must look like 08/30', 'card-expiry'];
    if (!/^\d{3,4}$/.test(cvv)) return ['The security code has three or four digits', 'card-cvv'];
    return null;
  }

  async function payByCard(event) {
    event.preventDefault();
    if (isBusy(element('card-pay'))) return;
    const number = element('card-number').value.replace(/\D/g, '');
    const expiry = element('card-expiry').value;
    const cvv = element('card-cvv').value;
    const problem = cardProblem(number, expiry, cvv);
    showError('card-error', problem?.[0] ?? '', problem && element(problem[1]));
    if (problem) return;
    makeBusy(element('card-pay'), true);
    try {
      const answer = await service.ask('/api/checkout/card', { number, expiry, cvv });
      await finish(answer.transaction_id, 'json');
    } catch (error) {
      showError('card-error', explain(error));
    }
    makeBusy(element('card-pay'), false);
  }

  async function payByBank(event) {
    event.preventDefault();
    if (isBusy(element('bank-pay'))) return;
    const chosen = element('banks').querySelector('input:checked');
    showError('bank-error', chosen ? '' : 'Choose your bank', chosen ? null : element('banks').querySelector('input'));
    if (!chosen) return;
    makeBusy(element('bank-pay'), true);
    try {
      const answer = await service.ask('/api/checkout/bank', { bank_code: chosen.value });
      location.assign(answer.next);
    } catch (error) {
      showError('bank-error', explain(error));
      makeBusy(element('bank-pay'), false);
    }
  }

  // --- messages from the application

  function deviceBack() {
    if (waitingFor) {
      journal('device_back_initiated', 'Went back to the ways to pay.');
      leaveApp('The payment request was closed. Nothing has been charged.', 'good');
    } else if (!element('outcome').hidden) {
      const isPaid = element('outcome-retry').hidden;
      journal('device_back_initiated', isPaid
        ? 'The payment is finished; nothing to go back to.' : 'Went back to the ways to pay.');
      if (!isPaid) toMethods();
    } else if (element('leave').open) {
      journal('device_back_initiated', 'Closed the question.');
      element('leave').close();
    } else if (document.querySelector('details[name="method"][open]')) {
      journal('device_back_initiated', 'Closed the open way to pay.');
      const method = document.querySelector('details[name="method"][open]');
      method.open = false;
      method.querySelector('summary').focus();
    } else {
      journal('device_back_initiated', 'Asked whether to leave.');
      element('leave').showModal();
    }
  }

  function launchFailed(status, message) {
    const name = waitingFor?.app_name ?? 'The app';
    journal(`${status}: ${message}`, 'Went back to the ways to pay.');
    leaveApp(status === 'unregistered'
      ? `${name} is not installed on this device. Choose another way to pay.`
      : `${name} could not be opened. Choose another way to pay.`, 'bad');
  }

  function cameBack(status) {
    journal(`upi_intent_back_response, enquiry "${status}"`, waitingFor
      ? 'Looked again at the payment.' : 'No payment was waiting; nothing to do.');
    if (!waitingFor) return;
    showWaiting(waitingFor, status === 'SUCCESS'
      ? 'Your bank has confirmed the payment.'
      : 'The payment has not been confirmed yet. If you have approved it, this takes a moment.');
  }

  window.addEventListener('message', (event) => {
    if (!bridge.isFromApplication(event)) return;
    let message;
    try {
      message = JSON.parse(event.data);
    } catch {
      return;
    }
    if (typeof message !== 'object' || message === null) return;
    if (message.sdk_action === 'device_back_initiated') deviceBack();
    if ('sdk_upi_intent_response' in message) {
      launchFailed(message.sdk_upi_intent_response, message.sdk_transaction_enquiry_response);
    }
    if (message.upi_intent_back_response === 'close') cameBack(message.transaction_enquiry_api_response);
  });

  // --- the page

  function fill() {
    const amount = service.money(order.amount, order.currency);
    document.title = `Pay ${order.merchant}`;
    element('merchant').textContent = order.merchant;
    element('monogram').textContent = order.merchant.split(' ').map((word) => word[0]).slice(0, 2).join('');
    element('order-id').textContent = `Order ${order.order_id}`;
    element('amount').textContent = amount;
    element('card-pay').textContent = `Pay ${amount}`;
    element('item-count').textContent = `${order.line_items.length} item${order.line_items.length === 1 ? '' : 's'}`;
    element('items').replaceChildren(...order.line_items.map((item) => {
      const entry = document.createElement('li');
      const name = document.createElement('span');
      const price = document.createElement('span');
      name.textContent = item.name;
      price.textContent = service.money(item.amount, order.currency);
      entry.append(name, price);
      return entry;
    }));
    for (const bank of order.banks) {
      const label = document.createElement('label');
      const input = document.createElement('input');
      label.className = 'bank';
      input.type = 'radio';
      input.name = 'bank';
      input.value = bank.code;
      label.append(input, bank.name);
      element('banks').append(label);
    }
  }

  function hostOf(address) {
    try {
      return new URL(address).host;
    } catch {
      return 'another page';
    }
  }

  function preselect() {
    const mode = service.query.get('payment_mode');
    if (mode === 'CARD') element('card-method').open = true;
    if (mode !== 'BANK') return;
    element('bank-method').open = true;
    const bank = element('banks').querySelector(`input[value="${CSS.escape(service.query.get('bank_code') ?? '')}"]`);
    if (bank) bank.click();
  }

  async function start() {
    try {
      order = await service.ask(`/api/checkout?token=${encodeURIComponent(service.token)}`);
    } catch (error) {
      element('loading').hidden = true;
      document.documentElement.classList.remove('arriving');
      notify(explain(error), 'bad');
      return;
    }
    fill();
    preselect();
    if (order.status === 'SUCCESS') {
      const paid = order.payments.find((payment) => payment.status === 'SUCCESS');
      await finish(paid.transaction_id, 'json');
      return;
    }
    show('methods');
    if (service.query.get('browser_back') === 'true') {
      if (!order.open_upi_payment && await closePayments()) return;
      notify('You are back at the checkout. Nothing has been charged.');
      journal('browser_back=true', `Back from ${hostOf(service.query.get('current_url'))}.`);
    }
    if (order.open_upi_payment) {
      waitingFor = order.open_upi_payment;
      showWaiting(waitingFor, 'You asked for this payment earlier. We are waiting for the app.');
      watch(waitingFor);
    }
  }

  upi.start(payByApp);
  element('card-form').addEventListener('submit', payByCard);
  element('bank-form').addEventListener('submit', payByBank);
  element('banks').addEventListener('change', () => showError('bank-error', ''));
  element('open-again').addEventListener('click', () => { if (waitingFor) handOver(waitingFor); });
  element('choose-other').addEventListener('click', () => leaveApp('The payment request was closed. Nothing has been charged.', 'good'));
  element('outcome-retry').addEventListener('click', () => toMethods());
  element('stay').addEventListener('click', () => element('leave').close());
  element('leave-now').addEventListener('click', leave);
  // The page behind the question is out of reach; so is the window around it.
  element('leave').addEventListener('keydown', (event) => {
    if (event.code !== 'Tab') return;  // with Shift, some engines have no name for the key
    event.preventDefault();
    element(document.activeElement === element('stay') ? 'leave-now' : 'stay').focus();
  });
  element('card-number').addEventListener('input', ({ target }) => {
    target.value = target.value.replace(/\D/g, '').slice(0, 19).replace(/(\d{4})(?=\d)/g, '$1 ');
  });
  element('card-expiry').addEventListener('input', ({ target }) => {
    const digits = target.value.replace(/\D/g, '').slice(0, 4);
    target.value = digits.length > 2 ? `${digits.slice(0, 2)}/${digits.slice(2)}` : digits;
  });
  for (const method of document.querySelectorAll('details[name="method"]')) {
    method.addEventListener('toggle', () => {
      if (!method.open) return;
      for (const other of document.querySelectorAll('details[name="method"]')) {
        if (other !== method) other.open = false;
      }
    });
  }
  start();
})();
