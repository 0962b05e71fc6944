#!/usr/bin/env python3
"""Campaigns against the folder of reminders, with the real command line program.

  campaign.py fail      every command, with the nth call to the disk failing, for every n
  campaign.py kill      every command, killed after each call that changes something
  campaign.py writers   several processes at once on one item, the record of completions and the settings

What has to hold after each run: a folder that is as it was before or as the command was to make it, no file half
written, status 0 only for what took effect, a reason on the error output for what did not, and that the next try works.

--long has reading calls fail too, in several ways, and takes a thousand rounds of every kind; --seed and --rounds repeat
a run of writers. KESTRANT names the
program, FAULTY_DISK the library made of faulty_disk.c; without it that is compiled first."""

import argparse
import concurrent.futures
import contextlib
import errno
import fcntl
import itertools
import json
import os
import pathlib
import random
import re
import sqlite3
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
PROGRAM = os.environ.get("KESTRANT", str(HERE.parents[1] / "build/dev/src/app/kestrant"))
NOW = "2026-03-26T09:00:00Z"
KILLED = -9


def item(uid, *lines, kind="VTODO"):
    content = ["BEGIN:VCALENDAR", "VERSION:2.0", f"BEGIN:{kind}", f"UID:{uid}", "DTSTAMP:20260301T080000Z", *lines,
               f"END:{kind}", "END:VCALENDAR", ""]
    return "\r\n".join(content)


PAIR = item("p1", "SUMMARY:first").replace("END:VCALENDAR\r\n", "") + item("p2", "SUMMARY:second").split("VERSION:2.0\r\n")[1]
SERIES = item("s", "SUMMARY:daily", "DUE;VALUE=DATE:20260326", "RRULE:FREQ=DAILY")
FOLDER = {"home/displayname": "Home", "work/displayname": "Work", "home/a.ics": item("a", "SUMMARY:milk", "X-KEEP:1"),
          "home/s.ics": SERIES, "home/p.ics": PAIR, "cal/e.ics": item("e", "DTSTART:20260327T090000Z", kind="VEVENT")}
COUNTED = ["--configuration", str(HERE / "counting.json")]

COMMANDS = {
    "add": ["add", "new", "--list", "home"],
    "edit": ["edit", "a", "--title", "bread", "--notes", "two"],
    "complete": ["complete", "a"],
    "complete one of a series": ["complete", "s"],
    "move": ["move", "a", "work"],
    "move out of a shared file": ["move", "p2", "work"],
    "delete": ["delete", "a"],
    "delete out of a shared file": ["delete", "p1"],
    "flag": ["flag", "a"],
    "add an event": ["add-event", "lunch", "--start", "2026-03-27T12:00", "--end", "2026-03-27T13:00", "--calendar",
                     "cal"],
    "complete and count": ["complete", "a", *COUNTED],
}


