from interop import InteropTest, main


class VdirsyncerTest(InteropTest):
    def setUp(self):
        super().setUp()
        self.elsewhere = self.home / "elsewhere"
        self.elsewhere.mkdir()
        self.settings = self.home / "vdirsyncer.conf"
        self.settings.write_text(
            f'[general]\nstatus_path = "{self.home}/status/"\n'
            '[pair both]\na = "here"\nb = "there"\ncollections = ["from a", "from b"]\nmetadata = ["displayname", "color"]\n'
            f'[storage here]\ntype = "filesystem"\npath = "{self.store}"\nfileext = ".ics"\n'
            f'[storage there]\ntype = "filesystem"\npath = "{self.elsewhere}"\nfileext = ".ics"\n'
        )
        self.vdirsyncer("discover")
        self.vdirsyncer("metasync")

    def vdirsyncer(self, command):
        # It asks whether to create each collection that one side lacks.
        done = self.run_program("vdirsyncer", "--config", self.settings, command, given="y\n" * 20)
        self.assertNotIn("error:", done.stdout + done.stderr)

    def sync(self):
        self.vdirsyncer("sync")
        here, there = ({path.relative_to(root): path.read_bytes() for path in root.rglob("*.ics")}
                       for root in (self.store, self.elsewhere))
        self.assertEqual(here, there)

    def test_two_folders_that_kestrant_writes_to_become_the_same(self):
        self.kestrant("add", "Written here", "--due", "2026-03-27T14:30")
        self.write(self.work, "weekly", "VTODO", "SUMMARY:Weekly", "DTSTART;TZID=Europe/Paris:20260326T090000",
                   "DUE;TZID=Europe/Paris:20260326T100000", "RRULE:FREQ=WEEKLY")
        self.sync()
        self.assertEqual(self.reminders(self.elsewhere), self.reminders())
        self.kestrant("add", "Written there", store=self.elsewhere)
        self.kestrant("complete", self.identifier("Weekly", self.elsewhere), store=self.elsewhere)
        self.kestrant("complete", self.identifier("Written here"))
        self.sync()
        self.assertEqual(self.reminders(), self.reminders(self.elsewhere))
        self.assertEqual({title: task["dueDate"] for title, task in self.reminders().items()},
                         {"Written there": None, "Weekly": "2026-04-02T08:00:00Z"})
        self.kestrant("delete", self.identifier("Written there"))
        self.sync()
        self.assertEqual(list(self.reminders(self.elsewhere)), ["Weekly"])

    def test_the_name_and_the_colour_of_a_list_go_along(self):
        lists = self.kestrant("lists", "--json")
        self.assertIn("Work", lists)
        self.assertEqual(self.kestrant("lists", "--json", store=self.elsewhere), lists)

    def test_a_second_run_finds_nothing_to_do(self):
        self.kestrant("add", "Once")
        self.sync()
        before = {path: path.stat().st_mtime_ns for path in self.home.rglob("*.ics")}
        self.reminders()
        self.sync()
        self.assertEqual({path: path.stat().st_mtime_ns for path in self.home.rglob("*.ics")}, before)


if __name__ == "__main__":
    main("vdirsyncer")
