import { FailedError, Method, Session, TargetRecord, clickTarget, getTargetText } from 'korvane';
import korvane = require('korvane');

export async function replay(stored: Uint8Array): Promise<string | null> {
  return Session.use({ log: 'korvane.log' }, async (session) => {
    const form = await session.window({ title: /^Order/, timeoutMs: 1000 });
    const target = form.target(new TargetRecord(stored));
    target.record.identificationMethod = Method.TREE_PATH;
    try {
      await target.paste('Ada', { timeoutMs: 500 });
    } catch (error) {
      if (error instanceof FailedError) console.error(error.code, error.functionName, error.log.join('\n'));
      throw error;
    }
    const done: boolean = await session.call('isCancelled');
    return done ? null : target.text();
  });
}

export function blocking(record: TargetRecord, form: number): string | null {
  clickTarget(record, form);
  korvane.withSession(null, () => korvane.delay(1));
  // @ts-expect-error: a window is a number
  clickTarget(record, 'Order form');
  return getTargetText(record, form);
}
