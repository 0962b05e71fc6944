"""Due alerts, as the desktop's notification service receives them."""

import datetime
import unittest

from harness import EXPANDED, DesktopTest, stop, wait_until


class AlertsTest(DesktopTest):
    def notifications(self):
        """How many are on show. The bus starts the service for whoever asks first."""
        return int(self.desktop.output("dunstctl", "count", "displayed"))

    def add_alert(self, title, seconds_from_now):
        rings = datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(seconds=seconds_from_now)
        return self.add_reminder(
            title,
            more="DUE:20300101T120000Z\r\nBEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:Reminder\r\n"
                 f"TRIGGER;VALUE=DATE-TIME:{rings:%Y%m%dT%H%M%SZ}\r\nEND:VALARM\r\n",
        )

    def test_an_alert_rings_once_and_a_click_on_it_opens_the_panel(self):
        self.start()
        path = self.add_alert("Take the bread out", 2)
        wait_until(lambda: self.notifications() == 1, "the alert is shown")
        self.desktop.output("dunstctl", "action", "0")
        self.wait_for_panel(EXPANDED)
        wait_until(lambda: "ACKNOWLEDGED:" in path.read_text(), "other programs can see that it was dealt with")
        stop(self.program)
        self.start()
        # What came after it has rung by then, so that the first would have too.
        self.add_alert("Water the plants", 1)
        wait_until(lambda: self.notifications() == 1, "the other alert is shown")
        self.desktop.output("dunstctl", "close")


if __name__ == "__main__":
    unittest.main()
