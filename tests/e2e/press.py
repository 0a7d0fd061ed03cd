#!/usr/bin/python3
# Presses a control of the running program through the accessibility tree (AT-SPI), the way a
# screen reader would: no keyboard or pointer is needed, so it works where input can't be
# injected (a headless Wayland compositor). Waits up to 20 s for the control to appear.
# Usage: press.py <role name> <accessible name>     e.g. press.py "menu item" "Start Slideshow"
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402


def find(node, role, name, depth=0):
    if depth > 12:
        return None
    try:
        if node.get_role_name() == role and node.get_name() == name:
            return node
        children = [node.get_child_at_index(i) for i in range(node.get_child_count())]
    except gi.repository.GLib.Error:
        return None
    for child in children:
        found = find(child, role, name, depth + 1)
        if found:
            return found
    return None


def program():
    desktop = Atspi.get_desktop(0)
    for i in range(desktop.get_child_count()):
        app = desktop.get_child_at_index(i)
        if app and "tallowbrook" in (app.get_name() or "").lower():
            return app
    return None


role, name = sys.argv[1], sys.argv[2]
deadline = time.monotonic() + 20
while time.monotonic() < deadline:
    app = program()
    control = find(app, role, name) if app else None
    if control and control.get_n_actions() > 0:
        control.do_action(0)
        sys.exit(0)
    time.sleep(0.2)
print(f"no {role} named '{name}' in the program's accessibility tree", file=sys.stderr)
sys.exit(1)
