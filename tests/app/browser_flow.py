#!/usr/bin/env python3
"""The browser host used as a person uses it, in headless chromium.

Starts `orvenda-reports serve` on a demo practice, opens the page in
chromium, looks the family statement up in the list, finds a patient by
typing part of the name, runs the report, waits for page 1, takes a
screenshot, downloads the PDF with the page's button and compares its text
with the command line's PDF of the same arguments.

Chromium is driven through its DevTools protocol over
--remote-debugging-pipe: JSON messages ended by a NUL byte on file
descriptors 3 (to the browser) and 4 (from it), which the standard library
speaks without a WebSocket client or a fixed port.

Exit status: 0 passed, 1 failed, 77 skipped (no chromium here).
"""
import argparse
import base64
import fcntl
import json
import os
import re
import select
import shutil
import subprocess
import sys
import tempfile
import time

SKIP = 77


class Browser:
    """One headless chromium and its DevTools pipe."""

    def __init__(self, chromium, profile):
        to_r, self.to_w = os.pipe()
        self.from_r, from_w = os.pipe()

        def wire():
            # Out of the way first: either pipe may itself sit on 3 or 4,
            # and a dup2 onto the same number would keep it close-on-exec.
            a = fcntl.fcntl(to_r, fcntl.F_DUPFD, 10)
            b = fcntl.fcntl(from_w, fcntl.F_DUPFD, 10)
            os.dup2(a, 3)
            os.dup2(b, 4)

        flags = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                 "--disable-background-networking", "--disable-component-update", "--disable-sync",
                 "--user-data-dir=" + profile, "--remote-debugging-pipe", "--window-size=1400,1000",
                 "about:blank"]
        self.proc = subprocess.Popen([chromium] + flags, preexec_fn=wire, close_fds=False,
                                     stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_r)
        os.close(from_w)
        self.buffer = b""
        self.next_id = 0
        self.events = []
        self.session = None

    def close(self):
        try:
            self.call("Browser.close", session=False, timeout=10)
        except Exception:
            pass
        try:
            self.proc.wait(timeout=10)
        except subprocess.TimeoutExpired:
            self.proc.kill()
            self.proc.wait()

    def _read(self, deadline):
        while b"\0" not in self.buffer:
            left = deadline - time.time()
            if left <= 0:
                raise TimeoutError("chromium did not answer in time")
            ready, _, _ = select.select([self.from_r], [], [], left)
            if ready:
                chunk = os.read(self.from_r, 1 << 20)
                if not chunk:
                    raise RuntimeError("chromium closed its pipe")
                self.buffer += chunk
        message, _, self.buffer = self.buffer.partition(b"\0")
        return json.loads(message)

    def call(self, method, params=None, session=True, timeout=60):
        self.next_id += 1
        message = {"id": self.next_id, "method": method, "params": params or {}}
        if session and self.session:
            message["sessionId"] = self.session
        os.write(self.to_w, json.dumps(message).encode() + b"\0")
        deadline = time.time() + timeout
        while True:
            reply = self._read(deadline)
            if reply.get("id") == self.next_id:
                if "error" in reply:
                    raise RuntimeError("%s: %s" % (method, reply["error"]))
                return reply.get("result", {})
            self.events.append(reply)

    def wait_event(self, method, test=lambda p: True, timeout=60):
        deadline = time.time() + timeout
        while True:
            for i, e in enumerate(self.events):
                if e.get("method") == method and test(e.get("params", {})):
                    return self.events.pop(i)["params"]
            self.events.append(self._read(deadline))

    def js(self, expression):
        """The value of an expression in the page (promises awaited)."""
        r = self.call("Runtime.evaluate", {"expression": expression, "returnByValue": True,
                                           "awaitPromise": True})
        if "exceptionDetails" in r:
            raise RuntimeError("in the page: %s: %s" % (expression, r["exceptionDetails"]))
        return r["result"].get("value")

    def wait_for(self, expression, what, timeout=120):
        deadline = time.time() + timeout
        while time.time() < deadline:
            value = self.js(expression)
            if value:
                return value
            time.sleep(0.1)
        raise TimeoutError("waited %d s for %s" % (timeout, what))


