#!/usr/bin/env bash
# Runs the real Brevano on a real tray host, both backends: xfce4-panel
# (StatusNotifierItem) and trayer (XEmbed). For each: the icon shows, a right
# click opens the status menu with the Shadow Desktop submenu filled, a second
# launch leaves one process, and a command is carried out by the running one.
# The windows it opens are read through AT-SPI, as a screen reader reads them.
# Screenshots go to $SCREENSHOTS. Run under with-display.sh. It stops only the
# processes it started, by their ids.
# Usage: tray-hosts.sh BREVANO SCREENSHOTS
set -uo pipefail
brevano="$1"
shots="$2"
here="$(dirname "$0")"
mkdir -p "$shots"
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
passes=0
failures=0
check() {
  if eval "$2"; then echo "PASS: $1"; passes=$((passes + 1))
  else echo "FAIL: $1"; failures=$((failures + 1)); fi
}
wait_for() { for _ in $(seq 100); do eval "$1" && return 0; sleep 0.1; done; return 1; }
# What a window of the running Brevano shows, "ROLE<TAB>NAME" a line.
window_text() { "$here/atspi-window.py" Brevano "$1" 2>/dev/null; }
shows() { local text; text="$(window_text "$1")" && grep -qF -- "$2" <<<"$text"; } # WINDOW-TITLE TEXT
# The process that owns a name on the session bus (one our bus started for us).
bus_name_pid() {
  gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus \
    --method org.freedesktop.DBus.GetConnectionUnixProcessID "$1" 2>/dev/null | grep -o '[0-9]\+' | tail -1
}
# The running Brevano's socket: commands answer without it too, run locally.
app_listening() { [ -S "$XDG_RUNTIME_DIR/brevano-$(id -u).socket" ]; }
has_name() { gdbus call --session --dest org.freedesktop.DBus --object-path / \
  --method org.freedesktop.DBus.NameHasOwner "$1" 2>/dev/null | grep -q true; }

shadow="$XDG_DATA_HOME/Brevano/Shadow Desktop"
mkdir -p "$shadow/Photos"
for f in report.pdf notes.txt budget.xlsx; do echo x > "$shadow/$f"; done
echo x > "$shadow/Photos/beach.jpg"
export BREVANO_MENU_OUTLINE="$XDG_RUNTIME_DIR/outline.txt"

run_host() { # NAME START-HOST ICON-SHOWN OPEN-MENU
  local name="$1"
  rm -f "$BREVANO_MENU_OUTLINE"
  eval "$2"
  "$brevano" > "$XDG_RUNTIME_DIR/brevano-$name.log" 2>&1 &
  local app=$!
  check "$name: Brevano starts and listens" 'wait_for app_listening && "$brevano" status | grep -q "^items: "'
  check "$name: the icon shows in the tray" "wait_for '$3'"
  import -window root "$shots/$name-icon.png"
  eval "$4"
  check "$name: the status menu opened with the Shadow Desktop filled" \
    'wait_for "grep -qx \"  report.pdf\" \"$BREVANO_MENU_OUTLINE\" 2>/dev/null"'
  sleep 0.5
  import -window root "$shots/$name-menu.png"
  xdotool key Down Down Down Down Right # down to "Browse Shadow Desktop", and open it
  sleep 0.5
  import -window root "$shots/$name-submenu.png"
  xdotool keydown Shift_L # the delete alternates stand in while Shift is held
  sleep 0.5
  import -window root "$shots/$name-submenu-shift.png"
  xdotool keyup Shift_L
  xdotool key Escape Escape
  check "$name: a second launch hands over and ends, the first runs on" \
    'timeout 20 "$brevano" >/dev/null 2>&1 && kill -0 "$app"'
  check "$name: the running Brevano shows that it is running" \
    'wait_for "shows \"Brevano Is Already Running\" \"Reveal Shadow Desktop\""'
  "$brevano" set TidyFrequency 4 >/dev/null
  check "$name: a command is carried out by the running Brevano" \
    '"$brevano" get TidyFrequency | grep -qx 4'
  echo x > "$HOME/Desktop/$name-desk.txt"
  touch -d "1 hour ago" "$HOME/Desktop/$name-desk.txt"
  check "$name: brevano tidy is carried out by the running Brevano" \
    '"$brevano" tidy | grep -q "^moved $name-desk.txt -> " && [ -e "$shadow/$name-desk.txt" ]'
  import -window root "$shots/$name-already-running.png"
  kill -TERM "$app"
  check "$name: SIGTERM quits and saves" 'wait "$app"; ! app_listening && grep -q "<integer>4</integer>" "$XDG_DATA_HOME/Brevano/Brevano.data"'
}

