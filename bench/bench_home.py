"""Where the optimised build is, and a home folder to measure it in."""

import json
import os
import pathlib
import sys

from make_store import make_store

SOURCES = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(SOURCES / "scripts"))

BUILD = pathlib.Path(os.environ.get("BUILD", SOURCES / "build/release"))
KESTRANT = str(BUILD / "src/app/kestrant")


def furnish(desktop, reminders, **preferences):
    """Gives the home folder of a virtual desktop this many reminders, and no first-run questions."""
    identifier = "com.Kestrant.notchapp"
    make_store(f"{desktop.environment['XDG_DATA_HOME']}/{identifier}/calendars", reminders=reminders, events=0)
    configuration = pathlib.Path(desktop.environment["XDG_CONFIG_HOME"]) / identifier
    configuration.mkdir(parents=True)
    preferences = {"kestrantCompletedInitialOnboarding": True, **preferences}
    (configuration / "preferences.json").write_text(json.dumps(preferences))
    # Away from the panel.
    desktop.move(100, desktop.height - 100)
