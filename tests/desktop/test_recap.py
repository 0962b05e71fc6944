"""The recap: what is completed is counted, shared as a link that a phone can read off the screen, and forgotten."""

import base64
import json
import subprocess
import unittest

from harness import EXPANDED, DesktopTest, wait_until

PAGE = "https://recap.example.org/r"
LINKS = "kestrant.recap.share-links.v1"
# The button at the upper right of the recap, from the panel's upper right corner.
SHARE = (62, 20)


def counts(link):
    """The numbers that a link holds; docs/recap-link.md describes it."""
    fragment = link.split("#")[1]
    content = base64.urlsafe_b64decode(fragment + "=" * (-len(fragment) % 4))
    days, bits = int.from_bytes(content[5:7], "big"), content[7]
    numbers = int.from_bytes(content[8:], "big") >> ((len(content) - 8) * 8 - days * bits)
    return [numbers >> (bits * (days - 1 - day)) & ((1 << bits) - 1) for day in range(days)]


class RecapTest(DesktopTest):
    def link_on_the_screen(self):
        """What a phone reads off the QR code, once there is one."""
        picture = self.data.parent / "screen.png"

        def read():
            self.desktop.save_picture(picture)
            return subprocess.run(["zbarimg", "--raw", "--quiet", str(picture)], stdout=subprocess.PIPE,
                                  stderr=subprocess.DEVNULL, text=True).stdout.strip()

        return wait_until(read, "a QR code is shown")

    def links(self):
        path = self.configuration / "preferences.json"
        return json.loads(path.read_text()).get(LINKS, [])

    def test_a_completion_is_counted_shared_and_the_link_forgotten(self):
        configuration = self.data.parent / "configuration.json"
        configuration.write_text(json.dumps({"KestrantRecapShareBaseURL": PAGE}))
        for title in ("Secret errand", "Private matter"):
            self.add_reminder(title)
        self.start("--configuration", str(configuration))
        self.expand()
        for completed in (1, 2):
            self.desktop.click(*self.circles()[0])
            wait_until(lambda: len(self.ledger()) == completed, "the completion is recorded")
        self.desktop.key("ctrl+r")
        self.desktop.steady_picture()
        self.desktop.click(self.middle + EXPANDED[0] // 2 - SHARE[0], SHARE[1])
        link = self.link_on_the_screen()
        self.assertTrue(link.startswith(PAGE + "#"), link)
        self.assertEqual(counts(link)[-1], 2)
        wait_until(lambda: [each["link"] for each in self.links()] == [link], "the link is remembered")
        # From "Copy link" over the ways to pass on the picture to the links that were made.
        self.desktop.key("Tab", "Tab", "Tab", "Tab", "Return")
        self.desktop.steady_picture()
        self.desktop.key("Return")
        wait_until(lambda: not self.links(), "the link is forgotten")
        self.desktop.key("Escape", "Escape", "Escape")
        self.expand()
        self.wait_for_circles(0)


if __name__ == "__main__":
    unittest.main()
