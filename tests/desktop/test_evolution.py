"""The panel on the desktop's own database: what its other programs show is there at the first start, and stays there when
the service ends in between or a server does not answer.
"""

import datetime
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import unittest

from harness import EXPANDED, LIST_COLOUR, SOURCES, TOOLBAR_HEIGHT, DesktopTest, stop, wait_until

SERVICE = "evolution-calendar-factory"
FOREIGN_PROGRAM = os.environ.get("FOREIGN_PROGRAM", str(SOURCES / "build/dev/tests/desktop/foreign_program"))
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


class OthersTest(DesktopWithService):
    def foreign(self, *arguments, title=None, more=""):
        """Has the other program do this; with a title it writes a task of that name."""
        text = title and (f"BEGIN:VTODO\r\nUID:{title.lower()}\r\nDTSTAMP:20260301T080000Z\r\nSUMMARY:{title}\r\n"
                          f"{more}END:VTODO\r\n")
        done = subprocess.run([FOREIGN_PROGRAM, *arguments], env=self.desktop.environment, input=text or "", text=True,
                              capture_output=True)
        self.assertEqual(done.returncode, 0, done.stderr)

    def order(self):
        return json.loads((self.configuration / "preferences.json").read_text())["reminderManualOrder"]

    def test_what_another_program_changes_shows_in_the_open_panel(self):
        self.add_list("Work", "local")
        for title in ("Water", "Read", "Write"):
            self.foreign("add", "errands", title=title)
        placed = ["write", "water", "read"]
        self.start(reminderSortMode="manual", reminderManualOrder=placed)
        self.expand()
        cards = self.wait_for_circles(3)
        # A form that is open stays as it is.
        self.desktop.key("ctrl+n")
        self.desktop.type("Buy a ")
        self.foreign("add", "work", title="Report")
        self.foreign("replace", "errands", title="Read", more="DESCRIPTION:A long one\r\n")
        wait_until(lambda: len(self.titles()) == 4, "the service has what was added")
        self.desktop.type("lamp")
        self.desktop.key("Return")
        wait_until(lambda: "Buy a lamp" in self.titles(), "the form was kept")
        self.assertEqual(self.wait_for_circles(5)[:3], cards)
        self.assertEqual(self.order()[:3], placed)

        self.foreign("recolor", "work", "#00AAFF")
        self.wait_for_circles(4)
        self.foreign("rename", "errands", "Elsewhere")
        self.foreign("remove", "errands", "water")
        self.foreign("add", "work", title="Water")
        self.wait_for_circles(3)
        self.foreign("replace", "errands", title="Read",
                     more="STATUS:COMPLETED\r\nPERCENT-COMPLETE:100\r\nCOMPLETED:20260302T080000Z\r\n")
        self.wait_for_circles(2)
        self.foreign("recolor", "work", "#%02X%02X%02X" % LIST_COLOUR)
        self.wait_for_circles(4)
        self.foreign("forget", "work")
        self.desktop.click(*self.wait_for_circles(2)[0])
        self.wait_for_circles(1)
        wait_until(lambda: self.titles() == ["Buy a lamp"], "the first card was the first one still")


class DesktopWithServer(DesktopWithService):
    STARTS = True

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
        self.command = [
            "radicale", "--config=", f"--server-hosts=127.0.0.1:{port}", f"--storage-filesystem-folder={folder}",
            "--auth-type=none", "--rights-type=from_file", f"--rights-file={folder}/rights"]
        self.port = port
        if self.STARTS:
            self.start_server()
        self.add_list("Home", "caldav",
                      f"[Authentication]\nHost=127.0.0.1\nPort={port}\nMethod=none\n\n[Security]\nMethod=none\n\n"
                      "[WebDAV Backend]\nResourcePath=/someone/tasks/\n\n[Offline]\nStaySynchronized=true\n")

    def start_server(self):
        self.server = self.desktop.spawn(self.command)
        self.addCleanup(stop, self.server)
        self.addCleanup(os.kill, self.server.pid, signal.SIGCONT)

        def answers():
            with socket.socket() as attempt:
                return attempt.connect_ex(("127.0.0.1", self.port)) == 0
        wait_until(answers, "the server answers")


class NeverReachedTest(DesktopWithServer):
    STARTS = False

    def test_a_list_whose_server_was_never_reached_is_said_not_to_answer(self):
        self.add("Call Theo")
        self.start()
        self.expand()
        self.wait_for_circles(1)
        self.wait_for(self.warns, bool, "the panel says that a list does not answer")
        self.start_server()
        self.wait_for_circles(2)
        self.wait_for(self.warns, lambda warns: not warns, "all is well")


class ServerTest(DesktopWithServer):
    """An account whose server does not answer."""

    def filling(self, circle):
        """How many points of a circle have the colour of its list; it is filled while its completion is pending."""
        x, y = circle
        return len(list(self.desktop.steady_picture().near(LIST_COLOUR, (x - 12, y - 12, x + 12, y + 12))))

    def test_what_waits_for_the_server_holds_nothing_else_up(self):
        self.add("Call Theo")
        self.start()
        self.expand()
        # What has a priority comes first.
        theo, bread = self.wait_for_circles(2)
        empty = self.filling(bread)
        os.kill(self.server.pid, signal.SIGSTOP)
        self.desktop.click(*bread)
        self.wait_for(self.warns, lambda warns: warns, "the panel says that a list does not answer")
        self.wait_for(lambda: self.filling(bread), lambda points: points > 1.5 * empty, "the completion is pending")
        self.desktop.click(*theo)
        wait_until(lambda: len(self.ledger()) == 1, "the other completion is made and recorded")
        left, = self.wait_for_circles(1)
        self.wait_for(lambda: self.filling(left), lambda points: points > 1.5 * empty, "the completion is pending still")
        self.assertNotIn("COMPLETED", self.text(self.bread))
        os.kill(self.server.pid, signal.SIGCONT)
        wait_until(lambda: "STATUS:COMPLETED" in self.text(self.bread), "the server has the completion")
        self.wait_for_circles(0)
        self.wait_for(self.warns, lambda warns: not warns, "all is well again")
        wait_until(lambda: len(self.ledger()) == 2, "both completions are recorded")
        self.assertEqual(self.titles(), [])


