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

class Node final : public Dialect {
 public:
  std::string Target(const std::string& name, std::size_t number) const override {
    return "await step(" + (name.empty() ? std::to_string(number) : Quoted(name)) + ")";
  }
  std::string Text(const std::string& text) const override {
    return Joined(text, Quoted, Variable);
  }
  std::string Click(const std::string& target) const override {
    return "await (" + target + ").click();";
  }
  std::string DoubleClick(const std::string& target) const override {
    return "await doubleClick(" + target + ");";
  }
  std::string Empty(const std::string& target) const override {
    return "await empty(" + target + ");";
  }
  std::string Type(const std::string& target, const std::string& text) const override {
    return "await (" + target + ").type(" + text + ");";
  }
  std::string Paste(const std::string& target, const std::string& text) const override {
    return "await (" + target + ").paste(" + text + ", { timeoutMs: TIMEOUT_MS });";
  }
  std::string Expect(const std::string& target, const std::string& text, Match match,
                     std::optional<int> timeoutMs) const override {
    std::string options = match == Match::Equals ? "exact: true" : "";
    if (timeoutMs) {
      options += std::string(options.empty() ? "" : ", ") +
                 "timeoutMs: " + (*timeoutMs == 0 ? "TIMEOUT_MS" : std::to_string(*timeoutMs));
    }
    return "await expect(" + target + ", " + text + (options.empty() ? ");" : ", { " + options + " });");
  }
  std::string Focus(const WindowName& window) const override {
    return "await (await " + WindowOf(window) + ").focus();";
  }
  std::string Send(const std::string& sender, int key, const std::string& keys) const override {
    return sender.empty() ? "await session.call('sendKey', " + std::to_string(key) + "); // " + keys
                          : "await session.call('" + sender + "');";
  }
  std::vector<std::string> Read(const std::string& target, const std::string& variable) const override {
    return {Variable(variable) + " = await read(" + target + ");",
            "console.log(" + Quoted(variable + " =") + ", " + Variable(variable) + ");"};
  }
};

}  // namespace

std::string ExportedNode(const ExportedProgram& program) {
  return Filled(kProgram, {{"RECORDING", Quoted(program.file)},
                           {"GIVEN", Listed(program.given, Quoted)},
                           {"SECRETS", Listed(program.secrets, Quoted)},
                           {"STEPS", StepsIn(Node(), program, "  ")}});
}

}  // namespace host
