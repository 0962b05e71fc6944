"""Times two programs that do the same work, one after the other and again."""

import os
import statistics
import subprocess
import time

RUNS = 7


def environment(home):
    return {"PATH": os.environ["PATH"], "HOME": str(home), "LC_ALL": "C.UTF-8", "TZ": "Europe/Paris"}


def seconds(command, home):
    begin = time.perf_counter()
    subprocess.run(command, env=environment(home), stdout=subprocess.DEVNULL, check=True)
    return time.perf_counter() - begin


def compare(commands, home, folder):
    """Runs the commands, named by what to call them, on the files of a folder, each once beforehand so that whoever keeps a
    cache has it filled; prints their times and which part of the last one's time the first one takes."""
    for command in commands.values():
        seconds(command, home)
    # By turns, so that whatever else the machine does meets all of them.
    times = {name: [] for name in commands}
    for _ in range(RUNS):
        for name, command in commands.items():
            times[name].append(seconds(command, home))
    files = sum(1 for _ in folder.rglob("*.ics"))
    print(f"{files} files, {RUNS} runs each\n{'':<20}{'median':>10}{'fastest':>10}{'slowest':>10}")
    for name, values in times.items():
        print(f"{name:<20}{statistics.median(values):>8.3f} s{min(values):>8.3f} s{max(values):>8.3f} s")
    first, *_, last = commands
    ratio = statistics.median(times[first]) / statistics.median(times[last])
    print(f"{first} takes {ratio:.2f} of the time of {last}")
