#!/usr/bin/python3
"""Prints what a window of a running application shows, read through AT-SPI as a
screen reader reads it: one line per showing object, "ROLE<TAB>NAME". The items
of a showing list count as shown even when scrolled out of view. With a STATE
(an AT-SPI state name such as "focused" or "selected"), only the objects in that
state are printed.
Exit status 1 when the application has no showing window of that title.
Usage: atspi-window.py APPLICATION WINDOW-TITLE [STATE]"""
import sys

import pyatspi

LISTS = (pyatspi.ROLE_LIST, pyatspi.ROLE_LIST_BOX, pyatspi.ROLE_TABLE, pyatspi.ROLE_TREE_TABLE)


def has_state(accessible, state):
    try:
        return accessible.getState().contains(state)
    except Exception:  # an object that went away while we read it
        return False


def walk(accessible, depth=0, in_list=False):
    if depth > 30 or not (in_list or has_state(accessible, pyatspi.STATE_SHOWING)):
        return
    yield accessible
    is_list = accessible.getRole() in LISTS
    for index in range(accessible.childCount):
        child = accessible.getChildAtIndex(index)
        if child is not None:
            yield from walk(child, depth + 1, is_list)


def main():
    application, title = sys.argv[1], sys.argv[2]
    state = getattr(pyatspi, "STATE_" + sys.argv[3].upper()) if len(sys.argv) > 3 else None
    desktop = pyatspi.Registry.getDesktop(0)
    for app in desktop:
        if app is None or app.name.lower() != application.lower():
            continue
        for window in app:
            if window is None or window.name != title or \
                    not has_state(window, pyatspi.STATE_SHOWING):
                continue
            for accessible in walk(window):
                if state is None or has_state(accessible, state):
                    print(f"{accessible.getRoleName()}\t{accessible.name}")
            return 0
    return 1


if __name__ == "__main__":
    sys.exit(main())
