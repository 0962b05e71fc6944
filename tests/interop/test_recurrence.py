"""Recurrence rules as Kestrant and python-dateutil expand them."""

import datetime
import importlib.util
import json
import os
import random
import signal
import sys
import unittest
import zoneinfo

from interop import SKIPPED, InteropTest

if not importlib.util.find_spec("dateutil"):
    print("SKIPPED: python3-dateutil is not installed; scripts/install-dependencies installs it.")
    sys.exit(SKIPPED)

import dateutil.rrule

DAYS = ["MO", "TU", "WE", "TH", "FR", "SA", "SU"]
ZONES = ["Europe/Berlin", "America/New_York", "America/Sao_Paulo", "Africa/Casablanca", "Asia/Tokyo", "Australia/Lord_Howe",
         "Europe/Dublin", "Pacific/Auckland", "UTC"]
# Around the changes of the clocks, a leap day and the turn of a year.
STARTS = [datetime.datetime(*day) for day in ((2026, 3, 28), (2026, 10, 24), (2026, 3, 7), (2026, 4, 4), (2024, 2, 28), (2025, 12, 29))]
# How long rules are followed, in days: dense ones not for long.
LENGTHS = {"SECONDLY": 0.05, "MINUTELY": 2, "HOURLY": 20}
UTC = datetime.timezone.utc


class TooLong(Exception):
    """dateutil searches for what a rule never gives until the year 9999."""


def give_up(*_):
    raise TooLong


def some(generator, values, most):
    values = list(values)
    return ",".join(map(str, sorted(generator.sample(values, generator.randint(1, min(most, len(values)))))))


def some_rule(generator):
    """A rule of any kind on which both agree; on what they do not agree see test_known_differences()."""
    chance = lambda probability: generator.random() < probability
    frequency = generator.choice(["SECONDLY", "MINUTELY", "HOURLY"] + 2 * ["DAILY", "WEEKLY", "MONTHLY", "YEARLY"])
    is_coarse = frequency not in LENGTHS
    parts = {"FREQ": frequency}
    if chance(0.5):
        parts["INTERVAL"] = generator.choice([2, 3, 4, 5, 7, 10, 25, 90])
    if frequency == "YEARLY" and chance(0.2):
        parts.pop("INTERVAL", None)
        parts["BYWEEKNO"] = some(generator, range(1, 53), 4)
        parts["BYDAY"] = some(generator, DAYS, 3)
    else:
        if chance(0.25):
            parts["BYMONTH"] = some(generator, range(1, 13), 5) if is_coarse else "3,4,10"
        if frequency != "WEEKLY" and chance(0.25):
            parts["BYMONTHDAY"] = some(generator, [*range(1, 32), -1, -2, -15, -31], 8)
        if frequency in ("YEARLY", "HOURLY") and chance(0.15):
            parts["BYYEARDAY"] = some(generator, [*range(1, 367), -1, -100, -366], 40)
        if chance(0.4):
            ordinals = [1, 2, 3, 4, 5, -1, -2, -5] + ([20, 52, 53, -50] if parts.keys() <= {"FREQ", "INTERVAL"} else [])
            if frequency in ("MONTHLY", "YEARLY") and "BYYEARDAY" not in parts and chance(0.6):
                parts["BYDAY"] = ",".join(f"{generator.choice(ordinals)}{day}" for day in generator.sample(DAYS, 2))
            else:
                parts["BYDAY"] = some(generator, DAYS, 4)
    if chance(0.3):
        parts["BYHOUR"] = some(generator, range(24), 4)
    if chance(0.25):
        parts["BYMINUTE"] = some(generator, [0, 5, 15, 20, 30, 45, 59], 3)
    if chance(0.1):
        parts["BYSECOND"] = some(generator, [0, 1, 30, 59], 2)
    if "BYWEEKNO" not in parts and frequency != "WEEKLY" and any(name.startswith("BY") for name in parts) and chance(0.25):
        parts["BYSETPOS"] = some(generator, [1, 2, 3, -1, -2, 5, -7], 2)
    if chance(0.2):
        parts["WKST"] = generator.choice(DAYS)
    return parts


def text_of(parts):
    return ";".join(f"{name}={value}" for name, value in parts.items())


