'use strict';

(async () => {
  const id = service.query.get('transaction_id') ?? '';
  element('reference').textContent = `Reference ${id}`;
  try {
    const answer = await service.settled(id, () => true, (isTrouble) => {
      element('text').textContent = isTrouble
        ? 'No connection. Trying again…' : 'This takes a moment. Please keep this page open.';
    });
    await service.pause(1200);
    // Banks hand their answer on wrapped in base64; apps as plain text.
    service.respond(answer.response_url, service.payloadOf(answer), answer.method === 'BANK' ? 'base64' : 'json');
  } catch (error) {
    element('text').textContent = error.message;
  }
})();