def run(cmd, **kw):
    return subprocess.run(cmd, check=True, capture_output=True, text=True, **kw).stdout


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--app", required=True, help="the orvenda-reports program")
    ap.add_argument("--out", required=True, help="a folder for the screenshots and files")
    ap.add_argument("--chromium", default=shutil.which("chromium") or "")
    args = ap.parse_args()
    if not args.chromium or not os.path.exists(args.chromium):
        print("SKIPPED: chromium is not installed here (apt-get install chromium); "
              "the browser test needs it")
        return SKIP
    if not shutil.which("pdftotext"):
        print("SKIPPED: pdftotext (poppler-utils) is not installed here")
        return SKIP

    os.makedirs(args.out, exist_ok=True)
    db = os.path.join(args.out, "demo.db")
    if os.path.exists(db):
        os.remove(db)
    run([args.app, "demo-db", db, "--patients", "200", "--seed", "4", "--today", "2026-11-20"])
    # A patient to look for by name, and the members of the family.
    rows = run([args.app, "sql", "--db", db,
                "SELECT ID, LastName, FirstName FROM Patient WHERE ID = 12"]).splitlines()
    pid, last, first = rows[1].split("\t")
    typed = last[:4] + " " + first[:2]

    server = subprocess.Popen([args.app, "serve", "--db", db, "--listen", "127.0.0.1:0",
                               "--today", "2026-11-20", "--office", "1", "--user", "desk"],
                              stderr=subprocess.PIPE, text=True)
    profile = tempfile.mkdtemp(prefix="orv-chromium-")
    downloads = tempfile.mkdtemp(prefix="orv-downloads-")
    browser = None
    try:
        url = None
        deadline = time.time() + 60
        while url is None and time.time() < deadline:
            line = server.stderr.readline()
            if not line:
                raise RuntimeError("the server ended before it listened")
            m = re.search(r"(http://\S+)", line)
            if m:
                url = m.group(1)
        if url is None:
            raise TimeoutError("the server did not say where it listens")

        browser = Browser(args.chromium, profile)
        target = browser.call("Target.createTarget", {"url": "about:blank"}, session=False)
        attached = browser.call("Target.attachToTarget",
                                {"targetId": target["targetId"], "flatten": True}, session=False)
        browser.session = attached["sessionId"]
        browser.call("Page.enable")
        browser.call("Runtime.enable")
        browser.call("Emulation.setDeviceMetricsOverride",
                     {"width": 1400, "height": 1000, "deviceScaleFactor": 1, "mobile": False})
        browser.call("Browser.setDownloadBehavior",
                     {"behavior": "allow", "downloadPath": downloads, "eventsEnabled": True},
                     session=False)
        browser.call("Page.navigate", {"url": url})
        browser.wait_for("document.body && document.body.dataset.ready === '1'", "the page")

        # The report, found with the search box.
        browser.js("document.getElementById('search').focus()")
        browser.call("Input.insertText", {"text": "statements"})
        browser.wait_for("!!document.getElementById('method-rptStatements')", "the statements in the list")
        shown = browser.js("[...document.querySelectorAll('.method b')].map(b => b.textContent)")
        if "rptAccountsReceivable" in shown:
            raise AssertionError("the search kept reports it does not match: %s" % shown)
        browser.js("document.getElementById('method-rptStatements').click()")
        browser.wait_for("!!document.getElementById('f-PatientIDs')", "the statement's form")

        # The patient, by part of the name.
        browser.js("document.getElementById('f-PatientIDs').focus()")
        browser.call("Input.insertText", {"text": typed})
        browser.wait_for("document.querySelectorAll('.choices .choice').length > 0",
                         "patients matching '%s'" % typed)
        picked = browser.js("(() => { const c = [...document.querySelectorAll('.choices .choice')]"
                            ".find(d => d.dataset.id === '%s'); if (c) c.click(); return !!c; })()" % pid)
        if not picked:
            raise AssertionError("patient #%s is not among the matches of '%s'" % (pid, typed))
        browser.js("document.getElementById('f-Family').click()")
        browser.js("document.getElementById('f-dtStart').value = '2026-01-01'")
        browser.js("document.getElementById('run').click()")

        # Page 1 on screen.
        browser.wait_for("(() => { const i = document.getElementById('page'); "
                         "return !document.getElementById('result').hidden && i.complete && i.naturalWidth > 0; })()",
                         "page 1 of the statement")
        failure = browser.js("document.getElementById('failure').hidden ? '' : document.getElementById('failure').textContent")
        if failure:
            raise AssertionError("the report failed: " + failure)
        shot = browser.call("Page.captureScreenshot", {"format": "png"})
        screenshot = os.path.join(args.out, "statement-page.png")
        with open(screenshot, "wb") as f:
            f.write(base64.b64decode(shot["data"]))

        # The PDF through the page's button.
        browser.js("document.getElementById('download-pdf').click()")
        done = browser.wait_event("Browser.downloadProgress", lambda p: p.get("state") in ("completed", "canceled"),
                                  timeout=120)
        if done["state"] != "completed":
            raise AssertionError("the download did not complete")
        files = [f for f in os.listdir(downloads) if f.endswith(".pdf")]
        if len(files) != 1:
            raise AssertionError("expected one downloaded PDF, found %s" % files)
        browser_text = run(["pdftotext", "-layout", os.path.join(downloads, files[0]), "-"])

        cli_pdf = os.path.join(args.out, "statement-cli.pdf")
        run([args.app, "--db", db, "--today", "2026-11-20", "--office", "1", "--user", "desk",
             "--out", cli_pdf, "rptStatements", "2026-01-01", "2026-11-20", pid, "True"])
        cli_text = run(["pdftotext", "-layout", cli_pdf, "-"])
        if browser_text != cli_text or not cli_text.strip():
            with open(os.path.join(args.out, "statement-browser.txt"), "w") as f:
                f.write(browser_text)
            raise AssertionError("the downloaded PDF's text differs from the command line's "
                                 "(see statement-browser.txt in %s)" % args.out)
        if last not in cli_text:
            raise AssertionError("the statement does not name %s" % last)
        print("passed: %s found as '%s', statement of %d page(s); screenshot %s" %
              (last, typed, browser.js("state.pages"), screenshot))
        return 0
    except (AssertionError, TimeoutError, RuntimeError, subprocess.CalledProcessError) as e:
        print("FAILED: %s" % e)
        return 1
    finally:
        if browser:
            browser.close()
        server.terminate()
        try:
            server.wait(timeout=30)
        except subprocess.TimeoutExpired:
            server.kill()
        shutil.rmtree(profile, ignore_errors=True)
        shutil.rmtree(downloads, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
