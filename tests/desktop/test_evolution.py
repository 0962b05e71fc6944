"""The panel on the desktop's own database: what its other programs show is there at the first start, and stays there when
the service ends in between or a server does not answer.
"""

import json
import os
import pathlib
import shutil
import signal
import socket
import unittest

from harness import EXPANDED, LIST_COLOUR, TOOLBAR_HEIGHT, DesktopTest, stop, wait_until

SERVICE = "evolution-calendar-factory"
# Of the dot on the settings' button when there is something to say.
WARNING = (0xFF, 0xB0, 0x3A)


class DesktopWithService(DesktopTest):
    """A service keeps what it knows of a home, so each test class has one test."""

    def setUp(self):
        super().setUp()
        # Nobody has used Kestrant's own folder yet.
        shutil.rmtree(self.data / "calendars")
        self.add_list("Errands", "local")

    def add_list(self, name, backend, more=""):
        sources = pathlib.Path(self.desktop.environment["XDG_CONFIG_HOME"]) / "evolution/sources"
        sources.mkdir(parents=True, exist_ok=True)
        (sources / f"{name.lower()}.source").write_text(
            f"[Data Source]\nDisplayName={name}\nEnabled=true\nParent={backend}-stub\n\n"
            f"[Task List]\nBackendName={backend}\nColor=#%02X%02X%02X\nSelected=true\n\n" % LIST_COLOUR + more
        )

    def titles(self):
        return sorted(task["title"] for task in json.loads(self.kestrant("list", "--json").stdout))

    def add(self, title):
        done = self.kestrant("add", title, "--list", "Errands", "--literal")
        self.assertEqual(done.returncode, 0, done.stderr)

    def warns(self):
        width, _ = EXPANDED
        toolbar = (self.middle + width // 4, 0, self.middle + width // 2, TOOLBAR_HEIGHT)
        return bool(self.desktop.picture().near(WARNING, toolbar, 50))

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


class ServerTest(DesktopWithService):
    """An account whose server does not answer."""

    def setUp(self):
        if not shutil.which("radicale"):
            self.skipTest("radicale is not installed; scripts/install-dependencies installs it")
        super().setUp()
        folder = pathlib.Path(self.desktop.environment["HOME"]) / "server"
        collection = folder / "collection-root/someone/tasks"
        collection.mkdir(parents=True)
        (collection / ".Radicale.props").write_text(
            '{"tag": "VCALENDAR", "C:supported-calendar-component-set": "VTODO"}')
        self.bread = self.add_item(collection, "VTODO", "Buy bread", "")
        (folder / "rights").write_text("[all]\nuser: .*\ncollection: .*\npermissions: RrWw\n")
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            port = free.getsockname()[1]
        self.server = self.desktop.spawn([
            "radicale", "--config=", f"--server-hosts=127.0.0.1:{port}", f"--storage-filesystem-folder={folder}",
            "--auth-type=none", "--rights-type=from_file", f"--rights-file={folder}/rights"])
        self.addCleanup(stop, self.server)
        self.addCleanup(os.kill, self.server.pid, signal.SIGCONT)

        def answers():
            with socket.socket() as attempt:
                return attempt.connect_ex(("127.0.0.1", port)) == 0
        wait_until(answers, "the server answers")
        self.add_list("Home", "caldav",
                      f"[Authentication]\nHost=127.0.0.1\nPort={port}\nMethod=none\n\n[Security]\nMethod=none\n\n"
                      "[WebDAV Backend]\nResourcePath=/someone/tasks/\n\n[Offline]\nStaySynchronized=true\n")

    def test_what_waits_for_the_server_holds_nothing_else_up(self):
        self.add("Call Theo")
        self.start()
        self.expand()
        # What has a priority comes first.
        theo, bread = self.wait_for_circles(2)
        os.kill(self.server.pid, signal.SIGSTOP)
        self.desktop.click(*bread)
        self.wait_for(self.warns, lambda warns: warns, "the panel says that a list does not answer")
        self.desktop.click(*theo)
        wait_until(lambda: len(self.ledger()) == 1, "the other completion is made and recorded")
        self.assertNotIn("COMPLETED", self.text(self.bread))
        os.kill(self.server.pid, signal.SIGCONT)
        wait_until(lambda: "STATUS:COMPLETED" in self.text(self.bread), "the server has the completion")
        self.wait_for_circles(0)
        self.wait_for(self.warns, lambda warns: not warns, "all is well again")
        wait_until(lambda: len(self.ledger()) == 2, "both completions are recorded")
        self.assertEqual(self.titles(), [])


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
