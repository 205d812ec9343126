"""A headless Chromium, spoken to through its driver."""

import contextlib
import json
import socket
import subprocess
import time
import urllib.error
import urllib.request

FLAGS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-sync",
         "--hide-scrollbars"]
ELEMENT = "element-6066-11e4-a52e-4f735466cecf"


class Browser:
    def __init__(self, folder):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            port = probe.getsockname()[1]
        self.base = f"http://127.0.0.1:{port}"
        self.driver = subprocess.Popen(["chromedriver", f"--port={port}"], stdout=subprocess.DEVNULL)
        self.wait_for(lambda: self.call("GET", "/status")["ready"])
        options = {"args": FLAGS + [f"--user-data-dir={folder}/profile"]}
        wanted = {"goog:chromeOptions": options, "goog:loggingPrefs": {"browser": "ALL", "performance": "ALL"}}
        session = self.call("POST", "/session", {"capabilities": {"alwaysMatch": wanted}})
        self.base += "/session/" + session["sessionId"]

    def call(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.base + path, data, {"Content-Type": "application/json"}, method=method)
        try:
            with urllib.request.urlopen(request, timeout=60) as response:
                return json.load(response)["value"]
        except urllib.error.HTTPError as error:
            raise RuntimeError(error.read().decode()) from error

    @staticmethod
    def wait_for(condition):
        for _ in range(1200):
            with contextlib.suppress(OSError):  # nobody listens yet
                if condition():
                    return
            time.sleep(0.05)
        raise RuntimeError("waited in vain")

    def open(self, address):
        self.call("POST", "/url", {"url": address})

    def run(self, script, *arguments):
        return self.call("POST", "/execute/sync", {"script": script, "args": list(arguments)})

    def get(self, expression):
        return self.run("return " + expression)

    def all(self, selector, expression):
        """What the expression makes of each element e."""
        return self.run(f"return [...document.querySelectorAll(arguments[0])].map((e) => {expression})", selector)

    def until(self, expression):
        self.wait_for(lambda: self.get(expression))

    def click(self, selector):
        self.act(selector, "click", {})

    def type(self, selector, text):
        self.act(selector, "value", {"text": text})

    def act(self, selector, action, body):
        found = self.call("POST", "/element", {"using": "css selector", "value": selector})
        self.call("POST", f"/element/{found[ELEMENT]}/{action}", body)

    def size(self, width, height):
        metrics = {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 500}
        self.call("POST", "/goog/cdp/execute", {"cmd": "Emulation.setDeviceMetricsOverride", "params": metrics})

    def logged(self, kind):
        return self.call("POST", "/se/log", {"type": kind})

    def close(self):
        self.call("DELETE", "")
        self.driver.terminate()
        self.driver.wait()
