/**
 * Sessions, windows and targets. Every call returns a promise and runs in a thread of the session's own: the event loop goes
 * on, one call follows the other, and the thread that sets up UI Automation is the one that cleans it up.
 */
'use strict';

const fs = require('fs');
const path = require('path');
const { setTimeout: sleep } = require('timers/promises');
const { Worker } = require('worker_threads');
const { Code, Method, TargetRecord, getWindowInfo, internals } = require('./functions');

const { errorOf } = internals;
const WINDOW_TIMEOUT_MS = 5000;
const TEXT_TIMEOUT_MS = 3000;
const POLL_MS = 50;

const sent = (value) => (value instanceof TargetRecord ? { record: value.bytes } : value);
const received = (value) => (value?.record instanceof Uint8Array ? new TargetRecord(value.record) : value);

class Session {
  #worker = new Worker(path.join(__dirname, 'worker.js'));
  #waiting = new Map();
  #lastId = 0;
  #closed = null;
  #lastClick = null;

  /** Opens the log and UI Automation. `log`: a file; without it the one in the user's local application data folder. */
  static async open({ log } = {}) {
    const session = new Session();
    await session.call('initializeLog', log ?? null);
    try {
      await session.call('initializeAutomation');
    } catch (error) {
      await session.close();
      throw error;
    }
    return session;
  }

  /** Opens a session for as long as `action` takes. */
  static async use(options, action) {
    const session = await Session.open(options);
    try {
      return await action(session);
    } finally {
      await session.close();
    }
  }

