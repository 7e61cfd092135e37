// Captures four elements of the order form, opens the form elsewhere and fills it in by the records.
'use strict';

const korvane = require('../../bindings/node/korvane');
const stage = require('./stage');

const { Control } = stage;
const TIMEOUT_MS = 3000;

function capture(control) {
  const record = korvane.captureTargetAtPoint(...stage.centreOf(control));
  record.identificationMethod = korvane.Method.TREE_PATH;
  return record.bytes; // as it would go into a file
}

function paste(record, form, text) {
  korvane.setClipboardText(text);
  korvane.pasteToTargetWithVerifyEx(record, form, TIMEOUT_MS);
}

korvane.withSession('korvane.log', () => {
  stage.openForm(40, 40);
  const stored = [Control.NAME, Control.ARTICLE, Control.SUBMIT, Control.STATUS].map(capture);

  // Anywhere else, at any later time.
  const form = stage.openForm(420, 300);
  const [name, article, submit, status] = stored.map((bytes) => new korvane.TargetRecord(bytes));
  korvane.verifyTarget(name, form);
  paste(name, form, 'Renée García');
  paste(article, form, 'Brass compass');
  korvane.clickTarget(submit, form);
  korvane.waitForTargetContainsPartialText(status, form, 'Submitted', TIMEOUT_MS);
  console.log(korvane.getTargetText(status, form));
  stage.closeForm();
});
