// What is asked of the system itself: windows by name, and the user's double click. Off Windows, what stands in for the
// library answers.
'use strict';

const koffi = require('koffi');
const { getWindowInfo, internals } = require('./functions');

const system = process.platform === 'win32' ? koffi.load('user32.dll') : internals.library;
const nextWindow = system.func('uintptr_t FindWindowExW(uintptr_t parent, uintptr_t after, const void *name, const void *title)');
const isVisible = process.platform === 'win32' ? system.func('int IsWindowVisible(uintptr_t window)') : () => 1;

const USUAL_DOUBLE_CLICK_MS = 500;
const doubleClickTime = process.platform === 'win32' ? system.func('unsigned int GetDoubleClickTime()') : () => USUAL_DOUBLE_CLICK_MS;

const matches = (wanted, text) => wanted === undefined || (wanted instanceof RegExp ? wanted.test(text) : wanted === text);

/** The visible top-level windows that have the title, the class and the process that are given, frontmost first. */
exports.findWindows = ({ title, className, process: program }) => {
  const found = [];
  const name = internals.units(className ?? null);
  for (let window = nextWindow(0, 0, name, null); window !== 0; window = nextWindow(0, window, name, null)) {
    if (!isVisible(window)) continue;
    const info = getWindowInfo(window);
    const sameProgram = program === undefined || program.toLowerCase() === info.processName.toLowerCase();
    if (sameProgram && matches(title, info.title)) found.push(window);
  }
  return found;
};

/** Within so many milliseconds two clicks at one place are a double click. */
exports.doubleClickMs = () => doubleClickTime();
