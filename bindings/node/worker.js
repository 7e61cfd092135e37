// The thread of a session: makes its calls one after the other, so that the caller's event loop never waits for one.
'use strict';

const { parentPort } = require('worker_threads');
const functions = require('./functions');
const { doubleClickMs, findWindows } = require('./windows');

const { TargetRecord, KorvaneError } = functions;
const callable = { ...functions, doubleClickMs, findWindows };

const received = (value) => (value?.record instanceof Uint8Array ? new TargetRecord(value.record) : value);
const sent = (value) => (value instanceof TargetRecord ? { record: value.bytes } : value);

parentPort.on('message', ({ id, name, values }) => {
  try {
    parentPort.postMessage({ id, value: sent(callable[name](...values.map(received))) });
  } catch (error) {
    const { functionName, code, log, message } = error;
    const failure = error instanceof KorvaneError ? { functionName, code, log } : { message, refused: error instanceof TypeError };
    parentPort.postMessage({ id, failure });
  }
});
