"""A browser without a window, and what a test does with a page of the panel in it."""

import contextlib
import gzip
import os
import pathlib
import re
import tempfile
import time
from typing import NamedTuple

from selenium import webdriver
from selenium.common.exceptions import WebDriverException
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains

SECONDS, PAUSE = 60, 0.05
WIDTH, HEIGHT = 1400, 900
AXE = pathlib.Path(__file__).parent / "vendor" / "axe.min.js.gz"
OPTIONS = (
    "--no-sandbox",
    "--disable-gpu",
    "--disable-dev-shm-usage",
    "--disable-background-networking",
    "--disable-component-update",
    "--disable-sync",
    "--no-default-browser-check",
    "--no-first-run",
    "--no-proxy-server",
    "--force-device-scale-factor=1",
)
# Faults that keep somebody from using the page.
GRAVE = ("serious", "critical")
RUN_AXE = """
    const done = arguments[arguments.length - 1];
    axe.run(document, {resultTypes: ["violations"]}).then((found) => done(found.violations.map((each) => ({
        rule: each.id, impact: each.impact, nodes: each.nodes.map((node) => node.html.slice(0, 200) + " " + node.failureSummary)
    }))), (problem) => done(String(problem)));
"""


class Fault(NamedTuple):
    """What axe-core complains of."""

    rule: str
    impact: str
    nodes: list


