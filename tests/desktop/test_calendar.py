"""The days on the panel, seen in the files that their events live in."""

import datetime
import shutil
import subprocess
import unittest
import zoneinfo

from harness import LIST_COLOUR, DesktopTest, wait_until

# Nothing else on the panel has these.
WORK_COLOUR = (0x00, 0xE0, 0xFF)
ACCENT = (0x0A, 0x84, 0xFF)
HOME_COLOUR = (0xB0, 0xFF, 0x00)
# The calendar in the right half of the open panel, counted from its middle and the upper edge: in its place, while a card is
# carried, two columns and four rows of tiles to let it go on.
CALENDAR = (16, 44, 444, 276)
# In the toolbar.
CALENDAR_BUTTON = (379, 17)


class CalendarTest(DesktopTest):
    def setUp(self):
        super().setUp()
        self.zone = self.desktop.environment["TZ"]
        self.work = self.make_list("Work", WORK_COLOUR)
        self.home = self.make_list("Home", HOME_COLOUR)

    def day(self, days):
        """A day from today on, as files have it."""
        today = datetime.datetime.now(zoneinfo.ZoneInfo(self.zone)).date()
        return (today + datetime.timedelta(days)).strftime("%Y%m%d")

    def add_event(self, folder, title, days, start="100000", more=""):
        """An event of an hour, or without a start one of the whole day."""
        if start:
            begin = f"DTSTART;TZID={self.zone}:{self.day(days)}T{start}\r\nDURATION:PT1H\r\n"
        else:
            begin = f"DTSTART;VALUE=DATE:{self.day(days)}\r\nDTEND;VALUE=DATE:{self.day(days + 1)}\r\n"
        return self.add_item(folder, "VEVENT", title, begin + more)

    def open(self):
        self.start(kestrantModuleOrder="remindersFirst", kestrantLayoutRatio="50/50")
        self.expand()

    def rows(self):
        """The calendars of the events on show, from the top, each with the place of its bar or of its square."""
        bars = [(y0, (x0, (y0 + y1) // 2), name) for name, colour in (("work", WORK_COLOUR), ("home", HOME_COLOUR))
                for x0, y0, x1, y1 in self.patches(colour) if x1 - x0 <= 8 and y1 - y0 >= 5]
        return [(name, place) for _, place, name in sorted(bars)]

    def wait_for_rows(self, *calendars):
        """The places of the bars once these calendars' events are on show, in this order."""
        rows = self.wait_for(self.rows, lambda rows: tuple(name for name, _ in rows) == calendars,
                             f"the rows are {calendars}")
        return [place for _, place in rows]

    def tile(self, days):
        """The middle of the tile of a day from today on."""
        left, top, right, bottom = CALENDAR
        return (self.middle + left + (right - left) * (2 * (days % 2) + 1) // 4,
                top + (bottom - top) * (2 * (days // 2) + 1) // 8)

    def component(self, path, number):
        """One of the events in a file."""
        return self.text(path).split("BEGIN:VEVENT\r\n")[number + 1].split("END:VEVENT\r\n")[0]

    def test_shows_the_events_of_the_week_in_order_and_follows_the_files(self):
        self.add_event(self.work, "Yesterday", -1)
        self.add_event(self.work, "Tomorrow", 1)
        self.add_event(self.home, "All day", 1, start=None)
        self.add_event(self.work, "Day after", 2)
        self.add_event(self.home, "Next week", 7)
        self.open()
        self.wait_for_rows("home", "work", "work")
        earlier = self.add_event(self.home, "Earlier", 2, start="083000")
        self.wait_for_rows("home", "work", "home", "work")
        earlier.unlink()
        self.add_event(self.home, "All day", 9, start=None)
        self.wait_for_rows("work", "work")

    def test_a_card_that_is_dragged_onto_a_day_is_due_that_day_at_the_same_time(self):
        path = self.add_reminder("Water the plants", more=f"DUE;TZID={self.zone}:{self.day(1)}T143000\r\n")
        self.open()
        x, y = self.wait_for_circles(1)[0]
        self.desktop.drag((x + 60, y + 20), self.tile(3))
        wait_until(lambda: f"DUE;TZID={self.zone}:{self.day(3)}T143000\r\n" in self.text(path),
                   "the reminder is due three days from today")
        self.wait_for_circles(1)

    def test_the_circle_of_a_reminder_completes_it_and_the_keyboard_shows_its_row(self):
        path = self.add_reminder("Water the plants", more=f"DUE;TZID={self.zone}:{self.day(1)}T143000\r\n")
        self.add_event(self.work, "Round", 1)
        self.open()
        self.wait_for_rows("work")
        left, top, right, bottom = next(patch for patch in self.patches(LIST_COLOUR) if patch[0] > self.middle)
        ring = (left + right) // 2, (top + bottom) // 2
        self.desktop.click(*ring)
        wait_until(lambda: "STATUS:COMPLETED" in self.text(path), "the reminder is completed")
        self.wait_for_circles(0)
        self.desktop.key("ctrl+z")
        wait_until(lambda: "STATUS:COMPLETED" not in self.text(path), "the reminder is open again")
        self.wait_for_circles(1)
        self.desktop.click(ring[0] + 40, ring[1])
        self.assertEqual(self.patches(ACCENT), [])
        self.desktop.key("Up", "Down")
        self.wait_for(lambda: self.patches(ACCENT), bool, "the row that the keyboard is on is marked")
        self.desktop.key("space")
        wait_until(lambda: "STATUS:COMPLETED" in self.text(path), "the reminder is completed")

    def test_an_occurrence_that_is_edited_changes_and_the_series_stays(self):
        path = self.add_event(self.work, "Round", -6, more="RRULE:FREQ=WEEKLY\r\n")
        series = self.component(path, 0)
        self.open()
        x, y = self.wait_for_rows("work")[0]
        self.after(lambda: self.desktop.click(x + 60, y, button=3))
        # Keys that come before the form is there reach the panel.
        self.after(lambda: self.desktop.key("Home", "Return"))
        self.desktop.key("ctrl+a")
        self.desktop.type("Long round")
        self.desktop.key("Return")
        wait_until(lambda: "RECURRENCE-ID" in self.text(path), "the occurrence is in the file")
        self.assertEqual(self.component(path, 0), series)
        occurrence = self.component(path, 1).splitlines()
        for line in (f"RECURRENCE-ID;TZID={self.zone}:{self.day(1)}T100000", "SUMMARY:Long round", "UID:round"):
            self.assertIn(line, occurrence)
        self.wait_for_rows("work")
        self.assertEqual(self.khal(), [("Round", -6), ("Long round", 1), ("Round", 8)])

    def khal(self):
        """(title, day counted from today) of the events around today as khal lists them."""
        if not shutil.which("khal"):
            self.skipTest("khal is not installed; scripts/install-dependencies installs it")
        settings = self.desktop.folder / "khal.conf"
        settings.write_text(
            f"[calendars]\n[[all]]\npath = {self.work}\n[sqlite]\npath = {self.desktop.folder}/khal.db\n"
            f"[locale]\nlocal_timezone = {self.zone}\ndefault_timezone = {self.zone}\ndateformat = %Y%m%d\n"
            "longdateformat = %Y%m%d\n"
        )
        found = subprocess.run(
            ["khal", "--config", str(settings), "list", "--day-format", "", "--format", "{start-date-long} {title}",
             self.day(-7), "16d"],
            env=self.desktop.environment, stdout=subprocess.PIPE, text=True, check=True, timeout=60,
        ).stdout
        days = {self.day(day): day for day in range(-7, 10)}
        rows = [line.split(" ", 1) for line in found.splitlines() if line]
        return [(title, days[start]) for start, title in rows]

    def test_an_occurrence_that_is_deleted_by_the_keyboard_is_an_exception_of_its_series(self):
        path = self.add_event(self.work, "Round", -6, more="RRULE:FREQ=WEEKLY\r\n")
        series = self.component(path, 0)
        self.open()
        x, y = self.wait_for_rows("work")[0]
        self.desktop.click(x + 60, y)
        # The keyboard is on Cancel.
        self.desktop.key("Delete", "Return")
        self.wait_for_rows("work")
        self.desktop.key("Delete", "Tab", "Return")
        self.wait_for_rows()
        self.assertIn(f"EXDATE;TZID={self.zone}:{self.day(1)}T100000\r\n", self.text(path))
        self.assertIn("RRULE:FREQ=WEEKLY\r\n", self.text(path))
        self.desktop.key("ctrl+z")
        self.wait_for_rows("work")
        self.assertEqual(self.component(path, 0), series)

    def test_the_full_calendar_goes_back_and_forth_and_returns_to_the_week(self):
        for number in range(6):
            self.add_event(self.home, f"Past {number}", -40 + number)
            self.add_event(self.work, f"Future {number}", 40 + number)
        self.open()
        self.wait_for_rows()
        self.desktop.click(self.middle + CALENDAR_BUTTON[0], CALENDAR_BUTTON[1])
        # What is to come begins at the top; what is over lies above it.
        rows = self.wait_for(self.rows, lambda rows: len(rows) > 2, "days to come are shown")
        self.assertEqual({name for name, _ in rows}, {"work"})
        x, y = rows[0][1]
        self.after(lambda: self.desktop.click(x + 60, y))
        self.desktop.key("Escape", "Up")
        self.wait_for(self.rows, lambda rows: rows and rows[0][1][1] > y, "the first of them has made room")
        self.desktop.click(self.middle + CALENDAR_BUTTON[0], CALENDAR_BUTTON[1])
        self.wait_for_rows()

    def test_a_new_event_is_typed_in_and_becomes_a_file(self):
        self.open()
        self.desktop.key("ctrl+n")
        # From the title to the choice between reminder and event, and back.
        self.desktop.key("shift+Tab", "Right", "Tab")
        self.desktop.type("Lunch with Theo")
        self.desktop.key("Return")
        created = wait_until(lambda: list(self.data.rglob("*.ics")), "the file is there")
        self.assertEqual(len(created), 1)
        for line in ("BEGIN:VEVENT\r\n", "SUMMARY:Lunch with Theo\r\n", f"DTSTART;TZID={self.zone}:"):
            self.assertIn(line, self.text(created[0]))


if __name__ == "__main__":
    unittest.main()
