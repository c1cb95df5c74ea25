#!/usr/bin/env bash
# Drags files between the real Brevano's panel and real file managers, with
# the pointer as a hand drags (xdotool through XDND): a row of the open,
# pinned panel dropped on the desktop drawn by xfdesktop lands on the Desktop,
# the question whether to ignore it appears over the panel, which stays open,
# and "Yes" puts it on the ignore list; files dragged from a Thunar window onto
# the panel move into the Shadow Desktop, between rows into the folder shown
# and onto a folder's row into that folder; and a row's menu, opened with the
# menu key, restores and ignores a file as a drag back does. The question and
# the drops are photographed into $SCREENSHOTS. A Qt warning in Brevano's log fails the run.
# Run under with-display.sh. It stops only the processes it started, by their
# ids, and skips (exit status 77) when a program it needs is missing.
# Usage: panel-drag.sh BREVANO SCREENSHOTS
set -uo pipefail
brevano="$1"
shots="$2"
here="$(dirname "$0")"
for program in xfdesktop thunar xfconf-query trayer xdotool xprop xwininfo import; do
  command -v "$program" >/dev/null || { echo "SKIP: $program is missing"; exit 77; }
done
/usr/bin/python3 -c 'import pyatspi' 2>/dev/null || { echo "SKIP: python3-pyatspi is missing"; exit 77; }
mkdir -p "$shots"
source "$here/common.sh"

shadow="$XDG_DATA_HOME/Brevano/Shadow Desktop"
data_file="$XDG_DATA_HOME/Brevano/Brevano.data"
question="It looks like you just dragged a file back to the Desktop. Would you like Brevano to ignore these files when tidying?"
panel_rows() { window_text "Brevano panel" | sed -n 's/^list item\t//p'; }
shows_row() { panel_rows | grep -qxF -- "$1"; }
panel_shows() { window_text "Brevano panel" >/dev/null; }
# Where a control is on the screen, X Y WIDTH HEIGHT, read through AT-SPI.
extents() { "$here/atspi-do.py" "$1" "$2" "$3" where 2>/dev/null | cut -f3; } # APP WINDOW NAME
middle_of() { # APP WINDOW NAME: "X Y" of its middle
  local x y w h
  read -r x y w h < <(extents "$@") && [ -n "$h" ] && echo "$((x + w / 2)) $((y + h / 2))"
}
# A hand's drag: pressed, moved in steps (XDND follows motion, not jumps),
# held a moment over the target so that it answers, released.
drag() { # FROM-X FROM-Y TO-X TO-Y
  local i
  xdotool mousemove "$1" "$2" mousedown 1
  for i in $(seq 16); do
    xdotool mousemove $(($1 + ($3 - $1) * i / 16)) $(($2 + ($4 - $2) * i / 16))
    sleep 0.05
  done
  xdotool mousemove $(($3 + 2)) $(($4 + 2)); sleep 0.2
  xdotool mousemove "$3" "$4"; sleep 0.2
  xdotool mouseup 1
}
photo() { sleep 0.4; import -window root "$shots/$1.png"; } # NAME: once drawn

mkdir -p "$shadow/Photos" "$HOME/Documents"
for f in report.pdf notes.txt; do echo x > "$shadow/$f"; done
for f in incoming.txt holiday.jpg; do echo y > "$HOME/Documents/$f"; done
"$brevano" set ShowWelcome2.0 false >/dev/null
"$brevano" set PinPanel true >/dev/null

# xfdesktop shows the desktop only once a window manager has said so (the
# EWMH check window, a desktop count): trayer's window says it here.
start_trayer top
wm=$(xdotool search --class trayer | head -1)
xprop -id "$wm" -f _NET_SUPPORTING_WM_CHECK 32x -set _NET_SUPPORTING_WM_CHECK "$wm"
xprop -id "$wm" -f _NET_WM_NAME 8u -set _NET_WM_NAME "test"
xprop -root -f _NET_SUPPORTING_WM_CHECK 32x -set _NET_SUPPORTING_WM_CHECK "$wm"
xprop -root -f _NET_NUMBER_OF_DESKTOPS 32c -set _NET_NUMBER_OF_DESKTOPS 1
xprop -root -f _NET_CURRENT_DESKTOP 32c -set _NET_CURRENT_DESKTOP 0
xfdesktop --disable-wm-check > "$XDG_RUNTIME_DIR/xfdesktop.log" 2>&1 &
desk=$!
desktop_shown() {
  local id
  id=$(xwininfo -root -children | awk '/"Desktop": \("xfdesktop"/ {print $1}')
  [ -n "$id" ] && xwininfo -id "$id" | grep -q IsViewable
}
if ! wait_for desktop_shown; then
  echo "SKIP: xfdesktop shows no desktop here"
  kill "$desk" "$tray" 2>/dev/null; wait
  exit 77
