"use strict";
(() => {
  const data = JSON.parse(document.getElementById("data").textContent);
  const byId = (id) => document.getElementById(id);
  const search = byId("search");

  const make = (tag, className, text) => {
    const element = document.createElement(tag);
    if (className) element.className = className;
    if (text !== undefined) element.textContent = text;
    return element;
  };
  const duration = (ms) => (ms < 1000 ? ms.toFixed(1) + " ms" : (ms / 1000).toFixed(2) + " s");
  const plural = (count, word) => count + " " + word + (count === 1 ? "" : "s");
  const classOf = (step) => step.state.replace(" ", "-");

  // One entry per step of each run, in order of time; `card` and `bar` are its two places on the page.
  const entries = data.runs.flatMap((run) => run.steps.map((step) => ({ run, step, open: step.state === "failed" })));
  const failed = entries.filter((entry) => entry.step.state === "failed");
  let shown = [];
  let current = null;

  function drawHead() {
    const ran = entries.filter((entry) => entry.step.state !== "not run");
    const total = ran.reduce((sum, entry) => sum + entry.step.milliseconds, 0);
    const name = data.file.replace(/^.*[\\/]/, "");
    document.title = (failed.length ? "Failed: " : "Passed: ") + name;
    byId("title").textContent = name;
    byId("verdict").textContent = failed.length ? plural(failed.length, "failure") : "all steps passed";
    byId("verdict").classList.toggle("failed", failed.length > 0);
    byId("about").textContent = [
      plural(ran.length, "step") + " in " + duration(total) + (data.dryRun ? " (dry run: nothing was done)" : ""),
      data.runs.length > 1 ? plural(data.runs.length, "run") : "",
      data.windows.join(", "),
      data.time,
    ].filter(Boolean).join(" · ");
  }

  function drawTimeline() {
    for (const run of data.runs) {
      const line = make("div", "run");
      const bars = make("div", "bars");
      const steps = entries.filter((entry) => entry.run === run);
      for (const entry of steps) {
        const { step } = entry;
        entry.bar = make("button", classOf(step));
        entry.bar.type = "button";
        entry.bar.style.flexGrow = step.milliseconds || 0;
        entry.bar.title = step.number + " " + step.title + ": " + (step.words ? step.words + ", " + duration(step.milliseconds) : "not run");
        entry.bar.setAttribute("aria-label", entry.bar.title);
        entry.bar.addEventListener("click", () => { entry.open = true; choose(entry); });
        bars.append(entry.bar);
      }
      const total = steps.reduce((sum, entry) => sum + (entry.step.milliseconds || 0), 0);
      line.append(make("span", "run-name", run.name), bars, make("span", "", duration(total)));
      if (!run.name) line.firstChild.remove();
      byId("timeline").append(line);
    }
  }

  function drawBody(step) {
    const body = make("div", "body");
    if (step.explanation) body.append(make("p", "explanation", step.explanation));
    else if (step.remark) body.append(make("p", "remark", step.remark));
    const evidence = make("div", "evidence");
    if (step.picture) {
      const figure = make("figure");
      const frame = make("div", "picture");
      const image = make("img");
      image.src = step.picture.address;
      image.width = step.picture.width;
      image.height = step.picture.height;
      image.alt = "The window after: " + step.title;
      frame.append(image);
      const mark = step.picture.mark;
      if (mark) {
        const box = make("div", "mark");
        for (const side of ["left", "top", "width", "height"]) box.style[side] = mark[side] + "%";
        frame.append(box);
      }
      const targetless = step.action === "shortcut" ? "After the step." : "After the step; where the target is was not seen.";
      figure.append(frame, make("figcaption", "", mark ? "After the step; the target is marked." : targetless));
      evidence.append(figure);
    }
    if (step.lines && step.lines.length) {
      const log = make("pre");
      log.tabIndex = 0;
      log.setAttribute("aria-label", "Log of the step");
      for (const line of step.lines) log.append(make("span", / ERROR[ :]|FAILED/.test(line) ? "error" : "", line), "\n");
      evidence.append(log);
    }
    body.append(evidence);
    return body;
  }

  function drawCard(entry) {
    const { step, run } = entry;
    const card = make("article", "step " + classOf(step));
    card.dataset.number = step.number;
    const head = make("button");
    head.type = "button";
    const name = make("span", "name", step.title);
    const extra = [run.name, step.text ? "“" + step.text + "”" : ""].filter(Boolean).join(" · ");
    if (extra) name.append(make("small", "", extra));
    head.append(make("span", "number", step.number), name, make("span", "words", step.words || "not run"),
      make("span", "time", step.milliseconds === undefined ? "" : duration(step.milliseconds)));
    card.append(head);
    if (step.state !== "not run") card.append(drawBody(step));
    head.addEventListener("click", () => { entry.open = !entry.open; choose(entry); });
    entry.card = card;
    entry.haystack = card.textContent.toLowerCase();
  }

  // Marks what was searched for; undone by joining the pieces again.
  function highlight(card, needle) {
    for (const mark of card.querySelectorAll("mark")) mark.replaceWith(mark.textContent);
    card.normalize();
    if (!needle) return;
    // Folding case can change a text's length, so that places in the folded text are not places in the text.
    const pattern = new RegExp(needle.replace(/[\\^$.*+?()[\]{}|]/g, "\\$&"), "iu");
    const walker = document.createTreeWalker(card, NodeFilter.SHOW_TEXT);
    const texts = [];
    while (walker.nextNode()) texts.push(walker.currentNode);
    for (let text of texts) {
      for (let found = pattern.exec(text.data); found; found = pattern.exec(text.data)) {
        const hit = text.splitText(found.index);
        text = hit.splitText(found[0].length);
        hit.replaceWith(make("mark", "", hit.data));
      }
    }
  }

  function apply() {
    const needle = search.value.trim().toLowerCase();
    const failedOnly = byId("failed-only").checked;
    shown = entries.filter((entry) => (!needle || entry.haystack.includes(needle)) && (!failedOnly || entry.step.state === "failed"));
    if (!byId("in-order").checked) {
      const isFailed = (entry) => entry.step.state === "failed";
      shown = [...shown.filter(isFailed), ...shown.filter((entry) => !isFailed(entry))];
    }
    for (const entry of shown) highlight(entry.card, needle);
    byId("steps").replaceChildren(...shown.map((entry) => entry.card));
    byId("nothing").hidden = shown.length > 0;
    byId("count").textContent = shown.length === entries.length ? plural(entries.length, "step") : shown.length + " of " + plural(entries.length, "step");
    if (!shown.includes(current)) current = null;
    refresh();
  }

  function refresh() {
    for (const entry of entries) {
      entry.card.classList.toggle("open", entry.open);
      entry.card.classList.toggle("current", entry === current);
      entry.card.firstChild.setAttribute("aria-expanded", entry.open);
      entry.bar.classList.toggle("current", entry === current);
    }
  }

  function choose(entry) {
    current = entry;
    refresh();
    if (entry.card.isConnected) entry.card.scrollIntoView({ block: "nearest" });
  }

  function move(by) {
    if (shown.length === 0) return;
    const at = shown.indexOf(current);
    choose(shown[at < 0 ? (by > 0 ? 0 : shown.length - 1) : Math.min(shown.length - 1, Math.max(0, at + by))]);
  }

  function clearSearch() {
    search.value = "";
    search.blur();
    apply();
  }

  document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    if (event.key === "Escape") return clearSearch();
    if (event.target === search) {
      if (event.key === "Enter") search.blur();
      return;
    }
    const onButton = event.target instanceof HTMLButtonElement;
    if (event.key === "j" || event.key === "ArrowDown") move(1);
    else if (event.key === "k" || event.key === "ArrowUp") move(-1);
    else if (event.key === "/") search.focus();
    else if (event.key === "Enter" && current && !onButton) { current.open = !current.open; choose(current); }
    else return;
    event.preventDefault();
  });
  search.addEventListener("input", apply);
  byId("failed-only").addEventListener("change", apply);
  byId("in-order").addEventListener("change", apply);

  drawHead();
  drawTimeline();
  entries.forEach(drawCard);
  apply();
})();