class UndoOnServerTest(DesktopWithServer):
    def lines(self):
        """The lines of the item on the server without the marks of a revision; none where it is not there."""
        marks = ("DTSTAMP", "LAST-MODIFIED", "SEQUENCE", "CREATED", "PRODID", "BEGIN:VCALENDAR", "END:VCALENDAR")
        found = [path for path in self.bread.parent.glob("*.ics") if "SUMMARY:Buy bread" in self.text(path)]
        return sorted(line for line in self.text(found[0]).splitlines() if not line.startswith(marks)) if found else []

    def test_what_is_done_in_a_list_of_a_server_is_undone_and_made_again_there(self):
        self.start()
        self.expand()
        self.wait_for_circles(1)
        before = self.lines()

        def complete():
            self.desktop.click(*self.wait_for_circles(1)[0])

        def with_card(*keys):
            x, y = self.wait_for_circles(1)[0]
            self.desktop.click(x + 60, y)
            for key in keys:
                self.desktop.key(key)

        def flag():
            with_card("Menu", "f", "Return")

        def delete():
            with_card("Delete")

        def edit():
            with_card("Return", "ctrl+a")
            self.desktop.type("Buy rye")
            self.desktop.key("Return")

        def move():
            with_card("Menu", "m", "Return", "e", "Return")

        for change, is_made in ((complete, lambda lines: "STATUS:COMPLETED" in lines),
                                (flag, lambda lines: "X-PINNED:true" in lines),
                                (delete, lambda lines: not lines),
                                (edit, lambda lines: not lines),
                                (move, lambda lines: not lines)):
            change()
            made = self.wait_for(self.lines, is_made, f"{change.__name__}: the server has it")
            self.desktop.key("ctrl+z")
            self.wait_for(self.lines, lambda lines: lines and not is_made(lines), f"{change.__name__}: taken back")
            self.assertEqual([line for line in before if line not in self.lines()], [])
            self.wait_for_circles(1)
            self.desktop.key("ctrl+shift+z")
            self.wait_for(self.lines, is_made, f"{change.__name__}: made again")
            self.desktop.key("ctrl+z")
            self.wait_for(self.lines, lambda lines: lines and not is_made(lines), f"{change.__name__}: taken back again")
            self.wait_for_circles(1)


class BirthdaysTest(DesktopWithService):
    COLOUR = (0xB0, 0xFF, 0x00)

    def setUp(self):
        super().setUp()
        sources = pathlib.Path(self.desktop.environment["XDG_CONFIG_HOME"]) / "evolution/sources"
        (sources / "birthdays.source").write_text(
            "[Data Source]\nDisplayName=Birthdays\nEnabled=true\nParent=contacts-stub\n\n"
            "[Calendar]\nBackendName=contacts\nColor=#%02X%02X%02X\nSelected=true\n" % self.COLOUR)

    def call(self, place, method, *arguments):
        """Calls the service of address books."""
        name = "org.gnome.evolution.dataserver.AddressBook10"
        path = place if place.startswith("/") else f"/org/gnome/evolution/dataserver/{place}"
        done = subprocess.run(
            ["gdbus", "call", "--session", "--dest", name, "--object-path", path,
             "--method", f"org.gnome.evolution.dataserver.{method}", *arguments],
            env=self.desktop.environment, capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout

    def rows(self):
        """The bars of the birthdays on show, or their squares, from the top."""
        return sorted((y0, x0) for x0, y0, x1, y1 in self.patches(self.COLOUR))

    def add_contact(self, name, birthday):
        # The book stays open as long as the panel shows what is in it.
        book = self.call("AddressBookFactory", "AddressBookFactory.OpenAddressBook", "system-address-book").split("'")[1]
        lines = ("BEGIN:VCARD", "VERSION:3.0", f"UID:{name}", f"FN:{name}", f"N:;{name};;;", f"BDAY:{birthday}", "END:VCARD")
        self.call(book, "AddressBook.CreateContacts", "['" + "".join(line + "\\r\\n" for line in lines) + "']", "uint32 0")

    def test_a_birthday_can_be_looked_at_and_not_changed(self):
        self.start(kestrantModuleOrder="remindersFirst", kestrantLayoutRatio="50/50")
        self.expand()
        self.wait_for(self.rows, lambda rows: not rows, "there is no birthday yet")
        self.add_contact("Ada", (datetime.date.today() + datetime.timedelta(2)).replace(year=1992))
        (y, x), = self.wait_for(self.rows, bool, "the birthday is shown")
        self.desktop.click(x + 60, y + 3)
        # Only what shows it is offered by its menu.
        self.desktop.key("Delete")
        self.after(lambda: self.desktop.key("Menu"))
        self.desktop.key("Down")
        self.after(lambda: self.desktop.key("Return"))
        self.desktop.type("Grace")
        # From the title to the switch for whole days, were it one to be pressed.
        self.desktop.key("Return", "Tab", "space", "Return", "Escape")
        self.wait_for(self.rows, lambda rows: rows == [(y, x)], "the birthday is where it was")
        self.assertIn("All day  Birthday: Ada ", self.kestrant("agenda").stdout)


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
