#!/usr/bin/python3
"""Does what a person would do to a control of a running application's window,
through AT-SPI: the first showing object of that name (and, if given, role)
is located ("where" prints "ROLE<TAB>NAME<TAB>X Y WIDTH HEIGHT" on the screen),
gets the focus ("focus", which needs the object to be a widget that takes it) or has its action of that name done ("Press",
"Toggle", ...). An action that opens a modal window answers only when that
window closes, so the call does not wait for the answer.
Exit status 1 when there is no such object or action.
NAME#N stands for the N-th object of that name.
Usage: atspi-do.py APPLICATION WINDOW-TITLE NAME ACTION [ROLE]"""
import sys

import pyatspi


def showing(accessible):
    try:
        return accessible.getState().contains(pyatspi.STATE_SHOWING)
    except Exception:  # an object that went away while we read it
        return False


def find(accessible, name, role, depth=0, in_list=False, seen=None):
    """The object of that name; "NAME#N" is the N-th of that name (from 1)."""
    if seen is None:
        base, _, nth = name.partition("#")
        seen = {"name": base, "left": int(nth or 1)}
    if depth > 30 or not (in_list or showing(accessible)):
        return None
    if accessible.name == seen["name"] and (role is None or accessible.getRoleName() == role):
        seen["left"] -= 1
        if seen["left"] == 0:
            return accessible
    is_list = accessible.getRole() in (pyatspi.ROLE_LIST, pyatspi.ROLE_TABLE,
                                       pyatspi.ROLE_TREE_TABLE, pyatspi.ROLE_LIST_BOX)
    for index in range(accessible.childCount):
        child = accessible.getChildAtIndex(index)
        found = find(child, name, role, depth + 1, is_list, seen) if child is not None else None
        if found is not None:
            return found
    return None


def main():
    application, title, name, action = sys.argv[1:5]
    role = sys.argv[5] if len(sys.argv) > 5 else None
    for app in pyatspi.Registry.getDesktop(0):
        if app is None or app.name.lower() != application.lower():
            continue
        for window in app:
            if window is None or window.name != title:
                continue
            found = find(window, name, role)
            if found is None:
                continue
            if action == "where":
                box = found.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
                print(f"{found.getRoleName()}\t{found.name}\t"
                      f"{box.x} {box.y} {box.width} {box.height}")
                return 0
            actions = found.queryAction()
            if action == "focus":
                # Qt's widgets take the focus through their action of that name.
                if found.queryComponent().grabFocus():
                    return 0
                action = "SetFocus"
            for index in range(actions.nActions):
                if actions.getName(index).lower() == action.lower():
                    pyatspi.setTimeout(500, 500)
                    try:
                        actions.doAction(index)
                    except Exception:  # the timeout of an action that opened a modal window
                        pass
                    return 0
            print(f"no action {action}; it has: " +
                  ", ".join(actions.getName(i) for i in range(actions.nActions)), file=sys.stderr)
            return 1
    return 1


if __name__ == "__main__":
    sys.exit(main())
