// What the Node.js package offers, line by line, after trying what a call can meet. STAGE names the form's file.
'use strict';

const assert = require('assert');
const koffi = require('koffi');
const korvane = require('korvane');
const stage = require(process.env.STAGE);

const { Code, TargetRecord, layouts } = korvane;

for (const [name, layout] of [['TargetRecord', layouts.RecordLayout], ['WindowInfo', layouts.InfoLayout]]) {
  console.log(name, koffi.sizeof(layout));
  for (const field of Object.keys(koffi.introspect(layout).members)) {
    console.log(`${name}.${field}`, koffi.offsetof(layout, field));
  }
}
for (const [name, value] of Object.entries(korvane)) {
  if (typeof value === 'function') console.log('offers', name);
}

const ERRORS = {
  [Code.NOT_FOUND]: korvane.NotFoundError,
  [Code.INVALID_ARGUMENT]: korvane.InvalidArgumentError,
  [Code.FAILED]: korvane.FailedError,
};
const fails = (code, action) =>
  assert.throws(action, (error) => error instanceof ERRORS[code] && error instanceof korvane.KorvaneError && error.code === code);

korvane.withSession('binding.log', () => {
  const form = stage.openForm(60, 60);
  const name = korvane.captureTargetAtPoint(...stage.centreOf(stage.Control.NAME));
  const again = new TargetRecord(Buffer.concat([Buffer.alloc(1), name.bytes]).subarray(1));
  assert(again.bytes.equals(name.bytes) && again.automationId === '101', again.automationId);
  assert.strictEqual(name.path.at(-1).className, 'Edit');
  assert.strictEqual(name.identificationMethod, korvane.Method.UNDECIDED);
  const info = korvane.getWindowInfo(form);
  assert.deepStrictEqual([info.title, info.processName, info.window], ['Order form', 'order_form.exe', form]);
  name.identificationMethod = korvane.Method.AUTOMATION_ID;

  // No unit is changed on its way to the control and back.
  for (const text of ['Ren\u00e9e', '\u{1f9ed}', 'low \udc00 high \ud800 end', 'x'.repeat(20000)]) {
    korvane.pasteToTargetDirect(name, form, text, 0);
    assert.strictEqual(korvane.getTargetText(name, form), text);
    assert(korvane.targetContainsText(name, form, text));
  }
  assert(!korvane.targetContainsText(name, form, 'other'));
  // A text is the caller's; giving it back changes nothing.
  korvane.freeTextResult(korvane.getTargetText(name, form));
  korvane.freeTextResult(null);
  assert.throws(() => korvane.freeTextResult(name), TypeError);
  korvane.pasteToTargetDirect(name, form, '', false);
  // An empty field answers with its Name, which on Windows is its label; the scripted desktop's fields have none.
  if (process.platform === 'win32') {
    assert.strictEqual(korvane.getTargetText(name, form), 'Name');
    assert.strictEqual(korvane.isTargetEmpty(name, form), false);
  } else {
    assert.strictEqual(korvane.getTargetText(name, form), null);
    fails(Code.NOT_FOUND, () => korvane.isTargetEmpty(name, form));
  }

  fails(Code.INVALID_ARGUMENT, () => korvane.setClipboardText(null));
  fails(Code.INVALID_ARGUMENT, () => korvane.clickTarget(name, null));
  fails(Code.FAILED, () => korvane.waitForTargetContainsText(name, form, 'never', 20));
  for (const refused of ['a\0b', '\0', 5]) assert.throws(() => korvane.setClipboardText(refused), TypeError);
  assert.throws(() => korvane.setClipboardTextAndHtml('a', '\ud800'), TypeError);
  assert.throws(() => new TargetRecord(Buffer.alloc(3255)), TypeError);
  assert.throws(() => korvane.clickTarget(name.bytes, form), TypeError);
  assert(again.equals(new TargetRecord(again.bytes)) && !again.equals(new TargetRecord()));
  assert.match(require('util').inspect(again), /automationId: '101'/);
  assert.throws(() => korvane.verifySimple('x', 0), (error) => error.log.at(-1).includes('getTargetText'));
  korvane.withCancelMonitor(() => assert.strictEqual(korvane.isCancelled(), false));
  stage.closeForm();
});

// A session of an asynchronous action lasts until the action has ended.
korvane.withSession('binding.log', async () => {
  await new Promise((resolve) => { setTimeout(resolve, 20); });
  korvane.logAction('still open', 0, 0);
}).then(() => assert.match(require('fs').readFileSync('binding.log', 'latin1'), /still open/));
