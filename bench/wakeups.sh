#!/usr/bin/env bash
# wakeups.sh PID SECONDS: how often the process's threads were scheduled to run
# over SECONDS, summed over the threads alive at the start and the end (threads
# that come or go in between, such as an idle thread pool's, are left out).
set -euo pipefail
snapshot() {
  for task in /proc/"$1"/task/*; do
    [ -r "$task/schedstat" ] && echo "${task##*/} $(cut -d' ' -f3 "$task/schedstat")"
  done
}
before=$(snapshot "$1")
sleep "$2"
after=$(snapshot "$1")
python3 - "$before" "$after" <<'PY'
import sys
before = dict(line.split() for line in sys.argv[1].splitlines())
after = dict(line.split() for line in sys.argv[2].splitlines())
print(sum(int(after[t]) - int(before[t]) for t in before if t in after))
PY
