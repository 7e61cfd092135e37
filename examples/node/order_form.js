// Captures four elements of the order form, opens the form elsewhere and fills it in by the records.
'use strict';

const { Session, TargetRecord } = require('korvane');
const stage = require('./stage');

const { Control } = stage;

Session.use({ log: 'korvane.log' }, async (session) => {
  const first = session.windowOf(stage.openForm(40, 40));
  const stored = [];
  for (const control of [Control.NAME, Control.ARTICLE, Control.SUBMIT, Control.STATUS]) {
    const target = await first.targetAt(...stage.centreOf(control));
    stored.push(target.record.bytes); // as it would go into a file
  }

  // Anywhere else, at any later time.
  stage.openForm(420, 300);
  const form = await session.window({ title: 'Order form', className: 'OrderForm' });
  const [name, article, submit, status] = stored.map((bytes) => form.target(new TargetRecord(bytes)));
  await name.paste('Renée García');
  await article.paste('Brass compass');
  await submit.click();
  await status.wait('Submitted');
  console.log(await status.text());
  stage.closeForm();
});
