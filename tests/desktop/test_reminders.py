"""Working with reminders on the panel, seen in the files they live in."""

import unittest

from harness import DesktopTest, wait_until


class RemindersTest(DesktopTest):
    def wait_for_completion(self, path):
        wait_until(lambda: "STATUS:COMPLETED" in self.text(path), f"{path.name} is completed")

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

    def test_a_new_reminder_is_typed_in_and_becomes_a_file(self):
        self.start()
        self.expand()
        panel = self.desktop.focused_window()
        self.desktop.key("ctrl+n")
        wait_until(lambda: self.desktop.focused_window() != panel, "the form has the keyboard")
        self.desktop.type("Buy a lamp")
        self.desktop.key("Return")
        created = wait_until(lambda: list(self.list.glob("*.ics")), "the file is there")
        self.assertEqual(len(created), 1)
        self.assertIn("SUMMARY:Buy a lamp\r\n", self.text(created[0]))
        self.assertIn(f"UID:{created[0].stem}", self.text(created[0]))

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
