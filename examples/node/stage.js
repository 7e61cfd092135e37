// The order form to automate: stage.dll of the package, or what KORVANE_STAGE names. Hosts do not need it.
'use strict';

const path = require('path');
const koffi = require('koffi');

const library = koffi.load(path.resolve(process.env.KORVANE_STAGE || path.join(__dirname, '..', 'stage', 'stage.dll')));
const open = library.func('int stageOpenForm(int x, int y)');
const formWindow = library.func('uintptr_t stageFormWindow()');
const centre = library.func('int stageCentreOf(int control, _Out_ int32_t *x, _Out_ int32_t *y)');

// On the scripted desktop a session, which calls from a thread of its own, needs the machine's time.
if (process.platform !== 'win32') library.func('void stageUseRealTime()')();

exports.Control = { NAME: 101, ARTICLE: 201, NOTE: 202, SUBMIT: 301, STATUS: 401 };

exports.openForm = (x, y) => {
  if (open(x, y) !== 0) throw new Error('the order form does not come up');
  return formWindow();
};

exports.closeForm = library.func('void stageCloseForm()');

exports.centreOf = (control) => {
  const [x, y] = [[0], [0]];
  if (centre(control, x, y) !== 0) throw new Error(`no control ${control}`);
  return [x[0], y[0]];
};
