// Sessions, windows and targets of the Node.js package, imported as an ES module. STAGE names the form's file.
import assert from 'node:assert';
import fs from 'node:fs';
import { createRequire } from 'node:module';
import * as korvane from 'korvane';

const require = createRequire(import.meta.url);
const stage = require(process.env.STAGE);
const { Code, Session, TargetRecord } = korvane;

const { default: whole, ...named } = korvane;
assert.strictEqual(whole, require('korvane'));
assert.deepStrictEqual(Object.keys(named).sort(), Object.keys(whole).filter((name) => name !== 'layouts').sort());

await Session.use({ log: 'session.log' }, async (session) => {
  const handle = stage.openForm(40, 40);
  const form = await session.window({ title: /^Order/, process: 'ORDER_FORM.exe' });
  assert.strictEqual(form.handle, handle);
  assert.deepStrictEqual(await form.info(), { title: 'Order form', processName: 'order_form.exe' });
  await assert.rejects(session.window({ title: 'Order', timeoutMs: 1 }), korvane.NotFoundError);
  await assert.rejects(session.window({}), TypeError);

  const name = await form.targetAt(...stage.centreOf(stage.Control.NAME));
  assert.strictEqual(name.record.identificationMethod, korvane.Method.AUTOMATION_ID);
  await name.paste('Ada');
  assert.strictEqual(await name.text(), 'Ada');
  assert.deepStrictEqual([await name.check('Ad'), await name.check('Ad', { exact: true })], [true, false]);
  // What was clicked is under the mouse.
  assert.strictEqual((await form.targetAtCursor()).record.automationId, name.record.automationId);
  await form.target(name.record).type('x');
  await name.wait('Adax', { exact: true });

  // The event loop goes on while a call waits.
  let ticks = 0;
  const timer = setInterval(() => { ticks += 1; }, 10);
  await assert.rejects(name.wait('never', { timeoutMs: 400 }), (error) => {
    assert(error instanceof korvane.FailedError && error.code === Code.FAILED, error);
    assert.strictEqual(error.functionName, 'waitForTargetContainsPartialText');
    return error.log.length > 0;
  });
  clearInterval(timer);
  assert(ticks >= 10, `${ticks} ticks in 400 ms`);

  await assert.rejects(session.call('setClipboardText', 'a\0b'), TypeError);
  await assert.rejects(session.call('clickTarget', name.record, 0), korvane.InvalidArgumentError);

  // A recording of the companion program.
  const levels = name.record.path;
  const target = {
    identificationMethod: 'tree-path', automationId: { units: ['0031', '0030', '0031'] }, x: name.record.x, y: name.record.y,
    hwnd: name.record.hwnd.toString(16), pathLength: levels.length, levels,
  };
  const windows = [{ title: 'Order form', class: 'OrderForm', process: 'order_form.exe', rect: [0, 0, 0, 0] }];
  const steps = [{ name: 'Name', action: 'click', window: 1, target }];
  fs.writeFileSync('order.json', JSON.stringify({ korvane: 1, windows, steps }));
  for (const step of [1, 'Name']) {
    const recorded = await session.targetOfStep('order.json', step);
    recorded.record.identificationMethod = korvane.Method.AUTOMATION_ID;
    assert(recorded.record.equals(new TargetRecord(name.record.bytes)));
    await recorded.click();
  }
  await assert.rejects(session.targetOfStep('order.json', 'Street'), TypeError);
  // One that the companion program itself has written, in another place.
  if (process.env.RECORDING) {
    const article = await session.targetOfStep(process.env.RECORDING, 'Article');
    assert.strictEqual(article.record.automationId, String(stage.Control.ARTICLE));
    await article.paste('Brass compass');
    assert(await article.check('Brass compass', { exact: true }));
  }
  stage.closeForm();
  await session.close();
  await assert.rejects(session.call('isCancelled'), /closed/);
});
console.log('every promise was kept');
