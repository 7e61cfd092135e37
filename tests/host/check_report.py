"""The report in a real browser: what it shows, how it is searched, by mouse and by keyboard, on paper and in the dark."""

import json
import shutil
import unittest

from program import VALUES, korvane, recorded, scratch
from repository import missing

BROWSER = "/usr/bin/chromium"
DRIVER = "/usr/bin/chromedriver"
# What a title or a text can hold when somebody means harm.
HOSTILE = '</script><script>document.title="taken"</script><img src=x onerror="document.title=\'taken\'"> "\'& 🧭 \ufffd'


def open_browser():
    try:
        from selenium import webdriver
        from selenium.webdriver.chrome.service import Service
    except ImportError:
        missing("python3-selenium is not installed")
    if not shutil.which(BROWSER) or not shutil.which(DRIVER):
        missing("chromium with its driver is not installed")
    options = webdriver.ChromeOptions()
    options.binary_location = BROWSER
    # Without a sandbox, which a container's root cannot have.
    for word in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--window-size=1200,1000"):
        options.add_argument(word)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    return webdriver.Chrome(service=Service(DRIVER), options=options)


class Report(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = open_browser()
        cls.folder = scratch("report")

        def fail(recording):
            recording["steps"][4]["target"]["automationId"] = "gone"
            recording["steps"][4]["target"]["levels"][2]["childIndex"] = 9
            recording["steps"][5]["text"] = HOSTILE
            recording["steps"][5]["name"] = HOSTILE
            recording["windows"][0]["title"] = HOSTILE
        cls.good = cls.replayed("good", 0)
        cls.bad = cls.replayed("bad", 1, change=fail, words=("--keep-going",))
        cls.ended = cls.replayed("ended", 1, change=fail)
        (cls.folder / "rows.csv").write_text("NAME,ARTICLE\nAda,Lamp\nBen,Rope\n", encoding="utf-8")
        cls.rows = cls.replayed("rows", 0, words=("--data", "rows.csv"))

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()

    @classmethod
    def replayed(cls, name, expected, change=None, words=()):
        recording = json.loads(recorded())
        if change:
            change(recording)
        (cls.folder / f"{name}.json").write_text(json.dumps(recording), encoding="utf-8")
        values = () if "--data" in words else VALUES
        code, out, err = korvane("replay", f"{name}.json", *values, *words, "--timeout", 300, "--report", f"{name}.html",
                                 folder=cls.folder, desktop="form 560,380")
        assert code == expected, out + err
        return cls.folder / f"{name}.html"

    def open(self, page):
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "", "features": []})
        self.browser.get_log("performance"), self.browser.get_log("browser")
        self.browser.get(page.as_uri())

    def script(self, text, *arguments):
        return self.browser.execute_script("return " + text, *arguments)

    def numbers(self):
        """The steps as they are shown from the top."""
        return self.script("[...document.querySelectorAll('.step')].map((card) => +card.dataset.number)")

    def opened(self):
        return self.script("[...document.querySelectorAll('.step.open')].map((card) => +card.dataset.number)")

    def current(self):
        return self.script("document.querySelector('.step.current')?.dataset.number")

    def text(self, selector):
        return self.browser.find_element("css selector", selector).text

    def press(self, *keys):
        from selenium.webdriver import ActionChains
        for key in keys:
            ActionChains(self.browser).send_keys(key).perform()

    def assert_quiet(self):
        """No error, and nothing fetched but the file itself."""
        self.assertEqual([], [entry["message"] for entry in self.browser.get_log("browser")])
        messages = [json.loads(entry["message"])["message"] for entry in self.browser.get_log("performance")]
        asked = [message["params"]["request"]["url"] for message in messages
                 if message["method"] == "Network.requestWillBeSent"]
        self.assertEqual(1, len([url for url in asked if url.startswith("file:")]), asked)
        self.assertEqual([], [url for url in asked if not url.startswith(("file:", "data:"))])

    def test_good(self):
        """report: a good replay: steps in order with durations, words, pictures with the target marked, log lines"""
        self.open(self.good)
        self.assertEqual("all steps passed", self.text("#verdict"))
        self.assertEqual("Passed: good.json", self.browser.title)
        self.assertRegex(self.text("#about"), r'^11 steps in [\d.]+ ms · "Order form" of order_form.exe .* · \d{4}-')
        self.assertEqual(list(range(1, 12)), self.numbers())
        self.assertEqual([], self.opened())
        self.assertEqual(11, self.script("document.querySelectorAll('.bars button.ok').length"))
        for card in self.browser.find_elements("css selector", ".step > button"):
            self.assertRegex(card.text, r"\nok\n[\d.]+ ms$")
            card.click()
        self.assertEqual(list(range(1, 12)), self.opened())
        self.assertEqual(11, self.script("[...document.images].filter((image) => image.complete && image.naturalWidth > 300).length"))
        self.assertEqual(11, self.script("document.querySelectorAll('.picture .mark').length"))
        # The mark of the name lies on the field: 310 of 508 pixels wide, 24 of 468 high.
        mark = self.script("(() => { const mark = document.querySelectorAll('.mark')[1].style;"
                           " return ['left', 'top', 'width', 'height'].map((side) => parseFloat(mark[side])); })()")
        for seen, expected in zip(mark, (27.0, 15.0, 61.0, 5.1)):
            self.assertAlmostEqual(expected, seen, delta=4)
        self.assertIn("[FindTargetElement] SUCCESS with Method 0", self.script("document.querySelectorAll('.step pre')[1].textContent"))
        self.assertIn('CONFIRMATION = "Submitted: Ada Löwe / Brass compass"', self.text("[data-number='10'] .remark"))
        self.assert_quiet()

    def test_failures(self):
        """report: failures come first, open, with what was tried; what was not run is told; names do no harm"""
        self.open(self.bad)
        self.assertEqual("Failed: bad.json", self.browser.title)
        self.assertEqual("1 failure", self.text("#verdict"))
        self.assertEqual([5, 1, 2, 3, 4, 6, 7, 8, 9, 10, 11], self.numbers())
        self.assertEqual([5], self.opened())
        self.assertIn("not found (-1) after", self.text(".step.failed .explanation"))
        self.assertTrue(self.script("document.querySelectorAll('.step.failed pre .error').length > 0"))
        self.assertIn(HOSTILE, self.script("document.querySelector(\"[data-number='6'] .name\").textContent"))
        self.assertIn(HOSTILE[:20], self.text("#about"))
        self.assertEqual(0, self.script("document.querySelectorAll('img:not(.picture img)').length"))
        self.browser.find_element("id", "in-order").click()
        self.assertEqual(list(range(1, 12)), self.numbers())
        self.browser.find_element("id", "failed-only").click()
        self.assertEqual([5], self.numbers())
        self.assert_quiet()
        self.open(self.ended)
        self.assertEqual([5, 1, 2, 3, 4, 6, 7, 8, 9, 10, 11], self.numbers())
        self.assertEqual(6, self.script("document.querySelectorAll('.step.not-run').length"))
        self.assertIn("5 steps in", self.text("#about"))

    def test_search(self):
        """report: the search finds steps by title, text and log line, marks what it found, and tells when there is nothing"""
        self.open(self.good)
        field = self.browser.find_element("id", "search")
        for needle, found in (("brass", [5, 9, 10]), ("HARBOUR", [3]), ("Method 0", None), ("(", None), ("[.*", []),
                              ("nowhere", [])):
            with self.subTest(needle):
                field.clear()
                field.send_keys(needle)
                shown = self.numbers()
                if found is not None:
                    self.assertEqual(found, shown)
                self.assertEqual(not shown, self.browser.find_element("id", "nothing").is_displayed())
                self.assertEqual(len(shown), self.script(
                    "[...document.querySelectorAll('.step')].filter((card) => card.querySelector('mark')).length"))
                if shown and len(shown) < 11:
                    self.assertEqual(f"{len(shown)} of 11 steps", self.text("#count"))
        self.press("\ue00c")
        self.assertEqual(list(range(1, 12)), self.numbers())
        self.assertEqual(0, self.script("document.querySelectorAll('mark').length"))
        self.assert_quiet()

    def test_keyboard(self):
        """report: the keyboard is enough"""
        down, up, enter, escape = "\ue015", "\ue013", "\ue007", "\ue00c"
        self.open(self.good)
        self.press("j", "j", down)
        self.assertEqual("3", self.current())
        self.press("k", up, up)
        self.assertEqual("1", self.current())
        self.press(enter)
        self.assertEqual([1], self.opened())
        self.press(enter)
        self.assertEqual([], self.opened())
        self.press("/", "j")
        self.assertEqual("j", self.script("document.querySelector('#search').value"))
        self.press(escape, "j")
        self.assertEqual("", self.script("document.querySelector('#search').value"))
        self.assertIsNotNone(self.current())
        self.browser.find_elements("css selector", ".bars button")[6].click()
        self.assertEqual(("7", [7]), (self.current(), self.opened()))

    def test_runs(self):
        """report: each row of data has its line in the timeline and its steps"""
        self.open(self.rows)
        self.assertEqual(["row 1", "row 2"], self.script(
            "[...document.querySelectorAll('.run-name')].map((name) => name.textContent)"))
        self.assertEqual(list(range(1, 12)) * 2, self.numbers())
        self.assertIn("22 steps in", self.text("#about"))

    def test_media(self):
        """report: light and dark follow the system; on paper everything is open and nothing is cut off"""
        self.open(self.bad)
        brightness = "getComputedStyle(document.body).backgroundColor.match(/\\d+/g).slice(0, 3).reduce((a, b) => a + +b, 0)"
        seen = {}
        for scheme in ("light", "dark"):
            self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
                "features": [{"name": "prefers-color-scheme", "value": scheme}]})
            seen[scheme] = self.script(brightness)
        self.assertGreater(seen["light"], 600)
        self.assertLess(seen["dark"], 200)
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "print", "features": [
            {"name": "prefers-color-scheme", "value": "dark"}]})
        self.assertEqual(765, self.script(brightness))
        self.assertEqual(11, self.script("[...document.querySelectorAll('.body')].filter((body) => body.offsetHeight > 0).length"))
        self.assertTrue(self.script("[...document.querySelectorAll('pre')].every((log) => log.scrollHeight <= log.clientHeight + 2)"))
        self.assertFalse(self.browser.find_element("css selector", "nav").is_displayed())


if __name__ == "__main__":
    unittest.main()