  /** Use `Session.open`. */
  constructor() {
    // An idle session does not keep the program from ending.
    this.#worker.unref();
    this.#worker.on('message', ({ id, value, failure }) => {
      const { resolve, reject } = this.#waiting.get(id);
      this.#forget(id);
      if (failure === undefined) resolve(received(value));
      else if (failure.functionName !== undefined) reject(errorOf(failure.functionName, failure.code, failure.log));
      else reject(failure.refused ? new TypeError(failure.message) : new Error(failure.message));
    });
    const end = (error) => {
      for (const [id, { reject }] of this.#waiting) {
        this.#forget(id);
        reject(error);
      }
    };
    this.#worker.on('error', end);
    this.#worker.on('exit', () => end(new Error('korvane: the session has ended')));
  }

  #forget(id) {
    this.#waiting.delete(id);
    if (this.#waiting.size === 0) this.#worker.unref();
  }

  #post(name, values) {
    return new Promise((resolve, reject) => {
      this.#lastId += 1;
      this.#waiting.set(this.#lastId, { resolve, reject });
      this.#worker.ref();
      this.#worker.postMessage({ id: this.#lastId, name, values: values.map(sent) });
    });
  }

  /** Calls one of the 54 functions in the session's thread, as `session.call('sendCtrlS')`. */
  async call(name, ...values) {
    if (this.#closed) throw new Error('korvane: the session is closed');
    return this.#post(name, values);
  }

  /** Before a click: makes sure that it is not the second half of a double click on the same target. */
  async separateClick(window, record) {
    const last = this.#lastClick;
    if (last !== null && last.window === window && last.record.equals(record)) {
      const left = last.time + await this.call('doubleClickMs') + 1 - Date.now();
      if (left > 0) await this.call('delay', left);
    }
    // A remembered point may lie beside a window that has moved.
    await this.call('clearElementCache');
  }
  clicked(window, record) { this.#lastClick = { window, record: new TargetRecord(record.bytes), time: Date.now() }; }

  /** Ends the session after the calls that were made. A second time does nothing. */
  close() {
    this.#closed ??= this.#post('cleanupAutomation', []).finally(() => this.#worker.terminate());
    return this.#closed.then(() => undefined);
  }

  /**
   * The only visible top-level window with the title (a string or a regular expression), class and process, waited for.
   * Throws a NotFoundError when there is none in time, and an InvalidArgumentError when there are several.
   */
  async window({ title, className, process, timeoutMs = WINDOW_TIMEOUT_MS } = {}) {
    if (title === undefined && className === undefined && process === undefined) {
      throw new TypeError('korvane: a title, a className or a process is needed');
    }
    const named = Object.entries({ title, className, process }).filter(([, value]) => value !== undefined);
    const wanted = named.map(([key, value]) => `${key} ${value instanceof RegExp ? value : JSON.stringify(value)}`).join(', ');
    const end = Date.now() + timeoutMs;
    for (;;) {
      const found = await this.call('findWindows', { title, className, process });
      if (found.length === 1) return new Window(this, found[0]);
      if (found.length > 1) throw errorOf('window', Code.INVALID_ARGUMENT, [], `${found.length} windows with ${wanted}`);
      if (Date.now() >= end) throw errorOf('window', Code.NOT_FOUND, [], `no window with ${wanted} within ${timeoutMs} ms`);
      await sleep(POLL_MS);
    }
  }

  /** The window of a handle. */
  windowOf(handle) {
    return new Window(this, handle);
  }

  /** The window that the user clicks next; null when the mouse cannot be watched. */
  async pickWindow() {
    const handle = await this.call('findWindowByClick');
    return handle === null ? null : new Window(this, handle);
  }

  /** The target of a step, by its name or its number from 1, in a recording of the companion program. */
  async targetOfStep(file, step, { timeoutMs } = {}) {
    const recording = JSON.parse(await fs.promises.readFile(file, 'utf8'));
    const found = typeof step === 'number' ? recording.steps[step - 1] : recording.steps.find(({ name }) => name === step);
    if (!found?.target) throw new TypeError(`korvane: ${file} has no step ${JSON.stringify(step)} with a target`);
    const named = recording.windows[(found.window ?? 1) - 1];
    const window = await this.window({
      title: named.title || undefined, className: named.class || undefined, process: named.process || undefined, timeoutMs,
    });
    return window.target(TargetRecord.fromRecording(found.target));
  }

  /** Watches the Escape key: from then on what runs can end with a CancelledError. */
  watchEscape() { return this.call('startCancelMonitor'); }
  ignoreEscape() { return this.call('stopCancelMonitor'); }
}
if (Symbol.asyncDispose) {
  Object.defineProperty(Session.prototype, Symbol.asyncDispose, { value() { return this.close(); } });
}

class Window {
  constructor(session, handle) {
    this.session = session;
    this.handle = handle;
  }

  /** Its title and the file name of its process, as they are now. */
  async info() {
    const { title, processName } = getWindowInfo(this.handle);
    return { title, processName };
  }
  /** Brings it to the foreground. */
  focus() { return this.session.call('ensureWindowFocus', this.handle); }

  /** The element at a point of the screen, in pixels. */
  async targetAt(x, y) {
    const record = await this.session.call('captureTargetAtPoint', x, y);
    // The strongest identification that the element has. A path with a level that may be several elements is none.
    const levels = record.path;
    const exact = levels.length > 0 && levels.every(({ controlType, childIndex }) => controlType > 0 && childIndex > 0);
    if (record.automationId !== '') record.identificationMethod = Method.AUTOMATION_ID;
    else if (exact) record.identificationMethod = Method.TREE_PATH;
    return this.target(record);
  }
  /** The element under the mouse. */
  async targetAtCursor() { return this.target(await this.session.call('captureTargetAtCursor')); }
  /** The element of a record that was kept. */
  target(record) { return new Target(this, record); }
}

class Target {
  constructor(window, record) {
    this.window = window;
    this.record = record;
  }

  #call(name, ...values) { return this.window.session.call(name, this.record, this.window.handle, ...values); }

  async #click(name, ...values) {
    const { session, handle } = this.window;
    await session.separateClick(handle, this.record);
    try {
      await this.#call(name, ...values);
    } finally {
      session.clicked(handle, this.record);
    }
  }

  /** Finds it anew and clicks it. Two calls are two clicks, never a double click. */
  click() { return this.#click('clickTarget'); }
  /** Puts the text on the clipboard, clicks, pastes, and waits until the text shows. */
  async paste(text, { timeoutMs = TEXT_TIMEOUT_MS } = {}) {
    await this.window.session.call('setClipboardText', text);
    await this.#click('pasteToTargetWithVerifyEx', timeoutMs);
  }
  /** Clicks and types the text key by key. */
  async type(text, { pauseMs = 1 } = {}) {
    await this.click();
    await this.window.session.call('sendKeySequence', text, pauseMs);
  }
  /** What it shows; null when no text can be read. */
  text() { return this.#call('getTargetText'); }
  /** Waits until it shows the text, or with `exact` nothing else; a FailedError when time runs out. */
  wait(text, { timeoutMs = TEXT_TIMEOUT_MS, exact = false } = {}) {
    return this.#call(exact ? 'waitForTargetContainsText' : 'waitForTargetContainsPartialText', text, timeoutMs);
  }
  /** Whether it shows the text, or with `exact` nothing else. */
  check(text, { exact = false } = {}) {
    return this.#call(exact ? 'targetContainsText' : 'targetContainsPartialText', text);
  }
}

module.exports = { Session, Window, Target };
