'use strict';

// What every page of the checkout shares: its query, its back end, and the way back to the shop.
const service = (() => {
  // Read strictly: in an order token a plus sign is a plus sign, not a space.
  function readQuery(text) {
    const values = new Map();
    for (const item of text.replace(/^\?/, '').split('&')) {
      const [name, ...rest] = item.split('=');
      try {
        if (name) values.set(decodeURIComponent(name), decodeURIComponent(rest.join('=')));
      } catch {
        // A broken escape: the value is as good as missing.
      }
    }
    return values;
  }

  const query = readQuery(location.search);
  const token = query.get('token') ?? '';

  class Refusal extends Error {}

  // The back end's answer. Throws a Refusal with its words when it says no, and any other error
  // when it cannot be reached.
  async function ask(path, body) {
    const response = await fetch(path, body === undefined ? { cache: 'no-store' } : {
      method: 'POST',
      headers: { 'Content-Type': 'application/json' },
      body: JSON.stringify({ token, ...body }),
    });
    const answer = await response.json();
    if (!response.ok) throw new Refusal(answer.error ?? 'The payment service refused this');
    return answer;
  }

  const pause = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

  const transaction = (id) => ask(
    `/api/checkout/transaction?token=${encodeURIComponent(token)}&transaction_id=${encodeURIComponent(id)}`);

  // Asks until the transaction is finished or nobody wants to know any more. A back end that
  // cannot be reached is asked again, ever more slowly; onTrouble hears of it and of its end.
  async function settled(id, isWanted, onTrouble) {
    let wait = 600;
    while (isWanted()) {
      try {
        const answer = await transaction(id);
        onTrouble(false);
        wait = 600;
        if (answer.is_finished) return answer;
      } catch (error) {
        if (error instanceof Refusal) throw error;
        onTrouble(true);
        wait = Math.min(wait * 1.5, 3000);
      }
      await pause(wait);
    }
    return null;
  }

  function base64(text) {
    let bytes = '';
    for (const byte of new TextEncoder().encode(text)) bytes += String.fromCharCode(byte);
    return btoa(bytes);
  }

  // Ends the checkout: the shop's application takes the response from this address.
  function respond(responseUrl, payload, form) {
    const json = JSON.stringify({ payload });
    bridge.goTo(`${responseUrl}?response=${encodeURIComponent(form === 'base64' ? base64(json) : json)}`);
  }

  const payloadOf = (answer) => ({
    order_id: answer.order_id,
    status: answer.status,
    transactionId: answer.transaction_id,
    payment_method: answer.method,
    amount: answer.amount,
    currency: answer.currency,
    message: answer.message,
  });

  function money(amount, currency) {
    const [whole, cents] = amount.split('.');
    if (currency !== 'INR') return `${currency} ${whole}.${cents}`;
    const last = whole.slice(-3);
    const rest = whole.slice(0, -3).replace(/\B(?=(\d{2})+$)/g, ',');
    return `₹${rest ? `${rest},` : ''}${last}${cents === '00' ? '' : `.${cents}`}`;
  }

  return { query, token, ask, pause, transaction, settled, respond, payloadOf, money, Refusal };
})();

const element = (id) => document.getElementById(id);
