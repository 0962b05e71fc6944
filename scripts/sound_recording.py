"""What Kestrant plays, recorded with the time of each sample, and its cues found in it. Python's standard library is
all it takes, and a cue is known by the sound that make-sounds makes for it.
"""

import array
import fcntl
import importlib.machinery
import importlib.util
import math
import os
import pathlib
import re
import select
import signal
import subprocess
import threading
import time

from virtual_desktop import stop, wait_until

RATE = 44100
# Enough to tell the cues from each other, and quick to compare: the sounds have little above 2 kHz, and those that are
# made of two strokes have begun with the second by then.
STEP = 8
COMPARED = 0.12

# Makes the program say when it asks for a cue, on the clock of time.monotonic().
LOG_ENVIRONMENT = {"QT_LOGGING_RULES": "kestrant.sound.debug=true", "QT_MESSAGE_PATTERN": "%{time boot} %{message}"}


def asked_for(log):
    """(time, cue) of every cue that the program has asked for, from its log."""
    lines = re.findall(r"^ *([\d.]+) asked for (\S+)$", pathlib.Path(log).read_text(), re.M)
    return [(float(moment), cue) for moment, cue in lines]


def dropped(log):
    """The indices, among what asked_for() gives, of the cues that could not be heard at once and were dropped."""
    waiting, found = [], []
    for index, (what, cue) in enumerate(re.findall(r"(asked for|dropped) (\S+)$", pathlib.Path(log).read_text(), re.M)):
        if what == "dropped":
            found.append(waiting.pop([waiting_cue for _, waiting_cue in waiting].index(cue))[0])
        else:
            waiting.append((index - len(found), cue))
    return found


def known_sounds():
    """How each cue begins, thinned out."""
    path = str(pathlib.Path(__file__).with_name("make-sounds"))
    loader = importlib.machinery.SourceFileLoader("make_sounds", path)
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("make_sounds", loader))
    loader.exec_module(module)
    length = round(COMPARED * RATE)
    return {cue: thinned([*(value / 32768 for value in module.sound(*made)[:length]), *([0.0] * length)][:length])
            for cue, made in module.SOUNDS.items()}


def thinned(samples):
    return [sum(samples[at : at + STEP]) / STEP for at in range(0, len(samples) - STEP + 1, STEP)]


def likeness(passage, sound):
    """1 for the same sound at whatever volume, 0 for another."""
    product = sum(a * b for a, b in zip(passage, sound))
    power = sum(a * a for a in passage) * sum(b * b for b in sound)
    return product / math.sqrt(power) if power > 1e-9 else 0.0


class Stretch:
    """Samples without a gap; `begin` is the moment at which the first of them was out."""

    def __init__(self, begin):
        self.begin = begin
        self.samples = array.array("f")

    def part(self, begin, end):
        """The samples between two moments, and the moment of the first of them."""
        first = max(0, round((begin - self.begin) * RATE))
        return self.samples[first : max(0, round((end - self.begin) * RATE))], self.begin + first / RATE


