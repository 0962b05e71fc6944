"""Working with reminders on the panel, seen in the files they live in."""

import datetime
import json
import unittest
import zoneinfo

from harness import EXPANDED, IDLE, DesktopTest, wait_until


class RemindersTest(DesktopTest):
    def wait_for_completion(self, path):
        wait_until(lambda: "STATUS:COMPLETED" in self.text(path), f"{path.name} is completed")

    def files(self):
        """The lines of every file of the list by its name, without the marks of a revision."""
        marks = ("DTSTAMP", "LAST-MODIFIED", "SEQUENCE")
        return {path.name: [line for line in self.text(path).splitlines(keepends=True) if not line.startswith(marks)]
                for path in self.list.iterdir()}

    def order(self):
        """The identifiers of the cards as they were placed by hand."""
        return json.loads((self.configuration / "preferences.json").read_text())["reminderManualOrder"]

    def test_a_click_on_the_circle_completes_the_reminder_in_its_file_and_in_the_ledger(self):
        path = self.add_reminder("Water the plants", more="DUE;VALUE=DATE:20260327\r\n")
        before = self.text(path)
        self.start()
        self.expand()
        self.desktop.click(*self.wait_for_circles(1)[0])
        self.wait_for_completion(path)
        self.wait_for_circles(0)
        wait_until(lambda: "water-the-plants" in self.ledger(), "the ledger knows of it")
        after = self.text(path)
        for property_name in ("COMPLETED:", "PERCENT-COMPLETE:100\r\n", "STATUS:COMPLETED\r\n"):
            self.assertIn(property_name, after)
        kept = [line for line in before.splitlines() if not line.startswith(("DTSTAMP", "LAST-MODIFIED"))]
        self.assertEqual([line for line in kept if line not in after.splitlines()], [], "nothing else was taken away")

    def test_a_second_click_takes_the_completion_back(self):
        taken_back = self.add_reminder("Call Theo", more="PRIORITY:1\r\n")
        completed = self.add_reminder("Pay the rent", more="PRIORITY:9\r\n")
        before = taken_back.read_bytes()
        self.start(reminderSortMode="priority")
        self.expand()
        first, second = self.wait_for_circles(2)
        self.desktop.click(*first, times=2)
        # This one is committed later than the first would have been.
        self.desktop.click(*second)
        self.wait_for_completion(completed)
        self.assertEqual(taken_back.read_bytes(), before)
        self.wait_for_circles(1)

    def message(self):
        """The bounds of the message below the panel, or None."""
        below = (self.middle - 460, EXPANDED[1] + 2, self.middle + 460, EXPANDED[1] + 80)
        return self.desktop.picture().differing(self.other_colour, below)

    def test_the_offer_to_undo_goes_with_what_it_takes_back_and_a_click_on_it_does_that_alone(self):
        path = self.add_reminder("Call Theo", more="DUE;VALUE=DATE:20260327\r\n")
        before = self.files()
        self.start()
        self.expand()
        circle = self.wait_for_circles(1)[0]
        self.desktop.click(*circle)
        self.wait_for(self.message, bool, "the completion is offered to be undone")
        self.desktop.click(*circle)
        self.wait_for(self.message, lambda seen: not seen, "the offer is gone")
        self.desktop.click(*circle)
        _, top, right, bottom = self.wait_for(self.message, bool, "the completion is offered to be undone")
        # It stays while it is pointed at.
        self.desktop.move(right - 70, (top + bottom) // 2)
        self.wait_for_completion(path)
        self.desktop.click(right - 70, (top + bottom) // 2)
        wait_until(lambda: "STATUS:COMPLETED" not in self.text(path), "the reminder is open again")
        self.wait_for_circles(1)
        # Nothing has opened.
        self.desktop.key("Escape")
        self.point_away()
        self.wait_for_panel(IDLE)
        self.assertEqual(self.files(), before)

    def test_a_click_in_a_popover_reaches_only_what_is_seen_there(self):
        for number in range(6):
            self.add_reminder(f"Card {number}", more=f"DUE;VALUE=DATE:2026032{number}\r\n")
        before = self.files()
        self.start()
        self.expand()
        self.wait_for_circles(6)
        self.desktop.key("ctrl+n")
        self.desktop.type("Call Anna tomorrow 9am")
        self.desktop.steady_picture()
        # The cross of the date, then free places above cards and rows.
        for x, y in ((214, 179), (60, 102), (214, 190), (150, 235)):
            self.desktop.click(self.middle + x, y, times=2)
        self.desktop.type(" now")
        self.desktop.key("Return")
        created = wait_until(lambda: [path for path in self.list.glob("*.ics") if path.name not in before],
                             "the new file is there")[0]
        self.assertIn("SUMMARY:Call Anna tomorrow 9am now\r\n", self.text(created))
        self.assertNotIn("DUE", self.text(created))
        created.unlink()
        self.assertEqual(self.files(), before)

    def test_a_card_that_is_placed_under_another_order_makes_that_the_manual_one(self):
        for day, title in enumerate(("First", "Second", "Third"), start=1):
            self.add_reminder(title, more=f"DUE;VALUE=DATE:2026032{day}\r\n")
        self.start(reminderSortMode="dueDate")
        self.expand()
        cards = self.wait_for_circles(3)

        def mode():
            return json.loads((self.configuration / "preferences.json").read_text())["reminderSortMode"]

        self.desktop.drag((cards[0][0] + 60, cards[0][1] + 20), (cards[2][0] + 150, cards[2][1] + 20))
        wait_until(lambda: mode() == "manual", "the order is the manual one")
        self.assertEqual(self.order(), ["second", "third", "first"])
        self.desktop.key("ctrl+z")
        wait_until(lambda: mode() == "dueDate", "the order is by date again")

    def test_a_new_reminder_is_typed_in_and_becomes_a_file(self):
        self.start()
        self.expand()
        self.desktop.key("ctrl+n")
        self.desktop.type("Buy a lamp")
        self.desktop.key("Return")
        created = wait_until(lambda: list(self.list.glob("*.ics")), "the file is there")
        self.assertEqual(len(created), 1)
        self.assertIn("SUMMARY:Buy a lamp\r\n", self.text(created[0]))
        self.assertIn(f"UID:{created[0].stem}", self.text(created[0]))

    def test_what_was_made_flagged_placed_and_deleted_is_undone_step_by_step(self):
        read = self.add_reminder("Read", more="DUE;VALUE=DATE:20260327\r\nPRIORITY:3\r\nX-ODD;A=b:c\\, d\r\n")
        water = self.add_reminder("Water", more="RRULE:FREQ=DAILY\r\nDUE;VALUE=DATE:20260327\r\n")
        untouched = self.add_reminder("Untouched")
        untouched_bytes = untouched.read_bytes()
        before = self.files()
        self.start(reminderSortMode="manual", reminderManualOrder=["read", "water", "untouched"])
        self.expand()
        self.wait_for_circles(3)

        self.desktop.key("ctrl+n")
        self.desktop.type("Buy a lamp tomorrow 9am")
        self.desktop.key("Return")
        lamp = wait_until(lambda: [path for path in self.list.glob("*.ics") if path.name not in before],
                          "the new file is there")[0]
        tomorrow = datetime.datetime.now(zoneinfo.ZoneInfo(self.desktop.environment["TZ"])) + datetime.timedelta(1)
        self.assertIn("SUMMARY:Buy a lamp\r\n", self.text(lamp))
        self.assertRegex(self.text(lamp), f"DUE[^:]*:{tomorrow:%Y%m%d}T090000\r\n")
        cards = self.wait_for_circles(4)

        self.desktop.click(cards[0][0] + 60, cards[0][1])
        self.desktop.key("Menu")
        self.desktop.key("f", "Return")
        wait_until(lambda: "X-PINNED:true\r\n" in self.text(read), "the flag is in the file")

        start, end = cards[0], cards[2]
        self.desktop.drag((start[0] + 60, start[1] + 20), (end[0] + 150, end[1] + 20))
        wait_until(lambda: self.order() == ["water", "untouched", "read", lamp.stem], "the card lies behind the third")

        self.wait_for_circles(4)
        self.desktop.click(cards[0][0] + 60, cards[0][1])
        self.desktop.key("Delete")
        wait_until(lambda: not water.exists(), "the file is gone")
        self.wait_for_circles(3)

        self.desktop.key("ctrl+z")
        wait_until(lambda: len(self.files()) == len(before) + 1, "what was deleted is back")
        self.desktop.key("ctrl+z")
        wait_until(lambda: self.order()[0] == "read", "the card lies where it lay")
        self.desktop.key("ctrl+z")
        wait_until(lambda: "X-PINNED" not in self.text(read), "the flag is gone")
        self.desktop.key("ctrl+z")
        wait_until(lambda: not lamp.exists(), "what was made is gone")
        self.wait_for_circles(3)
        self.assertEqual(self.files(), before)
        self.assertEqual(untouched.read_bytes(), untouched_bytes)

    def test_a_click_on_what_a_card_says_of_its_due_date_changes_it(self):
        path = self.add_reminder("Water", more="RRULE:FREQ=WEEKLY\r\nDUE;VALUE=DATE:20260327\r\n")
        self.start()
        self.expand()
        x, y = self.wait_for_circles(1)[0]
        self.desktop.click(x + 35, y + 38)
        self.desktop.key("Down", "Right", "Return")
        wait_until(lambda: "DUE;VALUE=DATE:20260404\r\n" in self.text(path), "it is due eight days later")
        self.assertIn("RRULE:FREQ=WEEKLY\r\n", self.text(path))
        self.desktop.key("ctrl+z")
        wait_until(lambda: "DUE;VALUE=DATE:20260327\r\n" in self.text(path), "it is due when it was")

    def test_typing_in_the_search_field_leaves_the_cards_that_match(self):
        for title in ("Read the report", "Write a letter", "Write the report"):
            self.add_reminder(title)
        self.start()
        self.expand()
        self.wait_for_circles(3)
        self.desktop.key("ctrl+f")
        self.desktop.type("repo")
        self.wait_for_circles(2)
        self.desktop.type("zzz")
        self.wait_for_circles(0)

    def test_the_panel_stays_open_while_the_search_field_has_the_keyboard(self):
        self.add_reminder("Read the report")
        self.start(autoCloseDelay=0)
        self.expand()
        self.desktop.key("ctrl+f")
        self.desktop.type("re")
        self.point_away()
        self.desktop.type("port")
        self.wait_for_circles(1)
        self.desktop.type("x")
        self.wait_for_circles(0)

    def test_what_another_program_changes_shows_at_once(self):
        path = self.add_reminder("Read the report")
        self.start()
        self.expand()
        self.wait_for_circles(1)
        self.add_reminder("Water the plants")
        self.wait_for_circles(2)
        path.unlink()
        self.wait_for_circles(1)
        self.add_reminder("Water the plants", more="STATUS:COMPLETED\r\nCOMPLETED:20260302T080000Z\r\n")
        self.wait_for_circles(0)

    def test_a_file_that_makes_no_sense_hides_nothing_and_is_left_alone(self):
        self.add_reminder("Read the report")
        broken = self.list / "broken.ics"
        broken.write_bytes(b"BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\nUID:x\r\nSUMM\x00")
        self.start()
        self.expand()
        self.desktop.click(*self.wait_for_circles(1)[0])
        self.wait_for_completion(self.list / "read-the-report.ics")
        self.assertEqual(broken.read_bytes(), b"BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\nUID:x\r\nSUMM\x00")


if __name__ == "__main__":
    unittest.main()