class RecurrenceTest(InteropTest):
    now = "2026-06-27T12:00:00Z"
    first = datetime.datetime(2025, 7, 1, tzinfo=UTC)
    last = datetime.datetime(2027, 6, 20, tzinfo=UTC)

    def put(self, uid, rule, start, zone):
        form = f"DTSTART:{start:%Y%m%dT%H%M%SZ}" if zone == "UTC" else f"DTSTART;TZID={zone}:{start:%Y%m%dT%H%M%S}"
        self.write(self.work, uid, "VEVENT", f"SUMMARY:{uid}", form, "DURATION:PT1M", f"RRULE:{rule}")

    def shown(self):
        """The starts that Kestrant shows of each event, in order."""
        result = {}
        for day in json.loads(self.kestrant("agenda", "--all", "--json", "--no-reminders")):
            identifiers = [event["id"] for event in day["events"]]
            self.assertEqual(len(identifiers), len(set(identifiers)))
            for event in day["events"]:
                start = datetime.datetime.fromisoformat(event["startDate"].replace("Z", "+00:00"))
                result.setdefault(event["title"], set()).add(start)
        return {title: [start for start in sorted(starts) if self.first <= start <= self.last] for title, starts in result.items()}

    def expected(self, parts, start, zone, count, until):
        """The moments of the same rule by dateutil, which knows neither zones nor a start that does not fit its rule."""
        zone = zoneinfo.ZoneInfo(zone)
        instant = lambda local: local.replace(tzinfo=zone).astimezone(UTC)
        shows = lambda local: instant(local).astimezone(zone).replace(tzinfo=None) == local
        end = min(until, self.last).astimezone(zone).replace(tzinfo=None) + datetime.timedelta(days=1)
        dates = [start]
        for local in dateutil.rrule.rrulestr(text_of(parts), dtstart=start):
            if local > end:
                break
            if local > start:
                dates.append(local)
        # A time that the clocks skip is the moment that it would have been; where another date is there already, it is that.
        shown = {instant(local) for local in dates if shows(local)}
        dates = [local for local in dates if shows(local) or instant(local) not in shown][:count]
        return sorted({instant(local) for local in dates if self.first <= instant(local) <= min(until, self.last)})

    def test_both_expand_rules_of_all_kinds_alike(self):
        seed = int(os.environ.get("KESTRANT_SEED", random.randrange(1_000_000)))
        print(f"KESTRANT_SEED={seed}", file=sys.stderr)
        generator = random.Random(seed)
        cases = {}
        for number in range(400):
            parts = some_rule(generator)
            zone = generator.choice(ZONES)
            start = generator.choice(STARTS) + datetime.timedelta(hours=generator.randint(0, 48), minutes=generator.choice([0, 0, 15, 30]))
            length = LENGTHS.get(parts["FREQ"], 1000) * generator.uniform(0.5, 1)
            until = start.replace(tzinfo=zoneinfo.ZoneInfo(zone)).astimezone(UTC) + datetime.timedelta(days=length)
            until = until.replace(microsecond=0)
            count = generator.randint(1, 60)
            ends_by_count = generator.random() < 0.4
            end = {"COUNT": count} if ends_by_count else {"UNTIL": f"{until:%Y%m%dT%H%M%SZ}"}
            if ends_by_count and parts["FREQ"] in LENGTHS:
                # dateutil looks at every second of what a rule leaves out.
                for name in [name for name in parts if name.startswith("BY")]:
                    del parts[name]
            uid = f"case{number}"
            signal.signal(signal.SIGVTALRM, give_up)
            try:
                # A signal may still come while the timer is being stopped.
                try:
                    signal.setitimer(signal.ITIMER_VIRTUAL, 0.1)
                    expected = self.expected(parts, start, zone, count if ends_by_count else None,
                                             until + datetime.timedelta(days=900) if ends_by_count else until)
                finally:
                    signal.setitimer(signal.ITIMER_VIRTUAL, 0)
            except (TooLong, IndexError, ValueError):
                # The others where a year has no 53rd such day, or an interval never meets the times.
                continue
            self.put(uid, text_of(parts | end), start, zone)
            cases[uid] = (text_of(parts | end), start, zone, expected)
        self.assertGreater(len(cases), 300)
        shown = self.shown()
        for uid, (rule, start, zone, expected) in cases.items():
            with self.subTest(rule=rule, start=str(start), zone=zone, seed=seed):
                self.assertEqual([str(moment) for moment in shown.get(uid, [])], [str(moment) for moment in expected])

    def test_known_differences(self):
        """Where dateutil does something else, what RFC 5545 and RFC 7529 say was written down by hand."""
        for number, (rule, start, expected) in enumerate((
            # Without BYDAY the day of the week is the start's; there it is the whole week.
            ("FREQ=YEARLY;BYWEEKNO=30;COUNT=2", "20250723T090000", ["2025-07-23", "2026-07-22"]),
            # The last week of a year of 52 or 53 weeks.
            ("FREQ=YEARLY;BYWEEKNO=-1;BYDAY=MO;COUNT=2", "20251222T090000", ["2025-12-22", "2026-12-28"]),
            # 2025 has 52 weeks: 3 January 2026 is a day of the first one of 2026.
            ("FREQ=YEARLY;BYWEEKNO=53;BYDAY=SA;COUNT=2", "20210102T090000", ["2027-01-02"]),
            # An interval counts the years to which weeks belong.
            ("FREQ=YEARLY;INTERVAL=2;BYWEEKNO=1;BYDAY=MO;COUNT=2", "20240101T090000", ["2025-12-29"]),
            # The start counts, though it does not fit.
            ("FREQ=WEEKLY;BYDAY=MO;COUNT=2", "20260626T090000", ["2026-06-26", "2026-06-29"]),
            # A set of positions begins with the week; there with the start.
            ("FREQ=WEEKLY;INTERVAL=2;BYDAY=SU,TH;BYSETPOS=2;COUNT=3", "20261024T090000", ["2026-10-24", "2026-10-25", "2026-11-08"]),
            # Unknown there.
            ("RSCALE=GREGORIAN;FREQ=MONTHLY;SKIP=BACKWARD;COUNT=3", "20260131T090000", ["2026-01-31", "2026-02-28", "2026-03-31"]),
        )):
            with self.subTest(rule=rule):
                uid = f"known{number}"
                self.put(uid, rule, datetime.datetime.strptime(start, "%Y%m%dT%H%M%S"), "UTC")
                self.assertEqual([str(moment.date()) for moment in self.shown()[uid]], expected)


if __name__ == "__main__":
    unittest.main(verbosity=2)