class Recording:
    """Reads samples from a file as they come. Close it before looking at what it holds."""

    # Of seconds; what is a gap, and not the machine's having been busy elsewhere.
    GAP = 0.005

    def __init__(self, descriptor, read_samples):
        self.stretches = []
        self.end = -math.inf  # up to which moment it is recorded
        self._parts = []
        self._descriptor = descriptor
        self._read_samples = read_samples
        self._stop_reader, self._stop_writer = os.pipe()
        self._thread = threading.Thread(target=self._record)
        self._thread.start()

    def _record(self):
        while self._stop_reader not in select.select([self._descriptor, self._stop_reader], [], [])[0]:
            if samples := self._read_samples(os.read(self._descriptor, 1 << 20)):
                self.end = time.monotonic()
                self._parts.append((self.end, samples))

    def close(self):
        if self._thread.is_alive():
            os.write(self._stop_writer, b"x")
            self._thread.join()
            for descriptor in (self._descriptor, self._stop_reader, self._stop_writer):
                os.close(descriptor)
            self._place()

    def is_loud(self):
        """Whether anything has been heard by now."""
        return any(max(samples) > 0.01 for _, samples in list(self._parts))

    def _place(self):
        """Finds the stretches. A part comes when it is out, or later when its way was held up; and whenever the device
        rests, all that follows is later by the length of the rest. So of all the parts that follow one of them, the one
        that is earliest for its place tells when that one was out."""
        place, starts = 0, []
        for moment, samples in self._parts:
            starts.append(moment - place / RATE)
            place += len(samples)
        for index in reversed(range(len(starts) - 1)):
            starts[index] = min(starts[index], starts[index + 1])
        place, previous = 0, -math.inf
        for start, (_, samples) in zip(starts, self._parts):
            if start - previous > self.GAP:
                self.stretches.append(Stretch(start + place / RATE))
                previous = start
            self.stretches[-1].samples.extend(samples)
            place += len(samples)

    def part(self, begin, end):
        """The samples between two moments and the moment of the first of them; of the stretch that has most of them."""
        return max((stretch.part(begin, end) for stretch in self.stretches), key=lambda part: len(part[0]),
                   default=([], begin))

    def recognise(self, asked, until):
        """(cue, likeness, seconds) of what begins between two moments: the known sound it is most like, how much so, and
        how long after the first moment it begins."""
        samples, first = self.part(asked - 0.01, until + COMPARED)
        passage = thinned(samples)
        best = (None, 0.0, 0.0)
        for cue, sound in known_sounds().items():
            for at in range(len(passage) - len(sound)):
                if abs(passage[at + 1]) + abs(passage[at + 2]) > 1e-3:
                    like = likeness(passage[at : at + len(sound)], sound)
                    if like > best[1]:
                        best = (cue, like, first + at * STEP / RATE - asked)
        return best

    def loudest(self, begin=-math.inf, end=math.inf):
        """The largest sample between two moments."""
        found = 0.0
        for stretch in self.stretches:
            low = max(begin, stretch.begin)
            if low < end and (samples := stretch.part(low, min(end, low + 86400))[0]):
                found = max(found, max(samples), -min(samples))
        return found


class WaveWriterRecording(Recording):
    """OpenAL's wave writer: the program's own part of the way, without a sound service and a sound card.

    The writer writes into a pipe, because in a file it would begin anew each time the device has rested.
    """

    CHANNELS = 8
    HEADER = 68

    def __init__(self, folder, settings):
        """`folder` is for the pipe; `settings` the path of the file in which OpenAL looks for a person's settings."""
        pipe = pathlib.Path(folder) / "wave"
        os.mkfifo(pipe)
        # Eight channels of floats, so that the four kilobytes that the writer keeps back are three milliseconds.
        settings.parent.mkdir(parents=True, exist_ok=True)
        settings.write_text("[general]\ndrivers = wave\nchannels = surround71\nsample-type = float32\n"
                            f"frequency = {RATE}\n[wave]\nfile = {pipe}\n")
        descriptor = os.open(pipe, os.O_RDWR | os.O_NONBLOCK)
        fcntl.fcntl(descriptor, 1031, 1 << 20)  # F_SETPIPE_SZ
        self._rest = b""
        self._skip = self.HEADER
        super().__init__(descriptor, self._samples)

    def _samples(self, data):
        skipped = min(self._skip, len(data))
        self._skip -= skipped
        data = self._rest + data[skipped:]
        frame = 4 * self.CHANNELS
        whole = len(data) // frame * frame
        self._rest = data[whole:]
        values = array.array("f", data[:whole])
        return [sum(channels) for channels in zip(*(values[at :: self.CHANNELS] for at in range(self.CHANNELS)))]


class SoundServiceRecording(Recording):
    """A PulseAudio of its own, recorded where a sound card would play: all of the way but the card's part."""

    def __init__(self, desktop):
        self._service = desktop.spawn(
            ["pulseaudio", "--daemonize=no", "--exit-idle-time=-1", "-n", "-L", "module-native-protocol-unix",
             "-L", f"module-null-sink sink_name=card rate={RATE}"], stderr=subprocess.DEVNULL)
        wait_until(lambda: subprocess.run(["pactl", "info"], env=desktop.environment, stdout=subprocess.DEVNULL,
                                          stderr=subprocess.DEVNULL).returncode == 0, "the sound service answers")
        self._recorder = desktop.spawn(
            ["parec", "--device=card.monitor", "--latency-msec=5", "--process-time-msec=5", "--raw", f"--rate={RATE}",
             "--channels=1", "--format=float32le"], stdout=subprocess.PIPE)
        super().__init__(os.dup(self._recorder.stdout.fileno()), self._samples)

    def _samples(self, data):
        return array.array("f", data[: len(data) // 4 * 4])

    def hang(self):
        """The service answers nobody any more."""
        self._service.send_signal(signal.SIGSTOP)

    def close(self):
        """Ends the service as well."""
        self._service.send_signal(signal.SIGCONT)
        super().close()
        stop(self._recorder)
        stop(self._service)
