/**
 * korvane for Node.js 16 and later, with the npm package koffi.
 *
 *     const korvane = require('./korvane');
 *
 *     korvane.withSession('korvane.log', () => {
 *       const form = korvane.findWindowByClick(); // the user clicks the form
 *       const note = korvane.captureTargetAtPoint(320, 240);
 *       note.identificationMethod = korvane.Method.TREE_PATH;
 *       korvane.setClipboardText('Brass compass');
 *       korvane.pasteToTargetWithVerifyEx(note, form, 1000);
 *     });
 *
 * Every function of korvane.h is here under its own name. What answers a result code there returns nothing here and
 * throws a KorvaneError with the `code` unless it is OK; what answers yes or no returns a boolean. Windows are numbers;
 * null stands for none. Lone surrogates pass in both directions; a text with a NUL, which would be cut off there, is a
 * TypeError. Calls block the event loop; a host that must stay responsive makes them in a worker, all in the same one.
 *
 * The library is the file that KORVANE_LIBRARY names, else korvane.dll beside this file or in the unpacked package.
 */
'use strict';

const fs = require('fs');
const path = require('path');
const koffi = require('koffi');

const Code = Object.freeze({ OK: 0, NOT_FOUND: -1, INVALID_ARGUMENT: -2, FAILED: -3, CANCELLED: -4 });
const Method = Object.freeze({ UNDECIDED: -1, AUTOMATION_ID: 0, COORDINATES: 2, TREE_PATH: 3 });
const KEY_CTRL_A = 9999;

/** A function answered a code other than OK. */
class KorvaneError extends Error {
  constructor(functionName, code) {
    const name = Object.keys(Code).find((each) => Code[each] === code);
    super(`${functionName}: ${name ?? code}`);
    this.name = 'KorvaneError';
    this.functionName = functionName;
    this.code = code;
  }
}

// ---- Texts ----

function units(text) {
  if (text === null || text === undefined) return null;
  if (typeof text !== 'string' || text.includes('\0')) throw new TypeError('korvane: a string without NUL is needed');
  return Buffer.from(text + '\0', 'utf16le');
}

function utf8(text) {
  if (text === null || text === undefined) return null;
  if (typeof text !== 'string' || text.includes('\0')) throw new TypeError('korvane: a string without NUL is needed');
  const bytes = Buffer.from(text + '\0', 'utf8');
  if (bytes.toString('utf8') !== text + '\0') throw new TypeError('korvane: UTF-8 cannot hold a lone surrogate');
  return bytes;
}

function textAt(bytes, offset, size) {
  const text = bytes.toString('utf16le', offset, offset + 2 * size);
  const end = text.indexOf('\0');
  return end < 0 ? text : text.slice(0, end);
}

// ---- Records ----

const RecordLayout = koffi.struct({
  automationId: koffi.array('uint16_t', 256),
  hwnd: 'uintptr_t',
  x: 'int32_t',
  y: 'int32_t',
  identificationMethod: 'int32_t',
  pathLength: 'int32_t',
  controlTypes: koffi.array('int32_t', 20),
  classNames: koffi.array('uint16_t', 20 * 64),
  childIndices: koffi.array('int32_t', 20),
});
const InfoLayout = koffi.struct({
  title: koffi.array('uint16_t', 256),
  processName: koffi.array('uint16_t', 256),
  window: 'uintptr_t',
});

function offsetsOf(layout) {
  return Object.freeze(Object.fromEntries(Object.keys(koffi.introspect(layout).members).map((name) => [name, koffi.offsetof(layout, name)])));
}
const RECORD = offsetsOf(RecordLayout);
const INFO = offsetsOf(InfoLayout);

/** A captured element. `bytes` is what a host stores; `new TargetRecord(bytes)` reads it again. */
class TargetRecord {
  constructor(bytes = Buffer.alloc(TargetRecord.SIZE)) {
    if (!Buffer.isBuffer(bytes) || bytes.length !== TargetRecord.SIZE) {
      throw new TypeError(`korvane: a record has ${TargetRecord.SIZE} bytes`);
    }
    // Aligned memory of its own: a slice of another buffer may start anywhere.
    this.bytes = Buffer.from(new ArrayBuffer(TargetRecord.SIZE));
    bytes.copy(this.bytes);
  }
  get automationId() { return textAt(this.bytes, RECORD.automationId, 256); }
  get hwnd() { return Number(this.bytes.readBigUInt64LE(RECORD.hwnd)); }
  get x() { return this.bytes.readInt32LE(RECORD.x); }
  get y() { return this.bytes.readInt32LE(RECORD.y); }
  get identificationMethod() { return this.bytes.readInt32LE(RECORD.identificationMethod); }
  set identificationMethod(method) { this.bytes.writeInt32LE(method, RECORD.identificationMethod); }
  get pathLength() { return this.bytes.readInt32LE(RECORD.pathLength); }
  /** The levels of the tree path, outermost first. */
  get path() {
    return Array.from({ length: Math.min(Math.max(this.pathLength, 0), 20) }, (_, level) => ({
      controlType: this.bytes.readInt32LE(RECORD.controlTypes + 4 * level),
      className: textAt(this.bytes, RECORD.classNames + 128 * level, 64),
      childIndex: this.bytes.readInt32LE(RECORD.childIndices + 4 * level),
    }));
  }
}
TargetRecord.SIZE = koffi.sizeof(RecordLayout);

// ---- The library ----

