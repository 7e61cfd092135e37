"""A headless browser, and what a person sees of a report in it."""

import json
import os

from repository import missing, tool

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.options import Options
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.keys import Keys
except ImportError:
    webdriver = Keys = None

# What is on the page in the order in which it is seen.
CARDS = """
return [...document.querySelectorAll("article.step")].map((card) => {
  const text = (selector) => card.querySelector(selector)?.textContent ?? "";
  const body = card.querySelector(".body");
  return {
    number: Number(text(".number")), row: text(".row"), title: text(".name").replace(text(".row"), ""),
    words: text(".words"), time: text(".time"), failed: card.classList.contains("failed"),
    current: card.contains(document.activeElement), open: Boolean(body && body.checkVisibility()),
    explanation: text(".explanation"), caption: text("figcaption"),
    log: [...card.querySelectorAll("pre > span")].map((line) => line.textContent),
    found: [...card.querySelectorAll("mark")].filter((mark) => mark.checkVisibility()).map((mark) => mark.textContent),
  };
});
"""
# Pictures with their marks, in the picture's own pixels.
PICTURES = """
const images = [...document.querySelectorAll("article.step .picture > img:not(.patch)")];
return Promise.all(images.map((image) => image.decode().catch(() => {}))).then(() => images.map((image) => {
  const outer = image.getBoundingClientRect();
  const mark = image.parentElement.querySelector(".mark");
  const inner = mark?.getBoundingClientRect();
  const scale = image.naturalWidth / outer.width;
  return {
    number: Number(image.closest("article").dataset.number),
    before: image.alt.startsWith("Before: "), screen: image.alt.startsWith("The whole screen"), width: image.naturalWidth, height: image.naturalHeight,
    ring: Boolean(mark?.classList.contains("recorded")),
    mark: inner && [inner.left - outer.left, inner.top - outer.top, inner.right - outer.left, inner.bottom - outer.top]
      .map((length) => length * scale),
  };
}));
"""
# How well the texts can be told from what is behind them: 1 is not at all, 21 is black on white.
CONTRASTS = """
const numbers = (colour) => colour.match(/[\\d.]+/g).map(Number);
const light = (colour) => {
  const [r, g, b] = numbers(colour).map((part) => part / 255)
    .map((part) => part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4);
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
};
const behind = (element) => {
  for (let at = element; at; at = at.parentElement) {
    const colour = getComputedStyle(at).backgroundColor;
    if ((numbers(colour)[3] ?? 1) > 0) return colour;
  }
  return "rgb(255, 255, 255)";
};
const seen = {page: light(behind(document.body))};
for (const selector of arguments[0]) {
  for (const element of document.querySelectorAll(selector)) {
    const pair = [light(getComputedStyle(element).color), light(behind(element))].sort((a, b) => b - a);
    seen[selector] = Math.min(seen[selector] ?? 21, (pair[0] + 0.05) / (pair[1] + 0.05));
  }
}
return seen;
"""


class Browser:
    def __init__(self):
        if webdriver is None:
            missing("Selenium is not installed for this Python: Debian's package is for /usr/bin/python3")
        options = Options()
        options.binary_location = tool("chromium")
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        for switch in ("headless=new", "disable-gpu", "disable-dev-shm-usage", "window-size=1200,900"):
            options.add_argument(f"--{switch}")
        if os.geteuid() == 0:
            # Chromium's sandbox does not work for root, who is all there is in a container.
            options.add_argument("--no-sandbox")
        self.driver = webdriver.Chrome(service=Service(tool("chromedriver")), options=options)

    def close(self):
        self.driver.quit()

    def open(self, page):
        self.driver.get(page.as_uri())

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def cards(self):
        return self.run(CARDS)

    def pictures(self):
        return self.run(PICTURES)

    def contrasts(self, selectors):
        return self.run(CONTRASTS, selectors)

    def text(self, selector):
        return self.run("return document.querySelector(arguments[0]).textContent", selector)

    def click(self, selector):
        self.driver.find_element("css selector", selector).click()

    def press(self, *keys):
        """To whatever has the focus."""
        for key in keys:
            self.driver.switch_to.active_element.send_keys(getattr(Keys, key.upper(), key))

    def search(self, words):
        self.press("escape", "/", *([words] if words else []))

    def appear(self, media="", scheme="light"):
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "media": media, "features": [{"name": "prefers-color-scheme", "value": scheme}],
        })

    def print_it(self):
        """The pages on paper, as bytes."""
        return self.driver.execute_cdp_cmd("Page.printToPDF", {"printBackground": False})["data"]

    def heard(self):
        """What the console said, and what the pages have reached for, since it was asked last."""
        problems = [entry["message"] for entry in self.driver.get_log("browser")]
        requests = set()
        for entry in self.driver.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                requests.add(message["params"]["request"]["url"])
        return problems, requests
