#!/usr/bin/env bash
# Starts Brevano. Without a display it says so and starts it on a virtual one:
# Xvfb with a tray host (xfce4-panel) and a notification server (dunst) on a
# private session bus, then saves screenshots to look at.
# Usage: run.sh BREVANO BUILD_DIR
set -euo pipefail
brevano="$(realpath "$1")"
build="$(realpath "$2")"
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  exec "$brevano"
fi

echo "There is no display here, so Brevano runs on a virtual one (Xvfb) with a tray host and"
echo "a notification server. Screenshots: $build/run-screenshot.png (the tray),"
echo "$build/run-menu.png (its menu opened) and $build/run-panel.png (its panel, opened by a"
echo "left click). Stop with Ctrl+C."
# A machine without a desktop session may have no runtime folder either; the
# single-instance socket lives there.
if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
  XDG_RUNTIME_DIR="$(mktemp -d)" # mode 700, ours
  export XDG_RUNTIME_DIR
fi
source "$(dirname "$0")/xvfb.sh"
start_xvfb
trap 'kill $XVFB_PID 2>/dev/null' EXIT
exec dbus-run-session -- bash -c '
  xfce4-panel >/dev/null 2>&1 &
  dunst >/dev/null 2>&1 &
  for _ in $(seq 100); do
    gdbus call --session --dest org.freedesktop.DBus --object-path / \
      --method org.freedesktop.DBus.NameHasOwner org.kde.StatusNotifierWatcher 2>/dev/null \
      | grep -q true && break
    sleep 0.1
  done
  "$0" &
  app=$!
  sleep 3
  import -window root "$1/run-screenshot.png"
  item=$(gdbus call --session --dest org.kde.StatusNotifierWatcher --object-path /StatusNotifierWatcher \
    --method org.freedesktop.DBus.Properties.Get org.kde.StatusNotifierWatcher \
    RegisteredStatusNotifierItems | grep -o ":[0-9.]*" | head -1)
  click() { # Activate (a left click: the panel) or ContextMenu (a right click: the menu)
    # A tray host tells where the click was only through the pointer: put it on the icon.
    xdotool mousemove 1200 14
    [ -n "$item" ] && gdbus call --session --dest "$item" --object-path /StatusNotifierItem \
      --method "org.kde.StatusNotifierItem.$1" 1200 30 >/dev/null
    xdotool mousemove 700 600 # off the bar, whose clock shows a tool tip
    sleep 1.5
  }
  click Activate
  import -window root "$1/run-panel.png"
  click Activate
  click ContextMenu
  import -window root "$1/run-menu.png"
  echo "Brevano is running (pid $app). Screenshots saved. Commands: $0 --help"
  wait $app
' "$brevano" "$build"
