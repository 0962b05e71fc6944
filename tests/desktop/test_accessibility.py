"""The whole interface as a screen reader sees it, and by the keyboard alone."""

import datetime
import json
import pathlib
import subprocess
import unittest

from harness import IDLE, PROGRAM, DesktopTest, stop, wait_until

# What a person acts on.
CONTROLS = {"push button", "check box", "radio button", "text", "menu item", "list item"}
# What the keyboard enters as a whole, to move within by the arrows.
COMPOSITES = {"list", "panel"}


class Accessible:
    """An object as it was when the tree was read."""

    def __init__(self, description, path=()):
        self.role, self.name = description["role"], description["name"]
        self.states, self.actions = set(description["states"]), description["actions"]
        self.path = path
        self.children = [Accessible(child, (*path, index)) for index, child in enumerate(description["children"])]

    def __iter__(self):
        yield self
        for child in self.children:
            yield from child

    def __str__(self):
        return f"{self.role} “{self.name}”"

    @property
    def key(self):
        return self.path, self.role, self.name

    @property
    def is_showing(self):
        return "showing" in self.states

    @property
    def is_usable(self):
        # Qt tells nothing of an item's being disabled but that it takes no focus.
        return self.is_showing and "focusable" in self.states

    def focused(self):
        """The innermost objects that have the focus."""
        within = [inner for child in self.children for inner in child.focused()]
        return within or ([self] if "focused" in self.states and self.is_showing else [])


