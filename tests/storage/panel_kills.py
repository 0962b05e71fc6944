#!/usr/bin/env python3
"""The panel killed at random moments, on a virtual display, while a person, the panel itself and commands write.

What has to hold after each kill: what a command has told to be done is there, no file is half written, what nobody touched
is as it was, the record of completions, the settings and the counts can be read, and the next command and the next start of
the panel work and leave no note of an interrupted change.

--rounds is how often it is killed; --seed repeats a run. KESTRANT names the program."""

import argparse
import json
import os
import pathlib
import random
import re
import sqlite3
import subprocess
import sys
import time

SOURCES = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(SOURCES / "scripts"))

from virtual_desktop import VirtualDesktop, stop, wait_until  # noqa: E402

PROGRAM = os.environ.get("KESTRANT", str(SOURCES / "build/dev/src/app/kestrant"))
IDENTIFIER = "com.Kestrant.notchapp"
SETTINGS = {"kestrantCompletedInitialOnboarding": True, "kestrantCompletedInitialYearReveal": True,
            "kestrantStartedInitialYearReveal": True, "featureAnnouncement.disabled": True,
            "kestrantEventStore": "vdir", "reminderSortMode": "manual"}
COUNTING = {"KestrantAggregateMetricsBaseURL": "http://127.0.0.1:9/", "KestrantAggregateMetricsPrivacyReady": True,
            "KestrantAggregateMetricsUploadEnabled": True}


def reminder(uid, *lines):
    content = ["BEGIN:VCALENDAR", "VERSION:2.0", "BEGIN:VTODO", f"UID:{uid}", "DTSTAMP:20260301T080000Z",
               f"SUMMARY:{uid}", *lines, "X-KEEP:1", "END:VTODO", "END:VCALENDAR", ""]
    return "\r\n".join(content)