fi
xdotool search --class trayer windowraise %@ >/dev/null 2>&1

"$brevano" > "$XDG_RUNTIME_DIR/brevano-drag.log" 2>&1 &
app=$!
check "Brevano starts and listens" 'wait_for app_listening'
"$brevano" open panel
check "the pinned panel opens with the Shadow Desktop's items" \
  'wait_for "shows_row report.pdf" && shows_row notes.txt'
read -r from_x from_y < <(middle_of Brevano "Brevano panel" report.pdf)
drag "$from_x" "$from_y" 450 560
check "a row dropped on the desktop lands on the Desktop" \
  'wait_for "[ -e \"$HOME/Desktop/report.pdf\" ] && [ ! -e \"$shadow/report.pdf\" ]"'
check "the question whether to ignore it appears" 'wait_for "shows Brevano \"\$question\""'
photo drag-question
check "the panel stays open under the question" 'panel_shows'
act Brevano Yes Press "push button"
check "Yes puts the dragged file on the ignore list" \
  'wait_for "\"\$brevano\" ignore list | grep -qxF \"\$HOME/Desktop/report.pdf\""'
check "the panel no longer lists it" 'wait_for "! shows_row report.pdf" && shows_row notes.txt'

# Thunar in its detailed list view, where AT-SPI tells where each file is.
xfconf-query -c thunar -p /last-view -n -t string -s ThunarDetailsView
thunar "$HOME/Documents" > "$XDG_RUNTIME_DIR/thunar.log" 2>&1 &
file_manager=$!
thunar_window="Documents - Thunar"
check "Thunar shows the Documents folder" \
  'wait_for "extents Thunar \"\$thunar_window\" incoming.txt | grep -q ."'
read -r from_x from_y < <(middle_of Thunar "$thunar_window" incoming.txt)
read -r x y w h < <(extents Brevano "Brevano panel" "Shadow Desktop items")
drag "$from_x" "$from_y" $((x + w / 2)) $((y + h - 30))
check "a file dropped below the rows moves into the Shadow Desktop" \
  'wait_for "[ -e \"$shadow/incoming.txt\" ] && [ ! -e \"$HOME/Documents/incoming.txt\" ]"'
check "the panel lists it" 'wait_for "shows_row incoming.txt"'
photo drag-dropped-in
read -r from_x from_y < <(middle_of Thunar "$thunar_window" holiday.jpg)
read -r to_x to_y < <(middle_of Brevano "Brevano panel" Photos)
drag "$from_x" "$from_y" "$to_x" "$to_y"
check "a file dropped on a folder's row moves into that folder" \
  'wait_for "[ -e \"$shadow/Photos/holiday.jpg\" ] && [ ! -e \"$HOME/Documents/holiday.jpg\" ]"'
photo drag-dropped-on-folder

# What a drag back to the Desktop does, from the keyboard: the row's menu
# (the menu key) restores the file and ignores it.
"$brevano" open panel # takes the keyboard back from Thunar
act "Brevano panel" Search focus
xdotool key ctrl+a type notes
check "without a pointer, a row's menu restores it to the Desktop and ignores it" \
  'wait_for "[ \"\$(panel_rows)\" = notes.txt ]" && xdotool key Down Menu && wait_for menu_shows &&
   xdotool key --delay 60 Down Down Down Down Return &&
   wait_for "[ -e \"$HOME/Desktop/notes.txt\" ]" &&
   "$brevano" ignore list | grep -qxF "$HOME/Desktop/notes.txt"'

kill -TERM "$app"; wait "$app"
check "the ignore list is in the data file" \
  'grep -qF "<key>$HOME/Desktop/report.pdf</key>" "$data_file" &&
   grep -qF "<key>$HOME/Desktop/notes.txt</key>" "$data_file"'
kill "$file_manager" "$desk" "$tray" 2>/dev/null; wait "$file_manager" "$desk" "$tray" 2>/dev/null

check "Brevano's log holds no Qt warning or error" '! qt_warnings'
echo "$passes passed, $failures failed"
[ "$failures" -eq 0 ]
