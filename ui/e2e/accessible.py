#!/usr/bin/python3
"""Finds the tray app's widgets the way a screen reader does, through the accessibility bus, so
the end-to-end run can click them by their names instead of guessing where fonts put them.

  accessible.py where ROLE NAME   the screen point at the centre of the first widget shown with
                                  that role and name that can be used ("x y"); exit 1 if none
  accessible.py names ROLE        the names of every widget shown with that role, one a line

Roles are AT-SPI's role names ("push button", "page tab", "list item", "label", "table cell").
Needs the accessibility bus (at-spi-bus-launcher) on the session bus and the app started with
QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1.
"""
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

APP = "Tovrin"


def shown(node):
    states = node.get_state_set()
    if not states.contains(Atspi.StateType.SHOWING):
        return False
    extents = node.get_extents(Atspi.CoordType.SCREEN)
    return extents.width > 0 and extents.height > 0


def widgets(role):
    """Every widget of the app shown on screen with that role, depth first."""
    desktop = Atspi.get_desktop(0)
    pending = [desktop.get_child_at_index(i) for i in range(desktop.get_child_count())]
    pending = [app for app in pending if app is not None and app.get_name() == APP]
    while pending:
        node = pending.pop()
        try:
            if node.get_role_name() == role and shown(node):
                yield node
            # A hidden page's widgets are not shown, so their subtrees need no visit.
            children = [node.get_child_at_index(i) for i in range(node.get_child_count())]
        except gi.repository.GLib.Error:
            continue  # gone while being read: the window changed under us
        pending.extend(reversed([c for c in children if c is not None]))


def main(argv):
    if len(argv) == 4 and argv[1] == "where":
        for node in widgets(argv[2]):
            if node.get_name() != argv[3]:
                continue
            if not node.get_state_set().contains(Atspi.StateType.SENSITIVE):
                continue
            extents = node.get_extents(Atspi.CoordType.SCREEN)
            print(extents.x + extents.width // 2, extents.y + extents.height // 2)
            return 0
        return 1
    if len(argv) == 3 and argv[1] == "names":
        for node in widgets(argv[2]):
            print(node.get_name())
        return 0
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv))
