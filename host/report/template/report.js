"use strict";
// The data come in blocks, written as the replay went on: how it began, then rows, pictures and steps as they came, and
// how it ended. When the program was ended from outside, the last ones are missing, and one may be cut.
function readBlocks() {
  const data = { runs: [], pictures: [], ended: false };
  for (const block of document.querySelectorAll('script[type="application/json"]')) {
    let part;
    try {
      part = JSON.parse(block.textContent);
    } catch {
      continue;
    }
    if (part.begin) Object.assign(data, part.begin);
    if (part.run) data.runs.push({ ...part.run, steps: [] });
    if (part.picture) data.pictures.push(part.picture);
    if (part.step) data.runs.at(-1).steps.push(part.step);
    if (part.end) Object.assign(data, part.end, { ended: true });
  }
  for (const run of data.runs) {
    for (const step of data.steps.slice(run.from + run.steps.length)) run.steps.push({ ...step, state: "not run" });
  }
  const last = data.runs.at(-1)?.steps.findLast((step) => step.milliseconds !== undefined);
  data.milliseconds ??= last ? last.start + last.milliseconds : 0;
  return data;
}

document.addEventListener("DOMContentLoaded", () => {
  const data = readBlocks();
  const byId = (id) => document.getElementById(id);
  const search = byId("search");
  const state = byId("state");
  const inOrder = byId("in-order");
  const openAll = byId("open-all");

  const make = (tag, className, text) => {
    const element = document.createElement(tag);
    if (className) element.className = className;
    if (text !== undefined) element.textContent = text;
    return element;
  };
  const duration = (ms) => (ms < 1000 ? ms.toFixed(1) + " ms" : (ms / 1000).toFixed(2) + " s");
  // What is longer would keep the page from opening.
  const LONGEST = 300;
  const cut = (text) => (text.length > LONGEST ? text.slice(0, LONGEST) + "… (" + text.length + " characters)" : text);
  const plural = (count, word) => count + " " + word + (count === 1 ? "" : "s");
  const together = (pieces) => pieces.filter(Boolean).join(" · ");
  const classOf = (step) => step.state.replace(" ", "-");
  const timeOf = (entries) => entries.reduce((sum, entry) => sum + (entry.step.milliseconds || 0), 0);
  // Not by lower case: some letters change their length with it, and marks would be out of place.
  const matcher = (needle) => new RegExp(needle.replace(/[.*+?^${}()|[\]\\]/g, "\\$&"), "giu");

  // One entry per step of each run, in order of time; `card` and `bar` are its two places on the page.
  const entries = data.runs.flatMap((run) => run.steps.map((step) => ({ run, step, open: step.state === "failed" })));
  const ownOf = new Map(data.runs.map((run) => [run, []]));
  for (const entry of entries) ownOf.get(entry.run).push(entry);
  const ran = entries.filter((entry) => entry.step.state !== "not run");
  const failed = entries.filter((entry) => entry.step.state === "failed");
  const healed = entries.filter((entry) => entry.step.state === "healed");
  const LONG_RUN = 100;
  document.body.classList.toggle("long", entries.length > LONG_RUN);
  let shown = [];
  let current = null;
  let needle = null;
  let revealed = new Set();  // opened by the search

  function drawHead() {
    const name = data.file.replace(/^.*[\\/]/, "");
    const cancelled = failed.some((entry) => entry.step.words === "cancelled");
    const verdict = !data.ended ? "ended from outside" : cancelled ? "cancelled" : failed.length ? plural(failed.length, "failure")
      : healed.length ? "passed, " + healed.length + " healed" : "all steps passed";
    document.title = (!data.ended ? "Ended: " : cancelled ? "Cancelled: " : failed.length ? "Failed: " : healed.length ? "Healed: " : "Passed: ") + name;
    byId("title").textContent = name;
    byId("verdict").textContent = verdict;
    byId("verdict").classList.toggle("failed", failed.length > 0 || !data.ended);
    byId("verdict").classList.toggle("healed", failed.length === 0 && healed.length > 0);
    const bad = new Set(failed.map((entry) => entry.run)).size;
    byId("about").textContent = together([
      plural(ran.length, "step") + " in " + duration(data.milliseconds) + (data.dryRun ? " (dry run: nothing was done)" : ""),
      data.row ? "begun with " + data.row : "",
      data.from > 1 ? "begun with step " + data.from : "",
      ran.length < entries.length ? entries.length - ran.length + " not run" : "",
      data.runs.length > 1 ? plural(data.runs.length, "run") + ", " + (bad ? bad + " failed" : "all passed") : "",
      failed.length && healed.length ? healed.length + " healed" : "",
      data.rowsLeft ? plural(data.rowsLeft, "row") + " not begun" : "",
      data.windows.join(", "),
      data.time,
    ]);
    const list = byId("facts").querySelector("dl");
    for (const [what, which] of [...data.facts, ["Exit code", data.exitCode ?? "none: the program was ended from outside, and the report ends there"]]) {
      if (which !== "") list.append(make("dt", "", what), make("dd", "", which));
    }
  }

  // The rows that failed come first.
  function drawRows() {
    if (data.runs.length < 2) return;
    const rows = data.runs.map((run) => ({ run, own: ownOf.get(run) }));
    const stateOf = ({ own }) => ["failed", "healed", "ok"].find((word) => own.some(({ step }) => step.state === word));
    rows.sort((a, b) => (stateOf(b) === "failed") - (stateOf(a) === "failed"));
    const names = data.runs[0].values.map(([name]) => name);
    const line = (tag, texts) => {
      const row = make("tr");
      row.append(...texts.map((text) => make(tag, "", text)));
      return row;
    };
    const table = byId("rows").querySelector("table");
    table.append(line("th", ["row", "outcome", "steps", "time", ...names]));
    for (const { run, own } of rows) {
      const first = own.find(({ step }) => step.state === "failed") ?? own[0];
      const done = own.filter(({ step }) => step.state === "ok" || step.state === "healed").length;
      const cells = line("td", ["", stateOf({ own }) ?? "not run", done + " of " + own.length,
        duration(timeOf(own)), ...run.values.map(([, value]) => cut(value))]);
      const link = make("button", "link", run.name);
      link.type = "button";
      link.addEventListener("click", () => reveal(first));
      cells.className = classOf(first.step);
      cells.firstChild.append(link);
      cells.children[1].className = "words";
      table.append(cells);
    }
    byId("rows").hidden = false;
    byId("rows").open = data.runs.length <= 12;
    byId("rows").querySelector("summary").textContent = plural(data.runs.length, "row");
  }

  // The film: what a step began with, while the mouse is over its bar.
  function preview(entry) {
    const picture = entry?.step.before ?? entry?.step.after;
    byId("preview").hidden = !picture;
    if (!picture) return;
    byId("preview").replaceChildren(drawFrame(picture, ""), make("figcaption", "", entry.step.number + " " + entry.step.title));
  }

  // Runs share one scale, so that a slow one looks slow.
  function drawTimeline() {
    const longest = Math.max(...data.runs.map((run) => timeOf(ownOf.get(run))));
    for (const run of data.runs) {
      const steps = ownOf.get(run);
      const total = timeOf(steps);
      const line = make("div", "run");
      const bars = make("div", entries.length > LONG_RUN ? "bars dense" : "bars");
      bars.style.width = (longest > 0 ? Math.max(10, (100 * total) / longest) : 100) + "%";
      for (const entry of steps) {
        const { step } = entry;
        const bar = make("button", classOf(step));
        bar.append(make("span", "", step.number));
        bar.type = "button";
        bar.tabIndex = -1;
        if (step.milliseconds !== undefined) bar.style.flexGrow = step.milliseconds;
        const outcome = step.words ? step.words + ", " + duration(step.milliseconds) : "not run";
        bar.title = together([run.name, step.number + " " + step.title + ": " + outcome]);
        bar.setAttribute("aria-label", bar.title);
        bar.addEventListener("click", () => reveal(entry));
        bar.addEventListener("mouseenter", () => preview(entry));
        bar.addEventListener("mouseleave", () => preview(null));
        entry.bar = bar;
        bars.append(bar);
      }
      if (run.name) line.append(make("span", "run-name", run.name));
      const track = make("div", "track");
      track.append(bars);
      line.append(track, make("span", "total", duration(total)));
      byId("timeline").append(line);
    }
  }

  function place(className, box) {
    const mark = make("div", className);
    for (const side of ["left", "top", "width", "height"]) mark.style[side] = (box[side] || 0) + "%";
    return mark;
  }

  // Of most pictures only what differs from one before is kept, and laid over that.
  function drawFrame(picture, alt) {
    const frame = make("div", "picture");
    const image = make("img");
    image.src = data.pictures[picture.index];
    image.width = picture.width;
    image.height = picture.height;
    image.alt = alt;
    frame.append(image);
    if (picture.patch) {
      const patch = make("img", "patch");
      patch.src = data.pictures[picture.patch.index];
      patch.alt = "";
      for (const side of ["left", "top", "width", "height"]) patch.style[side] = picture.patch[side] + "%";
      frame.append(patch);
    }
    return frame;
  }

  const looksLike = (left, right) => left?.index === right?.index && left?.patch?.index === right?.patch?.index;

  function drawPicture(picture, alt, caption) {
    const figure = make("figure");
    const frame = drawFrame(picture, alt);
    if (picture.mark) frame.append(place("mark", picture.mark));
    if (picture.recorded) frame.append(place("mark recorded", picture.recorded));
    if (picture.aim) frame.append(place("aim", picture.aim));
    figure.append(frame, make("figcaption", "", caption));
    return figure;
  }

  function drawPictures({ step, run }) {
    const pictures = make("div", "pictures");
    const next = run.steps[run.steps.indexOf(step) + 1];
    const { before } = step;
    if (before) {
      pictures.append(drawPicture(before, "Before: " + step.title, "Before the step"
        + (before.aim ? ": the target is marked, and the point of the click." : before.mark ? ": the target is marked." : ".")));
    }
    // What a step led to is what the next one began with.
    const after = step.after ?? next?.before;
    if (after && !looksLike(after, before)) {
      const { mark, recorded, index, width, height, patch } = after;
      const where = before || !step.hasTarget ? "."
        : mark ? ": the target is marked."
        : recorded ? ": the target was not found; the dashed ring is where it was recorded."
        : ": the target was not found, and its recorded place is outside this picture.";
      pictures.append(drawPicture(step.after ?? { index, width, height, patch }, "After: " + step.title,
        (step.after ? "After the step" : "After the step, as the next one began") + where));
    } else if (after) {
      pictures.append(make("p", "same", "After the step it looked the same."));
    }
    if (step.screen) {
      const screen = make("details");
      screen.append(make("summary", "", "The whole screen when it failed"),
        drawPicture(step.screen, "The whole screen after: " + step.title, "All monitors, after the step."));
      pictures.append(screen);
    }
    return pictures;
  }

  // The part in which two texts differ, with a little before it.
  function drawComparison(step) {
    const expected = step.expected;
    const received = step.received ?? "";
    let begin = 0;
    while (begin < expected.length && expected[begin] === received[begin]) ++begin;
    let end = 0;
    while (end < Math.min(expected.length, received.length) - begin && expected.at(-1 - end) === received.at(-1 - end)) ++end;
    const table = make("table", "comparison");
    for (const [what, text] of [["expected", expected], ["received", step.received]]) {
      const cell = make("td");
      if (text === null) {
        cell.append(make("em", "", "no text could be read"));
      } else {
        const from = Math.max(0, begin - 40);
        const different = text.slice(begin, text.length - end);
        cell.append((from > 0 ? "…" : "") + text.slice(from, begin), make("ins", "", cut(different)),
          cut(text.slice(text.length - end)));
      }
      const row = make("tr");
      row.append(make("th", "", what), cell);
      table.append(row);
    }
    return table;
  }

  function drawCopy(label, text) {
    const button = make("button", "copy", label);
    button.type = "button";
    button.addEventListener("click", async () => {
      await navigator.clipboard.writeText(text);
      button.textContent = "copied";
      setTimeout(() => { button.textContent = label; }, 1500);
    });
    return button;
  }

  // The same command once more, from here on.
  function commandFrom(step) {
    const options = /the same command with ([^.]*)\./u.exec(step.explanation ?? "")?.[1];
    const command = data.facts.find(([what]) => what === "Command")?.[1];
    return options && command && command.replace(/ --(?:row|from)[ =]\d+/gu, "") + " " + options;
  }

  function drawAttempts(step) {
    const list = make("ul", "attempts");
    for (const [by, what, why] of step.attempts ?? []) {
      list.append(make("li", "", by + ": " + what + (why ? ": " + why : "")));
    }
    return list;
  }

  // Each is marked in the picture while the mouse or the focus is on it.
  function drawCandidates(step, pictures) {
    const part = make("div", "candidates");
    part.append(make("h2", "", "What is there of this kind, the nearest first"));
    const list = make("ol");
    for (const { what, difference, mark } of step.candidates) {
      const item = make("li");
      const button = make("button", "link", what);
      button.type = "button";
      const picture = pictures.querySelector(".picture");
      const box = mark && picture && place("mark candidate", mark);
      const show = () => { if (box) picture.append(box); };
      const hide = () => box?.remove();
      for (const event of ["mouseenter", "focus", "click"]) button.addEventListener(event, show);
      for (const event of ["mouseleave", "blur"]) button.addEventListener(event, hide);
      item.append(button, ": " + (difference || "as recorded"));
      list.append(item);
    }
    part.append(list);
    return part;
  }

  function drawTries(step) {
    const tries = make("div", "tries");
    step.earlier.forEach((each, index) => {
      const one = make("section");
      one.append(make("h2", "", "Try " + (index + 1) + ": " + each.words + ", " + duration(each.milliseconds)),
        make("p", "remark", each.remark || each.explanation), drawLog(each.lines));
      tries.append(one);
    });
    return tries;
  }

  function drawLog(lines) {
    const log = make("pre");
    log.tabIndex = 0;
    log.setAttribute("aria-label", "Log of the step");
    for (const line of lines) {
      const [, when, rest] = /^(\[?[\d-]+ [\d:.]+\]?(?: -)? )?(.*)$/su.exec(line);
      const row = make("span", /(^| )ERROR[ :]|FAILED/.test(rest) ? "error" : "");
      if (when) row.append(make("span", "when", when));
      row.append(rest);
      log.append(row, "\n");
    }
    return log;
  }

  function drawBody(entry) {
    const { step } = entry;
    const body = make("div", "body");
    if (step.explanation) body.append(make("p", "explanation", step.explanation));
    if (step.healing) body.append(make("p", "healing", "Healed: " + step.healing + ". Correct it with `korvane check --fix`."));
    if (!step.explanation && step.remark) body.append(make("p", "remark", cut(step.remark)));
    if (step.expected !== undefined && step.state === "failed") body.append(drawComparison(step));
    // A failure's explanation tells them.
    if (step.state === "healed" && step.attempts) body.append(drawAttempts(step));
    const copies = make("p", "copies");
    const command = commandFrom(step);
    if (command) copies.append(drawCopy("Copy the command to go on", command));
    if (step.proposal) copies.append(drawCopy("Copy the corrected target", step.proposal));
    if (copies.childNodes.length) body.append(copies);
    if (step.earlier) body.append(drawTries(step));
    const evidence = make("div", "evidence");
    const pictures = drawPictures(entry);
    if (step.candidates) body.append(drawCandidates(step, pictures));
    if (pictures.childNodes.length) evidence.append(pictures);
    if (step.lines.length) evidence.append(drawLog(step.lines));
    body.append(evidence, make("p", "began", "code " + step.code + ", begun " + duration(step.start) + " into the run"));
    return body;
  }

  function drawCard(entry) {
    const { step, run } = entry;
    const card = make("article", "step " + classOf(step));
    card.dataset.number = step.number;
    const head = make("button");
    head.type = "button";
    const name = make("span", "name", step.title);
    if (run.name) name.append(make("small", "row", run.name));
    if (step.text) name.append(make("small", "", "“" + cut(step.text) + "”"));
    const tries = step.earlier ? ", try " + (step.earlier.length + 1) : "";
    head.append(make("span", "number", step.number), name, make("span", "words", (step.words || "not run") + tries),
      make("span", "time", step.milliseconds === undefined ? "" : duration(step.milliseconds)));
    head.addEventListener("click", () => { entry.open = !entry.open; choose(entry); });
    // The body comes when it is first seen: there may be thousands.
    card.append(head);
    entry.card = card;
    byCard.set(card, entry);
    entry.head = head;
    entry.inHead = [step.title, run.name, step.text, step.words || "not run"].join("\n");
    entry.inBody = [step.explanation, step.healing, step.remark, step.expected, step.received, ...(step.lines || [])].join("\n");
  }

  const isFound = (entry) => !needle || [entry.inHead, entry.inBody].some((text) => text.search(needle) >= 0);
  const isOpen = (entry) => entry.step.state !== "not run" && (entry.open || revealed.has(entry));

  // Of a long run, an opened step has its body when it comes near the window.
  const nearby = new IntersectionObserver((seen) => {
    for (const { target, isIntersecting } of seen) {
      const entry = byCard.get(target);
      if (isIntersecting && isOpen(entry) && !entry.body) {
        fill(entry);
        highlight(entry.card);
      }
    }
  }, { rootMargin: "400px" });
  const byCard = new Map();

  function fill(entry) {
    nearby.unobserve(entry.card);
    entry.body ??= entry.card.appendChild(drawBody(entry));
  }

  // Marks what was searched for; undone by joining the pieces again.
  function highlight(card) {
    for (const mark of card.querySelectorAll("mark")) mark.replaceWith(mark.textContent);
    card.normalize();
    if (!needle) return;
    const walker = document.createTreeWalker(card, NodeFilter.SHOW_TEXT);
    const texts = [];
    while (walker.nextNode()) texts.push(walker.currentNode);
    for (const text of texts) {
      // From the last to the first, so that places before a cut stay what they were.
      for (const hit of [...text.data.matchAll(needle)].reverse()) {
        text.splitText(hit.index).splitText(hit[0].length);
        text.nextSibling.replaceWith(make("mark", "", hit[0]));
      }
    }
  }

  function apply() {
    const words = search.value.trim();
    needle = words ? matcher(words) : null;
    const isFailed = (entry) => entry.step.state === "failed";
    shown = entries.filter((entry) => isFound(entry) && (!state.value || entry.step.state === state.value));
    if (!inOrder.checked) shown = [...shown.filter(isFailed), ...shown.filter((entry) => !isFailed(entry))];
    // What was found inside must be seen; thousands of opened steps would take long, and nobody reads them.
    revealed = new Set(needle ? shown.filter((entry) => entry.inHead.search(needle) < 0).slice(0, 30) : []);
    byId("steps").replaceChildren(...shown.map((entry) => entry.card));
    byId("nothing").hidden = shown.length > 0;
    byId("count").textContent =
      shown.length === entries.length ? plural(entries.length, "step") : shown.length + " of " + plural(entries.length, "step");
    if (!shown.includes(current)) current = null;
    refresh();
    shown.forEach((entry) => highlight(entry.card));
  }

  function refresh() {
    for (const entry of entries) {
      const open = isOpen(entry);
      if (open && !entry.body) {
        if (entries.length > LONG_RUN && entry !== current) {
          nearby.observe(entry.card);
        } else {
          fill(entry);
          highlight(entry.card);
        }
      }
      entry.card.classList.toggle("open", open);
      entry.card.classList.toggle("current", entry === current);
      if (entry.step.state !== "not run") entry.head.setAttribute("aria-expanded", open);
      entry.bar.classList.toggle("current", entry === current);
    }
    openAll.textContent = ran.every((entry) => entry.open) ? "close all" : "open all";
  }

  function choose(entry) {
    current = entry;
    refresh();
    entry.head.focus({ preventScroll: true });
    entry.head.scrollIntoView({ block: "nearest" });
  }

  function reveal(entry) {
    entry.open = true;
    if (!shown.includes(entry)) {
      state.value = "";
      search.value = "";
      apply();
    }
    choose(entry);
  }

  // Of a step that ran for several rows, a link means the one that failed.
  function followLink() {
    const number = Number(/^#step-(\d+)$/.exec(location.hash)?.[1]);
    const entry = [...failed, ...entries].find(({ step }) => step.number === number);
    if (entry) reveal(entry);
  }

  function move(by) {
    if (shown.length === 0) return;
    const at = shown.indexOf(current);
    choose(shown[at < 0 ? (by > 0 ? 0 : shown.length - 1) : Math.min(shown.length - 1, Math.max(0, at + by))]);
  }

  function moveToFailure(by) {
    const bad = shown.filter((entry) => entry.step.state === "failed");
    if (bad.length === 0) return;
    const at = bad.indexOf(current);
    reveal(bad[at < 0 ? (by > 0 ? 0 : bad.length - 1) : (at + by + bad.length) % bad.length]);
  }

  function toggleAll() {
    const open = !ran.every((entry) => entry.open);
    for (const entry of ran) entry.open = open;
    refresh();
  }

  function clearSearch() {
    search.value = "";
    search.blur();
    apply();
  }

  const keys = {
    j: () => move(1), ArrowDown: () => move(1), k: () => move(-1), ArrowUp: () => move(-1),
    n: () => moveToFailure(1), p: () => moveToFailure(-1), "/": () => search.focus(), o: toggleAll, Escape: clearSearch,
  };
  const keysInSearch = { Escape: clearSearch, Enter: () => move(1), ArrowDown: () => move(1) };
  document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    // A log that has the focus scrolls with the arrows.
    if (event.target === state) return;
    if (event.target.tagName === "PRE" && event.key.startsWith("Arrow")) return;
    const act = (event.target === search ? keysInSearch : keys)[event.key];
    if (!act) return;
    act();
    event.preventDefault();
  });
  search.addEventListener("input", apply);
  state.addEventListener("change", apply);
  inOrder.addEventListener("change", apply);
  openAll.addEventListener("click", toggleAll);
  // Paper cannot be opened. Of a long run it has the failures and the rows.
  window.addEventListener("beforeprint", () => {
    for (const details of document.querySelectorAll("#facts, #rows")) details.open = true;
    const isPrinted = ({ step }) => (entries.length > LONG_RUN ? step.state === "failed" : step.state !== "not run");
    shown.filter(isPrinted).forEach(fill);
  });

  // With nothing to put right, how it ended is what one wants to see.
  if (!failed.length && ran.length) ran[ran.length - 1].open = true;
  drawHead();
  drawTimeline();
  drawRows();
  entries.forEach(drawCard);
  apply();
  followLink();
  window.addEventListener("hashchange", followLink);
});
