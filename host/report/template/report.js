"use strict";
(() => {
  const data = JSON.parse(document.getElementById("data").textContent);
  const byId = (id) => document.getElementById(id);
  const search = byId("search");
  const failedOnly = byId("failed-only");
  const inOrder = byId("in-order");
  const openAll = byId("open-all");

  const make = (tag, className, text) => {
    const element = document.createElement(tag);
    if (className) element.className = className;
    if (text !== undefined) element.textContent = text;
    return element;
  };
  const duration = (ms) => (ms < 1000 ? ms.toFixed(1) + " ms" : (ms / 1000).toFixed(2) + " s");
  const plural = (count, word) => count + " " + word + (count === 1 ? "" : "s");
  const together = (pieces) => pieces.filter(Boolean).join(" · ");
  const classOf = (step) => step.state.replace(" ", "-");
  const timeOf = (entries) => entries.reduce((sum, entry) => sum + (entry.step.milliseconds || 0), 0);
  // Not by lower case: some letters change their length with it, and marks would be out of place.
  const matcher = (needle) => new RegExp(needle.replace(/[.*+?^${}()|[\]\\]/g, "\\$&"), "giu");

  // One entry per step of each run, in order of time; `card` and `bar` are its two places on the page.
  const entries = data.runs.flatMap((run) => run.steps.map((step) => ({ run, step, open: step.state === "failed" })));
  const ran = entries.filter((entry) => entry.step.state !== "not run");
  const failed = entries.filter((entry) => entry.step.state === "failed");
  const healed = entries.filter((entry) => entry.step.state === "healed");
  let shown = [];
  let current = null;
  let needle = null;
  let revealed = new Set();  // opened by the search

  function drawHead() {
    const name = data.file.replace(/^.*[\\/]/, "");
    const cancelled = failed.some((entry) => entry.step.words === "cancelled");
    const verdict = cancelled ? "cancelled" : failed.length ? plural(failed.length, "failure")
      : healed.length ? "passed, " + healed.length + " healed" : "all steps passed";
    document.title = (cancelled ? "Cancelled: " : failed.length ? "Failed: " : healed.length ? "Healed: " : "Passed: ") + name;
    byId("title").textContent = name;
    byId("verdict").textContent = verdict;
    byId("verdict").classList.toggle("failed", failed.length > 0);
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
  }

  // Runs share one scale, so that a slow one looks slow.
  function drawTimeline() {
    const longest = Math.max(...data.runs.map((run) => timeOf(entries.filter((entry) => entry.run === run))));
    for (const run of data.runs) {
      const steps = entries.filter((entry) => entry.run === run);
      const total = timeOf(steps);
      const line = make("div", "run");
      const bars = make("div", "bars");
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

  function drawPicture(step) {
    const { picture } = step;
    const figure = make("figure");
    const frame = make("div", "picture");
    const image = make("img");
    image.src = data.pictures[picture.index];
    image.width = picture.width;
    image.height = picture.height;
    image.alt = "The window after: " + step.title;
    frame.append(image);
    const box = picture.mark || picture.recorded;
    if (box) {
      const mark = make("div", picture.mark ? "mark" : "mark recorded");
      for (const side of ["left", "top", "width", "height"]) mark.style[side] = (box[side] || 0) + "%";
      frame.append(mark);
    }
    const where = picture.mark ? "the target is marked"
      : picture.recorded ? "the target was not seen; the dashed ring is where it was recorded"
      : picture.aimless ? "" : "the target was not seen, and its recorded place is outside this picture";
    figure.append(frame, make("figcaption", "", "After the step" + (where ? ": " + where : "") + "."));
    return figure;
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

  function drawBody(step) {
    const body = make("div", "body");
    if (step.explanation) body.append(make("p", "explanation", step.explanation));
    if (step.healing) body.append(make("p", "healing", "Healed: " + step.healing + ". Correct it with `korvane check --fix`."));
    if (!step.explanation && step.remark) body.append(make("p", "remark", step.remark));
    const evidence = make("div", "evidence");
    if (step.picture) evidence.append(drawPicture(step));
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
    if (step.text) name.append(make("small", "", "“" + step.text + "”"));
    head.append(make("span", "number", step.number), name, make("span", "words", step.words || "not run"),
      make("span", "time", step.milliseconds === undefined ? "" : duration(step.milliseconds)));
    head.addEventListener("click", () => { entry.open = !entry.open; choose(entry); });
    // The body comes when it is first seen: there may be thousands.
    card.append(head);
    entry.card = card;
    entry.head = head;
    entry.inHead = [step.title, run.name, step.text, step.words || "not run"].join("\n");
    entry.inBody = [step.explanation, step.healing, step.remark, ...(step.lines || [])].join("\n");
  }

  const isFound = (entry) => !needle || [entry.inHead, entry.inBody].some((text) => text.search(needle) >= 0);
  const isOpen = (entry) => entry.step.state !== "not run" && (entry.open || revealed.has(entry));

  function fill(entry) {
    entry.body ??= entry.card.appendChild(drawBody(entry.step));
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
    shown = entries.filter((entry) => isFound(entry) && (!failedOnly.checked || isFailed(entry)));
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
        fill(entry);
        highlight(entry.card);
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
    entry.card.scrollIntoView({ block: "nearest" });
  }

  function reveal(entry) {
    entry.open = true;
    if (!shown.includes(entry)) {
      failedOnly.checked = false;
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
    "/": () => search.focus(), o: toggleAll, Escape: clearSearch,
  };
  const keysInSearch = { Escape: clearSearch, Enter: () => move(1), ArrowDown: () => move(1) };
  document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    // A log that has the focus scrolls with the arrows.
    if (event.target.tagName === "PRE" && event.key.startsWith("Arrow")) return;
    const act = (event.target === search ? keysInSearch : keys)[event.key];
    if (!act) return;
    act();
    event.preventDefault();
  });
  search.addEventListener("input", apply);
  failedOnly.addEventListener("change", apply);
  inOrder.addEventListener("change", apply);
  openAll.addEventListener("click", toggleAll);
  // Paper cannot be opened.
  window.addEventListener("beforeprint", () => shown.filter((entry) => entry.step.state !== "not run").forEach(fill));

  // With nothing to put right, how it ended is what one wants to see.
  if (!failed.length && ran.length) ran[ran.length - 1].open = true;
  drawHead();
  drawTimeline();
  entries.forEach(drawCard);
  apply();
  followLink();
  window.addEventListener("hashchange", followLink);
})();
