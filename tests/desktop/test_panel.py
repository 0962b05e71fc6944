"""The panel's phases under the pointer, and how it shares the screen with other programs."""

import signal
import subprocess
import unittest

from harness import EXPANDED, HOVERING, IDLE, PROGRAM, WINDOW, DesktopTest, EventWindow, stop, wait_until


class PanelTest(DesktopTest):
    def test_grows_under_the_pointer_and_folds_back_when_it_leaves(self):
        self.start()
        window = self.desktop.window_of(self.program)
        self.assertEqual(self.desktop.geometry(window), (self.middle - WINDOW[0] // 2, 0, *WINDOW))
        self.expand()
        self.collapse()
        wait_until(lambda: self.desktop.geometry(window)[2] == WINDOW[0], "the window is small again")
        self.assertEqual(self.desktop.geometry(window), (self.middle - WINDOW[0] // 2, 0, *WINDOW))

    def test_hovering_only_widens_it_when_a_click_is_asked_for(self):
        self.start(requiresClickOrSwipeToExpand=True)
        self.desktop.move(self.middle, 10)
        self.wait_for_panel(HOVERING)
        self.desktop.click(self.middle, 10)
        self.wait_for_panel(EXPANDED)
        # A press right after it opened would be taken for the second of a double click.
        self.desktop.steady_picture()
        self.desktop.click(self.middle, 10)
        self.wait_for_panel(HOVERING)
        self.collapse()

    def test_clicks_beside_the_resting_notch_reach_the_program_below(self):
        self.start()
        # Inside the panel when it is open, and outside the notch.
        places = [(self.middle - 300, 10), (self.middle + 120, 5), (self.middle, 60), (self.middle + 400, 280)]
        before = len(self.other.clicks())
        for x, y in places:
            self.desktop.click(x, y)
        wait_until(lambda: len(self.other.clicks()) == before + len(places), "the clicks arrive below")
        self.assertEqual(self.other.clicks()[before:], places)
        # The open panel takes them, and gives them free again when it has folded back.
        self.expand()
        self.desktop.click(self.middle + 400, 280)
        self.collapse()
        self.desktop.click(self.middle - 300, 10)
        wait_until(lambda: len(self.other.clicks()) > before + len(places), "the click arrives below")
        self.assertEqual(self.other.clicks()[before + len(places) :], [(self.middle - 300, 10)])

    def test_stays_above_a_window_that_is_raised_and_keeps_out_of_the_task_switcher(self):
        self.start()
        window = self.desktop.window_of(self.program)
        self.desktop.output("xdotool", "windowraise", str(self.other.window))
        self.desktop.click(200, 500)
        self.wait_for_panel(IDLE)
        state = self.desktop.window_property(window, "_NET_WM_STATE")
        for flag in ("SKIP_TASKBAR", "SKIP_PAGER"):
            self.assertIn(flag, state)
        self.desktop.key("super+2")
        self.addCleanup(self.desktop.output, "xdotool", "set_desktop", "0")
        wait_until(lambda: "= 1" in self.desktop.root_property("_NET_CURRENT_DESKTOP"), "the second desktop is shown")
        self.other_colour = self.desktop.background
        self.wait_for_panel(IDLE)

    def test_takes_the_keyboard_while_open_and_gives_it_back(self):
        self.desktop.click(200, 500)
        self.start()
        self.assertEqual(self.desktop.active_window(), self.other.window, "showing the panel leaves the focus alone")
        self.expand()
        wait_until(lambda: self.desktop.active_window() != self.other.window, "the open panel has the keyboard")
        before = len(self.other.keys())
        self.desktop.key("a")
        self.collapse()
        wait_until(lambda: self.desktop.active_window() == self.other.window, "the other window has the keyboard again")
        self.desktop.key("b")
        wait_until(lambda: len(self.other.keys()) > before, "the key arrives")
        self.assertEqual(self.other.keys()[before:], ["b"])

    def test_leaves_the_keyboard_to_a_window_that_was_activated_while_it_was_open(self):
        path = self.add_reminder("Water the plants")
        before = self.text(path)
        self.start()
        # With a card under the keyboard, and with a popover open.
        for key in ("Right", "ctrl+n"):
            with self.subTest(key):
                self.expand()
                self.desktop.key(key)
                self.desktop.steady_picture()
                # The pointer rests where the notch is.
                later = EventWindow(self.desktop)
                self.addCleanup(later.close)
                self.wait_for_panel(IDLE)
                for letter in "world":
                    self.desktop.key(letter)
                self.desktop.key("Return")
                wait_until(lambda: later.keys() == [*"world", "Return"], "what is typed arrives there")
                self.assertEqual(self.panel_size(), IDLE)
                self.point_away()
                # The program looks at the pointer now and then.
                self.desktop.steady_picture()
        self.assertEqual(self.text(path), before)
        self.desktop.steady_picture()
        self.desktop.click(self.middle, 10)
        self.wait_for_panel(EXPANDED)
        self.collapse()
        self.desktop.steady_picture()
        self.expand()

    def test_a_press_beside_an_open_popover_closes_it_and_goes_to_what_is_seen_there(self):
        path = self.add_reminder("Water the plants")
        text = self.text(path)
        self.start()
        self.expand()
        self.wait_for_circles(1)
        still = self.desktop.steady_picture()
        below = (self.middle - 460, 295, self.middle + 460, self.desktop.height)
        self.desktop.click(self.middle + 436, 20)
        self.wait_for(lambda: self.desktop.picture().differing(self.other_colour, below), bool, "it hangs below the panel")
        # Where its shadow would be, with a compositor, is the other window.
        self.desktop.click(self.middle + 436, 20)
        self.wait_for(lambda: self.desktop.picture().differing(self.other_colour, below), lambda seen: not seen,
                      "what opened it closes it")
        self.desktop.click(self.middle + 436, 20)
        self.wait_for(lambda: self.desktop.picture().differing(self.other_colour, below), bool, "it hangs below the panel")
        left, _, _, bottom = self.desktop.steady_picture().differing(self.other_colour, below)
        before = len(self.other.clicks())
        self.desktop.click(left - 12, bottom - 40)
        wait_until(lambda: len(self.other.clicks()) > before, "the click arrives below")
        self.wait_for(lambda: self.desktop.picture().differing(self.other_colour, below), lambda seen: not seen, "it has closed")
        self.collapse()
        self.expand()
        self.wait_for_circles(1)
        self.assertEqual(self.desktop.steady_picture().pixels, still.pixels, "nothing is seen of it")
        self.assertEqual(self.text(path), text, "nothing was changed by it")

    def test_asking_for_a_search_that_is_not_shown_holds_nothing_open(self):
        self.start(showReminders=False)
        self.expand()
        self.desktop.key("ctrl+f")
        self.collapse()

    def is_there(self, x, y=3):
        return self.desktop.picture().pixel(x, y) != self.other_colour

    def test_a_hidden_panel_comes_by_command_only_and_a_strip_like_the_notch(self):
        self.launch(kestrantRestingLook="hidden")
        self.desktop.move(self.middle, 0)
        self.kestrant("--toggle")
        self.wait_for_panel(EXPANDED)
        self.desktop.move(self.middle, 100)
        self.point_away()
        wait_until(lambda: not self.is_there(self.middle), "nothing is left")
        stop(self.program)
        self.launch(kestrantRestingLook="strip")
        wait_until(lambda: self.panel_size()[1] == 4, "a strip is there")
        self.desktop.move(self.middle, 1)
        self.wait_for_panel(EXPANDED)

    def test_is_carried_along_the_edge_with_alt(self):
        self.start(requiresClickOrSwipeToExpand=True)
        self.desktop.move(self.middle, 10)
        self.desktop.output("xdotool", "keydown", "Alt_L", "mousedown", "1")
        for x in range(self.middle, self.middle + 151, 50):
            self.desktop.move(x, 10)
            wait_until(lambda: self.is_there(x), "it follows the pointer")
        self.desktop.output("xdotool", "mouseup", "1", "keyup", "Alt_L")
        self.point_away()
        wait_until(lambda: self.is_there(self.middle + 150 + IDLE[0] // 2 - 3) and
                   not self.is_there(self.middle + 150 - IDLE[0] // 2 - 5), "it rests where it was carried")

    def test_yields_to_a_window_in_full_screen_where_that_is_wanted(self):
        self.start(kestrantYieldsToFullScreen=True)
        self.other.set_full_screen(True)
        wait_until(lambda: not self.is_there(self.middle), "it is covered")
        self.kestrant("--toggle")
        self.wait_for_panel(EXPANDED)
        self.kestrant("--toggle")
        wait_until(lambda: not self.is_there(self.middle), "it is covered again")
        self.other.set_full_screen(False)
        self.wait_for_panel(IDLE)


class SessionTest(DesktopTest):
    def test_toggle_opens_the_panel_and_closes_it(self):
        self.start()
        self.assertEqual(self.kestrant("--toggle").returncode, 0)
        self.wait_for_panel(EXPANDED)
        self.assertEqual(self.kestrant("--toggle").returncode, 0)
        self.wait_for_panel(IDLE)

    def test_what_other_starts_ask_for_is_done_by_the_one_that_runs_or_is_started(self):
        self.set_preferences()
        self.program = self.desktop.spawn([PROGRAM, "--new", "Buy", "milk"])
        self.addCleanup(stop, self.program)
        self.wait_for_panel(EXPANDED)
        self.assertEqual(self.kestrant("--new", "and 100 % café").returncode, 0)
        self.desktop.key("Return")
        wait_until(lambda: [self.text(path) for path in self.list.glob("*.ics")], "the reminder is added")
        self.assertIn("SUMMARY:Buy milk and 100 % café", self.text(next(self.list.glob("*.ics"))))

    def test_the_desktop_finds_it_as_an_application(self):
        self.add_reminder("Bread")
        self.start()

        def ask(method, *arguments):
            done = subprocess.run(
                ["gdbus", "call", "--session", "--dest", "com.kestrant.notchapp", "--object-path", "/com/kestrant/notchapp",
                 "--method", f"org.freedesktop.Application.{method}", *arguments, "{}"],
                env=self.desktop.environment, capture_output=True, timeout=60)
            return done.returncode

        def act(action, *parameter):
            return ask("ActivateAction", action, f"[{', '.join(f'<{text!r}>' for text in parameter)}]")

        # The name is taken a moment after the first frame.
        wait_until(lambda: self.kestrant("--toggle").returncode == 0, "it answers")
        self.wait_for_panel(EXPANDED)
        self.assertEqual(act("toggle"), 0)
        self.wait_for_panel(IDLE)
        self.assertEqual(ask("Activate"), 0)
        self.wait_for_panel(EXPANDED)
        self.wait_for_circles(1)
        self.assertEqual(act("search", "nothing is called that"), 0)
        self.wait_for_circles(0)
        for wrong in (["dance"], ["search", "x" * 3000]):
            self.assertNotEqual(act(*wrong), 0)
        self.assertIsNone(self.program.poll())

    def test_a_second_start_leaves_the_first_running_and_ends(self):
        self.start()
        self.assertEqual(self.kestrant().returncode, 0)
        self.assertIsNone(self.program.poll())
        # The other start asked for the panel.
        self.wait_for_panel(EXPANDED)

    def test_the_termination_signal_ends_it_cleanly(self):
        self.start()
        self.expand()
        self.program.send_signal(signal.SIGTERM)
        self.assertEqual(self.program.wait(10), 0)
        wait_until(lambda: self.panel_size() == (0, 0), "the panel is gone")

    def test_a_start_after_a_crash_works(self):
        self.start()
        self.program.kill()
        stop(self.program)
        self.start()
        self.assertEqual(self.kestrant("--toggle").returncode, 0)
        self.wait_for_panel(EXPANDED)


if __name__ == "__main__":
    unittest.main()
