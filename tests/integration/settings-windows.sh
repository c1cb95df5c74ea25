#!/usr/bin/env bash
# Runs the real Brevano as a person meets it the first time, on an XEmbed tray:
# with no data file the welcome tutorial opens; its pages go by with Next; on
# the last page a Desktop item is ticked and Finish writes the data file with
# that item ignored and tidying on. Then Preferences, opened from the command
# line and from the Already Running window, changes the tidy frequency, and
# Done makes it what "brevano get" answers. Every window and tutorial page is
# read through AT-SPI and photographed into $SCREENSHOTS. A Qt warning in
# Brevano's log fails the run. Run under with-display.sh; it stops only the
# processes it started, by their ids.
# Usage: settings-windows.sh BREVANO SCREENSHOTS
set -uo pipefail
brevano="$1"
shots="$2"
here="$(dirname "$0")"
mkdir -p "$shots"
source "$here/common.sh"

data_file="$XDG_DATA_HOME/Brevano/Brevano.data"
tutorial="Welcome to Brevano"
preferences="Brevano Preferences"
shows_window() { window_text "$1" >/dev/null; } # TITLE
closed() { ! shows_window "$1"; }
windows_titled() { xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | wc -l; }
photo() { sleep 0.4; import -window root "$shots/$1.png"; } # NAME: once drawn

for f in keep-me.txt other.txt; do echo x > "$HOME/Desktop/$f"; done
start_trayer top
"$brevano" > "$XDG_RUNTIME_DIR/brevano-first.log" 2>&1 &
app=$!
check "a first start with no data file opens the tutorial" \
  'wait_for app_listening && [ ! -e "$data_file" ] && wait_for "shows_window \"$tutorial\""'
check "the first page offers Next, not Back or Finish" \
  'shows "$tutorial" "push button	Next"'
for page in 0 1 2 3 4 5; do
  photo "tutorial-page-$page"
  act "$tutorial" Next Press "push button"
done
check "the last page shows the Desktop's items to leave alone" \
  'wait_for "shows \"\$tutorial\" keep-me.txt" && shows "$tutorial" other.txt'
photo tutorial-page-6
check "an item is ticked from the keyboard" \
  'act "$tutorial" keep-me.txt focus && xdotool key space'
photo tutorial-page-6-ticked
act "$tutorial" Finish Press "push button"
check "Finish closes the tutorial" 'wait_for "closed \"\$tutorial\""'
check "Finish wrote the data file with the ticked item ignored" \
  'wait_for "[ -e \"$data_file\" ]" && grep -qF "<key>$HOME/Desktop/keep-me.txt</key>" "$data_file" &&
   ! grep -qF "<key>$HOME/Desktop/other.txt</key>" "$data_file"'
check "Finish turned periodic tidying on" \
  'grep -A1 "<key>Enabled</key>" "$data_file" | grep -q "<true/>" && "$brevano" get Enabled | grep -qx true'

"$brevano" open preferences
check "brevano open preferences opens Preferences" 'wait_for "shows_window \"$preferences\""'
tab=0
for name in General Ignore "Quick Filters" Notifications; do
  act "$preferences" "$name" focus "page tab" || act "$preferences" "$name" Switch "page tab"
  photo "preferences-$tab"; tab=$((tab + 1))
done
act "$preferences" General focus "page tab"
before="$("$brevano" get TidyFrequency)"
check "the frequency is chosen from the keyboard" \
  'act "$preferences" "Tidy frequency" focus && xdotool key Down'
photo preferences-frequency-changed
xdotool key Return # Done is the default button
check "Done closes Preferences" 'wait_for "closed \"\$preferences\""'
check "Done's frequency is what brevano get answers" \
  '[ "$("$brevano" get TidyFrequency)" = "$((before + 1))" ] &&
   grep -A1 "<key>TidyFrequency</key>" "$data_file" | grep -q "<integer>$((before + 1))</integer>"'

timeout 20 "$brevano" >/dev/null 2>&1 # a second launch: the running one says it runs
check "the Already Running window has a Preferences button" \
  'wait_for "shows \"Brevano Is Already Running\" \"Preferences...\""'
photo already-running
act "Brevano Is Already Running" "Preferences..." Press "push button"
check "its Preferences button closes it and opens Preferences" \
  'wait_for "shows_window \"$preferences\"" && closed "Brevano Is Already Running"'
xdotool key Escape
check "Escape puts Preferences away" 'wait_for "closed \"\$preferences\""'

"$brevano" open tutorial
"$brevano" open tutorial
check "brevano open tutorial opens another tutorial each time" \
  'wait_for "[ \$(windows_titled \"\$tutorial\") = 2 ]"'
kill -TERM "$app"; wait "$app"
kill "$tray" 2>/dev/null

check "Brevano's logs hold no Qt warning or error" '! qt_warnings'
echo "$passes passed, $failures failed"
[ "$failures" -eq 0 ]
