#include "host/export/program.h"

namespace host {

namespace {

constexpr const char* kProgram =
    R"(// Does what the recording beside this file says, which also tells where everything is.
//
//     node PROGRAM.js NAME=VALUE ...
'use strict';

const assert = require('assert');
const path = require('path');
const { setTimeout: sleep } = require('timers/promises');
const { NotFoundError, Session } = require('korvane');

const RECORDING = path.join(__dirname, @RECORDING@);
const GIVEN = [@GIVEN@];
const SECRETS = [@SECRETS@]; // from environment variables of these names
const TIMEOUT_MS = 3000; // for windows, elements and texts

/** The steps. `values` has what was given, and gets what is read. */
async function run(session, values) {
  const step = (name) => target(session, name);

@STEPS@}

/** What a step of the recording acts on, as soon as it is there. */
async function target(session, name) {
  const found = await session.targetOfStep(RECORDING, name, { timeoutMs: TIMEOUT_MS });
  const end = Date.now() + TIMEOUT_MS;
  for (;;) {
    await session.call('clearElementCache');
    try {
      await session.call('verifyTarget', found.record, found.window.handle);
      return found;
    } catch (error) {
      if (!(error instanceof NotFoundError) || Date.now() >= end) throw error;
      await sleep(50);
    }
  }
}

/** Asserts that it shows the text, or when `exact` nothing else, within so many milliseconds. */
async function expect(element, text, { exact = false, timeoutMs = 0 } = {}) {
  const end = Date.now() + timeoutMs;
  for (;;) {
    const shown = await element.text();
    if (shown !== null && (exact ? shown === text : shown.includes(text))) return;
    if (Date.now() >= end) assert.fail(`${JSON.stringify(shown)} is shown, not ${JSON.stringify(text)}`);
    await sleep(50);
  }
}

async function read(element) {
  const text = await element.text();
  assert.notStrictEqual(text, null, 'no text is shown');
  return text;
}

async function empty(element) {
  await element.click();
  await element.window.session.call('sendCtrlA');
  await element.window.session.call('sendKey', 0x2E); // Delete
}

async function doubleClick(element) {
  await element.click();
  await element.window.session.call('clickTarget', element.record, element.window.handle);
}

async function main() {
  const values = {};
  for (const argument of process.argv.slice(2)) {
    const [name, ...value] = argument.split('=');
    values[name] = value.join('=');
  }
  for (const name of SECRETS) values[name] = process.env[name];
  const missing = [...GIVEN, ...SECRETS].filter((name) => values[name] === undefined);
  if (missing.length > 0) throw new Error(`no value for ${missing.join(', ')}`);
  await Session.use({ log: 'korvane.log' }, async (session) => {
    await session.watchEscape();
    await run(session, values);
  });
}

main().catch((error) => {
  console.error(error);
  process.exitCode = 1;
});
)";

std::string Variable(const std::string& name) {
  return "values[" + Quoted(name) + "]";
}

std::string WindowOf(const WindowName& window) {
  return "session.window({ " + (window.title.empty() ? "" : "title: " + Quoted(window.title) + ", ") +
         (window.className.empty() ? "" : "className: " + Quoted(window.className) + ", ") +
         (window.process.empty() ? "" : "process: " + Quoted(window.process) + ", ") + "timeoutMs: TIMEOUT_MS })";
}

std::string Expected(const std::string& target, const std::string& text, bool exact, const std::string& timeout) {
  std::string options = exact ? "exact: true" : "";
  options += timeout.empty() ? "" : (options.empty() ? "timeoutMs: " : ", timeoutMs: ") + timeout;
  return "await expect(" + target + ", " + text + (options.empty() ? ");" : ", { " + options + " });");
}

std::vector<std::string> Statements(const ExportedProgram& program, std::size_t index) {
  const Step& step = program.recording.steps[index];
  const std::string name = UniqueName(program, index);
  const std::string target = "await step(" + (name.empty() ? std::to_string(index + 1) : Quoted(name)) + ")";
  const std::string text = Joined(step.text, Quoted, Variable);
  const bool exact = step.match == Match::Equals;
  std::vector<std::string> lines;
  switch (step.action) {
    case Action::Click:
      return {"await (" + target + ").click();"};
    case Action::DoubleClick:
      return {"await doubleClick(" + target + ");"};
    case Action::Paste:
    case Action::Type: {
      if (step.replace) {
        lines.push_back("await empty(" + target + ");");
      }
      // Everybody can read the clipboard.
      const bool typed = step.action == Action::Type || HasSecret(step.text);
      if (!step.text.empty()) {
        lines.push_back("await (" + target + (typed ? ").type(" : ").paste(") + text +
                        (typed ? ");" : ", { timeoutMs: TIMEOUT_MS });"));
      }
      if (step.replace && !HasSecret(step.text) && !step.text.empty()) {
        lines.push_back(Expected(target, text, true, "TIMEOUT_MS"));
      }
      return lines;
    }
    case Action::Shortcut: {
      lines.push_back(step.hasTarget
                          ? "await (" + target + ").click();"
                          : "await (await " + WindowOf(program.recording.windows[step.window]) + ").focus();");
      const std::string sender = SenderOf(step.text);
      lines.push_back(sender.empty()
                          ? "await session.call('sendKey', " + std::to_string(KeyOf(step.text)) + "); // " + step.text
                          : "await session.call('" + sender + "');");
      return lines;
    }
    case Action::Wait:
      return {Expected(target, text, exact, step.timeoutMs == 0 ? "TIMEOUT_MS" : std::to_string(step.timeoutMs))};
    case Action::Check:
      return {Expected(target, text, exact, "")};
    case Action::Read:
      break;
  }
  return {Variable(step.text) + " = await read(" + target + ");",
          "console.log(" + Quoted(step.text + " =") + ", " + Variable(step.text) + ");"};
}

}  // namespace

std::string ExportedNode(const ExportedProgram& program) {
  std::string steps;
  for (std::size_t i = 0; i < program.recording.steps.size(); ++i) {
    for (const std::string& line : Statements(program, i)) {
      steps += "  " + line + "\n";
    }
  }
  return Filled(kProgram, {{"RECORDING", Quoted(program.file)},
                           {"GIVEN", Listed(program.given, Quoted)},
                           {"SECRETS", Listed(program.secrets, Quoted)},
                           {"STEPS", steps}});
}

}  // namespace host
