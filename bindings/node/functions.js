/**
 * The 54 functions of korvane.h under their own names, records, and errors.
 *
 * What answers a result code there returns nothing here and throws a KorvaneError unless it is OK; what answers yes or no
 * returns a boolean. Windows are numbers; null stands for none. Lone surrogates pass in both directions; a text with a NUL,
 * which would be cut off there, is a TypeError. These calls block the event loop: Session of session.js makes them in a
 * thread of its own.
 *
 * The library is the file that KORVANE_LIBRARY names, else korvane.dll beside this file or in the unpacked package.
 */
'use strict';

const fs = require('fs');
const os = require('os');
const path = require('path');
const util = require('util');
const koffi = require('koffi');

const Code = Object.freeze({ OK: 0, NOT_FOUND: -1, INVALID_ARGUMENT: -2, FAILED: -3, CANCELLED: -4 });
const Method = Object.freeze({ UNDECIDED: -1, AUTOMATION_ID: 0, COORDINATES: 2, TREE_PATH: 3 });
const KEY_CTRL_A = 9999;

// ---- Errors ----

const LOG_LINES = 8;
const LOG_BYTES = 8192;
// The log that is open, for the errors.
let logPath = null;

/** The last lines of the open log: after a failure, those that tell why. */
function lastLogLines() {
  if (logPath === null) return [];
  let file;
  try {
    file = fs.openSync(logPath, 'r');
    const { size } = fs.fstatSync(file);
    const bytes = Buffer.alloc(Math.min(size, LOG_BYTES));
    fs.readSync(file, bytes, 0, bytes.length, size - bytes.length);
    const lines = bytes.toString('latin1').split('\r\n').filter((line) => line !== '');
    return lines.slice(bytes.length < size ? 1 : 0).slice(-LOG_LINES);
  } catch {
    return []; // an error about the log would hide the one that is being told
  } finally {
    if (file !== undefined) fs.closeSync(file);
  }
}

/** A function answered a code other than OK. */
class KorvaneError extends Error {
  constructor(functionName, code, log = lastLogLines(), details = undefined) {
    const name = Object.keys(Code).find((each) => Code[each] === code);
    super(`${functionName}: ${details ?? name ?? code}`);
    this.name = new.target.name;
    this.functionName = functionName;
    this.code = code;
    this.log = log;
  }
}
class NotFoundError extends KorvaneError {}
class InvalidArgumentError extends KorvaneError {}
class FailedError extends KorvaneError {}
class CancelledError extends KorvaneError {}

const ERRORS = {
  [Code.NOT_FOUND]: NotFoundError,
  [Code.INVALID_ARGUMENT]: InvalidArgumentError,
  [Code.FAILED]: FailedError,
  [Code.CANCELLED]: CancelledError,
};

