"""Wayland compositors without a screen, each with a home of its own, a window of Wayland's own across its desktop, and the
means to move the pointer, to type and to see what became of it."""

import json
import os
import pathlib
import shutil
import signal
import subprocess

from harness import IDENTIFIER, stop, wait_until

from virtual_desktop import Picture

WIDTH, HEIGHT = 1440, 900
# Compositors do not run as root.
NOBODY = 65534
WINDOW_COLOUR = (0x40, 0x60, 0x80)


class Compositor:
    """What a compositor needs of a test, which ends its processes. `typed` is the file to which the window below writes
    what is typed in it."""

    needs = ()
    settings = {}
    # Height of the bar below which the panel hangs.
    bar = 0

    @classmethod
    def is_installed(cls):
        return all(map(shutil.which, ("foot", *cls.needs)))

    def __init__(self, test, folder):
        self.test = test
        self.folder = pathlib.Path(folder)
        self.runtime = self.folder / "run"
        self.typed = self.folder / "typed"
        self.environment = {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "TZ": "Europe/Paris", "NO_AT_BRIDGE": "1",
                            "QT_QUICK_BACKEND": "software", "HOME": str(self.folder), "XDG_RUNTIME_DIR": str(self.runtime),
                            **self.settings}
        self.runtime.mkdir(mode=0o700)
        self.list = self.folder / f".local/share/{IDENTIFIER}/calendars/errands"
        self.list.mkdir(parents=True)
        preferences = self.folder / f".config/{IDENTIFIER}/preferences.json"
        preferences.parent.mkdir(parents=True)
        preferences.write_text(json.dumps({
            "kestrantCompletedInitialOnboarding": True, "kestrantLanguage": "en", "featureAnnouncement.disabled": True,
            "kestrantCompletedInitialYearReveal": True, "kestrantStartedInitialYearReveal": True}))
        self.terminal = ["foot", "--maximized", "-o", f"colors.background={bytes(WINDOW_COLOUR).hex()}", "sh", "-c",
                         f"cat > {self.typed}"]
        self.as_user = []
        self.write_settings()
        if os.geteuid() == 0:
            for path in [self.folder, *self.folder.rglob("*")]:
                os.chown(path, NOBODY, NOBODY)
            self.as_user = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups"]
        self.start()
        self.move(200, 700)
        wait_until(lambda: self.picture().pixel(WIDTH // 2, HEIGHT // 2) == WINDOW_COLOUR, "the other window is there")

    def write_settings(self):
        pass

    def spawn(self, *command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, text=False, leads=False, **more):
        """A process that ends with the test, and with it, where it leads a session, all that it has started."""
        process = subprocess.Popen([*self.as_user, *map(str, command)], env={**self.environment, **more}, stdin=stdin,
                                   stdout=stdout, stderr=subprocess.DEVNULL, text=text, cwd=self.folder,
                                   start_new_session=leads)
        self.test.addCleanup(stop, process)
        if leads:
            self.test.addCleanup(os.killpg, process.pid, signal.SIGKILL)
        return process

    def run(self, *command):
        return subprocess.run([*self.as_user, *command], env=self.environment, capture_output=True, timeout=60).stdout

    def read_picture(self, ppm):
        _, size, _, pixels = ppm.split(b"\n", 3)
        return Picture(*map(int, size.split()), pixels)


class Sway(Compositor):
    needs = ("sway", "grim", "wtype")
    settings = {"WAYLAND_DISPLAY": "wayland-1"}

    def write_settings(self):
        (self.folder / "settings").write_text(
            f"output * resolution {WIDTH}x{HEIGHT}\nxwayland disable\ndefault_border none\n")

    def start(self):
        self.spawn("sway", "-c", self.folder / "settings", WLR_BACKENDS="headless", WLR_LIBINPUT_NO_DEVICES="1",
                   WLR_RENDERER="pixman")
        wait_until(lambda: (self.runtime / "wayland-1").exists(), "the compositor runs")
        # A seat has a keyboard as long as somebody holds one.
        self.spawn("wtype", "-s", "100000000", "x")
        self.pointer = self.spawn(os.environ["VIRTUAL_POINTER"], WIDTH, HEIGHT, stdin=subprocess.PIPE,
                                  stdout=subprocess.PIPE, text=True)
        self.test.addCleanup(self.pointer.stdout.close)
        self.test.addCleanup(self.pointer.stdin.close)
        self.spawn(*self.terminal)

    def tell_pointer(self, command):
        self.pointer.stdin.write(command + "\n")
        self.pointer.stdin.flush()
        self.test.assertEqual(self.pointer.stdout.readline(), "ok\n")

    def move(self, x, y):
        self.tell_pointer(f"move {x} {y}")

    def click(self):
        self.tell_pointer("press")
        self.tell_pointer("release")

    def control(self, letter):
        self.run("wtype", "-M", "ctrl", "-k", letter, "-m", "ctrl")

    def type_line(self, text):
        self.run("wtype", text, "-s", "200", "-k", "Return")

    def picture(self):
        return self.read_picture(self.run("grim", "-t", "ppm", "-"))


class GnomeShell(Compositor):
    """Its own session bus, and a login manager that is a mock."""

    needs = ("gnome-shell", "dbus-run-session", "gdbus", "convert")
    settings = {"WAYLAND_DISPLAY": "wayland-0", "XDG_CURRENT_DESKTOP": "GNOME", "XDG_SESSION_TYPE": "wayland",
                "GSETTINGS_BACKEND": "memory", "LIBGL_ALWAYS_SOFTWARE": "1"}
    bar = 32
    control_key, return_key = 0xFFE3, 0xFF0D

    def write_settings(self):
        (self.folder / "session").write_text(f"""
            dbus-daemon --session --nofork --print-address=3 3>{self.runtime}/system &
            until [[ -s {self.runtime}/system ]]; do sleep 0.1; done
            export DBUS_SYSTEM_BUS_ADDRESS=$(cat {self.runtime}/system)
            echo "$DBUS_SESSION_BUS_ADDRESS" >{self.runtime}/bus
            python3 -m dbusmock --system --template logind &
            until gdbus introspect --system --dest org.freedesktop.login1 --object-path / >/dev/null; do sleep 0.1; done
            exec gnome-shell --headless --wayland --unsafe-mode --virtual-monitor {WIDTH}x{HEIGHT} >{self.folder}/log 2>&1
            """)

    def start(self):
        self.spawn("dbus-run-session", "bash", self.folder / "session", leads=True)
        log = self.folder / "log"
        wait_until(lambda: log.exists() and "GNOME Shell started" in log.read_text(), "the shell runs", seconds=180)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = (self.runtime / "bus").read_text().strip()
        self.environment["DISPLAY"] = log.read_text().split("public X11 display ")[1].split(",")[0]
        self.environment["XAUTHORITY"] = str(next(self.runtime.glob(".mutter-Xwaylandauth.*")))
        self.evaluate("""const C = imports.gi.Clutter; const seat = C.get_default_backend().get_default_seat();
                         global.pointer = seat.create_virtual_device(C.InputDeviceType.POINTER_DEVICE);
                         global.keys = seat.create_virtual_device(C.InputDeviceType.KEYBOARD_DEVICE);
                         Main.overview.hide();""")
        self.spawn(*self.terminal)

    def call(self, interface, path, method, *arguments):
        return self.run("gdbus", "call", "--session", "--dest", interface, "--object-path", path, "--method",
                        f"{interface}.{method}", *arguments)

    def evaluate(self, script):
        self.call("org.gnome.Shell", "/org/gnome/Shell", "Eval", script)

    def notify(self, device, call, *values):
        arguments = ", ".join(map(str, values))
        self.evaluate(f"global.{device}.notify_{call}(imports.gi.GLib.get_monotonic_time(), {arguments})")

    def move(self, x, y):
        self.notify("pointer", "absolute_motion", x, y)

    def click(self):
        for state in (1, 0):
            self.notify("pointer", "button", "imports.gi.Clutter.BUTTON_PRIMARY", state)

    def press(self, *keys):
        for key in keys:
            self.notify("keys", "keyval", key, 1)
        for key in reversed(keys):
            self.notify("keys", "keyval", key, 0)

    def control(self, letter):
        self.press(self.control_key, ord(letter))

    def type_line(self, text):
        for letter in text:
            self.press(ord(letter))
        self.press(self.return_key)

    def picture(self):
        path = str(self.runtime / "picture.png")
        self.call("org.gnome.Shell.Screenshot", "/org/gnome/Shell/Screenshot", "Screenshot", "false", "false", path)
        return self.read_picture(self.run("convert", path, "-depth", "8", "ppm:-"))
