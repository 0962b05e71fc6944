"""The anonymous count of completed reminders, from the click on the panel to what a server receives a day later."""

import http.server
import json
import threading
import unittest

from harness import PROGRAM, DesktopTest, stop, wait_until

REPORT_FIELDS = {"schemaVersion", "reportId", "count", "reportCreatedDay"}


class CountingServer(http.server.ThreadingHTTPServer):
    """Keeps every request and confirms each report."""

    def __init__(self):
        super().__init__(("127.0.0.1", 0), Answer)
        self.requests = []
        threading.Thread(target=self.serve_forever, daemon=True).start()

    @property
    def address(self):
        return f"http://127.0.0.1:{self.server_port}/"


class Answer(http.server.BaseHTTPRequestHandler):
    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"]))
        self.server.requests.append((self.path, dict(self.headers), body))
        report = json.loads(body)
        answer = json.dumps({"reportId": report["reportId"], "count": report["count"], "status": "stored"}).encode()
        self.send_response(200)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(answer)))
        self.end_headers()
        self.wfile.write(answer)

    def log_message(self, *_):
        pass


class CountingTest(DesktopTest):
    def setUp(self):
        super().setUp()
        self.server = CountingServer()
        self.addCleanup(self.server.server_close)
        self.addCleanup(self.server.shutdown)
        self.values = self.data.parent / "configuration.json"
        self.values.write_text(json.dumps({
            "KestrantAggregateMetricsBaseURL": self.server.address,
            "KestrantAggregateMetricsPrivacyReady": True,
            "KestrantAggregateMetricsUploadEnabled": True,
        }))

    def complete_two(self):
        paths = [self.add_reminder(title) for title in ("Secret errand", "Private matter")]
        self.start("--configuration", str(self.values))
        self.expand()
        for path in paths:
            self.desktop.click(*self.circles()[0])
            wait_until(lambda: any("STATUS:COMPLETED" in other.read_text() for other in paths), "one is completed")
            paths = [other for other in paths if "STATUS:COMPLETED" not in other.read_text()]
            self.wait_for_circles(len(paths))
        stop(self.program)

    def start_a_day_later(self):
        self.set_preferences()
        self.program = self.desktop.spawn(["env", "FAKETIME_DONT_FAKE_MONOTONIC=1", "faketime", "-f", "+25h",
                                           PROGRAM, "--configuration", str(self.values)])
        self.addCleanup(stop, self.program)

    def test_two_completions_are_one_report_a_day_later_and_nothing_else_is_said(self):
        self.complete_two()
        self.assertEqual(self.server.requests, [], "nothing is sent before its time")
        self.start_a_day_later()
        wait_until(lambda: self.server.requests, "the report has arrived")
        self.wait_for_panel((205 - 11, 33))
        stop(self.program)
        [(path, headers, body)] = self.server.requests
        self.assertEqual(path, "/v1/completions")
        report = json.loads(body)
        self.assertEqual(set(report), REPORT_FIELDS)
        self.assertEqual(report["count"], 2)
        self.assertEqual(headers["User-Agent"], "Kestrant-AggregateMetrics/1")
        self.assertNotIn("Cookie", headers)
        self.assertNotIn("Authorization", headers)
        self.assertNotIn(b"errand", body)


if __name__ == "__main__":
    unittest.main()
