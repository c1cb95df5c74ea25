#!/usr/bin/python3
"""Finds the first showing object of that name in a window of a running
application (the window itself included), through AT-SPI, and prints
"ROLE<TAB>NAME<TAB>X Y WIDTH HEIGHT": where it is on the screen.
Exit status 1 when there is no such object.
Usage: atspi-object.py APPLICATION WINDOW-TITLE NAME"""
import sys

import pyatspi


def showing(accessible):
    try:
        return accessible.getState().contains(pyatspi.STATE_SHOWING)
    except Exception:  # an object that went away while we read it
        return False


def find(accessible, name, depth=0):
    if depth > 30 or not showing(accessible):
        return None
    if accessible.name == name:
        return accessible
    for index in range(accessible.childCount):
        child = accessible.getChildAtIndex(index)
        found = find(child, name, depth + 1) if child is not None else None
        if found is not None:
            return found
    return None


def main():
    application, title, name = sys.argv[1:4]
    for app in pyatspi.Registry.getDesktop(0):
        if app is None or app.name.lower() != application.lower():
            continue
        for window in app:
            if window is None or window.name != title:
                continue
            found = find(window, name)
            if found is None:
                continue
            box = found.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
            print(f"{found.getRoleName()}\t{found.name}\t{box.x} {box.y} {box.width} {box.height}")
            return 0
    return 1


if __name__ == "__main__":
    sys.exit(main())