class AccessibilityTest(DesktopTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        del cls.desktop.environment["NO_AT_BRIDGE"]
        cls.desktop.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        with open(cls.desktop.folder / "at-spi.log", "wb") as log:
            cls.desktop.spawn(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"], stdout=log, stderr=log)
        wait_until(lambda: "org.a11y.Bus" in cls.desktop.output(
            "dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/org/freedesktop/DBus",
            "org.freedesktop.DBus.ListNames").decode(), "the accessibility bus is there")

    def setUp(self):
        super().setUp()
        self.reader = None

    def ask(self, line):
        if self.reader is None:
            helper = pathlib.Path(__file__).with_name("accessible_tree.py")
            self.reader = subprocess.Popen(["/usr/bin/python3", str(helper), str(self.program.pid)], text=True,
                                           env=self.desktop.environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
            self.addCleanup(self.reader.stdout.close)
            self.addCleanup(stop, self.reader)
            self.addCleanup(self.reader.stdin.close)
        self.reader.stdin.write(line + "\n")
        self.reader.stdin.flush()
        return json.loads(self.reader.stdout.readline())

    def tree(self):
        return Accessible(wait_until(lambda: self.ask(""), "the program tells what it shows"))

    def surfaces(self):
        """The windows that are shown, the last one opened at the end, and then the dialogs in that one."""
        frames = [frame for frame in self.tree().children if frame.is_showing]
        dialogs = [one for one in frames[-1] if one.role == "dialog" and one.is_showing] if frames else []
        return frames + dialogs

    def surface(self):
        """What is uppermost: the last one that was opened."""
        surfaces = self.surfaces()
        return surfaces[-1] if surfaces else self.tree()

    def find(self, role, name):
        """The showing object of a role whose name begins so."""
        return next((one for one in self.surface()
                     if one.role == role and one.name.startswith(name) and one.is_showing), None)

    def wait_to_find(self, role, name):
        return wait_until(lambda: self.find(role, name), f"there is a {role} “{name}”")

    def press_on(self, role, name):
        """Has the screen reader press an object, without the keyboard or the pointer."""
        path = self.wait_to_find(role, name).path
        self.assertTrue(self.ask(" ".join(map(str, path))), f"the {role} “{name}” can be pressed")

    def focus(self):
        """The one object of the uppermost window that has the focus, or None."""
        focused = self.surface().focused()
        return focused[0] if len(focused) == 1 else None

    def press(self, key):
        """Presses a key that moves the focus, and returns where it is then. Between two of its controls a dialog itself may
        seem to have it."""
        before = self.focus().key
        self.desktop.key(key)

        def moved():
            now = self.focus()
            return now if now and now.key != before and now.role != "dialog" else None

        return wait_until(moved, f"{key} moves the focus away from {before}")

    def walk(self):
        """The stops that Tab makes until it comes to one again, and all that was there to be reached on the way; more of
        it may come into view as it goes. The first stop may be a dialog that is read out as it opens."""
        stops, there = [wait_until(self.focus, "something has the focus")], {}
        while True:
            surface = self.surface()
            there.update({one.key: one for one in surface})
            next_stop = self.press("Tab")
            keys = [one.key for one in stops]
            if next_stop.key in keys:
                return stops[keys.index(next_stop.key) :], list(there.values())
            stops.append(next_stop)

    def tab_to(self, role, name=""):
        """Presses Tab until an object has the focus, at most twice round all that have it on the way: what closes beside
        may give the focus back meanwhile."""
        stops = [wait_until(self.focus, "something has the focus")]
        while stops[-1].role != role or not stops[-1].name.startswith(name):
            stops.append(self.press("Tab"))
            rounds = [stop.key for stop in stops].count(stops[-1].key)
            self.assertLessEqual(rounds, 2, f"Tab reaches the {role} “{name}”; it went {[str(stop) for stop in stops]}")

    def problems_of(self, things):
        for one in things:
            if not one.is_showing or one.role not in CONTROLS | COMPOSITES | {"dialog", "frame"}:
                continue
            if not one.name.strip():
                yield f"{one} at {one.path} has no name"
            if one.role in CONTROLS - {"text"} and "Press" not in one.actions:
                yield f"{one} cannot be pressed"
            if one.role == "text" and "editable" not in one.states:
                yield f"{one} cannot be edited"

    def check_surface(self, what):
        """Everything on it has a name and can be acted on, and Tab goes round through all of it, in both directions."""
        with self.subTest(what):
            reached, there = self.walk()
            problems = list(self.problems_of(there))
            paths = [one.path for one in reached]
            for one in there:
                # What lies within a list or a group is reached through it, by the arrows.
                within = [other.path for other in there if other.role in COMPOSITES]
                if one.role in CONTROLS and one.is_usable and not any(
                        one.path[: len(path)] == path for path in within + paths):
                    problems.append(f"Tab does not reach {one}")
                is_worth_a_stop = any(inner.role in CONTROLS and inner.is_usable for inner in one)
                is_reached = any(path[: len(one.path)] == one.path for path in paths)
                if one.role in COMPOSITES and is_worth_a_stop and not is_reached:
                    problems.append(f"Tab does not reach {one}")
            back = [self.press("shift+Tab") for _ in reached]
            if sorted(one.path for one in back) != sorted(paths):
                problems.append("Shift+Tab goes another way back: " + ", ".join(str(one) for one in back))
            self.assertEqual(problems, [], f"\n{what}: " + ", ".join(str(one) for one in reached))

    def check_menu(self, what):
        """The arrows go through all of its entries."""
        with self.subTest(what):
            surface = self.surface()
            problems = list(self.problems_of(surface))
            entries = [one for one in surface if one.role in CONTROLS and one.is_usable]
            self.assertGreater(len(entries), 1, what)
            reached = {self.press("Down").path for _ in entries}
            problems += [f"the arrows do not reach {one}" for one in entries if one.path not in reached]
            self.assertEqual(problems, [], what)

    def opens(self, role, name):
        """Waits until a popover is open and has the focus."""
        self.wait_to_find(role, name)
        wait_until(self.focus, f"“{name}” has the focus")

    def escape(self):
        """Closes what is uppermost."""
        before = len(self.surfaces())
        self.desktop.key("Escape")
        wait_until(lambda: len(self.surfaces()) < before, "it closes")
        wait_until(self.focus, "what lies below has the focus again")

    def open_panel(self):
        calendar = self.make_list("Work", (0, 0x80, 0xFF))
        self.add_reminder("Pay the rent", "DUE;VALUE=DATE:20260301\r\n")
        self.add_reminder("Buy bread")
        soon = datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(days=1)
        self.add_item(calendar, "VEVENT", "Meeting", f"DTSTART:{soon:%Y%m%dT%H%M%SZ}\r\nDURATION:PT1H\r\n")
        # A service for messages that nobody asks.
        self.configuration.mkdir(parents=True, exist_ok=True)
        (self.configuration / "configuration.json").write_text('{"KestrantFeedbackAPIBaseURL": "http://127.0.0.1:9/"}')
        self.start()
        self.expand()
        self.wait_to_find("check box", "Buy bread")
        self.wait_to_find("list item", "Meeting")

    def test_the_settings_button_says_while_completions_cannot_be_recorded(self):
        ledger = self.data / "completion-ledger-v1.json"
        ledger.mkdir()
        self.add_reminder("Water the plants")
        self.start()
        self.expand()
        self.wait_to_find("push button", "Settings, Completion history could not be saved.")
        self.set_preferences(kestrantLanguage="fr")
        self.wait_to_find("push button", "Réglages, L’historique des tâches terminées n’a pas pu être enregistré.")
        ledger.rmdir()
        # What is reconciled next writes it.
        self.add_reminder("Read the report", more="STATUS:COMPLETED\r\nCOMPLETED:20260302T080000Z\r\n")
        self.wait_to_find("push button", "Réglages")

    def test_everything_has_a_name_and_is_reached_by_the_keyboard(self):
        self.open_panel()
        self.check_surface("the panel")

        for button, dialog in (("List: All lists", "Lists"), ("Sort", "Sort by")):
            self.press_on("push button", button)
            self.opens("dialog", dialog)
            self.check_menu(dialog)
            self.escape()

        self.press_on("push button", "New reminder")
        self.opens("dialog", "New reminder")
        self.desktop.type("Water the plants tomorrow")
        self.check_surface("quick add of a reminder")
        self.press_on("radio button", "Event")
        self.check_surface("quick add of an event")
        self.escape()

        self.press_on("push button", "Settings")
        self.opens("dialog", "Settings")
        self.check_surface("the settings")
        self.tab_to("push button", "Send feedback")
        self.desktop.key("Return")
        self.opens("dialog", "Send feedback")
        self.desktop.type("More of it")
        self.check_surface("the feedback form")
        self.escape()
        self.escape()

        self.tab_to("check box", "Pay the rent")
        self.desktop.key("Return")
        self.opens("dialog", "Edit")
        self.check_surface("the form of a reminder")
        self.escape()
        self.desktop.key("Menu")
        self.opens("dialog", "")
        self.check_menu("the menu of a card")
        self.escape()
        self.tab_to("list item", "Meeting")
        self.desktop.key("space")
        self.opens("dialog", "Meeting")
        self.check_surface("what an event says")
        self.escape()
        self.desktop.key("Return")
        self.opens("dialog", "Edit")
        self.check_surface("the form of an event")
        self.escape()

        self.press_on("push button", "Recap")
        self.wait_to_find("radio button", "Overview")
        self.check_surface("the recap")
        self.assertEqual(stop(self.program), 0)

    def test_the_introduction_is_gone_through_by_the_keyboard(self):
        self.set_preferences(kestrantCompletedInitialOnboarding=False)
        self.program = self.desktop.spawn([PROGRAM])
        self.addCleanup(stop, self.program)
        self.opens("dialog", "Welcome to Kestrant")
        title = "Welcome to Kestrant"
        while self.find("push button", "Continue"):
            self.check_surface(title)
            self.tab_to("push button", "Continue")
            before = title
            self.desktop.key("Return")
            title = wait_until(
                lambda: next((one.name for one in self.surface() if one.role == "dialog" and one.name != before), None),
                "the next page is shown")
        self.check_surface(title)
        self.tab_to("push button", "Start")
        self.desktop.key("Return")
        self.wait_for_panel(IDLE)

    def test_states_follow_what_is_done(self):
        self.open_panel()
        self.tab_to("check box", "Pay the rent")
        self.assertTrue(self.press("Right").name.startswith("Buy bread"), "the arrows move from card to card")
        for state in (True, False):
            self.press_on("check box", "Overdue")
            wait_until(lambda: ("checked" in self.find("check box", "Overdue").states) == state,
                       f"the filter is {state}")
        self.press_on("check box", "Buy bread")
        wait_until(lambda: "STATUS:COMPLETED" in self.text(self.list / "buy-bread.ics"), "the reminder is completed")

        self.press_on("push button", "New reminder")
        self.opens("dialog", "New reminder")
        self.assertFalse(self.find("push button", "Add").is_usable)
        self.desktop.type("Water the plants")
        wait_until(lambda: self.find("push button", "Add").is_usable, "it can be added")
        self.escape()

        self.press_on("push button", "Settings")
        self.opens("dialog", "Settings")
        self.tab_to("radio button", "Glass")
        self.assertEqual(self.press("Right").name, "Black")
        self.assertIn("checked", self.focus().states)


if __name__ == "__main__":
    unittest.main()
