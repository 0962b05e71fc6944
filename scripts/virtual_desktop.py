"""A desktop of its own for one program: a display without a screen, a window manager and a session bus, with hands (the
pointer and the keyboard) and eyes (pictures, windows). Python's standard library and the programs that
scripts/install-dependencies installs are all it takes.
"""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import time

WINDOW_MANAGER_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew></focus>
  <theme><keepBorder>no</keepBorder></theme>
  <desktops><number>2</number></desktops>
  <keyboard>
    <keybind key="W-2"><action name="GoToDesktop"><to>2</to></action></keybind>
  </keyboard>
  <mouse>
    <context name="Client">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
    </context>
  </mouse>
  <applications>
    <application title="Event Tester"><decor>no</decor><layer>normal</layer></application>
  </applications>
</openbox_config>
"""


class Timeout(AssertionError):
    """What was waited for did not happen in time."""


def wait_until(condition, what, seconds=60):
    """Returns the first true value of condition(); raises Timeout, naming `what`, when there is none in time."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise Timeout(f"not within {seconds} s: {what}")
        time.sleep(0.02)


def stop(process):
    """Ends a process that was started here, kindly first."""
    if process.poll() is None:
        process.terminate()
        try:
            process.wait(5)
        except subprocess.TimeoutExpired:
            process.kill()
    return process.wait()


class Picture:
    """The pixels of the whole display at one moment; x runs to the right, y down."""

    def __init__(self, width, height, rgb):
        self.width, self.height, self.pixels = width, height, rgb

    def pixel(self, x, y):
        at = 3 * (y * self.width + x)
        return tuple(self.pixels[at : at + 3])

    def differing(self, background, area):
        """The bounds (left, top, right, bottom), right and bottom exclusive, of what is not `background` in `area`."""
        left, top, right, bottom = area
        found = [(x, y) for y in range(top, bottom) for x in range(left, right) if self.pixel(x, y) != background]
        return bounds(found)

    def near(self, colour, area, tolerance=40):
        """The points in `area` whose colour is within `tolerance` of `colour` in each channel."""
        left, top, right, bottom = area
        return [
            (x, y)
            for y in range(top, bottom)
            for x in range(left, right)
            if all(abs(a - b) <= tolerance for a, b in zip(self.pixel(x, y), colour))
        ]


def bounds(points):
    """(left, top, right, bottom) around the points, right and bottom exclusive; None without points."""
    if not points:
        return None
    xs, ys = [x for x, _ in points], [y for _, y in points]
    return min(xs), min(ys), max(xs) + 1, max(ys) + 1


