"""The panel as a surface of a Wayland compositor, above a window of Wayland's own, without any X server."""

import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from harness import EXPANDED, IDLE, PROGRAM, TOOLBAR_HEIGHT, stop, wait_until

from virtual_desktop import Picture

POINTER = os.environ.get("VIRTUAL_POINTER")
WIDTH, HEIGHT = 1440, 900
# The compositor does not run as root.
NOBODY = 65534


@unittest.skipUnless(all(map(shutil.which, ("sway", "grim", "wtype", "foot"))), "there is no compositor to try it in")
class WaylandTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="kestrant-wayland-")))
        self.environment = {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "TZ": "Europe/Paris", "NO_AT_BRIDGE": "1",
                            "QT_QUICK_BACKEND": "software", "HOME": str(self.folder), "XDG_RUNTIME_DIR": str(self.folder / "run"),
                            "WAYLAND_DISPLAY": "wayland-1"}
        (self.folder / "run").mkdir(mode=0o700)
        self.list = self.folder / ".local/share/com.Kestrant.notchapp/calendars/errands"
        self.list.mkdir(parents=True)
        preferences = self.folder / ".config/com.Kestrant.notchapp/preferences.json"
        preferences.parent.mkdir(parents=True)
        preferences.write_text(json.dumps({"kestrantCompletedInitialOnboarding": True, "kestrantLanguage": "en",
                                           "kestrantCompletedInitialYearReveal": True, "kestrantStartedInitialYearReveal": True}))
        self.typed = self.folder / "typed"
        settings = self.folder / "settings"
        settings.write_text(f"output * resolution {WIDTH}x{HEIGHT}\nxwayland disable\ndefault_border none\n"
                            f"exec foot -o colors.background=406080 sh -c 'cat > {self.typed}'\n")
        self.as_user = []
        if os.geteuid() == 0:
            for path in [self.folder, *self.folder.rglob("*")]:
                os.chown(path, NOBODY, NOBODY)
            self.as_user = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups"]
        self.spawn("sway", "-c", settings, WLR_BACKENDS="headless", WLR_LIBINPUT_NO_DEVICES="1", WLR_RENDERER="pixman")
        wait_until(lambda: (self.folder / "run/wayland-1").exists(), "the compositor runs")
        # A seat has a keyboard as long as somebody holds one.
        self.spawn("wtype", "-s", "100000000", "x")
        self.pointer = self.spawn(POINTER, str(WIDTH), str(HEIGHT), stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.addCleanup(self.pointer.stdout.close)
        self.addCleanup(self.pointer.stdin.close)
        self.move(200, 700)
        self.below = wait_until(lambda: self.colour_below((0x40, 0x60, 0x80)), "the other window is there")
        self.program = self.spawn(PROGRAM)
        self.wait_for_panel(IDLE)

    def spawn(self, *command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, text=False, **more):
        process = subprocess.Popen([*self.as_user, *map(str, command)], env={**self.environment, **more}, stdin=stdin,
                                   stdout=stdout, stderr=subprocess.DEVNULL, text=text, cwd=self.folder)
        self.addCleanup(stop, process)
        return process

    def run_program(self, *command):
        return subprocess.run([*self.as_user, *command], env=self.environment, capture_output=True, timeout=60).stdout

    def tell_pointer(self, command):
        self.pointer.stdin.write(command + "\n")
        self.pointer.stdin.flush()
        self.assertEqual(self.pointer.stdout.readline(), "ok\n")

    def move(self, x, y):
        self.tell_pointer(f"move {x} {y}")

    def picture(self):
        header, size, _, pixels = self.run_program("grim", "-t", "ppm", "-").split(b"\n", 3)
        return Picture(*map(int, size.split()), pixels)

    def colour_below(self, expected):
        seen = self.picture().pixel(WIDTH // 2, HEIGHT // 2)
        return seen if seen == expected else None

    def wait_for_panel(self, size):
        """Something of its size is there, and beyond its shadow the window below is seen."""

        def has_the_size():
            picture = self.picture()
            width, height = size
            inside = picture.pixel((WIDTH - width) // 2 + 3, height // 2)
            outside = picture.pixel((WIDTH - width) // 2 - 100, height // 2)
            beneath = picture.pixel(WIDTH // 2, height + 140)
            deep = picture.pixel(WIDTH // 2, height - 3)
            return inside != self.below and deep != self.below and outside == beneath == self.below

        wait_until(has_the_size, f"the panel is {size} large")

    def test_opens_takes_what_is_typed_and_gives_the_keyboard_back(self):
        self.move(WIDTH // 2, 5)
        self.wait_for_panel(EXPANDED)
        self.run_program("wtype", "-M", "ctrl", "-k", "n", "-m", "ctrl", "-s", "1500", "Buy milk", "-s", "500", "-k", "Return")
        wait_until(lambda: list(self.list.glob("*.ics")), "the reminder is there")
        self.assertIn("SUMMARY:Buy milk", next(self.list.glob("*.ics")).read_text())
        self.move(200, 700)
        self.wait_for_panel(IDLE)
        self.run_program("wtype", "hello", "-k", "Return")
        wait_until(lambda: self.typed.read_text() == "hello\n", "the window below has the keyboard")

    def test_stays_open_under_the_pointer_and_lets_clicks_beside_it_through(self):
        self.move(WIDTH // 2, 5)
        self.wait_for_panel(EXPANDED)
        for x in range(700, 740, 5):
            self.move(x, 7)
            self.wait_for_panel(EXPANDED)
        # On the shadow, beside the panel.
        self.move((WIDTH - EXPANDED[0]) // 2 - 8, TOOLBAR_HEIGHT)
        self.wait_for_panel(IDLE)
        self.tell_pointer("press")
        self.tell_pointer("release")
        self.run_program("wtype", "below", "-k", "Return")
        wait_until(lambda: self.typed.read_text() == "below\n", "the window below has the keyboard")

    def test_ends_cleanly(self):
        self.program.terminate()
        self.assertEqual(self.program.wait(30), 0)


if __name__ == "__main__":
    unittest.main()
