"""Where the optimised build is, and a home folder to measure it in."""

import json
import os
import pathlib
import sys

from make_store import make_evolution_store, make_store

SOURCES = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(SOURCES / "scripts"))

BUILD = pathlib.Path(os.environ.get("BUILD", SOURCES / "build/release"))
KESTRANT = str(BUILD / "src/app/kestrant")


def furnish(desktop, reminders, events=0, evolution=False, **preferences):
    """Gives the home folder of a virtual desktop this many reminders and events, in the desktop's own database or in
    Kestrant's folder, and no first-run questions."""
    identifier = "com.Kestrant.notchapp"
    data = desktop.environment["XDG_DATA_HOME"]
    if evolution:
        make_evolution_store(data, reminders, events)
    else:
        make_store(f"{data}/{identifier}/calendars", reminders, events)
    configuration = pathlib.Path(desktop.environment["XDG_CONFIG_HOME"]) / identifier
    configuration.mkdir(parents=True)
    preferences = {
        "kestrantCompletedInitialOnboarding": True,
        "featureAnnouncement.disabled": True,
        "kestrantEventStore": "evolution" if evolution else "vdir",
        **preferences,
    }
    (configuration / "preferences.json").write_text(json.dumps(preferences))
    # Away from the panel.
    desktop.move(100, desktop.height - 100)
