#!/usr/bin/env bash
# Benchmarks, each beside the standard tool doing the same work on the same data.
set -euo pipefail
build="$(cd "$1" && pwd)"
here="$(cd "$(dirname "$0")" && pwd)"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

echo "== data file: read and write an XML property list (50,000 ignore entries)"
python3 "$here/make_data_file.py" 50000 "$work/Brevano.data"
ls -l "$work/Brevano.data" | awk '{printf "file size: %.1f MiB\n", $5 / 1048576}'
hyperfine --warmup 2 --runs 10 --export-json "$work/times.json" --style basic \
  -n brevano "$build/bench/bench_plist_convert $work/Brevano.data $work/ours.plist" \
  -n plistutil "plistutil -i $work/Brevano.data -o $work/theirs.plist -f xml" >/dev/null
python3 - "$work/times.json" <<'PY'
import json, sys
r = {x["command"]: x for x in json.load(open(sys.argv[1]))["results"]}
ours, theirs = r["brevano"]["mean"], r["plistutil"]["mean"]
print(f"time   brevano {ours*1000:8.1f} ms   plistutil {theirs*1000:8.1f} ms   ratio {ours/theirs:5.2f}")
PY
rss() { /usr/bin/time -f %M "$@" 2>&1 >/dev/null | tail -1; }
ours=$(rss "$build/bench/bench_plist_convert" "$work/Brevano.data" "$work/ours.plist")
theirs=$(rss plistutil -i "$work/Brevano.data" -o "$work/theirs.plist" -f xml)
awk -v o="$ours" -v t="$theirs" \
  'BEGIN { printf "memory brevano %8.1f MiB plistutil %8.1f MiB ratio %5.2f\n", o/1024, t/1024, o/t }'
