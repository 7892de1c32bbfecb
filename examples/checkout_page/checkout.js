'use strict';

(() => {
  let order = null;
  let waitingFor = null;  // the UPI payment that an app was asked for

  const views = ['loading', 'methods', 'waiting', 'outcome'];

  function show(name) {
    for (const view of views) element(view).hidden = view !== name;
    element(`${name}-title`)?.focus({ preventScroll: true });
    window.scrollTo(0, 0);
  }

  function notify(text, kind = 'good') {
    const notice = element('notice');
    notice.textContent = text;
    notice.dataset.kind = kind;
    notice.hidden = text === '';
  }

  // Shown below the ways to pay, and told to the back end for the demonstration's own journal.
  function journal(received, action) {
    service.ask('/api/demo/journal', { line: `${received} -> ${action}` }).catch(() => {});
    const entry = document.createElement('li');
    const code = document.createElement('code');
    code.textContent = received;
    entry.append(code, ` ${action}`);
    element('journal').append(entry);
    element('journal-card').hidden = false;
    element('journal-count').textContent = String(element('journal').children.length);
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
        location.assign(answer.next);
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

  function showCardError(text, input) {
    for (const one of element('card-form').querySelectorAll('input')) one.removeAttribute('aria-invalid');
    element('card-error').textContent = text;
    element('card-error').hidden = text === '';
    input?.setAttribute('aria-invalid', 'true');
    input?.focus();
  }

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
    const number = element('card-number').value.replace(/\D/g, '');
    const expiry = element('card-expiry').value;
    const cvv = element('card-cvv').value;
    const problem = cardProblem(number, expiry, cvv);
    if (problem) return showCardError(problem[0], element(problem[1]));
    showCardError('');
    element('card-pay').disabled = true;
    try {
      const answer = await service.ask('/api/checkout/card', { number, expiry, cvv });
      await finish(answer.transaction_id, 'json');
    } catch (error) {
      showCardError(explain(error));
    }
    element('card-pay').disabled = false;
  }

  async function payByBank(event) {
    event.preventDefault();
    element('bank-pay').disabled = true;
    try {
      const chosen = element('bank-form').querySelector('input:checked');
      const answer = await service.ask('/api/checkout/bank', { bank_code: chosen.value });
      location.assign(answer.next);
    } catch (error) {
      notify(explain(error), 'bad');
      element('bank-pay').disabled = false;
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
      for (const method of document.querySelectorAll('details[name="method"]')) method.open = false;
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
  element('banks').addEventListener('change', () => { element('bank-pay').disabled = false; });
  element('open-again').addEventListener('click', () => { if (waitingFor) handOver(waitingFor); });
  element('choose-other').addEventListener('click', () => leaveApp('The payment request was closed. Nothing has been charged.', 'good'));
  element('outcome-retry').addEventListener('click', () => toMethods());
  element('stay').addEventListener('click', () => element('leave').close());
  element('leave-now').addEventListener('click', leave);
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
