"""The panel on the desktop's own database: what its other programs show is there at the first start, and stays there when
the service ends in between.
"""

import json
import os
import pathlib
import shutil
import signal
import unittest

from harness import EXPANDED, LIST_COLOUR, TOOLBAR_HEIGHT, DesktopTest, wait_until

SERVICE = "evolution-calendar-factory"
# Of the dot on the settings' button when there is something to say.
WARNING = (0xFF, 0x9F, 0x0A)


class DesktopWithService(DesktopTest):
    """A service keeps what it knows of a home, so each test class has one test."""

    def setUp(self):
        super().setUp()
        # Nobody has used Kestrant's own folder yet.
        shutil.rmtree(self.data / "calendars")
        sources = pathlib.Path(self.desktop.environment["XDG_CONFIG_HOME"]) / "evolution/sources"
        sources.mkdir(parents=True)
        (sources / "errands.source").write_text(
            "[Data Source]\nDisplayName=Errands\nEnabled=true\nParent=local-stub\n\n"
            "[Task List]\nBackendName=local\nColor=#%02X%02X%02X\nSelected=true\n" % LIST_COLOUR
        )

    def titles(self):
        return sorted(task["title"] for task in json.loads(self.kestrant("list", "--json").stdout))

    def add(self, title):
        done = self.kestrant("add", title, "--list", "Errands", "--literal")
        self.assertEqual(done.returncode, 0, done.stderr)

    def warns(self):
        width, _ = EXPANDED
        toolbar = (self.middle + width // 4, 0, self.middle + width // 2, TOOLBAR_HEIGHT)
        return bool(self.desktop.picture().near(WARNING, toolbar, 10))

    def process_of_service(self):
        """The service that was started for this desktop."""
        home = ("HOME=" + self.desktop.environment["HOME"]).encode()
        for process in pathlib.Path("/proc").iterdir():
            try:
                if SERVICE.encode() in (process / "cmdline").read_bytes() and home in (process / "environ").read_bytes():
                    return int(process.name)
            except OSError:
                continue
        return None


class EvolutionTest(DesktopWithService):
    def test_the_persons_own_lists_are_there_and_stay(self):
        self.add("Water the plants")
        self.add("Call Theo")
        self.start()
        self.expand()
        circles = self.wait_for_circles(2)
        self.assertFalse((self.data / "calendars").exists(), "nothing was put into a folder of Kestrant's own")
        self.desktop.click(*circles[0])
        self.wait_for_circles(1)
        wait_until(lambda: len(self.titles()) == 1, "the service knows of the completion")

        os.kill(self.process_of_service(), signal.SIGKILL)
        self.add("Buy a lamp")
        first, _ = self.wait_for_circles(2)
        self.desktop.click(*first)
        self.wait_for_circles(1)
        wait_until(lambda: len(self.titles()) == 1, "the service that was started anew knows of it")
        self.assertFalse(self.warns())

        hanging = self.process_of_service()
        os.kill(hanging, signal.SIGSTOP)
        self.desktop.click(*self.circles()[0])
        self.wait_for(self.warns, lambda warns: warns, "the panel says that the service does not answer")
        os.kill(hanging, signal.SIGCONT)
        wait_until(lambda: self.titles() == [], "the change that waited arrives")
        self.wait_for(self.warns, lambda warns: not warns, "all is well again")
        self.wait_for_circles(0)


class ExchangeTest(DesktopWithService):
    def test_another_database_takes_its_place_while_the_panel_is_open(self):
        self.add("Water the plants")
        self.list = self.make_list("Home", LIST_COLOUR)
        for title in ("Buy bread", "Call Theo"):
            self.add_reminder(title)
        self.start(kestrantEventStore="evolution")
        self.expand()
        self.wait_for_circles(1)
        self.set_preferences(kestrantEventStore=f"vdir:{self.data}/calendars")
        first, _ = self.wait_for_circles(2)
        self.desktop.click(*first)
        self.wait_for_circles(1)
        wait_until(lambda: sum("STATUS:COMPLETED" in self.text(path) for path in self.list.iterdir()
                               if path.suffix == ".ics") == 1, "the completion is in the folder")
        self.set_preferences(kestrantEventStore="evolution")
        self.expand()
        self.wait_for_circles(1)
        self.assertEqual(self.titles(), ["Water the plants"])


if __name__ == "__main__":
    unittest.main()
