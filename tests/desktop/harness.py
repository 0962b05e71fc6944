"""The real program in a real window: a home folder, a folder of reminders and a desktop of its own, and the means to
act on the panel and to see what became of it.
"""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import unittest

SOURCES = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(SOURCES / "scripts"))

from virtual_desktop import EventWindow, VirtualDesktop, bounds, stop, wait_until  # noqa: E402

__all__ = ["PROGRAM", "DesktopTest", "EventWindow", "bounds", "stop", "wait_until"]

PROGRAM = os.environ.get("KESTRANT", str(SOURCES / "build/dev/src/app/kestrant"))
IDENTIFIER = "com.Kestrant.notchapp"

# What the panel covers in each phase, in pixels: 205, 257 and 940 wide with the ears at its top corners, which are 5.5 wide
# at rest and 10 under the pointer and when it is open.
IDLE = (205 - 11, 33)
HOVERING = (257 - 20, 33)
EXPANDED = (940 - 20, 292)
# The window at rest: the notch it grows to under the pointer, and room for its shadow.
WINDOW = (294, 57)
TOOLBAR_HEIGHT = 33

# The colour of the list that the tests make: nothing else on the panel has it, so what has it belongs to that list.
LIST_COLOUR = (0xFF, 0x00, 0xAA)