class VirtualDesktop:
    """Use it in a `with` statement; everything started through it ends with it.

    Its programs find a home folder of their own, empty at first, in self.folder; with own_home=False they find the
    user's.
    """

    background = (0x3A, 0x6E, 0xA5)

    def __init__(self, width=1440, height=900, own_home=True):
        self.width, self.height = width, height
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kestrant-desktop-"))
        self.environment = {
            "PATH": os.environ["PATH"],
            "LC_ALL": "C.UTF-8",
            "TZ": os.environ.get("TZ", "Europe/Paris"),
            "QT_QPA_PLATFORM": "xcb",
            # There is no graphics card to draw with.
            "QT_QUICK_BACKEND": "software",
            "NO_AT_BRIDGE": "1",
        }
        self._processes = []
        if not own_home:
            self.environment = {**os.environ, **self.environment}
            self.environment.pop("WAYLAND_DISPLAY", None)
            return
        for name, folder in (
            ("HOME", "home"),
            ("XDG_CONFIG_HOME", "home/.config"),
            ("XDG_DATA_HOME", "home/.local/share"),
            ("XDG_CACHE_HOME", "home/.cache"),
            ("XDG_RUNTIME_DIR", "run"),
        ):
            path = self.folder / folder
            path.mkdir(parents=True, mode=0o700)
            self.environment[name] = str(path)

    def __enter__(self):
        try:
            self._start_display()
            self._start_session_bus()
            self._start_window_manager()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for process in reversed(self._processes):
            stop(process)
        shutil.rmtree(self.folder, ignore_errors=True)

    def _start_display(self):
        reader, writer = os.pipe()
        screen = f"{self.width}x{self.height}x24"
        with open(self.folder / "xvfb.log", "wb") as log:
            self.spawn(
                ["Xvfb", "-displayfd", str(writer), "-screen", "0", screen, "-nolisten", "tcp", "-noreset"],
                pass_fds=[writer],
                stderr=log,
            )
        os.close(writer)
        with os.fdopen(reader) as pipe:
            number = pipe.readline().strip()
        if not number:
            raise RuntimeError("Xvfb did not start: " + (self.folder / "xvfb.log").read_text())
        self.environment["DISPLAY"] = ":" + number

    def _start_session_bus(self):
        bus = self.spawn(
            ["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1"],
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
        )
        address = bus.stdout.readline().decode().strip()
        if not address:
            raise RuntimeError("the session bus did not start")
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address

    def _start_window_manager(self):
        settings = self.folder / "openbox.xml"
        settings.write_text(WINDOW_MANAGER_SETTINGS)
        self.output("xsetroot", "-solid", "#%02x%02x%02x" % self.background)
        # A key whose release is late because the processor is busy would be pressed several times.
        self.output("xset", "r", "off")
        self.spawn(
            ["openbox", "--sm-disable", "--config-file", str(settings), "--startup", "xsetroot -name started"],
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        # Before it says so it may overlook a window that appears.
        wait_until(lambda: "started" in self.root_property("WM_NAME"), "the window manager has started")

    def spawn(self, arguments, **options):
        """Starts a program on this desktop; it ends with the desktop."""
        process = subprocess.Popen(arguments, env=self.environment, stdin=subprocess.DEVNULL, **options)
        self._processes.append(process)
        return process

    def output(self, *arguments):
        """Runs a program on this desktop to its end and returns what it printed."""
        done = subprocess.run(
            arguments, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE
        )
        if done.returncode:
            raise RuntimeError(f"{' '.join(arguments)}: {done.stderr.decode(errors='replace').strip()}")
        return done.stdout

    # Hands

    def move(self, x, y):
        # For a pointer that is there already xdotool would wait in vain.
        if f"x:{x} y:{y} " not in self.output("xdotool", "getmouselocation").decode():
            self.output("xdotool", "mousemove", "--sync", str(x), str(y))

    def click(self, x, y, times=1, button=1):
        """Clicks once, or several times a quarter of a second apart; the right button is the third."""
        self.move(x, y)
        self.output("xdotool", "click", "--repeat", str(times), "--delay", "250", str(button))

    def drag(self, start, end):
        """Presses at `start`, moves in small steps as a hand does, and lets go at `end`."""
        self.move(*start)
        self.output("xdotool", "mousedown", "1")
        for step in range(1, 21):
            self.move(*(round(a + (b - a) * step / 20) for a, b in zip(start, end)))
        self.output("xdotool", "mouseup", "1")

    def key(self, *keys):
        self.output("xdotool", "key", *keys)

    def type(self, text):
        self.output("xdotool", "type", "--delay", "10", text)

    # Eyes

    def picture(self):
        rgb = self.output("import", "-silent", "-window", "root", "-depth", "8", "rgb:-")
        return Picture(self.width, self.height, rgb)

    def steady_picture(self):
        """The picture once nothing moves any more: when several in a row are the same, since a program that has to wait
        for the processor stands still for one or two."""
        pictures = [self.picture()]

        def unchanged():
            pictures.append(self.picture())
            if pictures[-1].pixels != pictures[0].pixels:
                del pictures[:-1]
            return len(pictures) == 5

        wait_until(unchanged, "the picture stands still")
        return pictures[-1]

    def save_picture(self, path, area=None):
        """Writes a PNG of the display, or of the area (left, top, right, bottom) of it."""
        crop = []
        if area:
            left, top, right, bottom = area
            crop = ["-crop", f"{right - left}x{bottom - top}+{left}+{top}", "+repage"]
        self.output("import", "-silent", "-window", "root", *crop, str(path))

    def root_property(self, name):
        return self.output("xprop", "-root", name).decode()

    def active_window(self):
        """The window with the keyboard focus as the window manager tells it, or None."""
        found = re.search(r"0x[0-9a-f]+", self.root_property("_NET_ACTIVE_WINDOW"))
        return int(found[0], 16) or None if found else None

    def focused_window(self):
        """The window that the keys go to."""
        return int(self.output("xdotool", "getwindowfocus"))

    def stacking(self):
        """The windows the window manager looks after, the lowest first."""
        return [int(w, 16) for w in re.findall(r"0x[0-9a-f]+", self.root_property("_NET_CLIENT_LIST_STACKING"))]

    def window_of(self, process):
        """The largest visible window of a process, or None."""
        found = subprocess.run(
            ["xdotool", "search", "--onlyvisible", "--pid", str(process.pid)],
            env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
        ).stdout.split()
        sized = []
        for window in found:
            try:
                _, _, width, height = self.geometry(int(window))
            except RuntimeError:
                continue  # It has gone since.
            sized.append((width * height, int(window)))
        return max(sized)[1] if sized else None

    def geometry(self, window):
        """(x, y, width, height) on the display."""
        text = self.output("xwininfo", "-id", hex(window)).decode()
        return tuple(
            int(re.search(label + r":\s+(-?\d+)", text)[1])
            for label in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")
        )

    def window_property(self, window, name):
        return self.output("xprop", "-id", hex(window), name).decode().strip()


class EventWindow:
    """Another program's window that fills the display and tells what reaches it."""

    def __init__(self, desktop):
        self._desktop = desktop
        self._log = desktop.folder / f"events-{len(desktop._processes)}.log"
        self._others = self._all()
        with open(self._log, "wb") as log:
            self.process = desktop.spawn(
                ["stdbuf", "-oL", "xev", "-geometry", f"{desktop.width}x{desktop.height}+0+0", "-bw", "0",
                 "-event", "button", "-event", "keyboard", "-event", "focus"],
                stdout=log,
            )
        self.window = wait_until(lambda: self._find(), "the other window is there")
        wait_until(lambda: desktop.active_window() == self.window, "the other window has the focus")

    def _all(self):
        tree = self._desktop.output("xwininfo", "-root", "-tree").decode()
        return {int(window, 16) for window in re.findall(r'(0x[0-9a-f]+) "Event Tester"', tree)}

    def _find(self):
        return next(iter(self._all() - self._others), None)

    def clicks(self):
        """Where the buttons were pressed on this window, in the display's coordinates."""
        blocks = re.findall(r"ButtonPress event.*?root:\((\d+),(\d+)\)", self._log.read_text(), re.S)
        return [(int(x), int(y)) for x, y in blocks]

    def keys(self):
        """The names of the keys pressed while this window had the focus."""
        return re.findall(r"KeyPress event.*?keysym 0x[0-9a-f]+, (\w+)\)", self._log.read_text(), re.S)

    def set_full_screen(self, is_full):
        self._desktop.output("wmctrl", "-i", "-r", str(self.window), "-b", f"{'add' if is_full else 'remove'},fullscreen")

    def close(self):
        stop(self.process)
