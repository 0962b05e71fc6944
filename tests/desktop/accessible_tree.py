#!/usr/bin/python3
"""What a screen reader sees and does. For each line on standard input one on standard output: for an empty one the tree of
a process's objects, for the numbers that lead to an object in it whether that could be pressed; both as JSON. Runs under
the system's own Python, which has the bindings.

usage: accessible_tree.py PROCESS
"""

import json
import os
import sys
import warnings

# The bindings wrap each interface once more than is needed.
warnings.simplefilter("ignore", DeprecationWarning)

import gi  # noqa: E402

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402


def describe(thing):
    action = thing.get_action_iface()
    children = (thing.get_child_at_index(index) for index in range(thing.get_child_count()))
    return {
        "role": thing.get_role_name(),
        "name": thing.get_name(),
        "states": [state.value_nick for state in thing.get_state_set().get_states()],
        "actions": [action.get_action_name(index) for index in range(action.get_n_actions())] if action else [],
        "children": [describe(child) for child in children if child],
    }


def application(process):
    context = GLib.MainContext.default()
    while context.pending():
        context.iteration(False)
    desktop = Atspi.get_desktop(0)
    # Nothing is remembered, since what has changed would be told to somebody with an event loop only.
    desktop.clear_cache()
    for index in range(desktop.get_child_count()):
        found = desktop.get_child_at_index(index)
        if found and found.get_process_id() == process:
            found.clear_cache()
            return found
    return None


def answer(process, path):
    found = application(process)
    if not path:
        return describe(found) if found else None
    for index in path:
        found = found.get_child_at_index(index)
    action = found.get_action_iface()
    names = [action.get_action_name(index) for index in range(action.get_n_actions())]
    return "Press" in names and action.do_action(names.index("Press"))


def main():
    Atspi.init()
    for line in sys.stdin:
        try:
            result = answer(int(sys.argv[1]), [int(number) for number in line.split()])
        except GLib.Error:  # Something went while it was looked at.
            result = None
        print(json.dumps(result), flush=True)
    # The bindings do not always survive being taken down.
    os._exit(0)


main()
