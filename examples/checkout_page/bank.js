'use strict';

(async () => {
  const id = service.query.get('transaction_id') ?? '';
  const name = service.query.get('bank') ?? 'Your bank';
  const buttons = [element('approve'), element('decline')];
  let isAnswering = false;
  element('bank').textContent = name;
  element('monogram').textContent = [...name][0] ?? '';
  element('reference').textContent = `Reference ${id}`;
  document.title = name;

  function fail(error) {
    element('notice').textContent = error instanceof service.Refusal
      ? error.message : 'The bank cannot be reached. Please try again.';
    element('notice').hidden = false;
  }

  async function answer(approves) {
    if (isAnswering) return;  // not disabled meanwhile: the button keeps the focus
    isAnswering = true;
    try {
      const { next } = await service.ask('/api/checkout/bank/answer', { transaction_id: id, approves });
      location.assign(next);
    } catch (error) {
      fail(error);
      isAnswering = false;
    }
  }

  element('approve').addEventListener('click', () => answer(true));
  element('decline').addEventListener('click', () => answer(false));
  try {
    const payment = await service.transaction(id);
    element('amount').textContent = service.money(payment.amount, payment.currency);
    for (const button of buttons) button.disabled = false;
  } catch (error) {
    fail(error);
  }
})();
