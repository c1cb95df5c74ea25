#!/usr/bin/env bash
# Runs the property-list fuzzer for SECONDS seconds from the committed corpus.
# New inputs go to a scratch folder; a finding stops the run with exit 1.
set -euo pipefail
build="$(cd "$1" && pwd)"
seconds="${2:-60}"
here="$(cd "$(dirname "$0")" && pwd)"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cd "$work"
"$build/fuzz/fuzz_property_list" -max_total_time="$seconds" -max_len=65536 -timeout=10 \
  -rss_limit_mb=4096 -dict="$here/plist.dict" -print_final_stats=1 "$work" "$here/corpus"