function findLibrary() {
  if (process.env.KORVANE_LIBRARY) return process.env.KORVANE_LIBRARY;
  const places = [path.join(__dirname, 'korvane.dll'), path.join(__dirname, '..', '..', 'bin', 'korvane.dll')];
  const found = places.find((place) => fs.existsSync(place));
  if (!found) throw new Error('korvane.dll is neither beside korvane.js nor in the package; KORVANE_LIBRARY can name it');
  return found;
}

const library = koffi.load(findLibrary());

// How a parameter of each type is written in C, and what becomes of its value.
const PARAMETERS = {
  record: ['void *', (record) => (record === null ? null : record.bytes)],
  window: ['uintptr_t', (window) => window ?? 0],
  text: ['const void *', units],
  html: ['const void *', utf8],
  int: ['int', (value) => value],
  int64: ['int64_t', (value) => value],
  out: ['void *', (bytes) => bytes],
};

function done(code, name) {
  if (code !== Code.OK) throw new KorvaneError(name, code);
}

function yesOrNo(answer, name) {
  if (answer < 0) throw new KorvaneError(name, answer);
  return answer === 1;
}

function ownedText(pointer) {
  if (pointer === null) return null;
  try {
    const codes = koffi.decode(pointer, 'char16_t', -1);
    return typeof codes === 'string' ? codes : String.fromCharCode(...codes);
  } finally {
    exports.freeTextResult(pointer);
  }
}

function define(name, result, parameters, finish = (value) => value) {
  const kinds = parameters.map((parameter) => PARAMETERS[parameter]);
  const call = library.func(name, result, kinds.map(([type]) => type));
  exports[name] = (...values) => finish(call(...kinds.map(([, convert], i) => convert(values[i]))), name);
}

const none = (name, ...parameters) => define(name, 'void', parameters, () => undefined);
const code = (name, ...parameters) => define(name, 'int', parameters, done);
const answer = (name, ...parameters) => define(name, 'int', parameters, yesOrNo);

code('initializeAutomation');
none('cleanupAutomation');
code('setTargetWindow', 'window');
none('delay', 'int');

none('initializeLog', 'text');
none('logAction', 'text', 'int', 'int');
none('logActionWithTimestamp', 'text', 'int', 'int', 'int64');

code('captureTargetAtPoint', 'record', 'int', 'int');
code('captureTargetAtCursor', 'record');
code('verifyTarget', 'record', 'window');
none('clearElementCache');

code('clickTarget', 'record', 'window');
code('ensureWindowFocus', 'window');
code('pasteToTargetWithVerify', 'record', 'window');
code('pasteToTargetWithVerifyEx', 'record', 'window', 'int');
code('pasteToTargetDirect', 'record', 'window', 'text', 'int');
code('pasteToTargetSimple', 'record', 'window');

code('sendKey', 'int');
code('sendKeySequence', 'text', 'int');
code('sendAltA');
code('sendAltB');
code('sendAltD');
code('sendAltE');
code('sendAltP');
code('sendAltT');
code('sendAltZ');
code('sendCtrlA');
code('sendCtrlAltN');
code('sendCtrlL');
code('sendCtrlN');
code('sendCtrlQ');
code('sendCtrlS');
code('sendCtrlShiftF3');
code('sendCtrlV');
code('sendShiftF2');
code('sendShiftF4');
code('sendShiftInsert');

code('setClipboardText', 'text');
code('setClipboardTextAndHtml', 'text', 'html');

define('getTargetText', 'void *', ['record', 'window'], ownedText);
define('freeTextResult', 'void', ['out'], () => undefined);
answer('isTargetEmpty', 'record', 'window');
answer('targetContainsText', 'record', 'window', 'text');
answer('targetContainsPartialText', 'record', 'window', 'text');
code('waitForFieldChange', 'record', 'window', 'text', 'int');
code('waitForFieldEmpty', 'record', 'window', 'int');
code('waitForTargetContainsPartialText', 'record', 'window', 'text', 'int');
code('waitForTargetContainsText', 'record', 'window', 'text', 'int');
// Whether the focused field's text matches.
define('verifySimple', 'int', ['text', 'window'], (result, name) => {
  if (result !== Code.OK && result !== Code.NOT_FOUND) throw new KorvaneError(name, result);
  return result === Code.OK;
});

define('findWindowByClick', 'uintptr_t', [], (window) => window || null);
code('getWindowInfo', 'window', 'out');
none('startCancelMonitor');
none('stopCancelMonitor');
answer('isCancelled');

// ---- What returns more than a code ----

const raw = { ...exports };

exports.captureTargetAtPoint = (x, y) => {
  const record = new TargetRecord();
  raw.captureTargetAtPoint(record, x, y);
  return record;
};

exports.captureTargetAtCursor = () => {
  const record = new TargetRecord();
  raw.captureTargetAtCursor(record);
  return record;
};

exports.getWindowInfo = (window) => {
  const bytes = Buffer.alloc(koffi.sizeof(InfoLayout));
  raw.getWindowInfo(window, bytes);
  return { title: textAt(bytes, INFO.title, 256), processName: textAt(bytes, INFO.processName, 256), window };
};

/** Opens the log (without a path: in the user's local application data folder), runs `action` and cleans up. */
exports.withSession = (logPath, action) => {
  exports.initializeLog(logPath);
  try {
    exports.initializeAutomation();
    return action();
  } finally {
    exports.cleanupAutomation();
  }
};

/** Watches the Escape key while `action` runs. */
exports.withCancelMonitor = (action) => {
  exports.startCancelMonitor();
  try {
    return action();
  } finally {
    exports.stopCancelMonitor();
  }
};

Object.assign(exports, { Code, Method, KEY_CTRL_A, KorvaneError, TargetRecord, layouts: { RecordLayout, InfoLayout } });
