#!/usr/bin/env bash
# The panel's thumbnails, run by run.sh on a private session bus: with the
# desktop's thumbnailer (tumbler) on it, or with none. Each panel run is a new
# process, so that the pictures it shows come from the shared cache or are made
# anew, never from its memory. Prints one "NAME VALUE" line per figure.
# Usage:
#   thumbnails.sh tumbler PROGRAM PHOTOS CACHE   the bus's XDG_CACHE_HOME is CACHE
#     cold-*  CACHE emptied before each run; tumbler-cold, tumbler-warm: its own
#             Queue of the same rows' images, tumbler-read: reading the
#             thumbnails it made; tumbler-all: its Queue of every image, which
#             fills CACHE for the warm-* runs
#   thumbnails.sh none PROGRAM PHOTOS CACHE EMPTY
#     cold-*  an empty cache (EMPTY): every picture decoded; warm-*  CACHE as
#             tumbler left it; decode: a plain decode of the same rows' images
# *-visible and *-pictures are the medians of RUNS (default 5) runs, *-stall the
# longest of them; the first SCROLLS (default 2) scroll through all rows.
set -uo pipefail
mode="$1" program="$2" photos="$3" cache="$4" empty="${5:-}"
runs="${RUNS:-5}" scrolls="${SCROLLS:-2}"
out="$(mktemp -d)"
trap 'rm -rf "$out"' EXIT

forget() { # the shared cache's pictures, as if none had ever been made
  [ -d "$cache/thumbnails" ] && find "$cache/thumbnails" -type f -name '*.png' -delete
}
value() { awk -v name="$1" '$1 == name {print $2}' "$2"; }
# panels NAME CACHE [--cold]: RUNS panel runs, the first SCROLLS of them
# scrolling through all rows; prints NAME-visible and NAME-pictures (medians),
# NAME-open-stall and NAME-scroll-stall (the longest; NAME-scroll-stall-running:
# how much of it the main thread ran), NAME-last-pictures (the median of the
# scrolling runs' scroll-last-pictures).
panels() {
  local i scroll
  for i in $(seq "$runs"); do
    [ "${3:-}" = --cold ] && forget
    scroll=(); [ "$i" -gt "$scrolls" ] && scroll=(no-scroll)
    "$program" panel "$photos" "$2" "${scroll[@]}" > "$out/$1-$i.txt" 2>/dev/null \
      || echo "$1 run $i failed" >&2
  done
  python3 - "$1" "$out"/"$1"-*.txt <<'PY'
import statistics, sys
runs = [dict(line.split(None, 1) for line in open(f).read().splitlines()) for f in sys.argv[2:]]
name = sys.argv[1]
for time in ("visible", "pictures"):
    print(f"{name}-{time} {statistics.median(float(r.get(time, 'nan')) for r in runs):.6f}")
for stall in ("open-stall", "scroll-stall"):
    print(f"{name}-{stall} {max(float(r.get(stall, 0)) for r in runs):.6f}")
worst = max(runs, key=lambda r: float(r.get("scroll-stall", 0)))
print(f"{name}-scroll-stall-running {float(worst.get('scroll-stall-running', 0)):.6f}")
last = [float(r["scroll-last-pictures"]) for r in runs if "scroll-last-pictures" in r]
print(f"{name}-last-pictures {statistics.median(last) if last else float('nan'):.6f}")
PY
  cp "$out/$1-1.txt" "$out/first.txt"
}

case "$mode" in
tumbler)
  # Running before the clock starts, as on a desktop that has it.
  gdbus call --session --dest org.freedesktop.thumbnails.Thumbnailer1 \
    --object-path /org/freedesktop/thumbnails/Thumbnailer1 \
    --method org.freedesktop.thumbnails.Thumbnailer1.GetFlavors >/dev/null || exit 1
  panels cold "$cache" --cold
  echo "visible-rows $(value visible-rows "$out/first.txt")"
  IFS=, read -r -a visible <<< "$(value visible-files "$out/first.txt")"
  "$program" tumbler "$cache" 5 "${visible[@]}" | sed 's/^/tumbler-/'
  forget
  "$program" tumbler "$cache" 1 "$photos"/*.jpg | awk '$1 == "cold" {print "tumbler-all", $2}'
  panels warm "$cache"
  ;;
none)
  panels cold "$empty"
  IFS=, read -r -a visible <<< "$(value visible-files "$out/first.txt")"
  "$program" decode 5 "${visible[@]}"
  panels warm "$cache"
  ;;
*) exit 2 ;;
esac
