#!/usr/bin/env bash
# Runs the real Brevano with tumbler on the bus: a view with file previews
# (icon style 1, the largest rows) of a Shadow Desktop of large images shows
# their thumbnails in the rows, and the thumbnails land in the desktop's shared
# cache under the names and times other programs read. A row selected from the
# keyboard opens its preview beside the panel, with its picture and buttons.
# Screenshots go to $SCREENSHOTS. Run under with-display.sh; it stops only the
# processes it started, by their ids.
# Usage: panel-thumbnails.sh BREVANO SCREENSHOTS
set -uo pipefail
brevano="$1"
shots="$2"
here="$(dirname "$0")"
mkdir -p "$shots"
source "$here/common.sh"

tumbler_service=org.freedesktop.thumbnails.Thumbnailer1
if ! grep -rqs "Name=$tumbler_service\$" /usr/share/dbus-1/services; then
  echo "SKIP: tumbler is not installed"
  exit 77
fi

shadow="$XDG_DATA_HOME/Brevano/Shadow Desktop"
mkdir -p "$shadow"
# Large pictures of one colour no icon has, so that a row's thumbnail can be
# told from its type icon on the screen.
for i in 1 2 3 4 5 6; do
  convert -size "$((1600 + i * 40))x1200" xc:'#ff00ff' -quality 90 "$shadow/picture $i.jpg"
done
"$brevano" set ShowWelcome2.0 false >/dev/null
# "All Contents" with previews at the largest rows.
python3 - "$XDG_DATA_HOME/Brevano/Brevano.data" <<'PY'
import plistlib, sys
path = sys.argv[1]
with open(path, "rb") as f:
    data = plistlib.load(f)
for view in data["QuickFilters"]:
    if view.get("Name") == "All Contents":
        view["IconStyle"] = 1
        view["IconSize"] = 3
with open(path, "wb") as f:
    plistlib.dump(data, f)
PY

panel_shows() { window_text "Brevano panel" >/dev/null; }
preview_shows() { window_text "Preview" >/dev/null; }
# The pixels of a colour in an area of the screen.
pixels_of() { # COLOUR X Y WIDTH HEIGHT
  import -window root -crop "$4x$5+$2+$3" +repage "$XDG_RUNTIME_DIR/crop.png" &&
    convert "$XDG_RUNTIME_DIR/crop.png" -alpha off -fuzz 12% -fill white -opaque "$1" \
      -fill black +opaque white -format '%[fx:round(mean*w*h)]' info:
}
focused_in() { local text; text="$("$here/atspi-window.py" Brevano "$1" focused 2>/dev/null)" && grep -q "^$2" <<<"$text"; }
extents_of() { act "$1" "$2" where 2>/dev/null | cut -f3; } # WINDOW NAME: X Y WIDTH HEIGHT
# Every thumbnail of the cache's SIZE folder is named by its file's URI and
# carries the file's URI and modification time.
cache_matches() { # SIZE-FOLDER
  python3 - "$XDG_CACHE_HOME/thumbnails/$1" "$shadow" <<'PY'
import hashlib, os, sys, urllib.parse, zlib
folder, shadow = sys.argv[1], sys.argv[2]
def text_chunks(path):
    with open(path, "rb") as f:
        data = f.read()
    pos, chunks = 8, {}
    while pos < len(data):
        length = int.from_bytes(data[pos:pos + 4], "big")
        kind, body = data[pos + 4:pos + 8], data[pos + 8:pos + 8 + length]
        if kind == b"tEXt":
            key, _, value = body.partition(b"\0")
            chunks[key.decode()] = value.decode()
        pos += 12 + length
    return chunks
found = 0
for name in sorted(os.listdir(shadow)):
    path = os.path.join(shadow, name)
    uri = "file://" + urllib.parse.quote(path, safe="/")
    thumb = os.path.join(folder, hashlib.md5(uri.encode()).hexdigest() + ".png")
    if not os.path.exists(thumb):
        continue
    chunks = text_chunks(thumb)
    mtime = int(os.stat(path).st_mtime)
    if chunks.get("Thumb::URI") != uri or int(float(chunks.get("Thumb::MTime", "-1"))) != mtime:
        print(f"{thumb}: {chunks}", file=sys.stderr)
        sys.exit(1)
    found += 1
sys.exit(0 if found >= 2 else 1)
PY
}

start_trayer top
"$brevano" > "$XDG_RUNTIME_DIR/brevano-thumbnails.log" 2>&1 &
app=$!
wait_for app_listening
"$brevano" open panel
check "the panel opens" 'wait_for panel_shows'
read -r px py pw ph < <(extents_of "Brevano panel" "Brevano panel")
check "tumbler was started on the bus for the thumbnails" 'wait_for "has_name $tumbler_service"'
check "the rows show their thumbnails" \
  'wait_for "[ \"\$(pixels_of \"#ff00ff\" $px $py $pw $ph)\" -gt 20000 ]"'
sleep 0.3
import -window root "$shots/panel-thumbnails.png"
check "the thumbnails are in the shared cache, named and dated for other programs" \
  'cache_matches large || cache_matches normal || cache_matches x-large'

# The search field has the keys; Down goes to the first row and selects it.
xdotool key Down
check "a selected row opens its preview" 'wait_for preview_shows'
selected="$("$here/atspi-window.py" Brevano "Brevano panel" focused 2>/dev/null | sed -n 's/^list item\t//p')"
check "the preview shows the file's name and its buttons" \
  '[ -n "$selected" ] && shows Preview "label	$selected" && shows Preview "label	$shadow/$selected" &&
   shows Preview "push button	Restore to Desktop and Ignore" &&
   shows Preview "push button	Move to Trash" && shows Preview "push button	Show in File Manager" &&
   shows Preview "push button	Open"'
read -r vx vy vw vh < <(extents_of Preview Preview)
check "the preview opens beside the panel, not over it" \
  '[ -n "$vh" ] && { [ "$vx" -ge $((px + pw)) ] || [ $((vx + vw)) -le "$px" ]; }'
check "the preview shows the picture" \
  'wait_for "[ \"\$(pixels_of \"#ff00ff\" $vx $vy $vw $vh)\" -gt 40000 ]"'
check "the panel kept the keyboard" 'focused_in "Brevano panel" "list item"'
import -window root "$shots/panel-preview.png"
xdotool key Tab
check "Tab takes the keyboard to the preview's buttons" \
  'wait_for "focused_in Preview \"push button\""'
xdotool key Escape
check "Escape closes the preview and leaves the panel open" \
  'wait_for "! preview_shows" && panel_shows'

kill "$app" 2>/dev/null
wait "$app" 2>/dev/null
kill "$tray" 2>/dev/null
check "no Qt warning in the log" '! qt_warnings'
echo "$passes passed, $failures failed"
[ "$failures" -eq 0 ]