# The windows a person sees, opened from the menu with the keyboard; WAIT is
# what must show before the screenshot is taken and the window closed.
open_window() { # OPEN-MENU DOWN-PRESSES TITLE SCREENSHOT
  eval "$1"
  wait_for "grep -qx \"  report.pdf\" \"\$BREVANO_MENU_OUTLINE\" 2>/dev/null"
  xdotool key --delay 60 $(printf 'Down %.0s' $(seq "$2")) Return
  wait_for "window_text \"$3\" >/dev/null"
  import -window root "$4"
}

sni_registered() {
  gdbus call --session --dest org.kde.StatusNotifierWatcher --object-path /StatusNotifierWatcher \
    --method org.freedesktop.DBus.Properties.Get org.kde.StatusNotifierWatcher \
    RegisteredStatusNotifierItems 2>/dev/null | grep -q StatusNotifierItem
}
run_host sni \
  'xfce4-panel >/dev/null 2>&1 & panel=$!; wait_for "has_name org.kde.StatusNotifierWatcher"' \
  'sni_registered' \
  'item=$(gdbus call --session --dest org.kde.StatusNotifierWatcher --object-path /StatusNotifierWatcher \
     --method org.freedesktop.DBus.Properties.Get org.kde.StatusNotifierWatcher RegisteredStatusNotifierItems \
     | grep -o ":[0-9.]*" | head -1); \
   gdbus call --session --dest "$item" --object-path /StatusNotifierItem \
     --method org.kde.StatusNotifierItem.ContextMenu 900 30 >/dev/null'
"$brevano" >/dev/null 2>&1 &
app=$!
wait_for app_listening
sni_menu='item=$(gdbus call --session --dest org.kde.StatusNotifierWatcher --object-path /StatusNotifierWatcher \
  --method org.freedesktop.DBus.Properties.Get org.kde.StatusNotifierWatcher RegisteredStatusNotifierItems \
  | grep -o ":[0-9.]*" | head -1); gdbus call --session --dest "$item" --object-path /StatusNotifierItem \
  --method org.kde.StatusNotifierItem.ContextMenu 900 30 >/dev/null'
rm -f "$BREVANO_MENU_OUTLINE"
open_window "$sni_menu" 10 "Restore Files" "$shots/restore-files.png"
restore_files="$(window_text "Restore Files")"
lists_all() { local f; for f in "$@"; do grep -qP "\t\Q$f\E\$" <<<"$restore_files" || return 1; done; }
check "Restore Files lists every item of the Shadow Desktop" 'lists_all Photos budget.xlsx notes.txt report.pdf'
check "Restore Files offers Restore" 'grep -qP "^push button\tRestore\$" <<<"$restore_files"'
xdotool key Escape
rm -f "$BREVANO_MENU_OUTLINE"
open_window "$sni_menu" 13 "About Brevano" "$shots/about.png"
check "About shows the name and version" \
  'shows "About Brevano" "Version $("$brevano" --version | grep -o "[0-9][0-9.]*" | head -1)"'
xdotool key Escape
kill -TERM "$app"; wait "$app"
xfconfd=$(bus_name_pid org.xfce.Xfconf)
kill "$panel" 2>/dev/null; wait "$panel" 2>/dev/null
[ -n "$xfconfd" ] && kill "$xfconfd" 2>/dev/null

# Qt's XEmbed icon is a window of Brevano's class, mapped once the tray embeds it.
run_host xembed \
  'trayer --edge top --align right --widthtype request --height 28 >/dev/null 2>&1 & tray=$!; \
   wait_for "xdotool search --onlyvisible --class trayer >/dev/null"' \
  'xdotool search --onlyvisible --class brevano >/dev/null' \
  'read -r width _ < <(xdotool getdisplaygeometry); xdotool mousemove $((width - 12)) 14 click 3'
kill "$tray" 2>/dev/null

# No tray host at start: a window says so and tidying goes on; a tray host that
# appears later gets the icon, and the window goes.
"$brevano" >/dev/null 2>&1 &
late=$!
wait_for app_listening
check "late host: without a tray host a window says so" \
  'wait_for "shows Brevano \"this desktop shows no tray icons\""'
import -window root "$shots/no-tray-host.png"
xfce4-panel >/dev/null 2>&1 &
panel=$!
check "late host: the icon appears when a tray host does" 'wait_for sni_registered'
no_tray_window() { ! xdotool search --onlyvisible --name '^Brevano$' >/dev/null; }
check "late host: the window is gone" 'wait_for no_tray_window'
import -window root "$shots/late-tray-host.png"
kill -TERM "$late"; wait "$late"
kill "$panel" 2>/dev/null

echo "$passes passed, $failures failed"
[ "$failures" -eq 0 ]