class Page:
    """The browser's one page. Whatever waits does so for a minute at most, and then fails with what the page shows."""

    def __init__(self, driver, url):
        self.driver = driver
        self.url = url

    def open(self, place="", url=None):
        """Loads the page anew, at a place such as `#front/sw1/3`."""
        self.driver.get("about:blank")
        self.driver.get((url or self.url) + place)

    def go(self, place):
        """Goes to a place as by a link: nothing is loaded."""
        self.driver.execute_script("location.hash = arguments[0]", place)

    def script(self, text, *arguments):
        return self.driver.execute_script(text, *arguments)

    def until(self, condition, what):
        """The first value of a condition that is true; a part of the page that is just replaced is no failure."""
        deadline = time.monotonic() + SECONDS
        problem = ""
        while time.monotonic() < deadline:
            try:
                if value := condition():
                    return value
            except WebDriverException as found:
                problem = found.msg
            time.sleep(PAUSE)
        shown = self.text()
        raise AssertionError(f"{what} did not come. {problem}\nThe page shows:\n{shown}\nErrors: {self.errors()}")

    def all(self, css):
        """The parts of the page that are seen and match."""
        found = self.driver.find_elements("css selector", css)
        return [element for element in found if element.is_displayed()]

    def wait_for(self, css="body", text=""):
        """Waits for a part of the page that is seen and has a text, or that matches a regular expression; gives it."""
        has = text.search if isinstance(text, re.Pattern) else lambda shown: text in shown
        return self.until(lambda: next((each for each in self.all(css) if has(each.text)), None), f"{css!r} with {text!r}")

    def wait_until_gone(self, css, text=""):
        self.until(lambda: not any(text in each.text for each in self.all(css)), f"The end of {css!r} with {text!r}")

    def text(self, css="body"):
        """What is seen of the first part that matches."""
        return self.script("return document.querySelector(arguments[0])?.innerText ?? ''", css)

    def roles(self, role, name=None):
        """The parts of the page that a screen reader calls so; a name is whole, or a compiled regular expression."""
        root = self.driver.execute_cdp_cmd("DOM.getDocument", {"depth": 0})["root"]["nodeId"]
        exact = {"accessibleName": name} if isinstance(name, str) else {}
        query = {"nodeId": root, "role": role, **exact}
        nodes = self.driver.execute_cdp_cmd("Accessibility.queryAXTree", query)["nodes"]
        shown = [node for node in nodes if not node["ignored"]]
        if isinstance(name, re.Pattern):
            shown = [node for node in shown if name.search(node.get("name", {}).get("value", ""))]
        return [self._element(node["backendDOMNodeId"]) for node in shown]

    def _element(self, number):
        remote = self.driver.execute_cdp_cmd("DOM.resolveNode", {"backendNodeId": number})["object"]["objectId"]
        keep = {"objectId": remote, "functionDeclaration": "function () { window.foundByRole = this; }"}
        self.driver.execute_cdp_cmd("Runtime.callFunctionOn", keep)
        return self.script("const found = window.foundByRole; delete window.foundByRole; return found")

    def by_role(self, role, name=None):
        """Waits for the first of these; gives it."""
        return self.until(lambda: next(iter(self.roles(role, name)), None), f"A {role} with the name {name!r}")

    def click(self, what, text=""):
        """Clicks an element, or the first part that matches and has the text."""
        self.until(lambda: self._click(what if not isinstance(what, str) else self.wait_for(what, text)), f"A click on {what}")

    @staticmethod
    def _click(element):
        element.click()
        return True

    def press(self, *keys):
        """Presses keys where the focus is."""
        ActionChains(self.driver).send_keys(*keys).perform()

    def focused(self):
        """The element that has the focus."""
        return self.driver.switch_to.active_element

    def size(self, width, height=HEIGHT):
        metrics = {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False}
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", metrics)

    def theme(self, name):
        """What the system says: dark or light."""
        self.media(**{"prefers-color-scheme": name})

    def media(self, **features):
        """What the system says. It asks for little motion, since drawing takes most of a test's time."""
        said = {"prefers-reduced-motion": "reduce", **features}
        wanted = [{"name": name, "value": value} for name, value in said.items()]
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": wanted})

    def is_scrolled_sideways(self):
        """Whether the page is wider than the window. What scrolls in a frame of its own does not count."""
        return self.script("return document.documentElement.scrollWidth > window.innerWidth")

    def errors(self):
        """What the console has had to complain of since it was asked last."""
        return [entry["message"] for entry in self.driver.get_log("browser") if entry["level"] == "SEVERE"]

    def expect_errors(self, pattern):
        """Takes errors from the console that a test has caused; others fail it."""
        assert [each for each in self.errors() if not re.search(pattern, each)] == []

    def axe(self, impacts=GRAVE):
        """The faults of accessibility of these impacts."""
        if not self.script("return 'axe' in window"):
            # Not a script of the page, whose policy forbids it.
            self.driver.execute_cdp_cmd("Runtime.evaluate", {"expression": gzip.decompress(AXE.read_bytes()).decode()})
        found = self.driver.execute_async_script(RUN_AXE)
        assert isinstance(found, list), found
        return [Fault(**each) for each in found if each["impact"] in impacts]

    def screenshot(self, path):
        pathlib.Path(path).write_bytes(self.driver.get_screenshot_as_png())

    def begin(self, url):
        """As every test finds it."""
        self.url = url
        self.size(WIDTH)
        self.media()

    def end(self):
        """Leaves nothing of a test: no page, no choice that it remembers."""
        with contextlib.suppress(WebDriverException):
            self.script("localStorage.clear()")
        self.driver.get("about:blank")


@contextlib.contextmanager
def browser(downloads):
    """A page of a browser that has a home of its own, and saves files in a folder."""
    with tempfile.TemporaryDirectory(prefix="browser-", ignore_cleanup_errors=True) as home:
        options = Options()
        options.binary_location = "/usr/lib/chromium/chromium-headless-shell"
        for option in OPTIONS:
            options.add_argument(option)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        proxies = [name for name in os.environ if name.lower().endswith("_proxy")]
        for name in proxies:
            del os.environ[name]  # there is no network but loopback
        environment = {**os.environ, "HOME": home, "XDG_CONFIG_HOME": home, "XDG_CACHE_HOME": home, "TMPDIR": home}
        service = Service("/usr/bin/chromedriver", log_path=f"{home}/driver.log", env=environment)
        driver = webdriver.Chrome(service=service, options=options)
        try:
            driver.set_script_timeout(SECONDS)
            saving = {"behavior": "allow", "downloadPath": str(downloads)}
            driver.execute_cdp_cmd("Browser.setDownloadBehavior", saving)
            yield Page(driver, "")
        finally:
            driver.quit()
