"""What the tests with other programs share: a folder of lists, Kestrant's command line on it, and the skip for a program
that is not installed.
"""

import datetime
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
import zoneinfo

PROGRAM = os.environ.get("KESTRANT", str(pathlib.Path(__file__).resolve().parents[2] / "build/dev/src/app/kestrant"))

# CTest's SKIP_RETURN_CODE.
SKIPPED = 77


def main(peer):
    """Runs the tests of a file that needs the program `peer`."""
    if not shutil.which(peer):
        print(f"SKIPPED: {peer} is not installed; scripts/install-dependencies installs it.")
        sys.exit(SKIPPED)
    unittest.main(verbosity=2)


def unfolded(text):
    """The content lines of an iCalendar text, folded lines joined."""
    return text.replace("\r\n", "\n").replace("\n ", "").splitlines()


class InteropTest(unittest.TestCase):
    now = "2026-03-26T09:00:00Z"

    def setUp(self):
        self.home = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="kestrant-interop-")))
        self.environment = {"PATH": os.environ["PATH"], "HOME": str(self.home), "TZ": "Europe/Paris", "LC_ALL": "C.UTF-8"}
        self.store = self.home / "store"
        self.work = self.make_list(self.store, "work", "Work", "#FF9F0A")

    def make_list(self, store, folder, name, colour):
        path = store / folder
        path.mkdir(parents=True)
        (path / "displayname").write_text(name)
        (path / "color").write_text(colour)
        return path

    def write(self, folder, uid, component, *lines):
        """An item as a program that knows nothing of Kestrant writes it; returns its path."""
        path = folder / f"{uid}.ics"
        content = ["BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//Somebody//Else//EN", f"BEGIN:{component}", f"UID:{uid}",
                   "DTSTAMP:20260301T080000Z", *lines, f"END:{component}", "END:VCALENDAR", ""]
        path.write_bytes("\r\n".join(content).encode())
        return path

    def run_program(self, *arguments, given=""):
        """Runs a program to its end; it must succeed and complain of nothing."""
        done = subprocess.run([str(a) for a in arguments], env=self.environment, input=given, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, timeout=60)
        self.assertEqual(done.returncode, 0, f"{arguments}: {done.stdout}{done.stderr}")
        return done

    def kestrant(self, command, *arguments, store=None):
        done = self.run_program(PROGRAM, command, *arguments, "--store", f"vdir:{store or self.store}", "--now", self.now)
        self.assertEqual(done.stderr, "")
        return done.stdout

    def reminders(self, store=None):
        """What Kestrant shows, by title."""
        return {task["title"]: task for task in json.loads(self.kestrant("list", "--json", store=store))}

    def week(self, *options):
        """The rows of the coming week by day, without reminders; days and rows in order."""
        days = json.loads(self.kestrant("agenda", "--json", "--no-reminders", *options))
        return {self.local(day["date"])[:10]: day["events"] for day in days}

    def local(self, instant):
        """An instant that Kestrant printed, as the clock on the wall: "2026-03-27 14:30"."""
        moment = datetime.datetime.fromisoformat(instant.replace("Z", "+00:00"))
        return moment.astimezone(zoneinfo.ZoneInfo(self.environment["TZ"])).strftime("%Y-%m-%d %H:%M")

    def identifier(self, title, store=None):
        return self.reminders(store)[title]["id"]
