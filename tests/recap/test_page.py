"""The page that shows shared recaps, in a browser without a window."""

import calendar
import html
import http.server
import json
import pathlib
import re
import shutil
import subprocess
import tempfile
import threading
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = (ROOT / "resources/share/index.html").read_bytes()
LINKS = json.loads((pathlib.Path(__file__).parent / "links.json").read_text())
BROWSER = shutil.which("chromium")


class Server(http.server.ThreadingHTTPServer):
    """Serves the page at /r, and keeps what it was asked for."""

    def __init__(self):
        self.requests = []

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(handler):
                self.requests.append(handler.path)
                handler.send_response(200 if handler.path == "/r" else 404)
                handler.end_headers()
                if handler.path == "/r":
                    handler.wfile.write(PAGE)

            def log_message(handler, *arguments):
                pass

        super().__init__(("127.0.0.1", 0), Handler)
        threading.Thread(target=self.serve_forever, daemon=True).start()


class PageTest(unittest.TestCase):
    def setUp(self):
        self.server = Server()
        self.addCleanup(self.server.server_close)
        self.addCleanup(self.server.shutdown)

    def shown(self, fragment, locale):
        """The texts of the page by their ids, and the page."""
        with tempfile.TemporaryDirectory() as profile:
            run = subprocess.run(
                [BROWSER, "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run",
                 f"--user-data-dir={profile}", f"--lang={locale}", f"--accept-lang={locale}", "--dump-dom",
                 f"http://127.0.0.1:{self.server.server_port}/r#{fragment}"],
                capture_output=True, text=True, timeout=240, check=True, env={"HOME": profile, "PATH": "/usr/bin:/bin"})
        texts = {name: html.unescape(text) for name, text in re.findall(r' id="(\w+)"[^>]*>([^<]*)<', run.stdout)}
        return texts, run.stdout

    def test_shows_what_the_link_holds_and_asks_for_nothing_else(self):
        for number, link in enumerate(LINKS):
            locale, expected = [("en-GB", "english"), ("fr-FR", "french")][number % 2]
            with self.subTest(link=link["fragment"], locale=locale):
                texts, page = self.shown(link["fragment"], locale)
                spaces = str.maketrans("\u2009\u00a0", "  ")
                self.assertEqual([texts[name].translate(spaces).replace(" – ", "–") for name in ("period", "number", "sentence")],
                                 [text.replace(" – ", "–") for text in link[expected]])
                year, month, _ = map(int, link["first"].split("-"))
                marks = [0, 7, calendar.monthrange(year, month)[1], 365 + calendar.isleap(year)][link["kind"]]
                chart = re.search('<div id="chart">(.*?)</div>', page).group(1)
                self.assertEqual(len(re.findall("<(?:rect|circle) ", chart)), marks)
                self.assertIn(f'<html lang="{locale}"', page)
        self.assertEqual(set(self.server.requests), {"/r"})

    def test_refuses_a_link_that_lost_its_end_or_carries_something_else(self):
        for fragment in (LINKS[1]["fragment"][:-1], '"><img src=x onerror=document.title=1>'):
            with self.subTest(fragment=fragment):
                texts, page = self.shown(fragment, "en-GB")
                self.assertIn("not complete", texts["sentence"])
                self.assertNotIn("<img", page)
                self.assertNotIn("<svg", page)


if __name__ == "__main__":
    unittest.main()
