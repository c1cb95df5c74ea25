# What the end-to-end scripts share: checks that count, waiting, and reading
# Brevano's windows through AT-SPI as a screen reader does. Sourced; needs
# $here (this folder) and $brevano (the program).
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
# Qt's warnings and errors say what they are, so that the logs can be searched.
export QT_MESSAGE_PATTERN='%{if-warning}Warning: %{endif}%{if-critical}ERROR: %{endif}%{if-fatal}ERROR: %{endif}%{if-category}%{category}: %{endif}%{message}'
passes=0
failures=0
check() {
  if eval "$2"; then echo "PASS: $1"; passes=$((passes + 1))
  else echo "FAIL: $1"; failures=$((failures + 1)); fi
}
# Polls COND every 0.1 s until it holds, for 10 s or TENTHS tenths of a second at most.
wait_for() { for _ in $(seq "${2:-100}"); do eval "$1" && return 0; sleep 0.1; done; return 1; }
# What a window of the running Brevano shows, "ROLE<TAB>NAME" a line.
window_text() { "$here/atspi-window.py" Brevano "$1" 2>/dev/null; }
shows() { local text; text="$(window_text "$1")" && grep -qF -- "$2" <<<"$text"; } # WINDOW-TITLE TEXT
# A person's action on a control of a window: focus, Press, Toggle, ...
act() { "$here/atspi-do.py" Brevano "$@"; } # WINDOW-TITLE NAME ACTION [ROLE]
# The process that owns a name on the session bus (one our bus started for us).
bus_name_pid() {
  gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus \
    --method org.freedesktop.DBus.GetConnectionUnixProcessID "$1" 2>/dev/null | grep -o '[0-9]\+' | tail -1
}
# The running Brevano's socket: commands answer without it too, run locally.
app_listening() { [ -S "$XDG_RUNTIME_DIR/brevano-$(id -u).socket" ]; }
has_name() { gdbus call --session --dest org.freedesktop.DBus --object-path / \
  --method org.freedesktop.DBus.NameHasOwner "$1" 2>/dev/null | grep -q true; }
# A popup menu of Brevano's is on the screen: popups are no part of its AT-SPI
# tree, but each is a mapped override-redirect window on the root.
menu_shows() {
  local id info
  for id in $(xwininfo -root -children | awk '/\("brevano" "Brevano"\)/ {print $1}'); do
    info="$(xwininfo -id "$id")"
    grep -q "Map State: IsViewable" <<<"$info" && grep -q "Override Redirect State: yes" <<<"$info" &&
      ! xprop -id "$id" _NET_WM_WINDOW_TYPE | grep -q TOOLTIP && return 0
  done
  return 1
}
menu_closed() { ! menu_shows; }
# Qt XEmbed tray: trayer along an edge of the screen.
start_trayer() { # EDGE
  trayer --edge "$1" --align right --widthtype request --height 28 >/dev/null 2>&1 &
  tray=$!
  wait_for "xdotool search --onlyvisible --class trayer >/dev/null"
}
qt_warnings() { grep -H '^\(Warning\|ERROR\): ' "$XDG_RUNTIME_DIR"/brevano-*.log; }
