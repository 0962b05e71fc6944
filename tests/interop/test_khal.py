import shutil

from interop import InteropTest, main


class KhalTest(InteropTest):
    def setUp(self):
        super().setUp()
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
