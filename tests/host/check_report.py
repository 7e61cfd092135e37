"""The report of a replay, in a real browser."""

import base64
import unittest

import replays
from browser import Browser

MARGIN = 24  # of the desktop around the window in a picture
TEXTS = ["h1", "#about", "#verdict", ".bars button.failed", ".bars button.ok", ".name", ".name small", ".words",
         ".time", ".explanation", "figcaption", "pre > span", "pre .when", "kbd", "#open-all", "mark"]


class Report(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)
        pages = (replays.good, replays.healed, replays.stopped, replays.rows, replays.cancelled, replays.hostile,
                 replays.retried)
        cls.pages = {make.__name__: make() for make in pages}

    def setUp(self):
        self.browser.appear()

    def open(self, name):
        self.browser.open(self.pages[name])
        return self.browser

    def order(self):
        return [(card["row"], card["number"]) for card in self.browser.cards()]

    def tearDown(self):
        problems, requests = self.browser.heard()
        self.assertEqual([], problems, "the console")
        files = {page.as_uri() for page in self.pages.values()}
        self.assertEqual(set(), {address for address in requests if not address.startswith("data:")} - files)
        self.assertTrue(requests & files, "what was watched is not the page")

    def test_content(self):
        """report: every step with its outcome, its picture with the target marked, its own log lines"""
        page = self.open("good")
        self.assertEqual("all steps passed", page.text("#verdict"))
        self.assertEqual("Passed: good.json", page.driver.title)
        page.press("o")
        cards = page.cards()
        texts = ["“Anna”", "“12 Harbour Lane”", "“Port Ellis”", "“ctrl+a”", "", "“Submitted”", "", "“Anna”"]
        titles = [title + text for title, text in zip(replays.TITLES, texts, strict=True)]
        self.assertEqual(titles, [card["title"] for card in cards])
        for card in cards:
            self.assertRegex(card["time"], r"^\d+\.\d ms$")
            self.assertEqual(("ok", True), (card["words"], card["open"]))
            own = [line for line in card["log"] if " | Result: " in line]
            self.assertEqual(1, len(own), card["log"])
            self.assertIn(f"- {card['number']} {replays.TITLES[card['number'] - 1]} | Result: 0", own[0])
        self.assertIn("CONFIRMATION = \"Submitted: Anna / \"", page.text("article:nth-of-type(7) .remark"))
        every = page.pictures()
        # Three steps only read, and the shortcut selects what cannot be seen here: the same afterwards.
        self.assertEqual([1, 2, 3, 5], [picture["number"] for picture in every if not picture["before"]])
        pictures = [picture for picture in every if picture["before"]]
        self.assertEqual(list(range(1, 9)), [picture["number"] for picture in pictures])
        for picture, step in zip(pictures, replays.STEPS):
            self.assertEqual((460 + 2 * MARGIN, 420 + 2 * MARGIN), (picture["width"], picture["height"]))
            self.assertEqual("at" in step, picture["mark"] is not None)
            if "at" in step:
                left, top, right, bottom = (length - MARGIN for length in picture["mark"])
                x, y = step["at"]
                self.assertTrue(left < x < right and top < y < bottom and right - left < 330, (picture, step))
        # A step that only reads shows what the one before it showed: kept once.
        kept = [block["picture"] for block in replays.blocks(self.pages["good"]) if "picture" in block]
        self.assertEqual(len(set(kept)), len(kept))
        self.assertLess(len(kept), len(every))
        # The point of the click lies in what is clicked.
        self.assertEqual([True] * 4, page.run("""return [...document.querySelectorAll(".aim")].map((aim) => {
          const [point, mark] = [aim, aim.parentElement.querySelector(".mark")].map((each) => each.getBoundingClientRect());
          return point.left > mark.left && point.right < mark.right && point.top > mark.top && point.bottom < mark.bottom;
        })"""))
        drawn = base64.b64decode(kept[-1].split(",")[1]).decode()
        self.assertIn(">Submitted: Anna / <", drawn)

    def test_healed(self):
        """report: a healed step is told as one, with what healed it, and does not pass for good"""
        page = self.open("healed")
        self.assertEqual(("passed, 1 healed", "Healed: healed.json"), (page.text("#verdict"), page.driver.title))
        self.assertEqual([(1, "ok"), (2, "healed"), (3, "ok")], [(card["number"], card["words"]) for card in page.cards()][:3])
        page.driver.execute_async_script("""
          addEventListener("hashchange", () => setTimeout(arguments[0]));
          location.hash = "#step-2";
        """)
        self.assertIn("its AutomationId found the same element", page.text(".healing"))
        self.assertEqual(3, page.run("return document.querySelectorAll('.open .attempts li').length"))
        self.assertEqual(["Copy the corrected target"],
                         page.run("return [...document.querySelectorAll('.open .copy')].map((button) => button.textContent)"))

    def test_failure(self):
        """report: a failure comes first and open, with why and where; what was not run is told"""
        page = self.open("stopped")
        self.assertEqual(("1 failure", "Failed: stopped.json"), (page.text("#verdict"), page.driver.title))
        self.assertIn("6 not run", page.text("#about"))
        first, *others = page.cards()
        self.assertEqual((2, "not found", True), (first["number"], first["words"], first["open"]))
        self.assertIn("its tree path: it leads nowhere from level 3", first["explanation"])
        self.assertTrue(any("2 paste Street | Result: -1" in line for line in first["log"]), first["log"])
        self.assertIn("where it was recorded", first["caption"])
        picture = page.pictures()[0]
        left, top, right, bottom = (length - MARGIN for length in picture["mark"])
        self.assertTrue(picture["ring"])
        self.assertAlmostEqual(replays.STREET[0] - replays.LOST, (left + right) / 2, delta=3)
        self.assertAlmostEqual(replays.STREET[1], (top + bottom) / 2, delta=3)
        self.assertEqual([(1, "ok")] + [(number, "not run") for number in range(3, 9)],
                         [(card["number"], card["words"]) for card in others])
        self.assertFalse(any(card["open"] for card in others))
        page.click("#in-order")
        self.assertEqual([("", number) for number in range(1, 9)], self.order())

        candidates = page.run("return [...document.querySelectorAll('.candidates li')].map((each) => each.textContent)")
        self.assertIn('field "102": its AutomationId is "102"', candidates[:3])
        marked = page.run("""const [first] = document.querySelectorAll(".candidates button"); first.focus();
          const seen = document.querySelectorAll(".candidate").length; first.blur();
          return [seen, document.querySelectorAll(".candidate").length]""")
        self.assertEqual([1, 0], marked)
        # Whoever was not there sees what else was.
        page.run("document.querySelector('.pictures details').open = true")
        (screen,) = [picture for picture in page.pictures() if picture["screen"]]
        self.assertEqual((1920, 1080), (screen["width"], screen["height"]))
        facts = page.run("return [...document.querySelectorAll('#facts dt')].map((fact) => [fact.textContent, fact.nextSibling.textContent])")
        self.assertEqual(["Command", "Program", "Machine", "System", "Screen", "Exit code"], [what for what, _ in facts])
        self.assertRegex(facts[0][1], r"^korvane replay .*stopped\.json --timeout 200 --report ")
        self.assertEqual(["1920 × 1080, scaled to 100 %", "1"], [which for _, which in facts[4:]])

        page = self.open("retried")
        self.assertEqual("not found, try 2", page.cards()[0]["words"])
        self.assertIn("leads nowhere", page.text(".tries section"))

        page = self.open("cancelled")
        self.assertEqual("cancelled", page.text("#verdict"))
        for fact in ("begun with row 3", "begun with step 2", "1 row not begun"):
            self.assertIn(fact, page.text("#about"))
        self.assertEqual("cancelled", page.cards()[0]["words"])

    def test_rows(self):
        """report: repeated runs each have their line, on one scale; a bar leads to its step whatever is filtered"""
        page = self.open("rows")
        self.assertIn("24 steps", page.text("#about"))
        self.assertIn("3 runs, 1 failed", page.text("#about"))
        in_order = [(f"row {row}", number) for row in (2, 3, 4) for number in range(1, 9)]
        self.assertEqual([("row 3", 8)] + [step for step in in_order if step != ("row 3", 8)], self.order())
        self.assertEqual(["row 3", "row 2", "row 4"],
                         page.run("return [...document.querySelectorAll('#rows .link')].map((link) => link.textContent)"))
        self.assertEqual("row 3failed7 of 8Robert", page.run("""const [first, ...others] =
          document.querySelectorAll("#rows tr:nth-child(2) td"); others.splice(2, 1);
          return [first, ...others].slice(0, 4).map((cell) => cell.textContent).join("")"""))
        self.assertEqual(["Robert", "AnnaBob"], page.run("return [...document.querySelectorAll('.comparison ins')].map((part) => part.textContent)"))
        page.press("p")
        self.assertEqual([("row 3", 8)], [(card["row"], card["number"]) for card in page.cards() if card["current"]])
        page.run("""const state = document.getElementById("state"); state.value = "failed";
          state.dispatchEvent(new Event("change"))""")
        self.assertEqual(([("row 3", 8)], "1 of 24 steps"), (self.order(), page.text("#count")))
        page.click("#timeline .run:nth-child(3) button:nth-child(2)")
        (chosen,) = [card for card in page.cards() if card["current"]]
        self.assertEqual(("row 4", 2, True), (chosen["row"], chosen["number"], chosen["open"]))
        widths = page.run("""return [...document.querySelectorAll(".run")].map((run) => [
          run.querySelector(".bars").clientWidth, parseFloat(run.querySelector(".total").textContent)])""")
        self.assertGreater(widths[1][1], 1.5 * widths[0][1])
        for width, total in widths:
            self.assertAlmostEqual(width / widths[1][0], max(total / widths[1][1], 0.1), delta=0.02)

    def test_search(self):
        """report: a search finds steps by title, text, outcome and log, and shows and marks where"""
        page = self.open("good")
        for words, numbers in (
            ("harbour", [2]), ("NAME AGAIN", [8]), ("confirmation", [7]), ("ctrl+a", [4]), ("submitted: anna", [6, 7]),
            ("ok", [1, 2, 3, 4, 5, 6, 7, 8]), (".*", []), ("no such words", []),
        ):
            page.search(words)
            cards = page.cards()
            self.assertEqual(numbers, [card["number"] for card in cards], words)
            self.assertEqual(not cards, page.run("return document.getElementById('nothing').checkVisibility()"))
            for card in cards:
                self.assertTrue(card["found"], (words, card["number"]))
                self.assertEqual({words.lower()}, {found.lower() for found in card["found"]})
        # The log of a step that was closed is opened for what was found in it.
        page.search("UIA_ValueValue")
        cards = page.cards()
        self.assertTrue(cards and all(card["open"] for card in cards))
        page.press("escape")
        cards = page.cards()
        self.assertEqual((8, [8]), (len(cards), [card["number"] for card in cards if card["open"]]))
        self.assertFalse(any(card["found"] for card in cards))

    def test_keyboard(self):
        """report: all of it can be reached with the keyboard"""
        page = self.open("stopped")

        def current():
            return [card["number"] for card in page.cards() if card["current"]]

        def opened():
            return [card["number"] for card in page.cards() if card["open"]]

        for keys, number in ((["j"], 2), (["j"], 1), (["arrow_down"], 3), (["k"], 1), (["arrow_up", "arrow_up"], 2)):
            page.press(*keys)
            self.assertEqual([number], current(), keys)
        self.assertEqual([2], opened())
        page.press("enter")
        self.assertEqual([], opened())
        page.press("j", "enter")
        self.assertEqual([1], opened())
        page.press("o")
        self.assertEqual([2, 1], opened())
        page.press("o")
        self.assertEqual([], opened())
        # In the search field the keys are letters.
        page.press("/", "jko/")
        self.assertEqual("jko/", page.run("return document.getElementById('search').value"))
        page.press("escape", "/", "anna", "enter")
        self.assertEqual(([1], [1]), ([card["number"] for card in page.cards()], current()))
        # The step that the keys lead to is not hidden below the bar that stays.
        page = self.open("rows")
        page.press("o", *["j"] * 6, *["k"] * 2)
        covered = page.run("""
          const head = document.activeElement.getBoundingClientRect();
          const seen = document.elementFromPoint(head.left + 60, head.top + 6);
          return seen?.closest("article") !== document.activeElement.parentElement;
        """)
        self.assertFalse(covered)

    def test_appearance(self):
        """report: light and dark as the reader has it, both readable; nothing sticks out of a narrow window"""
        page = self.open("rows")
        page.press("o")
        page.search("anna")
        for scheme, is_right in (("light", lambda shade: shade > 0.8), ("dark", lambda shade: shade < 0.05)):
            page.appear(scheme=scheme)
            seen = page.contrasts(TEXTS)
            self.assertTrue(is_right(seen.pop("page")), scheme)
            self.assertEqual(set(TEXTS), set(seen))
            self.assertEqual({}, {name: contrast for name, contrast in seen.items() if contrast < 4.5}, scheme)
        try:
            page.driver.set_window_size(500, 900)
            for name in self.pages:
                self.open(name).press("o")
                self.assertGreater(page.run("return document.querySelector('.picture').clientWidth"), 400)
                edges = page.run("""return [...document.querySelectorAll("h1, #about, .time, pre, .picture, .total")].map(
                  (element) => element.getBoundingClientRect().right)""")
                self.assertLess(max(edges), 500, name)
                self.assertEqual(0, page.run("""
                  const root = document.documentElement;
                  return root.scrollWidth - root.clientWidth"""), name)
        finally:
            page.driver.set_window_size(1200, 900)

    def test_print(self):
        """report: on paper every step that was run is there with its picture and its whole log, black on white"""
        page = self.open("rows")
        self.assertEqual({8}, {picture["number"] for picture in page.pictures()}, "before it is printed, only the failure is open")
        self.assertTrue(base64.b64decode(page.print_it()).startswith(b"%PDF"))
        page.appear(media="print", scheme="dark")
        self.assertTrue(all(card["open"] and card["log"] for card in page.cards()))
        self.assertEqual(24, len([picture for picture in page.pictures() if picture["before"] and picture["width"] > 0]))
        self.assertEqual([0] * 24, page.run("""return [...document.querySelectorAll("pre")].map(
          (log) => log.scrollHeight - log.clientHeight)"""))
        self.assertFalse(page.run("return document.querySelector('nav').checkVisibility()"))
        seen = page.contrasts([".name", "pre > span", ".explanation", "figcaption"])
        self.assertEqual(1, seen["page"])
        self.assertGreater(min(seen.values()), 0.99)
        self.assertGreater(min(contrast for name, contrast in seen.items() if name != "page"), 7)

    def test_errors_of_the_log(self):
        """report: the library's error lines stand out, and only they"""
        written = self.pages["stopped"].read_text(encoding="utf-8")
        page = self.pages["stopped"].with_name("errors.html")
        page.write_text(written.replace("[CACHE] Cleared", "ERROR [CACHE] Cleared"), encoding="utf-8")
        self.pages["errors"] = page
        marked = self.open("errors").run("""
          return [...document.querySelectorAll("pre > span")].map((line) => [line.textContent, line.className])""")
        self.assertEqual([True], sorted({name == "error" for line, name in marked if " ERROR " in line}))
        self.assertEqual([False], sorted({name == "error" for line, name in marked if " ERROR " not in line}))

    def test_cut(self):
        """report: what a program that was ended from outside had written is a report of what was done"""
        written = self.pages["good"].read_bytes()
        page = self.pages["good"].with_name("cut.html")
        page.write_bytes(written[:written.index(b'"step":{"number":4') + 40])
        self.pages["cut"] = page
        page = self.open("cut")
        self.assertEqual(("ended from outside", "Ended: good.json"), (page.text("#verdict"), page.driver.title))
        self.assertEqual(["ok"] * 3 + ["not run"] * 5, [card["words"] for card in page.cards()])

    def test_link(self):
        """report: an address that ends in #step-N leads to that step, first where it failed"""
        page = self.open("rows")
        page.driver.execute_async_script("""
          const done = arguments[0];
          addEventListener("hashchange", () => setTimeout(done));
          location.hash = "#step-8";
        """)
        (chosen,) = [card for card in page.cards() if card["current"]]
        self.assertEqual(("row 3", 8, True), (chosen["row"], chosen["number"], chosen["open"]))

    def test_policy(self):
        """report: the page may not turn a text into elements"""
        refused = self.open("good").run("""
          try { document.createElement("div").innerHTML = "<b>"; return "" } catch (error) { return error.name }""")
        self.assertEqual("TypeError", refused)
        # Of style and script, the page knows its own by their hashes.
        self.assertNotIn("unsafe", self.browser.run("return document.querySelector('meta[http-equiv]').content"))
        (problem,), _ = self.browser.heard()
        self.assertIn("TrustedHTML", problem)
        self.open("good")

    def test_hostile(self):
        """report: names and texts are shown as they are, and do nothing"""
        page = self.open("hostile")
        self.assertEqual("Passed: hostile.json", page.driver.title)
        page.press("o")
        cards = sorted(page.cards(), key=lambda card: card["number"])
        text = "</script>\ufffe \x01 \ufffd"
        for card, name in zip(cards, replays.HOSTILE, strict=True):
            self.assertTrue(card["title"].startswith(f"paste {name}“{text}"), card["title"])
            self.assertTrue(any("paste " + name.split("\\")[0] in line for line in card["log"]), card["log"])
        self.assertIn(replays.HOSTILE[0], page.text("#about"))
        self.assertEqual([1, 0, 0, 0], page.run("""return ["script:not([type])", "iframe, object, form, a", "img:not(.picture img)",
          "[onerror], [onload]"].map((selector) => document.querySelectorAll(selector).length)"""))
        self.assertEqual([460 + 2 * MARGIN] * len(cards), [picture["width"] for picture in page.pictures() if picture["before"]])
        # Letters that change their length in lower case.
        page.search("compass [a.b*(c]")
        (found,) = page.cards()
        self.assertEqual({"compass [a.b*(c]"}, set(found["found"]))
        self.assertIn(replays.HOSTILE[6], found["title"])
        page.search("\u202e")
        self.assertEqual([6], [card["number"] for card in page.cards()])


if __name__ == "__main__":
    unittest.main()
