"""The first start: the introduction, by mouse and by keyboard alone, and what is there afterwards."""

import json
import shutil
import unittest

from harness import IDLE, PROGRAM, DesktopTest, stop, wait_until

SIZE = (720, 536)
ACCENT = (0x0A, 0x84, 0xFF)
DONE = (0x35, 0xD1, 0x5C)
POPOVER = (0x1A, 0x1B, 0x21)
LAST_PAGE = 4

# Places in the introduction's window.
FORWARD = (640, 494)
CLOSE = (695, 24)
FRENCH = (630, 280)
NOTCH = (360, 8)
FIRST_TICK = (50, 322, 74, 346)
CALENDAR_SWITCH = (330, 393)
OTHER_FOLDER = (460, 398)


def mark_of(page):
    """The middle of the mark that tells which page is shown."""
    return 332 + 14 * page, 494


class FirstRunTest(DesktopTest):
    def introduce(self):
        """Starts Kestrant in a home where it has never been and waits for its introduction."""
        self.program = self.desktop.spawn([PROGRAM])
        self.addCleanup(stop, self.program)
        self.window = wait_until(lambda: self.desktop.window_of(self.program), "the introduction is shown")
        self.left, self.top, *size = self.desktop.geometry(self.window)
        self.assertEqual(tuple(size), SIZE)
        wait_until(lambda: self.desktop.focused_window() == self.window, "the introduction has the keyboard")
        self.wait_for_page(0)

    def place(self, point):
        return self.left + point[0], self.top + point[1]

    def wait_for_page(self, page):
        colour = self.wait_for(lambda: self.desktop.picture().pixel(*self.place(mark_of(page))),
                               lambda pixel: pixel == ACCENT, f"page {page} is shown")
        self.assertEqual(colour, ACCENT)

    def preferences(self):
        path = self.configuration / "preferences.json"
        return json.loads(path.read_text()) if path.exists() else {}

    def wait_for_preference(self, key, value):
        self.wait_for(self.preferences, lambda stored: stored.get(key) == value, f"{key} is {value}")

    def wait_for_the_panel_alone(self):
        self.wait_for_panel(IDLE)
        wait_until(lambda: self.desktop.window_of(self.program) != self.window, "the introduction has gone")
        self.wait_for_preference("kestrantCompletedInitialOnboarding", True)

    def restart(self):
        """Ends Kestrant and starts it again: the panel is there at once."""
        self.program.terminate()
        self.assertEqual(self.program.wait(20), 0)
        self.point_away()
        self.program = self.desktop.spawn([PROGRAM])
        self.addCleanup(stop, self.program)
        self.wait_for_panel(IDLE)

    def test_the_introduction_leads_to_the_panel_by_mouse(self):
        self.introduce()
        self.assertEqual(self.panel_size(), (0, 0), "there is no panel yet")
        self.desktop.click(*self.place(FRENCH))
        self.wait_for_preference("kestrantLanguage", "fr")
        self.desktop.click(*self.place(FORWARD))
        self.wait_for_page(1)
        self.desktop.move(*self.place(NOTCH))
        left, top, right, bottom = FIRST_TICK
        area = (*self.place((left, top)), *self.place((right, bottom)))
        self.wait_for(lambda: self.desktop.picture().near(DONE, area), bool, "pointing is ticked off")
        self.desktop.click(*self.place(FORWARD))
        self.wait_for_page(2)
        self.desktop.click(*self.place(CALENDAR_SWITCH))
        self.wait_for_preference("showCalendar", False)
        for page in range(3, LAST_PAGE + 1):
            self.desktop.click(*self.place(FORWARD))
            self.wait_for_page(page)
        self.assertNotIn("kestrantCompletedInitialOnboarding", self.preferences())
        self.desktop.click(*self.place(FORWARD))
        self.point_away()
        self.wait_for_the_panel_alone()

        # The year is shown over the first open panel, and makes way for its content.
        self.add_reminder("Water the plants")
        self.expand()
        self.assertEqual(self.patches((0xFF, 0x00, 0xAA)), [])
        self.desktop.key("Escape")
        self.wait_for_preference("kestrantCompletedInitialYearReveal", True)
        self.wait_for_circles(1)
        self.restart()
        self.expand()
        self.wait_for_circles(1)

    def test_the_introduction_leads_to_the_panel_by_keyboard_alone(self):
        self.introduce()
        self.desktop.key("shift+Tab", "Right")
        self.wait_for_preference("kestrantLanguage", "fr")
        self.desktop.key("Tab")
        for page in range(1, LAST_PAGE + 1):
            self.desktop.key("Return")
            self.wait_for_page(page)
        self.desktop.key("Return")
        self.wait_for_the_panel_alone()
        self.restart()

    def test_the_folder_chosen_in_the_introduction_is_the_one_that_is_used(self):
        chosen = self.data.parent / "elsewhere"
        shutil.copytree(self.list, chosen / "errands")
        self.add_item(chosen / "errands", "VTODO", "Water the plants", "")
        self.introduce()
        for page in range(1, LAST_PAGE):
            self.desktop.key("Return")
            self.wait_for_page(page)
        # Past the buttons to the choice of the place, then on to its folder.
        self.desktop.key("shift+Tab", "shift+Tab", "Down", "Tab")
        self.desktop.type(str(chosen))
        self.desktop.key("Tab")
        self.wait_for_preference("kestrantEventStore", f"vdir:{chosen}")
        self.desktop.key("Tab", "Tab", "Return")
        self.wait_for_page(LAST_PAGE)
        self.desktop.key("Return")
        self.wait_for_the_panel_alone()
        self.expand()
        self.desktop.key("Escape")
        self.wait_for_circles(1)

    def test_a_folder_that_is_asked_for_and_not_given_is_not_dropped(self):
        self.introduce()
        for page in range(1, LAST_PAGE):
            self.desktop.key("Return")
            self.wait_for_page(page)
        self.desktop.click(*self.place(OTHER_FOLDER))
        self.desktop.click(*self.place(FORWARD))
        # The keyboard is where the folder is written.
        chosen = self.data.parent / "elsewhere"
        self.desktop.type(str(chosen))
        self.desktop.click(*self.place(FORWARD))
        self.wait_for_page(LAST_PAGE)
        self.wait_for_preference("kestrantEventStore", f"vdir:{chosen}")

    def test_closing_the_introduction_leaves_a_notch_that_brings_it_back(self):
        self.introduce()
        self.desktop.key("Escape")
        self.desktop.key("Return")
        self.wait_for_page(1)
        self.desktop.click(*self.place(CLOSE))
        self.point_away()
        self.wait_for_panel(IDLE)
        wait_until(lambda: self.desktop.focused_window() != self.window, "the introduction has gone")
        self.assertIsNone(self.program.poll())
        self.assertNotIn("kestrantCompletedInitialOnboarding", self.preferences())
        self.desktop.click(self.middle, 10)
        wait_until(lambda: self.desktop.focused_window() == self.window, "the introduction is back")
        self.wait_for_page(1)
        self.assertIsNone(self.program.poll())

    def test_asking_for_the_panel_before_the_end_brings_the_introduction_to_the_front(self):
        self.introduce()
        self.desktop.output("xdotool", "windowraise", str(self.other.window))
        self.desktop.click(200, 500)
        wait_until(lambda: self.desktop.focused_window() == self.other.window, "the other window has the keyboard")
        self.assertEqual(self.kestrant().returncode, 0)
        wait_until(lambda: self.desktop.focused_window() == self.window, "the introduction has the keyboard")
        self.wait_for_page(0)
        self.assertEqual(self.panel_size(), (0, 0))

    def test_the_tutorial_is_shown_again_from_the_settings(self):
        self.add_reminder("Water the plants")
        self.start()
        self.expand()
        self.wait_for_circles(1)
        panel = self.desktop.focused_window()
        self.desktop.click(self.middle + 434, 16)
        self.wait_for(lambda: self.desktop.picture().pixel(self.middle - 322, 200), lambda pixel: pixel == POPOVER,
                      "the settings are open")
        # Backwards from the first setting: quit, tutorial.
        self.desktop.key("shift+Tab", "shift+Tab", "space")
        wait_until(lambda: self.desktop.window_of(self.program) not in (None, panel), "the introduction is shown")
        self.window = self.desktop.window_of(self.program)
        self.left, self.top, *size = self.desktop.geometry(self.window)
        self.assertEqual(tuple(size), SIZE)
        self.wait_for_page(1)
        self.point_away()
        self.wait_for_panel(IDLE)
        self.desktop.key("Escape")
        wait_until(lambda: self.desktop.focused_window() != self.window, "the introduction has gone")
        self.assertIsNone(self.program.poll())


if __name__ == "__main__":
    unittest.main()