function errorOf(functionName, code, log, details) {
  return new (ERRORS[code] ?? KorvaneError)(functionName, code, log, details);
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

const RECORD_FIELDS = {
  automationId: koffi.array('uint16_t', 256),
  hwnd: 'uintptr_t',
  x: 'int32_t',
  y: 'int32_t',
  identificationMethod: 'int32_t',
  pathLength: 'int32_t',
  controlTypes: koffi.array('int32_t', 20),
  classNames: koffi.array('uint16_t', 20 * 64),
  childIndices: koffi.array('int32_t', 20),
};
const INFO_FIELDS = {
  title: koffi.array('uint16_t', 256),
  processName: koffi.array('uint16_t', 256),
  window: 'uintptr_t',
};
const RecordLayout = koffi.struct(RECORD_FIELDS);
const InfoLayout = koffi.struct(INFO_FIELDS);

function offsetsOf(layout, fields) {
  return Object.freeze(Object.fromEntries(Object.keys(fields).map((name) => [name, koffi.offsetof(layout, name)])));
}
const RECORD = offsetsOf(RecordLayout, RECORD_FIELDS);
const INFO = offsetsOf(InfoLayout, INFO_FIELDS);

function writeText(bytes, offset, size, text) {
  const written = Buffer.from(text, 'utf16le');
  if (written.length >= 2 * size) throw new TypeError(`korvane: a text is longer than ${size - 1} units`);
  written.copy(bytes, offset);
}

// A text in a recording: a string, or units as hexadecimal numbers where a string would not bring back every one.
const textFromJson = (value) =>
  typeof value === 'string' ? value : String.fromCharCode(...value.units.map((unit) => parseInt(unit, 16)));

const METHOD_WORDS = {
  undecided: Method.UNDECIDED,
  'automation-id': Method.AUTOMATION_ID,
  coordinates: Method.COORDINATES,
  'tree-path': Method.TREE_PATH,
};

/** A captured element. `bytes` is what a host stores; `new TargetRecord(bytes)` reads it again. */
class TargetRecord {
  constructor(bytes = Buffer.alloc(TargetRecord.SIZE)) {
    if (ArrayBuffer.isView(bytes) && !Buffer.isBuffer(bytes)) {
      bytes = Buffer.from(bytes.buffer, bytes.byteOffset, bytes.byteLength);
    }
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
  /** Whether the other is a record of the same bytes. */
  equals(other) { return other instanceof TargetRecord && this.bytes.equals(other.bytes); }
  toJSON() {
    const { automationId, hwnd, x, y, identificationMethod, path: levels } = this;
    return { automationId, hwnd, x, y, identificationMethod, path: levels };
  }
  [util.inspect.custom](_, options) { return `TargetRecord ${util.inspect(this.toJSON(), options)}`; }

  /** The record of a step's `target` in a recording of the companion program. */
  static fromRecording(json) {
    const record = new TargetRecord();
    const { bytes } = record;
    const method = METHOD_WORDS[json.identificationMethod] ?? json.identificationMethod;
    writeText(bytes, RECORD.automationId, 256, textFromJson(json.automationId));
    bytes.writeBigUInt64LE(BigInt(`0x${json.hwnd}`), RECORD.hwnd);
    bytes.writeInt32LE(json.x, RECORD.x);
    bytes.writeInt32LE(json.y, RECORD.y);
    bytes.writeInt32LE(method, RECORD.identificationMethod);
    bytes.writeInt32LE(json.pathLength, RECORD.pathLength);
    if (json.levels.length > 20) throw new TypeError('korvane: a record has at most 20 levels');
    json.levels.forEach((level, i) => {
      bytes.writeInt32LE(level.controlType, RECORD.controlTypes + 4 * i);
      writeText(bytes, RECORD.classNames + 128 * i, 64, textFromJson(level.className));
      bytes.writeInt32LE(level.childIndex, RECORD.childIndices + 4 * i);
    });
    return record;
  }
}
TargetRecord.SIZE = koffi.sizeof(RecordLayout);

// ---- The library ----

function findLibrary() {
  // A whole path always: a bare name would be looked for in the current folder, too.
  if (process.env.KORVANE_LIBRARY) return path.resolve(process.env.KORVANE_LIBRARY);
  if (process.platform !== 'win32' || process.arch !== 'x64') {
    throw new Error('korvane is for 64-bit Windows; elsewhere KORVANE_LIBRARY can name what stands in for it');
  }
  const places = [path.join(__dirname, 'korvane.dll'), path.join(__dirname, '..', '..', 'bin', 'korvane.dll')];
  const found = places.find((place) => fs.existsSync(place));
  if (!found) throw new Error('korvane.dll is neither beside functions.js nor in the package; KORVANE_LIBRARY can name it');
  return found;
}

const library = koffi.load(findLibrary());

function recordBytes(record) {
  if (record === null) return null;
  if (!(record instanceof TargetRecord)) throw new TypeError('korvane: a TargetRecord is needed');
  return record.bytes;
}

// How a parameter of each type is written in C, and what becomes of its value.
const PARAMETERS = {
  record: ['void *', recordBytes],
  window: ['uintptr_t', (window) => window ?? 0],
  text: ['const void *', units],
  html: ['const void *', utf8],
  int: ['int', (value) => value],
  int64: ['int64_t', (value) => value],
  flag: ['int', (value) => (value ? 1 : 0)],
  out: ['void *', (bytes) => bytes],
};

function done(code, name) {
  if (code !== Code.OK) throw errorOf(name, code);
}

function yesOrNo(answer, name) {
  if (answer < 0) throw errorOf(name, answer);
  return answer === 1;
}

function ownedText(pointer) {
  if (pointer === null) return null;
  try {
    const codes = koffi.decode(pointer, 'char16_t', -1);
    return typeof codes === 'string' ? codes : String.fromCharCode(...codes);
  } finally {
    freeTextResult(pointer);
  }
}

function define(name, result, parameters, finish = (value) => value) {
  const kinds = parameters.map((parameter) => PARAMETERS[parameter]);
  const call = library.func(name, result, kinds.map(([type]) => type));
  exports[name] = (...values) => finish(call(...kinds.map(([, convert], i) => convert(values[i]))), name);
}

const freeTextResult = library.func('freeTextResult', 'void', ['void *']);
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
code('pasteToTargetDirect', 'record', 'window', 'text', 'flag');
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
answer('isTargetEmpty', 'record', 'window');
answer('targetContainsText', 'record', 'window', 'text');
answer('targetContainsPartialText', 'record', 'window', 'text');
code('waitForFieldChange', 'record', 'window', 'text', 'int');
code('waitForFieldEmpty', 'record', 'window', 'int');
code('waitForTargetContainsPartialText', 'record', 'window', 'text', 'int');
code('waitForTargetContainsText', 'record', 'window', 'text', 'int');
// Whether the focused field's text matches.
define('verifySimple', 'int', ['text', 'window'], (result, name) => {
  if (result !== Code.OK && result !== Code.NOT_FOUND) throw errorOf(name, result);
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

/**
 * Here for completeness: a text of getTargetText is a string, given back to the library when it was made.
 */
exports.freeTextResult = (text) => {
  if (text !== null && text !== undefined && typeof text !== 'string') throw new TypeError('korvane: a text is needed');
};

exports.initializeLog = (file = null) => {
  raw.initializeLog(file);
  const usual = path.join(process.env.LOCALAPPDATA ?? os.tmpdir(), 'Tavrin', 'automation_execution.log');
  logPath = path.resolve(file || usual);
};

exports.cleanupAutomation = () => {
  raw.cleanupAutomation();
  logPath = null;
};

exports.getWindowInfo = (window) => {
  const bytes = Buffer.alloc(koffi.sizeof(InfoLayout));
  raw.getWindowInfo(window, bytes);
  return { title: textAt(bytes, INFO.title, 256), processName: textAt(bytes, INFO.processName, 256), window };
};

// Runs `action`, then `after`, also when it fails; waits for a promise before `after`.
function finallyDo(action, after) {
  let result;
  try {
    result = action();
  } catch (error) {
    after();
    throw error;
  }
  if (typeof result?.then === 'function') return Promise.resolve(result).finally(after);
  after();
  return result;
}

/**
 * Opens the log (without a path: in the user's local application data folder), runs `action` and cleans up, when `action`
 * is asynchronous after what it promises.
 */
exports.withSession = (file, action) => {
  exports.initializeLog(file);
  return finallyDo(() => {
    exports.initializeAutomation();
    return action();
  }, exports.cleanupAutomation);
};

/** Watches the Escape key while `action` runs, when it is asynchronous until what it promises. */
exports.withCancelMonitor = (action) => {
  exports.startCancelMonitor();
  return finallyDo(action, exports.stopCancelMonitor);
};

Object.assign(exports, {
  Code, Method, KEY_CTRL_A, KorvaneError, NotFoundError, InvalidArgumentError, FailedError, CancelledError, TargetRecord,
  layouts: { RecordLayout, InfoLayout },
});
// For the other files of this package.
Object.defineProperty(exports, 'internals', { value: { library, units, errorOf } });
