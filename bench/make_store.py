#!/usr/bin/env python3
"""Writes a folder of iCalendar files to measure on: one folder per list or calendar, one item per file.

usage: make_store.py FOLDER [--reminders N] [--events N] [--collections N] [--seed N] [--day YYYY-MM-DD]

The same arguments write the same files. Of the reminders one in five is completed, three in five have a due date, half of
those without a time; some have an alarm, a priority, a long note or properties that no program knows. The events lie in the
two years before and after the day; one in ten takes whole days, one in thirty recurs.
"""

import argparse
import datetime
import pathlib
import random

VERBS = ["Call", "Answer", "Return", "Repair", "Fetch", "Préparer", "Trier", "Measure", "Print", "Sow", "Déposer"]
THINGS = ["the kettle", "la facture", "Zoë’s parcel", "a window", "le vélo", "the tax form", "carrots", "東京の切符", "the hinge"]
MINUTE = datetime.timedelta(minutes=1)
DAY = datetime.timedelta(days=1)


def utc(moment):
    return moment.strftime("%Y%m%dT%H%M%SZ")


def day(moment):
    return moment.strftime("%Y%m%d")


class Generator:
    def __init__(self, seed, around):
        self.random = random.Random(seed)
        self.around = around

    def one_in(self, count):
        return self.random.randrange(count) == 0

    def uid(self):
        return "%032x" % self.random.getrandbits(128)

    def title(self, number):
        return f"{self.random.choice(VERBS)} {self.random.choice(THINGS)} {number}"

    def moment(self, days_before, days_after):
        span = (days_before + days_after) * 24 * 60
        return self.around - days_before * DAY + self.random.randrange(span) * MINUTE

    def reminder(self, number):
        lines = [f"CREATED:{utc(self.moment(400, 1))}", f"SUMMARY:{self.title(number)}"]
        if self.random.random() < 0.6:
            due = self.moment(60, 150)
            lines.append(f"DUE;VALUE=DATE:{day(due)}" if self.one_in(2) else f"DUE:{utc(due)}")
            if self.one_in(4):
                lines += ["BEGIN:VALARM", "ACTION:DISPLAY", "DESCRIPTION:Due",
                          f"TRIGGER;VALUE=DATE-TIME:{utc(due - 30 * MINUTE)}", "END:VALARM"]
        if self.one_in(3):
            lines.append(f"PRIORITY:{self.random.randint(1, 9)}")
        if self.one_in(10):
            lines.append("DESCRIPTION:" + "\\n".join(self.title(line) for line in range(8)))
        if self.one_in(15):
            lines.append("X-NOBODY-KNOWS;X-HOW=many:2")
        if self.one_in(5):
            lines += [f"COMPLETED:{utc(self.moment(300, 0))}", "PERCENT-COMPLETE:100", "STATUS:COMPLETED"]
        return "VTODO", lines

    def event(self, number):
        start = self.moment(730, 730)
        lines = [f"SUMMARY:{self.title(number)}"]
        if self.one_in(10):
            lines += [f"DTSTART;VALUE=DATE:{day(start)}", f"DTEND;VALUE=DATE:{day(start + self.random.randint(1, 4) * DAY)}"]
        else:
            minutes = self.random.choice([15, 30, 45, 60, 120, 2000])
            lines += [f"DTSTART:{utc(start)}", f"DTEND:{utc(start + minutes * MINUTE)}"]
        if self.one_in(30):
            lines.append(f"RRULE:FREQ={self.random.choice(['DAILY', 'WEEKLY', 'MONTHLY'])};COUNT={self.random.randint(3, 50)}")
        if self.one_in(3):
            lines.append(f"LOCATION:Floor {self.random.randint(0, 9)}")
        return "VEVENT", lines


    def items(self, count, make):
        """The uid and the lines of each item."""
        for number in range(count):
            component, lines = make(number)
            uid = self.uid()
            yield uid, [f"BEGIN:{component}", f"UID:{uid}", "DTSTAMP:20260101T000000Z", *lines, f"END:{component}"]


def write_calendar(file, lines):
    content = ["BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//Kestrant//Benchmarks//EN", *lines, "END:VCALENDAR", ""]
    file.write_bytes("\r\n".join(content).encode())


def write_collections(root, prefix, count, items, generator, make):
    folders = []
    for number in range(count):
        folder = root / f"{prefix}{number}"
        folder.mkdir(parents=True, exist_ok=True)
        (folder / "displayname").write_text(f"{prefix.capitalize()} {number}")
        (folder / "color").write_text("#%06X" % generator.random.getrandbits(24))
        folders.append(folder)
    for number, (uid, lines) in enumerate(generator.items(items, make)):
        write_calendar(folders[number % count] / f"{uid}.ics", lines)


def make_store(folder, reminders=10000, events=10000, collections=4, seed=1, around=datetime.datetime(2026, 3, 26)):
    generator = Generator(seed, around)
    write_collections(pathlib.Path(folder), "list", collections, reminders, generator, generator.reminder)
    write_collections(pathlib.Path(folder), "calendar", collections, events, generator, generator.event)


def make_evolution_store(data_home, reminders=10000, events=10000, seed=1, around=datetime.datetime(2026, 3, 26)):
    """The same items as the desktop's own database keeps them, in the list and the calendar that it always has."""
    generator = Generator(seed, around)
    for kind, count, make in (("tasks", reminders, generator.reminder), ("calendar", events, generator.event)):
        folder = pathlib.Path(data_home) / "evolution" / kind / "system"
        folder.mkdir(parents=True)
        write_calendar(folder / f"{kind}.ics", [line for _, lines in generator.items(count, make) for line in lines])


if __name__ == "__main__":
    parser = argparse.ArgumentParser(usage=__doc__.splitlines()[2].removeprefix("usage: "))
    parser.add_argument("folder")
    parser.add_argument("--reminders", type=int, default=10000)
    parser.add_argument("--events", type=int, default=10000)
    parser.add_argument("--collections", type=int, default=4)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--day", type=datetime.datetime.fromisoformat, default="2026-03-26")
    chosen = parser.parse_args()
    make_store(chosen.folder, chosen.reminders, chosen.events, chosen.collections, chosen.seed, chosen.day)