class Home:
    """A person's folders, on which the program runs."""

    def __init__(self, path):
        self.path = pathlib.Path(path)
        self.store = self.path / "store"
        self.data = self.path / "data" / "com.Kestrant.notchapp"
        for name, text in FOLDER.items():
            self.put(name, text)
        self.environment = {"PATH": os.environ["PATH"], "HOME": str(self.path), "TZ": "Europe/Paris", "LC_ALL": "C.UTF-8",
                            "XDG_DATA_HOME": str(self.path / "data"), "XDG_CONFIG_HOME": str(self.path / "config")}

    def put(self, name, text):
        path = self.store / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text.encode())

    def begin(self, *arguments, **extra):
        return subprocess.Popen([PROGRAM, *arguments, "--store", f"vdir:{self.store}", "--now", NOW], text=True,
                                env={**self.environment, **extra}, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def run(self, *arguments, **extra):
        process = self.begin(*arguments, **extra)
        out, err = process.communicate(timeout=60)
        return process.returncode, out, err

    def text(self, name):
        path = self.store / name
        return path.read_bytes().decode() if path.exists() else None

    def items(self):
        """The text of every item, with new identifiers made alike."""
        found = {}
        for path in sorted(self.store.glob("*/[!.]*.ics")):
            found.setdefault(alike(f"{path.parent.name}/{path.name}"), []).append(alike(path.read_bytes().decode()))
        return found

    def hidden(self):
        return [path.name for path in self.path.rglob(".kestrant-*")]

    def ledger(self):
        path = self.data / "completion-ledger-v1.json"
        return json.loads(path.read_bytes())["records"] if path.exists() else {}

    def counted(self):
        """Completions in the database of counts, and what SQLite finds wrong with it."""
        path = self.data / "AggregateMetrics/aggregate-completions-v1.sqlite"
        with contextlib.closing(sqlite3.connect(path)) as database:
            sound = database.execute("PRAGMA integrity_check").fetchone()[0]
            return database.execute("SELECT pending_count FROM aggregate_state").fetchone()[0], sound


def alike(text):
    return re.sub(r"[0-9A-F]{8}-[0-9A-F-]{27}", "NEW", text)


def disk(library, root, log, at, error, kills, only_changes):
    values = {"LD_PRELOAD": library, "DISK_ROOT": str(root), "DISK_LOG": str(log)}
    if at:
        values["DISK_AT"] = str(at)
    if error:
        values["DISK_ERROR"] = str(error)
    if kills:
        values["DISK_KILL"] = "1"
    if only_changes:
        values["DISK_CHANGES"] = "1"
    return values


class Campaign:
    def __init__(self, options):
        self.options = options
        self.faults = []
        self.runs = 0
        self.random = random.Random(options.seed)
        self.folder = None

    def expect(self, holds, what, *details):
        if not holds:
            self.faults.append(what)
            print("FAULT", what, *(str(each).strip() for each in details), sep="\n      ", flush=True)

    @contextlib.contextmanager
    def home(self):
        with tempfile.TemporaryDirectory(prefix="home-", dir=self.folder) as path:
            yield Home(path)

    def library(self):
        if "FAULTY_DISK" in os.environ:
            return os.environ["FAULTY_DISK"]
        library = os.path.join(self.folder, "faulty_disk.so")
        subprocess.run(["cc", "-shared", "-fPIC", "-O1", "-o", library, HERE / "faulty_disk.c", "-ldl"], check=True)
        return library

    def each_call(self, name, arguments, library, error, kills):
        """Runs a command once for each of its calls, with that call failing or the last one."""
        only_changes = kills or not self.options.long

        def run(home, at=None):
            log = home.path / "calls"
            faults = disk(library, home.store.parent, log, at, error, kills, only_changes)
            status, _, err = home.run(*arguments, **faults)
            calls = [line.replace(str(home.path), "~") for line in log.read_text().splitlines()] if log.exists() else []
            log.unlink(missing_ok=True)
            return status, err, calls

        with self.home() as home:
            before = home.items()
            status, err, calls = run(home)
            after = home.items()
            self.expect(status == 0 and after != before and len(calls) > 3, f"{name}: does not work at all", err)

        def one(at):
            with self.home() as home:
                status, err, calls = run(home, at)
                if len(calls) >= at:
                    self.check(home, f"{name}, call {calls[at - 1]}", arguments, before, after, status, err)

        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            list(pool.map(one, range(1, len(calls) + 3)))

    def check(self, home, what, arguments, before, after, status, err):
        self.runs += 1
        was_killed = status == KILLED
        if status not in (KILLED, 0):
            self.expect(err, f"{what}: refused without a reason")
        found = home.items()
        if status == 0:
            self.expect(found == after, f"{what}: done, but not what was asked for", err, found)
        elif status != KILLED:
            self.expect(status == 1 and found in (before, after), f"{what}: refused (status {status}), but changed", err,
                        found)
        status, _, err = home.run("list", "--json")
        found = home.items()
        self.expect(status == 0 and not err and found in (before, after), f"{what}: half of it remains", err, found)
        self.expect(not [name for name in home.hidden() if name.endswith(".journal")], f"{what}: a note remains")
        if found == before:
            status, _, err = home.run(*arguments)
            self.expect(status == 0 and home.items() == after, f"{what}: the next try does not work", err, home.items())
        # Whatever changes something next brings the record up to date.
        home.run("flag", "s")
        completed = sum("COMPLETED:" in text for texts in home.items().values() for text in texts)
        if arguments[0] == "complete":
            self.expect(len(home.ledger()) == completed, f"{what}: {completed} completed, {len(home.ledger())} recorded")
        if "--configuration" in arguments:
            # What could not be stored is kept for the next one who counts; what a process had not begun to store when it
            # was killed is not counted.
            home.run("complete", "p1", *COUNTED)
            counted, sound = home.counted()
            self.expect(sound == "ok" and counted in ((1, 2) if was_killed else (2,)),
                        f"{what}: {counted} of 2 completions counted, the database is {sound}", err)

    def calls(self, errors, kills):
        library = self.library()
        for error, (name, arguments) in itertools.product(errors, COMMANDS.items()):
            self.each_call(name, arguments, library, error, kills)

    def fail(self):
        self.calls([errno.EIO, errno.ENOSPC, errno.EINVAL, errno.EACCES] if self.options.long else [errno.EIO], False)

    def kill(self):
        self.calls([None], True)

    # Several writers

    def at_once(self, home, *commands):
        """The exit status and the error output of commands that run at the same time."""
        processes = []
        for arguments in commands:
            processes.append(home.begin(*arguments))
            time.sleep(self.random.random() * 0.004)  # lets the order vary, waits for nothing
        ends = [(process, process.communicate(timeout=60)[1]) for process in processes]
        self.runs += len(ends)
        return [(process.returncode, err) for process, err in ends]

    def edits(self, home, number):
        home.put("home/a.ics", FOLDER["home/a.ics"])
        wanted = {"--title": f"SUMMARY:t{number}", "--notes": f"DESCRIPTION:n{number}", "--priority": "PRIORITY:1"}
        values = {"--title": f"t{number}", "--notes": f"n{number}", "--priority": "high"}
        ends = self.at_once(home, *(["edit", "a", option, value] for option, value in values.items()))
        text = home.text("home/a.ics")
        for line, (status, err) in zip(wanted.values(), ends):
            self.expect((line in text) == (status == 0), f"round {number}: an edit with status {status} is lost", line, err,
                        text)

    def same_property(self, home, number):
        home.put("home/a.ics", FOLDER["home/a.ics"])
        ends = self.at_once(home, *(["edit", "a", "--title", f"{who}{number}"] for who in "xy"))
        text = home.text("home/a.ics")
        done = [f"SUMMARY:{who}{number}" for who, (status, _) in zip("xy", ends) if status == 0]
        self.expect(any(line in text for line in done), f"round {number}: none of two titles is there", ends, text)

    def removal(self, home, number):
        home.put("home/a.ics", FOLDER["home/a.ics"])
        (status, err), _ = self.at_once(home, ["delete", "a"], ["edit", "a", "--title", "back"])
        self.expect((home.text("home/a.ics") is None) == (status == 0), f"round {number}: deleted (status {status}), and there",
                    err)

    def series(self, home, number):
        home.put("home/s.ics", SERIES)
        copies = set(home.store.glob("home/*-*.ics"))
        ends = self.at_once(home, *[["complete", "s"]] * 3)
        done = sum(status == 0 for status, _ in ends)
        made = len(set(home.store.glob("home/*-*.ics")) - copies)
        due = f"DUE;VALUE=DATE:202603{26 + done}"
        self.expect(made == done > 0 and due in home.text("home/s.ics"),
                    f"round {number}: {done} completions, {made} copies", ends, home.text("home/s.ics"))
        for status, err in ends:
            self.expect(status == 0 or err, f"round {number}: refused without a reason")

    def move(self, home, number):
        home.put("home/a.ics", FOLDER["home/a.ics"])
        (home.store / "work/a.ics").unlink(missing_ok=True)
        ends = self.at_once(home, ["move", "a", "work"], ["edit", "a", "--title", f"m{number}"], ["move", "a", "work"])
        texts = [text for text in (home.text("home/a.ics"), home.text("work/a.ics")) if text]
        self.expect(len(texts) == 1 and (ends[1][0] != 0 or f"SUMMARY:m{number}" in texts[0]),
                    f"round {number}: moved and edited", ends, texts)

    def other_program(self, home, number):
        """One that locks nothing, but writes whole files as synchronisers do."""
        home.put("home/a.ics", FOLDER["home/a.ics"])
        process = home.begin("edit", "a", "--title", f"o{number}")
        time.sleep(self.random.random() * 0.03)
        home.put("home/a.icsXXXX", home.text("home/a.ics").replace("X-KEEP:1", f"X-KEEP:{number + 2}"))
        os.rename(home.store / "home/a.icsXXXX", home.store / "home/a.ics")
        _, err = process.communicate(timeout=60)
        self.runs += 1
        self.expect(f"X-KEEP:{number + 2}\r\n" in home.text("home/a.ics"), f"round {number}: another program's change is lost",
                    err)

    def records(self, home, number):
        names = [f"r{number}x{k}" for k in range(4)]
        for name in names:
            home.put(f"home/{name}.ics", item(name, "SUMMARY:once"))
        self.at_once(home, *(["complete", name] for name in names))
        missing = [name for name in names if name not in home.ledger()]
        self.expect(not missing, f"round {number}: without a record: {missing}")

    def settings(self, home, number):
        path = home.path / "config/com.Kestrant.notchapp/preferences.json"
        path.parent.mkdir(parents=True, exist_ok=True)
        names = [f"f{k}" for k in range(3)]
        for name in names:
            home.put(f"home/{name}.ics", item(name, "SUMMARY:flag"))
        path.write_text(json.dumps({"kept": 1, "reminderFlagIndex.localOverrides": {name: False for name in names}}))
        ends = self.at_once(home, *(["flag", name] for name in names))
        values = json.loads(path.read_text())
        flags = values["reminderFlagIndex.localOverrides"]
        wanted = {name: True for name in names}
        self.expect(values["kept"] == 1 and flags == wanted, f"round {number}: flags {flags}", ends)

    def stopped(self):
        """A process that was stopped while it held a list keeps nobody waiting for ever."""
        with self.home() as home:
            folder = os.open(home.store / "home", os.O_RDONLY)
            fcntl.flock(folder, fcntl.LOCK_EX)
            status, _, err = home.run("edit", "a", "--title", "late")
            self.expect(status == 1 and "home" in err, f"a list that is held: status {status}", err)
            self.expect(home.run("list")[0] == 0, "a list that is held cannot be read")
            os.close(folder)
            self.expect(home.run("edit", "a", "--title", "late")[0] == 0, "a list that was held cannot be changed")

    def writers(self):
        rounds = self.options.rounds or (1000 if self.options.long else 30)
        kinds = [self.edits, self.same_property, self.removal, self.series, self.move, self.other_program, self.records,
                 self.settings]
        print(f"seed {self.options.seed}, {rounds} rounds")
        self.stopped()
        for begin in range(0, rounds, 50):
            with self.home() as home:
                for number in range(begin, min(rounds, begin + 50)):
                    for kind in kinds if self.options.long else [kinds[number % len(kinds)]]:
                        kind(home, number)
                self.expect(not home.hidden(), "temporary files remain", home.hidden())


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("campaign", choices=["fail", "kill", "writers"])
    parser.add_argument("--long", action="store_true")
    parser.add_argument("--rounds", type=int)
    parser.add_argument("--seed", type=int, default=random.randrange(10**6))
    campaign = Campaign(parser.parse_args())
    with tempfile.TemporaryDirectory(prefix="kestrant-campaign-") as folder:
        campaign.folder = folder
        getattr(campaign, campaign.options.campaign)()
    print(f"{campaign.options.campaign}: {campaign.runs} runs, {len(campaign.faults)} faults")
    return 1 if campaign.faults else 0


if __name__ == "__main__":
    sys.exit(main())
