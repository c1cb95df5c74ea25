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
ticked() { # NAME: its row of the tutorial's checklist is ticked
  local text
  text="$("$here/atspi-window.py" Brevano "$tutorial" checked 2>/dev/null)" &&
    grep -qxF "table cell	Ignore $1" <<<"$text"
}
photo() { sleep 0.4; import -window root "$shots/$1.png"; } # NAME: once drawn

for f in keep-me.txt other.txt; do echo x > "$HOME/Desktop/$f"; done
start_trayer top
"$brevano" > "$XDG_RUNTIME_DIR/brevano-first.log" 2>&1 &
app=$!
check "a first start with no data file opens the tutorial" \
  'wait_for app_listening && [ ! -e "$data_file" ] && wait_for "shows_window \"$tutorial\""'
check "the first page offers Next, not Back or Finish" \
  'shows "$tutorial" "push button	Next"'
# A button pressed through AT-SPI clicks a moment later, and a second press
# before then makes one click: each page is waited for.
for page in 0 1 2 3 4; do
  photo "tutorial-page-$page"
  act "$tutorial" Next Press "push button"
  wait_for "shows \"\$tutorial\" \"Page $((page + 2)) of 6\"" || echo "page $((page + 1)) did not come"
done
photo tutorial-page-5
act "$tutorial" Next Press "push button"
check "the last page shows the Desktop's items to leave alone" \
  'wait_for "shows \"\$tutorial\" keep-me.txt" && shows "$tutorial" other.txt'
photo tutorial-page-6
# Tab order: the list, Check All, Uncheck All, then the check boxes.
check "an item is ticked from the keyboard" \
  'act "$tutorial" "Tidy my Desktop periodically" focus && xdotool key shift+Tab shift+Tab shift+Tab space &&
   wait_for "ticked keep-me.txt"'
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
  act "$preferences" "$name" Press "page tab"
  photo "preferences-$tab"; tab=$((tab + 1))
done
# The quick filter editor and its extension prompt, from the Quick Filters tab.
act "$preferences" "Quick Filters" Press "page tab"
act "$preferences" "Add to Quick filters" Press "push button"
check "Add in Quick Filters opens the quick filter editor" 'wait_for "shows_window \"Quick Filter\""'
photo quick-filter-editor
act "Quick Filter" "Add extension" Press "push button"
check "the editor's Add asks for a file extension" 'wait_for "shows_window \"File Extension\""'
xdotool type " .JPG "
photo extension-prompt
xdotool key Return
check "the extension comes back without dots and spaces, lower-cased" \
  'wait_for "closed \"File Extension\"" && wait_for "shows \"Quick Filter\" \"table cell	jpg\""'
photo quick-filter-editor-extension
xdotool key Escape
check "Escape cancels the quick filter editor" 'wait_for "closed \"Quick Filter\""'

# Advanced mode: the window and brevano status say that nothing moves; the
# rules and locations and their editors are shown.
act "$preferences" General Press "page tab"
act "$preferences" "Advanced mode" Press "push button"
check "advanced mode says in Preferences that nothing moves" \
  'wait_for "shows \"\$preferences\" \"no tidy moves anything\""'
photo preferences-advanced-mode
check "brevano status says so too" '"$brevano" status | grep -q "^mode: advanced: "'
act "$preferences" Advanced Press "page tab"
photo preferences-advanced
editor=0
for list in Rules Filters Actions; do
  title=$(case $list in Rules) echo "Edit Rule";; Filters) echo "Edit Filter";; *) echo "Select Action";; esac)
  editor=$((editor + 1))
  act "$preferences" "Add to $list" Press "push button"
  check "the $title window opens from its list" 'wait_for "shows_window \"$title\""'
  photo "advanced-editor-$editor"
  xdotool key Escape
  wait_for "closed \"$title\""
done
act "$preferences" General Press "page tab"
act "$preferences" "Basic mode" Press "push button"
check "back in basic mode, brevano status says so" \
  'wait_for "\"\$brevano\" status | grep -qx \"mode: basic\""'
before="$("$brevano" get TidyFrequency)"
# The frequency follows the automatic tidy's check box in the Tab order.
check "the frequency is chosen from the keyboard" \
  'act "$preferences" "Tidy the Desktop automatically" focus && xdotool key Tab Down &&
   wait_for "shows \"\$preferences\" \"combo box	Every 5 minutes\""'
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
