#!/usr/bin/python3
"""Prints what a window of a running application shows, read through AT-SPI as a
screen reader reads it: one line per showing object, "ROLE<TAB>NAME".
Exit status 1 when the application has no showing window of that title.
Usage: atspi-window.py APPLICATION WINDOW-TITLE"""
import sys

import pyatspi


def showing(accessible):
    try:
        return accessible.getState().contains(pyatspi.STATE_SHOWING)
    except Exception:  # an object that went away while we read it
        return False


def walk(accessible, depth=0):
    if depth > 30 or not showing(accessible):
        return
    yield accessible
    for index in range(accessible.childCount):
        child = accessible.getChildAtIndex(index)
        if child is not None:
            yield from walk(child, depth + 1)


def main():
    application, title = sys.argv[1], sys.argv[2]
    desktop = pyatspi.Registry.getDesktop(0)
    for app in desktop:
        if app is None or app.name.lower() != application.lower():
            continue
        for window in app:
            if window is None or window.name != title or not showing(window):
                continue
            for accessible in walk(window):
                print(f"{accessible.getRoleName()}\t{accessible.name}")
            return 0
    return 1


if __name__ == "__main__":
    sys.exit(main())