class Campaign:
    def __init__(self, desktop, seed):
        self.desktop = desktop
        self.random = random.Random(seed)
        self.data = pathlib.Path(desktop.environment["XDG_DATA_HOME"]) / IDENTIFIER
        self.lists = self.data / "calendars"
        self.settings = pathlib.Path(desktop.environment["XDG_CONFIG_HOME"]) / IDENTIFIER / "preferences.json"
        self.configuration = desktop.folder / "configuration.json"
        self.faults = []
        self.done = 0

    def prepare(self):
        self.configuration.write_text(json.dumps(COUNTING))
        self.settings.parent.mkdir(parents=True)
        self.settings.write_text(json.dumps(SETTINGS))
        for name in ("home", "work", "rest"):
            (self.lists / name).mkdir(parents=True)
            (self.lists / name / "displayname").write_text(name.capitalize())
        for number in range(6):
            self.put("home", f"own{number}")
        self.put("home", "series", "DUE;VALUE=DATE:20260326", "RRULE:FREQ=DAILY")
        for number in range(3):
            self.put("rest", f"untouched{number}", "STATUS:COMPLETED", "COMPLETED:20200101T080000Z")

    def put(self, folder, uid, *lines):
        (self.lists / folder / f"{uid}.ics").write_bytes(reminder(uid, *lines).encode())

    def expect(self, holds, what, *details):
        if not holds:
            self.faults.append(what)
            print("FAULT", what, *(str(each).strip() for each in details), sep="\n      ", flush=True)

    def kestrant(self, *arguments):
        return subprocess.Popen([PROGRAM, *arguments], env=self.desktop.environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def start(self):
        panel = self.desktop.spawn([PROGRAM, "--configuration", str(self.configuration)])
        middle = self.desktop.width // 2
        try:
            wait_until(lambda: self.desktop.picture().pixel(middle, 12) != self.desktop.background or panel.poll() is not None,
                       "the panel is there", 60)
        except AssertionError as problem:
            self.expect(False, str(problem))
        self.expect(panel.poll() is None, "the next start fails", panel.poll())
        return panel

    def person(self, number):
        """One thing that a person does by keyboard or pointer; where it leads does not matter."""
        middle = self.desktop.width // 2
        kind = self.random.randrange(6)
        if kind < 2:
            self.desktop.key("ctrl+n")
            self.desktop.type(f"typed{number}x{self.random.randrange(1000)}")
            self.desktop.key("Return")
        elif kind == 2:
            # A circle, if there is one.
            self.desktop.click(middle - 440 + 230 * self.random.randrange(3), 60 + 60 * self.random.randrange(3))
        elif kind == 3:
            self.desktop.key(*self.random.choice([("Tab", "space"), ("Menu", "f", "Return"), ("Delete",), ("Down", "space")]))
        elif kind == 4:
            self.desktop.key("ctrl+z")
        else:
            self.desktop.key("ctrl+shift+z")

    def round(self, number):
        panel = self.start()
        self.desktop.move(self.desktop.width // 2, 8)
        commands = {}
        for step in range(self.random.randrange(1, 7)):
            self.person(number)
            if self.random.random() < 0.5:
                uid = f"told{number}x{step}"
                self.put("work", uid)
                kind = self.random.choice([["complete", uid], ["move", uid, "home"], ["edit", uid, "--notes", "new"],
                                           ["delete", uid]])
                commands[uid] = (kind, self.kestrant(*kind))
        time.sleep(self.random.random() * 1.5)  # the moment is the point, nothing is waited for
        panel.kill()
        panel.wait()
        self.desktop.move(100, self.desktop.height - 100)
        for uid, (arguments, process) in commands.items():
            _, err = process.communicate(timeout=60)
            self.expect(process.returncode == 0 or err, f"round {number}: {arguments} refused without a reason")
            if process.returncode == 0:
                self.check_done(number, uid, arguments)
        self.check(number)

    def check_done(self, number, uid, arguments):
        self.done += 1
        found = [path for path in self.lists.glob(f"*/{uid}.ics")]
        texts = [path.read_bytes().decode() for path in found]
        # What a person did by chance in the panel may come on top.
        wanted = {"complete": lambda: "STATUS:" in texts[0], "move": lambda: True, "edit": lambda: "DESCRIPTION:new" in texts[0],
                  "delete": lambda: True}[arguments[0]]
        gone = arguments[0] == "delete"
        self.expect(len(found) <= 1 and (gone or not found or wanted()), f"round {number}: {arguments} has no effect", found,
                    texts)

    def check(self, number):
        listed = self.kestrant("list", "--json")
        out, err = listed.communicate(timeout=60)
        self.expect(listed.returncode == 0 and not err, f"round {number}: the next command fails", err)
        ids = [each["id"] for each in json.loads(out)] if out else []
        self.expect(len(ids) == len(set(ids)), f"round {number}: one reminder twice", ids)
        uids = []
        for path in self.lists.glob("*/*.ics"):
            text = path.read_bytes().decode()
            self.expect(text.startswith("BEGIN:VCALENDAR") and text.endswith("END:VCALENDAR\r\n"),
                        f"round {number}: half a file: {path.name}", text)
            uids += re.findall("\nUID:(.*)\r", text)
        self.expect(len(uids) == len(set(uids)), f"round {number}: an item twice", sorted(uids))
        for path in self.lists.glob("rest/untouched*.ics"):
            self.expect(path.read_bytes().decode() == reminder(path.stem, "STATUS:COMPLETED", "COMPLETED:20200101T080000Z"),
                        f"round {number}: {path.name} changed")
        self.expect(len(list(self.lists.glob("rest/*.ics"))) == 3, f"round {number}: something untouched is gone")
        notes = [path for path in self.data.rglob(".kestrant-*.journal")]
        self.expect(not notes, f"round {number}: a note remains", notes)
        for path in (self.settings, self.data / "completion-ledger-v1.json"):
            if path.exists():
                try:
                    json.loads(path.read_text())
                except ValueError as problem:
                    self.expect(False, f"round {number}: {path.name}: {problem}")
        aside = [path.name for folder in (self.data, self.settings.parent) for path in folder.glob("*amaged*")]
        self.expect(not aside, f"round {number}: set aside as damaged", aside)
        for path in self.data.rglob("*.sqlite*"):
            if path.suffix.endswith("journal"):
                continue
            with sqlite3.connect(path) as database:
                sound = database.execute("PRAGMA integrity_check").fetchone()
            self.expect(sound == ("ok",), f"round {number}: the counts are damaged", sound)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--rounds", type=int, default=100)
    parser.add_argument("--seed", type=int, default=random.randrange(10**6))
    options = parser.parse_args()
    print(f"seed {options.seed}, {options.rounds} rounds", flush=True)
    with VirtualDesktop() as desktop:
        campaign = Campaign(desktop, options.seed)
        campaign.prepare()
        for number in range(options.rounds):
            campaign.round(number)
        stop(campaign.start())
    print(f"{options.rounds} kills, {campaign.done} commands done, {len(campaign.faults)} faults")
    return 1 if campaign.faults else 0


if __name__ == "__main__":
    sys.exit(main())
