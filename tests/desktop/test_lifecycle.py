"""How the program starts and ends, and what it makes of a machine where something is missing."""

import json
import os
import pathlib
import signal
import subprocess
import unittest

from harness import EXPANDED, IDLE, PROGRAM, DesktopTest, stop, wait_until

NO_BUS = "unix:path=/nonexistent/bus"
EVERY_SETTING = (
    "hoverExpandDelay", "requiresClickOrSwipeToExpand", "autoCloseDelay", "notchMaterial", "hapticFeedbackProfile",
    "hapticsEnabled", "soundEffectsProfile", "soundEffectsEnabled", "showReminders", "showCalendar",
    "showRemindersInCalendar", "kestrantModuleOrder", "kestrantLayoutRatio", "featureAnnouncement.installationDate",
    "featureAnnouncement.presentedCount", "featureAnnouncement.lastPresentedDate", "featureAnnouncement.disabled",
    "kestrant.initialCommandNTipPending", "kestrantAggregateMetricsEnabled", "kestrantAggregateMetricsDiscardPending",
    "kestrantAggregateMetricsCollectionEpoch", "kestrant.recap.share-links.v1", "reminderFlagIndex.nativeIDs",
    "reminderFlagIndex.localOverrides", "reminderAlerts.since", "reminderAlerts.rung", "selectedReminderListID",
    "reminderSortMode", "reminderManualOrder", "defaultReminderListID", "launchAtLogin", "kestrantEventStore",
)


class LifecycleTest(DesktopTest):
    def complete_first(self):
        """Clicks the circle of the only card and waits until the file says so."""
        self.expand()
        self.desktop.click(*self.wait_for_circles(1)[0])

    def test_settings_of_the_wrong_type_count_as_absent_and_are_kept(self):
        self.add_reminder("Water the plants")
        for wrong in ([], {"a": {}}):
            with self.subTest(wrong=wrong):
                self.start(**{key: wrong for key in EVERY_SETTING})
                self.expand()
                self.wait_for_circles(1)
                self.collapse()
                self.program.send_signal(signal.SIGTERM)
                self.assertEqual(self.program.wait(20), 0)
                settings = json.loads((self.configuration / "preferences.json").read_text())
                self.assertEqual(settings["hoverExpandDelay"], wrong)

    def test_works_where_there_is_no_message_bus(self):
        path = self.add_reminder("Water the plants")
        buses = {name: self.desktop.environment.get(name) for name in
                 ("DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS")}
        self.desktop.environment.update({name: NO_BUS for name in buses})

        def restore():
            for name, value in buses.items():
                self.desktop.environment.pop(name)
                if value:
                    self.desktop.environment[name] = value

        self.addCleanup(restore)
        self.start()
        self.complete_first()
        wait_until(lambda: "STATUS:COMPLETED" in self.text(path), "the completion is written")
        self.assertEqual(self.kestrant().returncode, 0, "a second start finds the first without a bus")
        self.assertIsNone(self.program.poll())

    def test_waits_for_a_screen_and_follows_it(self):
        self.add_reminder("Water the plants")
        output = self.desktop.output("xrandr").decode().splitlines()[1].split()[0]
        mode = f"{self.desktop.width}x{self.desktop.height}"

        def switch(on):
            self.desktop.output("xrandr", "--fb", mode, "--output", output, *(["--mode", mode] if on else ["--off"]))

        self.addCleanup(switch, True)
        switch(False)
        self.set_preferences()
        self.program = self.desktop.spawn([PROGRAM])
        self.addCleanup(stop, self.program)
        # It runs without a screen.
        self.desktop.output("gdbus", "wait", "--session", "--timeout", "60", "com.kestrant.notchapp")
        self.assertEqual(self.kestrant("--toggle").returncode, 0)
        switch(True)
        self.wait_for_panel(EXPANDED)
        self.assertEqual(self.kestrant("--toggle").returncode, 0)
        self.wait_for_panel(IDLE)
        switch(False)
        switch(True)
        self.wait_for_panel(IDLE)
        self.expand()

    def test_of_two_started_at_once_one_stays(self):
        self.set_preferences()
        programs = [self.desktop.spawn([PROGRAM]) for _ in range(2)]
        for program in programs:
            self.addCleanup(stop, program)
        wait_until(lambda: any(program.poll() is not None for program in programs), "one of them ends")
        ended, = [program for program in programs if program.poll() is not None]
        self.assertEqual(ended.returncode, 0)
        self.program, = [program for program in programs if program.poll() is None]
        # The other start asked for the panel.
        self.wait_for_panel(EXPANDED)

    def test_what_is_pending_at_the_end_is_written(self):
        path = self.add_reminder("Water the plants")
        self.start()
        self.complete_first()
        self.program.send_signal(signal.SIGTERM)
        self.assertEqual(self.program.wait(20), 0)
        self.assertIn("STATUS:COMPLETED", self.text(path))
        wait_until(lambda: self.panel_size() == (0, 0), "the panel is gone")

    def test_what_is_printed_arrives_or_is_missed(self):
        path = self.add_reminder("Water the plants")
        before = self.text(path)
        run = f'"{PROGRAM}" list'
        for redirection, status in ((">/dev/full", 1), (">&-", 0), ("<&- >&- 2>&-", 0), (">/dev/null", 0)):
            with self.subTest(redirection):
                done = subprocess.run(["sh", "-c", f"{run} {redirection}"], env=self.desktop.environment, timeout=60)
                self.assertEqual(done.returncode, status)
        self.assertEqual(self.text(path), before)

    @unittest.skipUnless(os.geteuid() == 0, "only the administrator can run the program as somebody else")
    def test_can_be_read_where_nothing_may_be_written(self):
        path = self.add_reminder("Water the plants")
        self.set_preferences()
        before = self.text(path)
        home = pathlib.Path(self.desktop.environment["HOME"])
        for entry in (self.desktop.folder, home, *home.rglob("*")):
            entry.chmod(0o755 if entry.is_dir() else 0o644)
        nobody = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", PROGRAM]
        self.assertIn(b"Water the plants", self.desktop.output(*nobody, "list"))
        said = self.desktop.folder / "said"
        with open(said, "wb") as log:
            self.program = self.desktop.spawn(nobody, stderr=log)
        self.addCleanup(stop, self.program)
        self.wait_for_panel(IDLE)
        self.expand()
        wait_until(lambda: str(self.configuration) in said.read_text(), "the program says what cannot be written")
        self.assertEqual(self.text(path), before)


if __name__ == "__main__":
    unittest.main()
