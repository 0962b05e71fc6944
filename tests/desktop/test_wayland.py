"""The panel in Wayland sessions, above a window of Wayland's own: as a surface of the compositor, and through an X server
where the compositor has no such surfaces for it."""

import tempfile
import unittest

from compositors import HEIGHT, WIDTH, WINDOW_COLOUR, GnomeShell, Sway
from harness import EXPANDED, PROGRAM, wait_until


class Session:
    """Tests that hold on every compositor."""

    compositor = None

    def setUp(self):
        if not self.compositor.is_installed():
            self.skipTest("there is no compositor to try it in")
        self.session = self.compositor(self, self.enterContext(tempfile.TemporaryDirectory(prefix="kestrant-wayland-")))
        place = WIDTH // 2, self.session.bar + 15
        without_notch = self.session.picture().pixel(*place)
        self.program = self.session.spawn(PROGRAM)
        wait_until(lambda: self.session.picture().pixel(*place) != without_notch, "the notch is there")

    def is_open(self):
        """Beyond its shadow the window below is seen."""
        picture = self.session.picture()
        self.assertEqual(picture.pixel(WIDTH // 2, EXPANDED[1] + 140), WINDOW_COLOUR)
        return picture.pixel(WIDTH // 2, EXPANDED[1] - 3) != WINDOW_COLOUR

    def point_at_notch(self):
        self.session.move(WIDTH // 2, self.session.bar + 5)
        wait_until(self.is_open, "the panel has opened")

    def point_away(self):
        self.session.move(200, 700)
        wait_until(lambda: not self.is_open(), "the panel has folded")

    def assert_typed_below(self, text):
        self.session.type_line(text)
        wait_until(lambda: self.session.typed.read_text().endswith(f"{text}\n"), "the window below has the keyboard")

    def add(self, title):
        without_form = wait_until(self.settled_panel, "the panel has come to rest")
        self.session.control("n")
        wait_until(lambda: self.panel_pixels() != without_form, "the form is open")
        self.session.type_line(title)
        wait_until(lambda: any(f"SUMMARY:{title}" in path.read_text() for path in self.session.list.glob("*.ics")),
                   "the reminder is there")

    def panel_pixels(self):
        """Those of the rows of the panel and its forms, below the desktop's bar."""
        row = 3 * WIDTH
        return self.session.picture().pixels[(self.session.bar + 5) * row : (EXPANDED[1] + 130) * row]

    def settled_panel(self):
        first, second, third = (self.panel_pixels() for _ in range(3))
        return first if first == second == third else None

    def test_opens_takes_what_is_typed_and_gives_the_keyboard_back(self):
        for title in ("Milk", "Bread"):
            self.point_at_notch()
            self.add(title)
            self.point_away()
            self.assert_typed_below(title.lower())

    def test_stays_open_under_the_pointer_and_lets_clicks_beside_it_through(self):
        self.point_at_notch()
        for x in range(700, 740, 5):
            self.session.move(x, self.session.bar + 7)
            self.assertTrue(self.is_open())
        # On the shadow, beside the panel.
        self.session.move((WIDTH - EXPANDED[0]) // 2 - 18, 200)
        wait_until(lambda: not self.is_open(), "the panel has folded")
        self.session.click()
        self.assert_typed_below("below")
        # Across the notch and away again before it could open.
        for _ in range(5):
            self.session.move(WIDTH // 2, self.session.bar + 5)
            self.session.move(WIDTH // 2, HEIGHT - 100)
        wait_until(lambda: not self.is_open(), "the panel has folded")

    def test_ends_cleanly(self):
        self.point_at_notch()
        self.program.terminate()
        self.assertEqual(self.program.wait(30), 0)


class SwayTest(Session, unittest.TestCase):
    compositor = Sway


class GnomeTest(Session, unittest.TestCase):
    """Run by hand: the shell is large, and on a busy machine it may pass the first keys to the window below."""

    compositor = GnomeShell


if __name__ == "__main__":
    unittest.main()
