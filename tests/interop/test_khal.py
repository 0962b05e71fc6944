import datetime
import shutil

from interop import InteropTest, main, unfolded


class KhalTest(InteropTest):
    # Nothing of the day is over yet, so Kestrant shows all of it, as khal does.
    now = "2026-03-26T00:00:00+01:00"

    def setUp(self):
        super().setUp()
        self.maxDiff = None
        self.settings = self.home / "khal.conf"
        self.settings.write_text(
            f"[calendars]\n[[all]]\npath = {self.store}/*\ntype = discover\n"
            f"[sqlite]\npath = {self.home}/khal.db\n[locale]\nlocal_timezone = Europe/Paris\ndefault_timezone = Europe/Paris\n"
            "timeformat = %H:%M\ndateformat = %Y-%m-%d\nlongdateformat = %Y-%m-%d\ndatetimeformat = %Y-%m-%d %H:%M\n"
            "longdatetimeformat = %Y-%m-%d %H:%M\n"
        )

    def agenda(self):
        """Every event of two months as khal lists them, and what it complained of."""
        (self.home / "khal.db").unlink(missing_ok=True)
        done = self.run_program("khal", "--config", self.settings, "list", "--format",
                                "{start-end-time-style} {title} {calendar} {calendar-color} {location}", "2026-03-20", "60d")
        return done.stdout, done.stderr

    def test_khal_lists_the_same_events_before_and_after_kestrants_writes(self):
        self.write(self.work, "meeting", "VEVENT", "SUMMARY:Meeting", "DTSTART;TZID=Europe/Paris:20260327T100000",
                   "DTEND;TZID=Europe/Paris:20260327T110000", "LOCATION:Room 4")
        self.write(self.work, "series", "VEVENT", "SUMMARY:Series", "DTSTART;TZID=Europe/Paris:20260326T090000",
                   "DTEND;TZID=Europe/Paris:20260326T093000", "RRULE:FREQ=WEEKLY;COUNT=4",
                   "EXDATE;TZID=Europe/Paris:20260402T090000")
        self.write(self.work, "holiday", "VEVENT", "SUMMARY:Holiday", "DTSTART;VALUE=DATE:20260403",
                   "DTEND;VALUE=DATE:20260407")
        self.write(self.work, "task", "VTODO", "SUMMARY:Task", "DUE;VALUE=DATE:20260327")
        self.write(self.work, "weekly", "VTODO", "SUMMARY:Weekly", "DTSTART;VALUE=DATE:20260326",
                   "DUE;VALUE=DATE:20260327", "RRULE:FREQ=WEEKLY")
        before = self.agenda()
        self.assertIn("Series", before[0])
        self.kestrant("add", "A task beside the events", "--due", "2026-03-27T14:30")
        self.kestrant("complete", self.identifier("Task"))
        self.kestrant("complete", self.identifier("Weekly"))
        self.assertEqual(self.agenda(), before)
        self.kestrant("delete", self.identifier("A task beside the events"))
        self.assertEqual(self.agenda(), before)
        leftovers = [path.name for path in self.store.rglob("*") if path.is_file() and path.suffix != ".ics"]
        self.assertEqual(sorted(leftovers), ["color", "displayname"], "no other program sees Kestrant's own files")

    def khal(self, *arguments):
        done = self.run_program("khal", "--config", self.settings, *arguments)
        self.assertEqual(done.stderr, "")
        return done.stdout

    def week_of_khal(self):
        """(title, start, end, place) of the rows of each day of the coming week, all-day times as days, the last one
        included."""
        text = self.khal("list", "--day-format", "# {date}", "--format",
                         "{title}|{start-date-long} {start-time}|{end-date-long} {end-time}|{location}", "2026-03-26", "7d")
        days = {}
        for line in text.splitlines():
            if line.startswith("# "):
                rows = days.setdefault(line[2:], [])
            else:
                rows.append(tuple(part.strip() for part in line.split("|")))
        return {day: sorted(rows) for day, rows in days.items()}

    def week_of_kestrant(self):
        """The same as Kestrant shows it."""
        def row(event):
            start, end = self.local(event["startDate"]), self.local(event["endDate"])
            if event["isAllDay"]:
                end = (datetime.date.fromisoformat(end[:10]) - datetime.timedelta(1)).isoformat()
                start = start[:10]
            return event["title"], start, end, event["location"] or ""

        return {day: sorted(map(row, events)) for day, events in self.week().items() if events}

    def rows_of(self, title):
        """The identifiers of the rows with a title, by day."""
        return {day: event["id"] for day, events in self.week().items() for event in events if event["title"] == title}

    def put_a_busy_week(self):
        """What other programs write: times with and without zones, days, and series with exceptions, across the change
        to summer time on 29 March."""
        def event(uid, *lines):
            return self.write(self.work, uid, "VEVENT", f"SUMMARY:{uid.capitalize()}", *lines)

        event("meeting", "DTSTART;TZID=Europe/Paris:20260327T100000", "DTEND;TZID=Europe/Paris:20260327T110000",
              "LOCATION:Room 4\\, second floor")
        event("trip", "DTSTART;VALUE=DATE:20260327", "DTEND;VALUE=DATE:20260330")
        event("birthday", "DTSTART;VALUE=DATE:19840331", "RRULE:FREQ=YEARLY")
        event("party", "DTSTART;TZID=Asia/Tokyo:20260329T060000", "DTEND;TZID=Asia/Tokyo:20260330T130000")
        event("call", "DTSTART:20260330T063000Z", "DURATION:PT45M")
        event("lunch", "DTSTART:20260328T123000", "DTEND:20260328T133000")
        event("first", "DTSTART;TZID=America/New_York:20260327T190000", "DTEND;TZID=America/New_York:20260327T193000",
              "RRULE:FREQ=WEEKLY;BYDAY=MO,FR")
        return event("standup", "DTSTART;TZID=Europe/Paris:20260320T093000", "DURATION:PT15M", "RRULE:FREQ=DAILY",
                     "EXDATE;TZID=Europe/Paris:20260328T093000", "END:VEVENT", "BEGIN:VEVENT", "UID:standup",
                     "DTSTAMP:20260301T080000Z", "RECURRENCE-ID;TZID=Europe/Paris:20260330T093000", "SUMMARY:Standup",
                     "DTSTART;TZID=Europe/Paris:20260330T160000", "DURATION:PT1H", "LOCATION:Elsewhere")

    def test_both_show_the_same_week(self):
        self.put_a_busy_week()
        week = self.week_of_kestrant()
        self.assertEqual(week, self.week_of_khal())
        # What agrees is also right.
        self.assertEqual(list(week), [f"2026-03-{day}" for day in range(26, 32)] + ["2026-04-01"])
        self.assertEqual(week["2026-03-29"], [
            ("Party", "2026-03-28 22:00", "2026-03-30 06:00", ""),
            ("Standup", "2026-03-29 09:30", "2026-03-29 09:45", ""),
            ("Trip", "2026-03-27", "2026-03-29", ""),
        ])

    def test_each_sees_the_events_that_the_other_adds(self):
        self.khal("new", "-a", "Work", "-l", "Room 4", "2026-03-27", "10:00", "11:30", "Timed, here")
        self.khal("new", "-a", "Work", "2026-03-27", "09:00", "10:00", "America/New_York", "Timed, elsewhere")
        self.khal("new", "-a", "Work", "2026-03-28", "2026-03-30", "Whole days")
        self.khal("new", "-a", "Work", "-r", "daily", "-u", "2026-03-31", "2026-03-29", "12:00", "12:30", "Series")
        written = self.week_of_kestrant()
        self.assertEqual({row[0] for rows in written.values() for row in rows},
                         {"Timed, here", "Timed, elsewhere", "Whole days", "Series"})
        self.assertEqual(written, self.week_of_khal())

        for arguments in (["Timed", "--start", "2026-03-29T01:30", "--end", "2026-03-29T03:30"],
                          ["Écrire; une lettre, longue \\ retour", "--start", "2026-03-27T23:30-04:00"],
                          ["One day", "--all-day", "--start", "2026-03-29"],
                          ["Some days", "--all-day", "--start", "2026-03-29", "--end", "2026-04-05"]):
            self.kestrant("add-event", *arguments)
        week = self.week_of_kestrant()
        self.assertEqual(sum(len(rows) for rows in week.values()), sum(len(rows) for rows in written.values()) + 7)
        self.assertEqual(week, self.week_of_khal())

    def test_an_occurrence_that_kestrant_deletes_is_gone_in_both_and_the_others_stay(self):
        path = self.put_a_busy_week()
        before = self.week_of_khal()
        # One that follows the rule, and one that had been moved.
        for title, day in (("Standup", "2026-03-29"), ("Standup", "2026-03-30"), ("First", "2026-03-31"),
                           ("Birthday", "2026-03-31")):
            self.kestrant("delete-event", self.rows_of(title)[day])
            before[day] = [row for row in before[day] if row[0] != title]
        expected = {day: rows for day, rows in before.items() if rows}
        self.assertEqual(self.week_of_kestrant(), expected)
        self.assertEqual(self.week_of_khal(), expected)
        self.assertIn("RRULE:FREQ=DAILY", unfolded(path.read_bytes().decode()))

    def test_an_occurrence_stays_deleted_when_khal_rewrites_the_series(self):
        self.put_a_busy_week()
        self.kestrant("delete-event", self.rows_of("First")["2026-03-28"])
        self.run_program("khal", "--config", self.settings, "edit", "--show-past", "First", given="s\nSecond\nq\n")
        self.assertEqual(list(self.rows_of("Second")), ["2026-03-31"])
        self.assertEqual(self.week_of_kestrant(), self.week_of_khal())

    def test_kestrant_keeps_what_khal_creates(self):
        self.run_program("khal", "--config", self.settings, "new", "-a", "Work", "2026-03-27", "10:00", "11:00", "Meeting")
        created = {path: path.read_bytes() for path in self.work.glob("*.ics")}
        self.assertEqual(len(created), 1)
        self.kestrant("add", "Prepare the meeting")
        self.assertEqual(list(self.reminders()), ["Prepare the meeting"])
        self.assertEqual({path: path.read_bytes() for path in created}, created)

    def test_a_list_without_metadata_is_read_by_both(self):
        shutil.rmtree(self.work)
        bare = self.store / "bare"
        bare.mkdir()
        self.write(bare, "meeting", "VEVENT", "SUMMARY:Meeting", "DTSTART:20260327T100000Z", "DTEND:20260327T110000Z")
        before = self.agenda()
        self.kestrant("add", "A first task")
        self.assertEqual(self.agenda(), before)
        self.assertEqual(list(self.reminders()), ["A first task"])


if __name__ == "__main__":
    main("khal")