class DesktopTest(unittest.TestCase):
    """One desktop for all tests of a class, with another program's window across it; a new home and a new Kestrant for
    each test."""

    @classmethod
    def setUpClass(cls):
        cls.desktop = cls.enterClassContext(VirtualDesktop())
        cls.other = EventWindow(cls.desktop)
        cls.middle = cls.desktop.width // 2

    def setUp(self):
        home = pathlib.Path(self.desktop.environment["HOME"])
        shutil.rmtree(home)
        self.data = pathlib.Path(self.desktop.environment["XDG_DATA_HOME"]) / IDENTIFIER
        self.configuration = pathlib.Path(self.desktop.environment["XDG_CONFIG_HOME"]) / IDENTIFIER
        self.list = self.make_list("Errands", LIST_COLOUR)
        self.other_colour = self.desktop.picture().pixel(self.middle, 1)
        self.point_away()

    # The files

    def make_list(self, name, colour):
        """A list, or a calendar: a folder for reminders or events."""
        path = self.data / "calendars" / name.lower()
        path.mkdir(parents=True)
        (path / "displayname").write_text(name)
        (path / "color").write_text("#%02X%02X%02X" % colour)
        return path

    def add_reminder(self, title, more=""):
        """Writes a reminder as another program would and returns the path of its file."""
        return self.add_item(self.list, "VTODO", title, more)

    def add_item(self, folder, component, title, more):
        uid = title.lower().replace(" ", "-")
        path = folder / f"{uid}.ics"
        path.write_bytes(
            (
                f"BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Somebody//Else//EN\r\nBEGIN:{component}\r\n"
                f"UID:{uid}\r\nDTSTAMP:20260301T080000Z\r\nCREATED:20260301T080000Z\r\nSUMMARY:{title}\r\n"
                f"{more}X-SOMEBODY-ELSE:keep this\r\nEND:{component}\r\nEND:VCALENDAR\r\n"
            ).encode()
        )
        return path

    def text(self, path):
        return path.read_bytes().decode()

    def set_preferences(self, **preferences):
        """Changes these preferences and leaves the others as the program left them."""
        path = self.configuration / "preferences.json"
        path.parent.mkdir(parents=True, exist_ok=True)
        present = json.loads(path.read_text()) if path.exists() else {}
        settled = {"kestrantCompletedInitialOnboarding": True, "kestrantCompletedInitialYearReveal": True,
                   "kestrantStartedInitialYearReveal": True, "kestrantLanguage": "en",
                   "featureAnnouncement.disabled": True}
        path.write_text(json.dumps({**settled, **present, **preferences}))

    def ledger(self):
        """The records of completed reminders, by identifier; none while there is no ledger."""
        path = self.data / "completion-ledger-v1.json"
        return json.loads(path.read_text())["records"] if path.exists() else {}

    # The program

    def launch(self, *arguments, **preferences):
        self.set_preferences(**preferences)
        self.program = self.desktop.spawn([PROGRAM, *arguments])
        self.addCleanup(stop, self.program)

    def start(self, *arguments, **preferences):
        """Starts Kestrant and waits until its panel rests at the top of the screen."""
        self.launch(*arguments, **preferences)
        self.wait_for_panel(IDLE)

    def kestrant(self, *arguments):
        """Runs the command line beside the running panel."""
        return subprocess.run([PROGRAM, *arguments], env=self.desktop.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=60)

    # The panel

    def panel_size(self):
        """(width, height) of what the panel covers, its width taken halfway down, between the ears."""
        picture = self.desktop.picture()
        outside = self.other_colour
        height = 0
        while height < picture.height and picture.pixel(self.middle, height) != outside:
            height += 1
        row = height // 2
        left = right = self.middle
        if not height:
            return 0, 0
        while left > 0 and picture.pixel(left - 1, row) != outside:
            left -= 1
        while right < picture.width and picture.pixel(right, row) != outside:
            right += 1
        return right - left, height

    def wait_for_panel(self, size):
        seen = []

        def has_the_size():
            if self.program.poll() is not None:
                self.fail(f"Kestrant ended with status {self.program.returncode}")
            seen.append(self.panel_size())
            return seen[-1] == size

        try:
            wait_until(has_the_size, f"the panel is {size}")
        except AssertionError as problem:
            self.keep_picture()
            raise AssertionError(f"{problem}; it was {seen[-1]}") from None

    def keep_picture(self):
        path = pathlib.Path(PROGRAM).parent / f"{self.id()}.png"
        self.desktop.save_picture(path)
        print(f"the display as it was: {path}", file=sys.stderr)

    def point_away(self):
        self.desktop.move(self.middle, self.desktop.height - 100)

    def expand(self):
        self.desktop.move(self.middle, 10)
        self.wait_for_panel(EXPANDED)
        wait_until(lambda: self.desktop.focused_window() != self.other.window, "the open panel has the keyboard")

    def collapse(self):
        self.point_away()
        self.wait_for_panel(IDLE)

    def after(self, act):
        """Acts, and waits until something else is seen and stands still."""
        before = self.desktop.steady_picture().pixels
        act()
        self.wait_for(lambda: self.desktop.picture().pixels != before, bool, "something has changed")
        self.desktop.steady_picture()

    def patches(self, colour):
        """The bounds of the areas of a colour on the open panel below its toolbar, once nothing moves any more."""
        width, height = EXPANDED
        area = (self.middle - width // 2, TOOLBAR_HEIGHT, self.middle + width // 2, height)
        points = set(self.desktop.steady_picture().near(colour, area))
        found = []
        while points:
            patch, edge = set(), [points.pop()]
            while edge:
                x, y = edge.pop()
                patch.add((x, y))
                for neighbour in ((x + a, y + b) for a in (-1, 0, 1) for b in (-1, 0, 1)):
                    if neighbour in points:
                        points.remove(neighbour)
                        edge.append(neighbour)
            found.append(bounds(patch))
        return found

    def circles(self):
        """The middles of the circles on the cards, in reading order: the patches of the list's colour that are as
        large as a circle is."""
        found = [((x0 + x1) // 2, (y0 + y1) // 2) for x0, y0, x1, y1 in self.patches(LIST_COLOUR)
                 if 12 <= x1 - x0 <= 24 and 12 <= y1 - y0 <= 24]
        return sorted(found, key=lambda point: (point[1], point[0]))

    def wait_for_circles(self, count):
        return self.wait_for(self.circles, lambda circles: len(circles) == count, f"{count} cards are shown")

    def wait_for(self, look, is_right, what):
        """Returns what is seen when it is right at last; keeps a picture when it never is."""
        seen = []

        def is_seen():
            seen[:] = [look()]
            return is_right(seen[0])

        try:
            wait_until(is_seen, what)
        except AssertionError as problem:
            self.keep_picture()
            raise AssertionError(f"{problem}; last seen: {seen[0]}") from None
        return seen[0]
